#pragma once

#include "flow/flowitem.h"
#include "io/fileformats.h"

class QDomElement;

// What inputs and outputs share: a file path and the type of the file.
class IOItem : public FlowItem
{
    Q_OBJECT

public:
    explicit IOItem(int id = -1)
        : FlowItem(id)
    { }

    QString path() const { return m_path; }
    virtual void setPath(const QString &path) { m_path = path; }
    int fileType() const { return m_fileType; }
    void setFileType(int fileType) { m_fileType = fileType; }

    QString displayName() const override;
    QString leftPaneName() const override;
    QList<QPair<QString, QString>> fileSummary() const override;
    virtual void setSourcePaths(const QString &documentFolder);

    // The item's options as attributes of its document element, in the document's order.
    // Paths are written relative to documentFolder when they lie below it, and resolved
    // against it on reading, so that a document and its data can move together.
    virtual void writeAttributes(QDomElement &element, const QString &documentFolder) const = 0;
    virtual void readAttributes(const QDomElement &element, int version,
                                const QString &documentFolder)
        = 0;

protected:
    void copyIOInto(IOItem *copy) const;

private:
    QString m_path;
    int m_fileType = FileTypeNone;
};
