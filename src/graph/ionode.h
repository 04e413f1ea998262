#pragma once

#include "graph/node.h"

// File types, stored by number in documents.
enum FileType {
    FileTypeDelimited = 0,
    FileTypeXlsx = 1,
    FileTypeXls = 2,
    FileTypeFixedWidth = 3,
    FileTypeJson = 4,
    FileTypeXml = 5,
    FileTypeVCard = 6,
    FileTypeYaml = 7,
    FileTypeHtml = 8,
    FileTypeMarkdown = 9,
    FileTypePlainText = 10,
    FileTypeNone = 11
};

QString fileTypeName(int fileType);

// What inputs and outputs share: a file path and the type of the file.
class IONode : public Node
{
    Q_OBJECT

public:
    explicit IONode(int id = -1) : Node(id) { }

    QString path() const { return m_path; }
    virtual void setPath(const QString &path) { m_path = path; }
    int fileType() const { return m_fileType; }
    void setFileType(int fileType) { m_fileType = fileType; }

    QString displayName() const override;
    QString leftPaneName() const override;
    QList<QPair<QString, QString>> fileSummary() const override;
    virtual void setSourcePaths(const QString &documentFolder);

protected:
    void copyIOInto(IONode *copy) const;

private:
    QString m_path;
    int m_fileType = FileTypeNone;
};
