#pragma once

#include <QByteArray>
#include <QString>

#include <quazip/quazipfile.h>

#include <functional>

class QuaZip;
class QXmlStreamReader;

// Pieces shared by the writers of workbook packages: escaping, zip entries written from a
// buffer, relationships, and the streaming copy of an XML part with changes.
namespace XlsxParts {

extern const char *const MainNamespace;
extern const char *const RelationshipNamespace;
extern const char *const PackageRelationships;
extern const char *const XmlDeclaration;

// Text for an XML element or attribute. Characters XML can't hold are written as the
// "_xHHHH_" escapes of Office Open XML, and an underscore that would read as the start of one
// is escaped itself.
void appendEscaped(QByteArray &out, const QString &text);
// Plain XML escaping, for text that is copied as it stood in a part.
void appendXmlText(QByteArray &out, QStringView text, bool attribute);
// "B3" without going through QString: written once per cell.
void appendReference(QByteArray &out, int row, int col);

QByteArray relationship(const QByteArray &id, const QByteArray &type, const QString &target,
                        bool external = false);
QByteArray relationships(const QByteArray &body);

// One entry of the package being written, filled from a buffer that the caller empties into
// the entry now and then with maybeFlush().
class PartWriter
{
public:
    PartWriter(QuaZip &zip, const QString &name);
    ~PartWriter() { close(); }
    PartWriter(const PartWriter &) = delete;
    PartWriter &operator=(const PartWriter &) = delete;

    QByteArray &buffer() { return m_buffer; }
    void maybeFlush();
    bool close();

private:
    void flush();

    QuaZipFile m_file;
    QByteArray m_buffer;
    bool m_ok = false;
};

bool writeWhole(QuaZip &zip, const QString &name, const QByteArray &content);

// Copies an entry's compressed bytes unchanged from one package into another.
bool copyRaw(QuaZip &from, const QString &name, QuaZip &to);

// The streaming copy of an XML part. The hook sees each start tag before it is copied and
// says what to do with the element; `end` sees each end tag before it is copied, to add
// children at the end of an element. Both write into the buffer given.
enum class EchoAction {
    Copy, // copy the tag and go on into its children
    Skip, // leave out the element and its children (the hook may have written a replacement)
    TagWritten // the hook wrote the start tag itself; go on into the children
};
struct EchoHooks
{
    std::function<EchoAction(QXmlStreamReader &reader, QByteArray &out)> start;
    std::function<void(QXmlStreamReader &reader, QByteArray &out)> end;
};
// The start tag of the reader's current element with its namespace declarations and
// attributes, one attribute's value replaced (or added) when `name` is given.
void appendStartTag(QByteArray &out, const QXmlStreamReader &reader,
                    const QString &name = QString(), const QString &value = QString());
bool echoPart(QuaZip &from, const QString &part, PartWriter &to, const EchoHooks &hooks,
              QString *error);
// The same for a worksheet part whose <sheetData> the hook replaces: its rows are skipped
// unread, and the hook sees an empty <sheetData>.
bool echoSheetPart(QuaZip &from, const QString &part, PartWriter &to, const EchoHooks &hooks,
                   QString *error);

} // namespace XlsxParts
