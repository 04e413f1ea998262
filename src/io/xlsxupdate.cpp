// Saves a workbook that was loaded and then changed. Only the parts that changed are written
// anew: each changed sheet, its relationships, and the styles, workbook and content types when
// formats or sheets were added. Every other part is copied with its compressed bytes
// untouched, so charts, pivot tables, defined names and the sheets not written survive as
// they were. Parts that are rewritten are streamed through with only their changed elements
// replaced, keeping what this program doesn't understand.

#include "io/xlsxbook.h"
#include "io/xlsxpackage.h"
#include "io/xlsxparts.h"

#include <QSaveFile>
#include <QSet>
#include <QXmlStreamReader>

#include <quazip/quazip.h>

using namespace XlsxParts;

namespace {

// Elements of a worksheet that come after <mergeCells> and after <hyperlinks>, in the order
// the schema wants them; an element added must go before the first of these present.
const QStringList AfterHyperlinks
    = {QStringLiteral("printOptions"),     QStringLiteral("pageMargins"),
       QStringLiteral("pageSetup"),        QStringLiteral("headerFooter"),
       QStringLiteral("rowBreaks"),        QStringLiteral("colBreaks"),
       QStringLiteral("customProperties"), QStringLiteral("cellWatches"),
       QStringLiteral("ignoredErrors"),    QStringLiteral("smartTags"),
       QStringLiteral("drawing"),          QStringLiteral("legacyDrawing"),
       QStringLiteral("legacyDrawingHF"),  QStringLiteral("drawingHF"),
       QStringLiteral("picture"),          QStringLiteral("oleObjects"),
       QStringLiteral("controls"),         QStringLiteral("webPublishItems"),
       QStringLiteral("tableParts"),       QStringLiteral("extLst")};
const QStringList AfterMergeCells
    = QStringList {QStringLiteral("phoneticPr"), QStringLiteral("conditionalFormatting"),
                   QStringLiteral("dataValidations"), QStringLiteral("hyperlinks")}
    + AfterHyperlinks;

// Ids of the relationships added here: a prefix that no writer of workbooks is known to use,
// so they don't clash with the ids already in a part.
const QByteArray LinkIdPrefix = "rIdTabulonLink";
const QByteArray SheetIdPrefix = "rIdTabulonSheet";
const QByteArray StylesId = "rIdTabulonStyles";

const char *const WorksheetContentType
    = "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml";
const char *const StylesContentType
    = "application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml";

QString folderOf(const QString &part)
{
    const int slash = part.lastIndexOf(QLatin1Char('/'));
    return slash < 0 ? QString() : part.left(slash);
}

// The target of a relationship from `source` to `part`, both in the same folder tree.
QString relativeTarget(const QString &source, const QString &part)
{
    const QString folder = folderOf(source);
    if (folder.isEmpty())
        return part;
    if (part.startsWith(folder + QLatin1Char('/')))
        return part.mid(folder.size() + 1);
    return QLatin1Char('/') + part;
}

bool typeIs(const QXmlStreamReader &reader, QLatin1String type)
{
    return reader.attributes().value(QLatin1String("Type")).endsWith(QLatin1Char('/') + type);
}

} // namespace

class XlsxBookUpdate
{
public:
    XlsxBookUpdate(XlsxBook &book, QuaZip &from, QuaZip &to)
        : m_book(book)
        , m_from(from)
        , m_to(to)
    { }

    bool run(QString *error);

private:
    QString entry(const QString &part) const { return m_entries.value(part.toLower()); }
    void plan();
    bool writeSheet(const XlsxSheet &sheet, const QString &part);
    bool writeSheetRelationships(const QString &part, const QByteArray &links);
    bool writeStyles();
    bool writeWorkbook();
    bool writeWorkbookRelationships();
    bool writeContentTypes();
    QByteArray newStylesXml(QByteArray *numberFormats, QByteArray *fonts, int *fontCount,
                            int *numberFormatCount) const;

    XlsxBook &m_book;
    QuaZip &m_from;
    QuaZip &m_to;
    QString *m_error = nullptr;
    // Entry names of the package by their lower-case form: part names are matched without
    // regard to case.
    QHash<QString, QString> m_entries;
    QHash<QString, const XlsxSheet *> m_changedSheets; // by entry name
    QList<QPair<const XlsxSheet *, QString>> m_newSheets; // with their part names
    QString m_calcChain;
    bool m_stylesChanged = false;
    bool m_stylesAdded = false;
};

