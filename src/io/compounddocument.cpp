#include "io/compounddocument.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

constexpr int HeaderSize = 512;
constexpr int HeaderDifatEntries = 109;
constexpr int DirectoryEntrySize = 128;
constexpr int MiniSectorSize = 64;
constexpr quint32 FreeSector = 0xFFFFFFFF;
constexpr quint32 EndOfChain = 0xFFFFFFFE;
constexpr quint32 FatSector = 0xFFFFFFFD;
constexpr quint32 DifatSector = 0xFFFFFFFC;
constexpr quint32 NoStream = 0xFFFFFFFF;
// Larger streams are refused rather than copied into one buffer.
constexpr quint64 MaxStreamSize = quint64(1) << 30;
const uchar Signature[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

QString notAWorkbook(const uchar *data, qint64 size)
{
    if (size >= 4 && std::memcmp(data, "PK\x03\x04", 4) == 0)
        return QStringLiteral("The file is an .xlsx workbook (a zip package), not an Excel "
                              "97-2003 workbook (.xls).");
    const qint64 probe = std::min<qint64>(size, 512);
    bool text = probe > 0;
    for (qint64 i = 0; i < probe && text; ++i)
        text = data[i] >= 0x20 || data[i] == '\t' || data[i] == '\n' || data[i] == '\r';
    if (text)
        return QStringLiteral("The file is text, not an Excel 97-2003 workbook (.xls); web "
                              "pages and CSV files are sometimes named .xls.");
    return QStringLiteral("The file is not an Excel 97-2003 workbook (.xls).");
}

} // namespace

bool CompoundDocumentReader::fail(const QString &reason)
{
    m_error = reason;
    return false;
}

bool CompoundDocumentReader::damaged(const QString &detail)
{
    return fail(QStringLiteral("The workbook file is damaged: %1.").arg(detail));
}

// A reference past the end of a file whose size is no whole number of sectors most likely
// comes from a file that was cut short, by a failed download or copy.
bool CompoundDocumentReader::pastEnd(const QString &detail)
{
    return damaged((m_size % m_sectorSize) != 0 ? QStringLiteral("it is cut short") : detail);
}

quint32 CompoundDocumentReader::word(const uchar *at) const
{
    return qFromLittleEndian<quint32>(at);
}

// Sector `index` as a pointer into the file, or null when it lies past the end; the last
// sector of a file may be short, which copySectors() allows for.
const uchar *CompoundDocumentReader::sector(quint32 index) const
{
    const qint64 offset = (qint64(index) + 1) * m_sectorSize;
    return index < m_sectorCount && offset < m_size ? m_data + offset : nullptr;
}

bool CompoundDocumentReader::open(const QString &path)
{
    m_error.clear();
    m_fat.clear();
    m_entries.clear();
    m_rootStreams.clear();
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("Cannot open the file: %1.").arg(m_file.errorString()));
    m_size = m_file.size();
    m_data = m_size > 0 ? m_file.map(0, m_size) : nullptr;
    if (!m_data && m_size > 0) {
        m_copy = m_file.readAll();
        m_data = reinterpret_cast<const uchar *>(m_copy.constData());
        m_size = m_copy.size();
    }
    if (m_size == 0)
        return fail(QStringLiteral("The file is empty."));
    return readHeader() && readAllocationTable() && readDirectory();
}

bool CompoundDocumentReader::readHeader()
{
    if (m_size < 8 || std::memcmp(m_data, Signature, 8) != 0)
        return fail(notAWorkbook(m_data, m_size));
    if (m_size < HeaderSize)
        return damaged(QStringLiteral("it is cut short"));
    const uchar *h = m_data;
    m_majorVersion = qFromLittleEndian<quint16>(h + 26);
    const int sectorShift = qFromLittleEndian<quint16>(h + 30);
    const int miniShift = qFromLittleEndian<quint16>(h + 32);
    if (qFromLittleEndian<quint16>(h + 28) != 0xFFFE
        || !((m_majorVersion == 3 && sectorShift == 9)
             || (m_majorVersion == 4 && sectorShift == 12))
        || miniShift != 6)
        return damaged(QStringLiteral("its header is not valid"));
    m_sectorSize = 1 << sectorShift;
    m_sectorCount = quint32((m_size - 1) / m_sectorSize); // the header takes the first one
    m_fatSectors = word(h + 44);
    m_directoryStart = word(h + 48);
    m_miniCutoff = word(h + 56);
    m_miniFatStart = word(h + 60);
    m_difatStart = word(h + 68);
    m_difatSectors = word(h + 72);
    if (m_fatSectors == 0)
        return damaged(QStringLiteral("its header is not valid"));
    if (m_fatSectors > m_sectorCount || m_difatSectors > m_sectorCount)
        return damaged(QStringLiteral("it is cut short"));
    return true;
}

