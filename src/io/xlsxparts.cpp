#include "io/xlsxparts.h"

#include "io/xlsxpackage.h"

#include <QXmlStreamReader>

#include <quazip/quazip.h>
#include <quazip/quazipfileinfo.h>
#include <quazip/quazipnewinfo.h>

namespace XlsxParts {

namespace {

constexpr int FlushBytes = 1 << 20;
// Deflate level 1: sheet XML is very repetitive, so it still shrinks about tenfold, at a
// fraction of the default level's time.
constexpr int CompressionLevel = 1;

} // namespace

const char *const MainNamespace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
const char *const RelationshipNamespace
    = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
const char *const PackageRelationships
    = "http://schemas.openxmlformats.org/package/2006/relationships";
const char *const XmlDeclaration
    = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

void appendEscaped(QByteArray &out, const QString &text)
{
    const int size = text.size();
    const QChar *data = text.constData();
    int plainStart = 0;
    auto flushPlain = [&](int end) {
        if (end > plainStart)
            out.append(QStringView(data + plainStart, end - plainStart).toUtf8());
    };
    for (int i = 0; i < size; ++i) {
        const ushort c = data[i].unicode();
        const char *entity = nullptr;
        QByteArray escape;
        switch (c) {
        case '&':
            entity = "&amp;";
            break;
        case '<':
            entity = "&lt;";
            break;
        case '>':
            entity = "&gt;";
            break;
        case '"':
            entity = "&quot;";
            break;
        case '_':
            if (i + 6 < size && data[i + 1] == QLatin1Char('x') && data[i + 6] == QLatin1Char('_'))
                entity = "_x005F_";
            break;
        case '\t':
        case '\n':
        case '\r':
            break;
        default:
            if (c < 0x20 || c == 0xFFFE || c == 0xFFFF)
                escape = QByteArray("_x")
                    + QByteArray::number(c, 16).rightJustified(4, '0').toUpper() + '_';
            break;
        }
        if (!entity && escape.isEmpty())
            continue;
        flushPlain(i);
        if (entity)
            out.append(entity);
        else
            out.append(escape);
        plainStart = i + 1;
    }
    flushPlain(size);
}

void appendXmlText(QByteArray &out, QStringView text, bool attribute)
{
    int plainStart = 0;
    auto flushPlain = [&](int end) {
        if (end > plainStart)
            out.append(text.mid(plainStart, end - plainStart).toUtf8());
        plainStart = end + 1;
    };
    for (int i = 0; i < text.size(); ++i) {
        const char *entity = nullptr;
        switch (text.at(i).unicode()) {
        case '&':
            entity = "&amp;";
            break;
        case '<':
            entity = "&lt;";
            break;
        case '>':
            entity = "&gt;";
            break;
        case '"':
            entity = attribute ? "&quot;" : nullptr;
            break;
        // A raw CR would be read back as a line feed, and in an attribute line breaks and tabs
        // would be read back as spaces.
        case '\r':
            entity = "&#13;";
            break;
        case '\n':
            entity = attribute ? "&#10;" : nullptr;
            break;
        case '\t':
            entity = attribute ? "&#9;" : nullptr;
            break;
        default:
            break;
        }
        if (!entity)
            continue;
        flushPlain(i);
        out.append(entity);
    }
    flushPlain(text.size());
}

void appendReference(QByteArray &out, int row, int col)
{
    char letters[4];
    int count = 0;
    for (int n = col + 1; n > 0; n = (n - 1) / 26)
        letters[count++] = char('A' + (n - 1) % 26);
    while (count > 0)
        out += letters[--count];
    out += QByteArray::number(row + 1);
}

QByteArray relationship(const QByteArray &id, const QByteArray &type, const QString &target,
                        bool external)
{
    QByteArray out = "<Relationship Id=\"" + id + "\" Type=\"" + RelationshipNamespace + '/' + type
        + "\" Target=\"";
    appendEscaped(out, target);
    out += '"';
    if (external)
        out += " TargetMode=\"External\"";
    return out + "/>";
}

QByteArray relationships(const QByteArray &body)
{
    return QByteArray(XmlDeclaration) + "<Relationships xmlns=\"" + PackageRelationships + "\">"
        + body + "</Relationships>";
}

PartWriter::PartWriter(QuaZip &zip, const QString &name)
    : m_file(&zip)
{
    QuaZipNewInfo info(name);
    info.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup
                        | QFileDevice::ReadOther);
    m_ok = m_file.open(QIODevice::WriteOnly, info, nullptr, 0, Z_DEFLATED, CompressionLevel);
    m_buffer.reserve(FlushBytes + 4096);
}