bool XlsxBookUpdate::run(QString *error)
{
    m_error = error;
    const QStringList names = m_from.getFileNameList();
    for (const QString &name : names)
        m_entries.insert(name.toLower(), name);
    plan();
    const bool workbookChanged = !m_newSheets.isEmpty() || !m_calcChain.isEmpty();
    const QString workbookRelationships = XlsxPackage::relationshipsPart(m_book.m_workbookPart);
    for (const QString &name : names) {
        const QString lower = name.toLower();
        bool ok = true;
        if (m_changedSheets.contains(name)) {
            ok = writeSheet(*m_changedSheets.value(name), name);
        } else if (lower == m_calcChain.toLower()) {
            continue; // computed again by the spreadsheet from the formulas
        } else if (m_stylesChanged && lower == m_book.m_stylesPart.toLower()) {
            ok = writeStyles();
        } else if (workbookChanged && lower == m_book.m_workbookPart.toLower()) {
            ok = writeWorkbook();
        } else if ((workbookChanged || m_stylesAdded) && lower == workbookRelationships.toLower()) {
            ok = writeWorkbookRelationships();
        } else if ((workbookChanged || m_stylesAdded)
                   && lower == QLatin1String("[content_types].xml")) {
            ok = writeContentTypes();
        } else {
            bool rewritten = false;
            for (auto it = m_changedSheets.cbegin(); it != m_changedSheets.cend(); ++it) {
                if (lower == XlsxPackage::relationshipsPart(it.key()).toLower())
                    rewritten = true; // written with its sheet
            }
            if (!rewritten && !copyRaw(m_from, name, m_to)) {
                *error = QStringLiteral("Part '%1' could not be copied.").arg(name);
                return false;
            }
        }
        if (!ok) {
            if (error->isEmpty())
                *error = QStringLiteral("Part '%1' could not be written.").arg(name);
            return false;
        }
    }
    for (const auto &added : qAsConst(m_newSheets)) {
        if (!writeSheet(*added.first, added.second))
            return false;
    }
    if (m_stylesAdded && !writeWhole(m_to, m_book.m_stylesPart, m_book.stylesXml())) {
        *error = QStringLiteral("The styles could not be written.");
        return false;
    }
    return true;
}

void XlsxBookUpdate::plan()
{
    const QString worksheets = folderOf(m_book.m_workbookPart).isEmpty()
        ? QStringLiteral("worksheets")
        : folderOf(m_book.m_workbookPart) + QStringLiteral("/worksheets");
    int number = 1;
    for (int i = 0; i < m_book.sheetCount(); ++i) {
        XlsxSheet *sheet = m_book.m_sheets.at(size_t(i)).get();
        if (i < m_book.m_loadedSheetCount) {
            const QString name = entry(sheet->partName());
            if (sheet->isChanged() && !name.isEmpty())
                m_changedSheets.insert(name, sheet);
            continue;
        }
        QString part;
        do {
            part = QStringLiteral("%1/sheet%2.xml").arg(worksheets).arg(number++);
        } while (m_entries.contains(part.toLower()));
        sheet->setPartName(part);
        m_newSheets.append({sheet, part});
    }
    if (!m_changedSheets.isEmpty()) {
        QString error;
        const auto relationships
            = XlsxPackage::readRelationships(m_from, m_book.m_workbookPart, &error);
        for (const XlsxPackage::Relationship &relationship : relationships) {
            if (relationship.type == QLatin1String("calcChain")
                && !entry(relationship.target).isEmpty())
                m_calcChain = entry(relationship.target);
        }
    }
    if (m_book.m_formats.size() > m_book.m_loadedFormatCount) {
        m_stylesChanged = !m_book.m_stylesPart.isEmpty() && !entry(m_book.m_stylesPart).isEmpty();
        if (!m_stylesChanged) {
            m_stylesAdded = true;
            m_book.m_stylesPart = folderOf(m_book.m_workbookPart) + QStringLiteral("/styles.xml");
        } else {
            m_book.m_stylesPart = entry(m_book.m_stylesPart);
        }
    }
}