bool CompoundDocumentReader::readAllocationTable()
{
    std::vector<quint32> fatSectors;
    fatSectors.reserve(m_fatSectors);
    for (int i = 0; i < HeaderDifatEntries && fatSectors.size() < m_fatSectors; ++i)
        fatSectors.push_back(word(m_data + 76 + 4 * i));
    const int perDifat = m_sectorSize / 4 - 1;
    quint32 next = m_difatStart;
    std::vector<bool> seen(m_sectorCount);
    while (fatSectors.size() < m_fatSectors) {
        const uchar *at = sector(next);
        if (!at)
            return pastEnd(QStringLiteral("the list of its allocation sectors is broken"));
        if (seen[next])
            return damaged(QStringLiteral("the list of its allocation sectors is broken"));
        seen[next] = true;
        for (int i = 0; i < perDifat && fatSectors.size() < m_fatSectors; ++i)
            fatSectors.push_back(word(at + 4 * i));
        next = word(at + 4 * perDifat);
    }
    const int perSector = m_sectorSize / 4;
    m_fat.assign(size_t(m_fatSectors) * perSector, FreeSector);
    for (size_t s = 0; s < fatSectors.size(); ++s) {
        const uchar *at = sector(fatSectors[s]);
        if (!at)
            return pastEnd(QStringLiteral("its allocation table lies past the end of the file"));
        const qint64 available = std::min<qint64>(m_sectorSize, m_data + m_size - at) / 4;
        for (qint64 i = 0; i < available; ++i)
            m_fat[s * perSector + size_t(i)] = word(at + 4 * i);
    }
    return true;
}

// Follows a chain of `table` from `start` for at most `limit` sectors (a chain may run on
// past what its stream needs): every link must name a sector of the file, none twice.
bool CompoundDocumentReader::chain(const std::vector<quint32> &table, quint32 start, quint64 limit,
                                   std::vector<quint32> *out, const char *what)
{
    out->clear();
    std::vector<bool> seen(table.size());
    for (quint32 at = start; at != EndOfChain && out->size() < limit;) {
        if (at >= table.size() || at == FreeSector || at == FatSector || at == DifatSector)
            return pastEnd(QStringLiteral("the chain of its %1 points past the end of the file")
                               .arg(QLatin1String(what)));
        if (seen[at])
            return damaged(
                QStringLiteral("the chain of its %1 runs in a loop").arg(QLatin1String(what)));
        seen[at] = true;
        out->push_back(at);
        at = table[at];
    }
    return true;
}

bool CompoundDocumentReader::copySectors(const std::vector<quint32> &sectors, quint64 size,
                                         QByteArray *out)
{
    out->resize(int(size));
    char *to = out->data();
    quint64 done = 0;
    for (quint32 index : sectors) {
        if (done >= size)
            break;
        const uchar *at = sector(index);
        const quint64 wanted = std::min<quint64>(m_sectorSize, size - done);
        if (!at || m_data + m_size - at < qint64(wanted))
            return pastEnd(QStringLiteral("a stream lies past the end of the file"));
        std::memcpy(to + done, at, wanted);
        done += wanted;
    }
    if (done < size)
        return damaged(QStringLiteral("a stream is shorter than its size says"));
    return true;
}