void PartWriter::maybeFlush()
{
    if (m_buffer.size() >= FlushBytes)
        flush();
}

bool PartWriter::close()
{
    if (!m_file.isOpen())
        return m_ok;
    flush();
    m_file.close();
    m_ok = m_ok && m_file.getZipError() == ZIP_OK;
    return m_ok;
}

void PartWriter::flush()
{
    if (m_ok && !m_buffer.isEmpty())
        m_ok = m_file.write(m_buffer) == m_buffer.size();
    m_buffer.clear();
}

bool writeWhole(QuaZip &zip, const QString &name, const QByteArray &content)
{
    PartWriter part(zip, name);
    part.buffer() = content;
    return part.close();
}

bool copyRaw(QuaZip &from, const QString &name, QuaZip &to)
{
    if (!from.setCurrentFile(name))
        return false;
    QuaZipFileInfo64 info;
    if (!from.getCurrentFileInfo(&info))
        return false;
    QuaZipFile in(&from);
    int method = 0;
    int level = 0;
    if (!in.open(QIODevice::ReadOnly, &method, &level, true))
        return false;
    const QByteArray data = in.readAll();
    in.close();
    if (in.getZipError() != UNZ_OK)
        return false;
    QuaZipFile out(&to);
    if (!out.open(QIODevice::WriteOnly, QuaZipNewInfo(info), nullptr, info.crc, method, level,
                  true))
        return false;
    const bool written = out.write(data) == data.size();
    out.close();
    return written && out.getZipError() == ZIP_OK;
}

void appendStartTag(QByteArray &out, const QXmlStreamReader &reader, const QString &name,
                    const QString &value)
{
    out += '<';
    out += reader.qualifiedName().toUtf8();
    for (const QXmlStreamNamespaceDeclaration &declaration : reader.namespaceDeclarations()) {
        out += declaration.prefix().isEmpty() ? QByteArray(" xmlns")
                                              : " xmlns:" + declaration.prefix().toUtf8();
        out += "=\"";
        appendXmlText(out, declaration.namespaceUri(), true);
        out += '"';
    }
    bool replaced = false;
    for (const QXmlStreamAttribute &attribute : reader.attributes()) {
        const bool match = !name.isEmpty() && attribute.qualifiedName() == name;
        out += ' ';
        out += attribute.qualifiedName().toUtf8();
        out += "=\"";
        appendXmlText(out, match ? QStringView(value) : attribute.value(), true);
        out += '"';
        replaced = replaced || match;
    }
    if (!name.isEmpty() && !replaced) {
        out += ' ' + name.toUtf8() + "=\"";
        appendXmlText(out, value, true);
        out += '"';
    }
    out += '>';
}