bool XlsxBookUpdate::writeSheet(const XlsxSheet &sheet, const QString &part)
{
    QByteArray links;
    const bool isNew = !m_entries.contains(part.toLower());
    if (isNew) {
        PartWriter writer(m_to, part);
        QByteArray &out = writer.buffer();
        out = QByteArray(XmlDeclaration) + "<worksheet xmlns=\"" + MainNamespace + "\" xmlns:r=\""
            + RelationshipNamespace + "\">" + sheet.dimensionXml() + sheet.columnsXml()
            + "<sheetData>";
        sheet.appendRowsXml(out, [&] { writer.maybeFlush(); });
        out += "</sheetData>" + sheet.mergesXml() + sheet.hyperlinksXml(&links, LinkIdPrefix)
            + "</worksheet>";
        if (!writer.close())
            return false;
        return links.isEmpty() || writeSheetRelationships(part, links);
    }

    PartWriter writer(m_to, part);
    int depth = 0;
    bool columnsWritten = !sheet.columnsChanged();
    bool mergesWritten = false;
    bool linksWritten = false;
    auto writeMerges = [&](QByteArray &out) {
        out += sheet.mergesXml();
        mergesWritten = true;
    };
    auto writeLinks = [&](QByteArray &out) {
        out += sheet.hyperlinksXml(&links, LinkIdPrefix);
        linksWritten = true;
    };
    EchoHooks hooks;
    hooks.start = [&](QXmlStreamReader &reader, QByteArray &out) {
        if (depth != 1) {
            ++depth;
            return EchoAction::Copy;
        }
        const QString name = reader.name().toString();
        if (!mergesWritten && AfterMergeCells.contains(name) && name != QLatin1String("hyperlinks"))
            writeMerges(out);
        if (!linksWritten && AfterHyperlinks.contains(name))
            writeLinks(out);
        if (!columnsWritten && name == QLatin1String("sheetData")) {
            out += sheet.columnsXml();
            columnsWritten = true;
        }
        if (name == QLatin1String("dimension")) {
            out += sheet.dimensionXml();
        } else if (name == QLatin1String("cols") && sheet.columnsChanged()) {
            out += sheet.columnsXml();
            columnsWritten = true;
        } else if (name == QLatin1String("sheetData")) {
            out += "<sheetData>";
            sheet.appendRowsXml(out, [&] { writer.maybeFlush(); });
            out += "</sheetData>";
        } else if (name == QLatin1String("mergeCells")) {
            writeMerges(out);
        } else if (name == QLatin1String("hyperlinks")) {
            if (!mergesWritten)
                writeMerges(out);
            writeLinks(out);
        } else {
            ++depth;
            return EchoAction::Copy;
        }
        return EchoAction::Skip;
    };
    hooks.end = [&](QXmlStreamReader &, QByteArray &out) {
        if (--depth == 0) {
            if (!mergesWritten)
                writeMerges(out);
            if (!linksWritten)
                writeLinks(out);
        }
    };
    if (!echoSheetPart(m_from, part, writer, hooks, m_error) || !writer.close())
        return false;
    return writeSheetRelationships(part, links);
}

// The sheet's relationships without its old links, and with the new ones.
bool XlsxBookUpdate::writeSheetRelationships(const QString &part, const QByteArray &links)
{
    const QString relationshipsPart = XlsxPackage::relationshipsPart(part);
    const QString existing = entry(relationshipsPart);
    if (existing.isEmpty())
        return links.isEmpty() || writeWhole(m_to, relationshipsPart, relationships(links));
    PartWriter writer(m_to, existing);
    EchoHooks hooks;
    hooks.start = [](QXmlStreamReader &reader, QByteArray &) {
        const bool link = reader.name() == QLatin1String("Relationship")
            && typeIs(reader, QLatin1String("hyperlink"));
        return link ? EchoAction::Skip : EchoAction::Copy;
    };
    hooks.end = [&](QXmlStreamReader &reader, QByteArray &out) {
        if (reader.name() == QLatin1String("Relationships"))
            out += links;
    };
    return echoPart(m_from, existing, writer, hooks, m_error) && writer.close();
}

