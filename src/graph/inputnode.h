#pragma once

#include "graph/ionode.h"

// The item that brings data into a document, from a file or from text held in the document
// (a clipboard import). It has no arrow coming in.
class InputNode : public IONode
{
    Q_OBJECT

public:
    enum Medium { File = 0, Text = 1 };

    explicit InputNode(int id = -1) : IONode(id) { }

    int type() const override { return InputType; }
    Node *clone() const override;
    QColor backgroundColor() const override;
    QColor borderColor() const override;
    bool canRun() const override { return true; }
    int maximumInputs() const override { return 0; }
    void run(bool recursive, bool freeUpstream) override;

    int medium() const { return m_medium; }
    void setMedium(int medium) { m_medium = medium; }
    QString text() const { return m_text; }
    void setText(const QString &text) { m_text = text; }

signals:
    void sourceChanged(Node *node);

protected:
    // Fills m_dataset from the source; false when the source cannot be read (the reason stands
    // in the warnings).
    virtual bool readSource();

private:
    int m_medium = File;
    QString m_text;
};
