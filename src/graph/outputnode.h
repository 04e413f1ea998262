#pragma once

#include "graph/ionode.h"

// The item that writes its one input to a file. Nothing leaves it.
class OutputNode : public IONode
{
    Q_OBJECT

public:
    explicit OutputNode(int id = -1) : IONode(id) { }

    int type() const override { return OutputType; }
    Node *clone() const override;
    QColor backgroundColor() const override;
    QColor borderColor() const override;
    int maximumInputs() const override { return 1; }
    int minimumInputs() const override { return 1; }
    int maximumOutputs() const override { return 0; }
    void run(bool recursive, bool freeUpstream) override;
    void writeAttributes(QDomElement &element, const QString &documentFolder) const override;
    void readAttributes(const QDomElement &element, int version,
                        const QString &documentFolder) override;

    bool outputEnabled() const { return m_outputEnabled; }
    void setOutputEnabled(bool on) { m_outputEnabled = on; }

protected:
    // Writes m_dataset to the target; false on failure with the reason in the warnings.
    virtual bool write();
    virtual QString writeModeText() const { return QStringLiteral("Disabled"); }

private:
    bool m_outputEnabled = true;
};