bool XlsxBookUpdate::writeWorkbook()
{
    PartWriter writer(m_to, entry(m_book.m_workbookPart));
    int maxSheetId = 0;
    EchoHooks hooks;
    hooks.start = [&](QXmlStreamReader &reader, QByteArray &) {
        if (reader.name() == QLatin1String("sheet"))
            maxSheetId
                = std::max(maxSheetId, reader.attributes().value(QLatin1String("sheetId")).toInt());
        return EchoAction::Copy;
    };
    hooks.end = [&](QXmlStreamReader &reader, QByteArray &out) {
        if (reader.name() != QLatin1String("sheets"))
            return;
        for (int i = 0; i < m_newSheets.size(); ++i) {
            out += QByteArray("<sheet xmlns:r=\"") + RelationshipNamespace + "\" name=\"";
            appendEscaped(out, m_newSheets.at(i).first->name());
            out += "\" sheetId=\"" + QByteArray::number(++maxSheetId) + "\" r:id=\"" + SheetIdPrefix
                + QByteArray::number(i + 1) + "\"/>";
        }
    };
    return echoPart(m_from, entry(m_book.m_workbookPart), writer, hooks, m_error) && writer.close();
}

bool XlsxBookUpdate::writeWorkbookRelationships()
{
    const QString part = entry(XlsxPackage::relationshipsPart(m_book.m_workbookPart));
    PartWriter writer(m_to, part);
    EchoHooks hooks;
    hooks.start = [&](QXmlStreamReader &reader, QByteArray &) {
        const bool calcChain = !m_calcChain.isEmpty()
            && reader.name() == QLatin1String("Relationship")
            && typeIs(reader, QLatin1String("calcChain"));
        return calcChain ? EchoAction::Skip : EchoAction::Copy;
    };
    hooks.end = [&](QXmlStreamReader &reader, QByteArray &out) {
        if (reader.name() != QLatin1String("Relationships"))
            return;
        for (int i = 0; i < m_newSheets.size(); ++i)
            out += relationship(SheetIdPrefix + QByteArray::number(i + 1), "worksheet",
                                relativeTarget(m_book.m_workbookPart, m_newSheets.at(i).second));
        if (m_stylesAdded)
            out += relationship(StylesId, "styles",
                                relativeTarget(m_book.m_workbookPart, m_book.m_stylesPart));
    };
    return echoPart(m_from, part, writer, hooks, m_error) && writer.close();
}

bool XlsxBookUpdate::writeContentTypes()
{
    const QString part = entry(QStringLiteral("[Content_Types].xml"));
    PartWriter writer(m_to, part);
    auto override = [](QByteArray &out, const QString &name, const char *type) {
        out += "<Override PartName=\"/";
        appendEscaped(out, name);
        out += QByteArray("\" ContentType=\"") + type + "\"/>";
    };
    EchoHooks hooks;
    hooks.start = [&](QXmlStreamReader &reader, QByteArray &) {
        const bool calcChain = !m_calcChain.isEmpty() && reader.name() == QLatin1String("Override")
            && reader.attributes()
                    .value(QLatin1String("PartName"))
                    .compare(QLatin1Char('/') + m_calcChain, Qt::CaseInsensitive)
                == 0;
        return calcChain ? EchoAction::Skip : EchoAction::Copy;
    };
    hooks.end = [&](QXmlStreamReader &reader, QByteArray &out) {
        if (reader.name() != QLatin1String("Types"))
            return;
        for (const auto &added : qAsConst(m_newSheets))
            override(out, added.second, WorksheetContentType);
        if (m_stylesAdded)
            override(out, m_book.m_stylesPart, StylesContentType);
    };
    return echoPart(m_from, part, writer, hooks, m_error) && writer.close();
}