bool CompoundDocumentReader::readDirectory()
{
    std::vector<quint32> sectors;
    if (!chain(m_fat, m_directoryStart, m_sectorCount, &sectors, "directory"))
        return false;
    QByteArray directory;
    if (!copySectors(sectors, quint64(sectors.size()) * m_sectorSize, &directory))
        return false;
    const int count = directory.size() / DirectoryEntrySize;
    m_entries.resize(size_t(count));
    for (int i = 0; i < count; ++i) {
        const uchar *e
            = reinterpret_cast<const uchar *>(directory.constData()) + i * DirectoryEntrySize;
        Entry &entry = m_entries[size_t(i)];
        const int nameBytes = std::min<int>(qFromLittleEndian<quint16>(e + 64), 64);
        entry.name = QString::fromUtf16(reinterpret_cast<const char16_t *>(e),
                                        std::max(0, nameBytes / 2 - 1));
        entry.type = e[66];
        entry.left = word(e + 68);
        entry.right = word(e + 72);
        entry.child = word(e + 76);
        entry.start = word(e + 116);
        entry.size = word(e + 120);
        if (m_majorVersion == 4)
            entry.size |= quint64(word(e + 124)) << 32;
    }
    if (m_entries.empty() || m_entries[0].type != 5)
        return damaged(QStringLiteral("its directory has no root"));
    // The root's children form a tree through their left and right links.
    std::vector<bool> seen(m_entries.size());
    std::vector<quint32> pending {m_entries[0].child};
    while (!pending.empty()) {
        const quint32 index = pending.back();
        pending.pop_back();
        if (index == NoStream)
            continue;
        if (index >= m_entries.size() || seen[index])
            return damaged(QStringLiteral("its directory is broken"));
        seen[index] = true;
        const Entry &entry = m_entries[index];
        if (entry.type == 2)
            m_rootStreams.push_back(int(index));
        pending.push_back(entry.left);
        pending.push_back(entry.right);
    }
    return true;
}

QStringList CompoundDocumentReader::streamNames() const
{
    QStringList names;
    for (int index : m_rootStreams)
        names.append(m_entries[size_t(index)].name);
    return names;
}

bool CompoundDocumentReader::readStream(const QString &name, QByteArray *out)
{
    const Entry *found = nullptr;
    for (int index : m_rootStreams) {
        if (m_entries[size_t(index)].name.compare(name, Qt::CaseInsensitive) == 0)
            found = &m_entries[size_t(index)];
    }
    if (!found)
        return fail(QStringLiteral("The file has no stream '%1'.").arg(name));
    if (found->size > MaxStreamSize || found->size > quint64(m_size))
        return damaged(QStringLiteral("a stream is larger than the file"));
    if (found->size < m_miniCutoff)
        return readMiniStream(*found, out);
    std::vector<quint32> sectors;
    const quint64 needed = (found->size + m_sectorSize - 1) / m_sectorSize;
    return chain(m_fat, found->start, std::max<quint64>(needed, 1), &sectors, "workbook stream")
        && copySectors(sectors, found->size, out);
}

// Small streams live in 64-byte pieces inside the root's own stream, with their own table.
bool CompoundDocumentReader::readMiniStream(const Entry &entry, QByteArray *out)
{
    const Entry &root = m_entries[0];
    std::vector<quint32> sectors;
    if (root.size > MaxStreamSize)
        return damaged(QStringLiteral("its small-stream area is larger than the file"));
    QByteArray container;
    if (!chain(m_fat, root.start, m_sectorCount, &sectors, "small-stream area")
        || !copySectors(sectors, root.size, &container))
        return false;
    QByteArray tableBytes;
    if (!chain(m_fat, m_miniFatStart, m_sectorCount, &sectors, "small-stream table")
        || !copySectors(sectors, quint64(sectors.size()) * m_sectorSize, &tableBytes))
        return false;
    std::vector<quint32> miniFat(size_t(tableBytes.size() / 4));
    for (size_t i = 0; i < miniFat.size(); ++i)
        miniFat[i] = word(reinterpret_cast<const uchar *>(tableBytes.constData()) + 4 * i);
    const quint64 needed = (entry.size + MiniSectorSize - 1) / MiniSectorSize;
    if (!chain(miniFat, entry.start, std::max<quint64>(needed, 1), &sectors, "small stream"))
        return false;
    out->resize(int(entry.size));
    quint64 done = 0;
    for (quint32 index : sectors) {
        const quint64 wanted = std::min<quint64>(MiniSectorSize, entry.size - done);
        if (quint64(index) * MiniSectorSize + wanted > quint64(container.size()))
            return damaged(QStringLiteral("a small stream lies past its area"));
        std::memcpy(out->data() + done, container.constData() + index * MiniSectorSize, wanted);
        done += wanted;
        if (done >= entry.size)
            break;
    }
    if (done < entry.size)
        return damaged(QStringLiteral("a stream is shorter than its size says"));
    return true;
}

// ---------------------------------------------------------------------------------------------