namespace {

// Copies the reader's tokens from the root element on, as the hooks say.
void echoReader(QXmlStreamReader &reader, PartWriter &to, const EchoHooks &hooks)
{
    QByteArray &out = to.buffer();
    out += XmlDeclaration;
    for (QXmlStreamReader::TokenType token = reader.tokenType(); !reader.atEnd();
         token = reader.readNext()) {
        switch (token) {
        case QXmlStreamReader::StartElement: {
            const EchoAction action = hooks.start ? hooks.start(reader, out) : EchoAction::Copy;
            if (action == EchoAction::Copy)
                appendStartTag(out, reader);
            else if (action == EchoAction::Skip)
                reader.skipCurrentElement();
            break;
        }
        case QXmlStreamReader::EndElement:
            if (hooks.end)
                hooks.end(reader, out);
            out += "</" + reader.qualifiedName().toUtf8() + '>';
            break;
        case QXmlStreamReader::Characters:
            appendXmlText(out, reader.text(), false);
            break;
        case QXmlStreamReader::Comment:
            out += "<!--" + reader.text().toUtf8() + "-->";
            break;
        case QXmlStreamReader::ProcessingInstruction:
            out += "<?" + reader.processingInstructionTarget().toUtf8() + ' '
                + reader.processingInstructionData().toUtf8() + "?>";
            break;
        default:
            break;
        }
        to.maybeFlush();
    }
}

// The part's bytes with the content of its <sheetData> left out, read a chunk at a time:
// the rows are most of a sheet, and they are written anew anyway.
bool readWithoutRows(QuaZip &zip, const QString &part, QByteArray *xml, QString *error)
{
    if (!zip.setCurrentFile(part, QuaZip::csInsensitive)) {
        *error = QStringLiteral("Part '%1' is missing.").arg(part);
        return false;
    }
    QuaZipFile file(&zip);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("Part '%1' can't be unpacked.").arg(part);
        return false;
    }
    QByteArray pending;
    QByteArray closing; // the end tag being looked for, once inside the rows
    bool done = false;
    while (true) {
        const QByteArray chunk = file.read(1 << 20);
        if (chunk.isEmpty())
            break;
        pending += chunk;
        if (done) {
            *xml += pending;
            pending.clear();
            continue;
        }
        if (closing.isEmpty()) {
            int at = pending.indexOf("sheetData");
            while (at > 0 && pending.at(at - 1) != '<' && pending.at(at - 1) != ':')
                at = pending.indexOf("sheetData", at + 1);
            const int open = at < 0 ? -1 : pending.lastIndexOf('<', at);
            const int tagEnd = open < 0 ? -1 : pending.indexOf('>', at);
            if (tagEnd < 0) {
                // Keep a tail that may hold the start of the tag.
                const int keep = std::min(pending.size(), 64);
                *xml += pending.left(pending.size() - keep);
                pending = pending.right(keep);
                continue;
            }
            const QByteArray name = pending.mid(open + 1, at + 9 - open - 1);
            *xml += pending.left(open) + '<' + name + "/>";
            if (pending.at(tagEnd - 1) == '/') {
                pending = pending.mid(tagEnd + 1);
                done = true;
                *xml += pending;
                pending.clear();
                continue;
            }
            closing = "</" + name + '>';
            pending = pending.mid(tagEnd + 1);
        }
        const int end = pending.indexOf(closing);
        if (end < 0) {
            pending = pending.right(closing.size());
            continue;
        }
        *xml += pending.mid(end + closing.size());
        pending.clear();
        done = true;
    }
    if (!done)
        *xml += pending;
    file.close();
    if (file.getZipError() != UNZ_OK || (!done && !closing.isEmpty())) {
        *error = QStringLiteral("Part '%1' is damaged.").arg(part);
        return false;
    }
    return true;
}

} // namespace

bool echoPart(QuaZip &from, const QString &part, PartWriter &to, const EchoHooks &hooks,
              QString *error)
{
    return XlsxPackage::readPart(
        from, part,
        [&](QXmlStreamReader &reader, QString *) {
            echoReader(reader, to, hooks);
            return true;
        },
        error);
}

bool echoSheetPart(QuaZip &from, const QString &part, PartWriter &to, const EchoHooks &hooks,
                   QString *error)
{
    QByteArray xml;
    if (!readWithoutRows(from, part, &xml, error))
        return false;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::DTD) {
            *error
                = QStringLiteral("Part '%1' declares a DTD, which workbooks never do.").arg(part);
            return false;
        }
        if (token == QXmlStreamReader::StartElement)
            break;
    }
    echoReader(reader, to, hooks);
    if (reader.hasError()) {
        *error = QStringLiteral("Part '%1' is not well-formed XML: %2")
                     .arg(part, reader.errorString());
        return false;
    }
    return true;
}

} // namespace XlsxParts