// The number formats, fonts and cell formats added since loading, as elements to append to
// the lists of the styles part; fonts and number formats are numbered after the loaded ones.
QByteArray XlsxBookUpdate::newStylesXml(QByteArray *numberFormats, QByteArray *fonts,
                                        int *fontCount, int *numberFormatCount) const
{
    QList<QPair<bool, int>> newFonts;
    QHash<QString, int> codes;
    QByteArray xfs;
    for (int i = m_book.m_loadedFormatCount; i < m_book.m_formats.size(); ++i) {
        const ExcelFormat &format = m_book.m_formats.at(i);
        // The plain font is the book's own first font.
        int font = 0;
        const QPair<bool, int> key(format.bold, format.fontColor);
        if (format.bold || format.fontColor) {
            if (!newFonts.contains(key)) {
                newFonts.append(key);
                *fonts += "<font>";
                if (format.bold)
                    *fonts += "<b/>";
                *fonts += "<sz val=\"11\"/>";
                if (format.fontColor)
                    *fonts += "<color indexed=\"" + QByteArray::number(format.fontColor) + "\"/>";
                *fonts += "<name val=\"Calibri\"/><family val=\"2\"/></font>";
            }
            font = m_book.m_loadedFontCount + newFonts.indexOf(key);
        }
        int numberFormat = format.numberFormat;
        if (!format.numberFormatCode.isEmpty()) {
            if (!codes.contains(format.numberFormatCode)) {
                const int id = m_book.m_maxNumberFormatId + 1 + codes.size();
                codes.insert(format.numberFormatCode, id);
                *numberFormats
                    += "<numFmt numFmtId=\"" + QByteArray::number(id) + "\" formatCode=\"";
                appendEscaped(*numberFormats, format.numberFormatCode);
                *numberFormats += "\"/>";
            }
            numberFormat = codes.value(format.numberFormatCode);
        }
        xfs += "<xf numFmtId=\"" + QByteArray::number(numberFormat) + "\" fontId=\""
            + QByteArray::number(font)
            + "\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\" "
              "applyFont=\"1\"/>";
    }
    *fontCount = newFonts.size();
    *numberFormatCount = codes.size();
    return xfs;
}

bool XlsxBookUpdate::writeStyles()
{
    QByteArray numberFormats;
    QByteArray fonts;
    int fontCount = 0;
    int numberFormatCount = 0;
    const QByteArray xfs = newStylesXml(&numberFormats, &fonts, &fontCount, &numberFormatCount);
    PartWriter writer(m_to, m_book.m_stylesPart);
    int depth = 0;
    bool numberFormatsWritten = numberFormatCount == 0;
    EchoHooks hooks;
    hooks.start = [&](QXmlStreamReader &reader, QByteArray &out) {
        ++depth;
        if (depth != 2)
            return EchoAction::Copy;
        const auto name = reader.name();
        if (!numberFormatsWritten && name != QLatin1String("numFmts")) {
            out += "<numFmts count=\"" + QByteArray::number(numberFormatCount) + "\">"
                + numberFormats + "</numFmts>";
            numberFormatsWritten = true;
        }
        const int count = reader.attributes().value(QLatin1String("count")).toInt();
        if (name == QLatin1String("numFmts") && !numberFormatsWritten) {
            appendStartTag(out, reader, QStringLiteral("count"),
                           QString::number(count + numberFormatCount));
            return EchoAction::TagWritten;
        }
        if (name == QLatin1String("fonts")) {
            appendStartTag(out, reader, QStringLiteral("count"),
                           QString::number(m_book.m_loadedFontCount + fontCount));
            return EchoAction::TagWritten;
        }
        if (name == QLatin1String("cellXfs")) {
            appendStartTag(out, reader, QStringLiteral("count"),
                           QString::number(m_book.m_formats.size()));
            return EchoAction::TagWritten;
        }
        return EchoAction::Copy;
    };
    hooks.end = [&](QXmlStreamReader &reader, QByteArray &out) {
        if (depth-- != 2)
            return;
        const auto name = reader.name();
        if (name == QLatin1String("numFmts") && !numberFormatsWritten) {
            out += numberFormats;
            numberFormatsWritten = true;
        } else if (name == QLatin1String("fonts")) {
            out += fonts;
        } else if (name == QLatin1String("cellXfs")) {
            out += xfs;
        }
    };
    return echoPart(m_from, m_book.m_stylesPart, writer, hooks, m_error) && writer.close();
}

bool XlsxBook::saveChanges(const QString &path)
{
    QuaZip from(m_path);
    if (!from.open(QuaZip::mdUnzip)) {
        setError(QStringLiteral("The workbook can no longer be opened (error %1).")
                     .arg(from.getZipError()));
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        setError(file.errorString());
        return false;
    }
    QString error;
    bool ok = false;
    {
        QuaZip to(&file);
        to.setAutoClose(false); // QSaveFile commits only an open file
        if (to.open(QuaZip::mdCreate)) {
            ok = XlsxBookUpdate(*this, from, to).run(&error);
            to.close();
            ok = ok && to.getZipError() == ZIP_OK;
        }
    }
    from.close();
    if (!ok) {
        file.cancelWriting();
        setError(error.isEmpty() ? QStringLiteral("Unable to write the workbook.") : error);
        return false;
    }
    if (!file.commit()) {
        setError(file.errorString());
        return false;
    }
    return true;
}