namespace {

void put32(QByteArray &out, int offset, quint32 value)
{
    qToLittleEndian<quint32>(value, out.data() + offset);
}

void put16(QByteArray &out, int offset, quint16 value)
{
    qToLittleEndian<quint16>(value, out.data() + offset);
}

QByteArray directoryEntry(const QString &name, int type, quint32 child, quint32 start, quint32 size)
{
    QByteArray entry(DirectoryEntrySize, '\0');
    if (type == 0) {
        put32(entry, 68, NoStream);
        put32(entry, 72, NoStream);
        put32(entry, 76, NoStream);
        return entry;
    }
    for (int i = 0; i < name.size() && i < 31; ++i)
        put16(entry, 2 * i, name.at(i).unicode());
    put16(entry, 64, quint16((std::min<int>(name.size(), 31) + 1) * 2));
    entry[66] = char(type);
    entry[67] = 1; // black, as every node of a one-node tree
    put32(entry, 68, NoStream);
    put32(entry, 72, NoStream);
    put32(entry, 76, child);
    put32(entry, 116, start);
    put32(entry, 120, size);
    return entry;
}

} // namespace

namespace CompoundDocumentWriter {

bool write(QIODevice &out, const QString &streamName, const QByteArray &stream)
{
    constexpr int SectorSize = 512;
    constexpr int PerSector = SectorSize / 4;
    const quint32 size = quint32(std::max(stream.size(), 4096));
    const quint32 streamSectors = (size + SectorSize - 1) / SectorSize;
    // The allocation table covers every sector, its own included, and beyond 109 of its
    // sectors their list continues in sectors of its own.
    quint32 fatSectors = 1;
    quint32 difatSectors = 0;
    for (;;) {
        difatSectors = fatSectors > quint32(HeaderDifatEntries)
            ? (fatSectors - HeaderDifatEntries + PerSector - 2) / (PerSector - 1)
            : 0;
        const quint32 total = streamSectors + fatSectors + difatSectors + 1;
        if (quint64(fatSectors) * PerSector >= total)
            break;
        ++fatSectors;
    }
    const quint32 firstFat = streamSectors;
    const quint32 firstDifat = firstFat + fatSectors;
    const quint32 directorySector = firstDifat + difatSectors;

    QByteArray header(HeaderSize, '\0');
    std::memcpy(header.data(), Signature, 8);
    put16(header, 24, 0x003E);
    put16(header, 26, 3);
    put16(header, 28, 0xFFFE);
    put16(header, 30, 9);
    put16(header, 32, 6);
    put32(header, 44, fatSectors);
    put32(header, 48, directorySector);
    put32(header, 56, 4096);
    put32(header, 60, EndOfChain);
    put32(header, 68, difatSectors ? firstDifat : EndOfChain);
    put32(header, 72, difatSectors);
    for (int i = 0; i < HeaderDifatEntries; ++i)
        put32(header, 76 + 4 * i, quint32(i) < fatSectors ? firstFat + quint32(i) : FreeSector);
    if (out.write(header) != header.size() || out.write(stream) != stream.size())
        return false;
    const qint64 padding = qint64(streamSectors) * SectorSize - stream.size();
    if (padding > 0 && out.write(QByteArray(int(padding), '\0')) != padding)
        return false;

    QByteArray fat(int(fatSectors * SectorSize), '\xFF');
    for (quint32 i = 0; i < streamSectors; ++i)
        put32(fat, int(4 * i), i + 1 < streamSectors ? i + 1 : EndOfChain);
    for (quint32 i = 0; i < fatSectors; ++i)
        put32(fat, int(4 * (firstFat + i)), FatSector);
    for (quint32 i = 0; i < difatSectors; ++i)
        put32(fat, int(4 * (firstDifat + i)), DifatSector);
    put32(fat, int(4 * directorySector), EndOfChain);
    if (out.write(fat) != fat.size())
        return false;

    QByteArray difat(int(difatSectors * SectorSize), '\xFF');
    quint32 listed = HeaderDifatEntries;
    for (quint32 d = 0; d < difatSectors; ++d) {
        for (int i = 0; i < PerSector - 1 && listed < fatSectors; ++i, ++listed)
            put32(difat, int(d * SectorSize + 4 * i), firstFat + listed);
        put32(difat, int(d * SectorSize + 4 * (PerSector - 1)),
              d + 1 < difatSectors ? firstDifat + d + 1 : EndOfChain);
    }
    if (out.write(difat) != difat.size())
        return false;

    const QByteArray directory = directoryEntry(QStringLiteral("Root Entry"), 5, 1, EndOfChain, 0)
        + directoryEntry(streamName, 2, NoStream, 0, size) + directoryEntry(QString(), 0, 0, 0, 0)
        + directoryEntry(QString(), 0, 0, 0, 0);
    return out.write(directory) == directory.size();
}

} // namespace CompoundDocumentWriter
