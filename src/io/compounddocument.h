#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <vector>

class QIODevice;

// The compound document container (a small file system inside one file) that holds the
// streams of an .xls workbook. Reading trusts nothing in the file: every sector number is
// checked against the file's size and every chain against loops before a byte is used, so a
// damaged or hostile file ends in an error, never in a crash or an endless walk.
class CompoundDocumentReader
{
public:
    // Reads the header, the allocation tables and the directory.
    bool open(const QString &path);
    QString error() const { return m_error; }
    // The streams directly in the root storage.
    QStringList streamNames() const;
    // The whole stream of that name, compared without regard to case; false with error()
    // when there is none or its sectors are damaged.
    bool readStream(const QString &name, QByteArray *out);

private:
    struct Entry
    {
        QString name;
        int type = 0; // 1 storage, 2 stream, 5 root
        quint32 left = 0;
        quint32 right = 0;
        quint32 child = 0;
        quint32 start = 0;
        quint64 size = 0;
    };

    bool fail(const QString &reason);
    bool damaged(const QString &detail);
    bool pastEnd(const QString &detail);
    bool readHeader();
    bool readAllocationTable();
    bool readDirectory();
    bool chain(const std::vector<quint32> &table, quint32 start, quint64 limit,
               std::vector<quint32> *out, const char *what);
    bool copySectors(const std::vector<quint32> &sectors, quint64 size, QByteArray *out);
    bool readMiniStream(const Entry &entry, QByteArray *out);
    const uchar *sector(quint32 index) const;
    quint32 word(const uchar *at) const;

    QFile m_file;
    const uchar *m_data = nullptr;
    QByteArray m_copy; // the file's bytes when it cannot be mapped
    qint64 m_size = 0;
    QString m_error;
    int m_majorVersion = 3;
    int m_sectorSize = 512;
    quint32 m_sectorCount = 0;
    quint32 m_miniCutoff = 4096;
    quint32 m_fatSectors = 0;
    quint32 m_directoryStart = 0;
    quint32 m_miniFatStart = 0;
    quint32 m_difatStart = 0;
    quint32 m_difatSectors = 0;
    std::vector<quint32> m_fat;
    std::vector<Entry> m_entries;
    std::vector<int> m_rootStreams;
};

namespace CompoundDocumentWriter {
// Writes a compound document (version 3, 512-byte sectors) holding one stream in its root.
// The stream is padded with zeros to 4096 bytes, so that it never goes to the mini stream.
bool write(QIODevice &out, const QString &streamName, const QByteArray &stream);
} // namespace CompoundDocumentWriter
