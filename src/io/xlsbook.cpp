#include "io/xlsbook.h"

#include "io/biff.h"
#include "io/compounddocument.h"

#include <QSaveFile>

#include <algorithm>

std::unique_ptr<ExcelBook> createXlsBook()
{
    return std::make_unique<XlsBook>();
}

namespace {

struct ErrorName
{
    int code;
    const char *text;
};
const ErrorName ErrorNames[]
    = {{0x00, "#NULL!"}, {0x07, "#DIV/0!"}, {0x0F, "#VALUE!"}, {0x17, "#REF!"},
       {0x1D, "#NAME?"}, {0x24, "#NUM!"},   {0x2A, "#N/A"},    {0x2B, "#GETTING_DATA"}};

} // namespace

XlsBook::XlsBook()
{
    reset();
}

XlsBook::~XlsBook() = default;

void XlsBook::reset()
{
    m_sheets.clear();
    m_sharedStrings.clear();
    m_formats = {ExcelFormat()};
    m_dateFormats = {false};
    m_uses1904 = false;
    m_limitations.clear();
    setError(QString());
}

bool XlsBook::load(const QString &path)
{
    reset();
    CompoundDocumentReader file;
    if (!file.open(path)) {
        setError(file.error());
        return false;
    }
    // Excel 97 could write both streams into one file; the newer one is the better.
    const QStringList streams = file.streamNames();
    QString streamName;
    for (const char *candidate : {"Workbook", "Book"}) {
        if (streamName.isEmpty() && streams.contains(QLatin1String(candidate), Qt::CaseInsensitive))
            streamName = QLatin1String(candidate);
    }
    if (streamName.isEmpty()) {
        setError(QStringLiteral("The file holds no Excel workbook: it is a compound document of "
                                "another kind (Word and PowerPoint files are too)."));
        return false;
    }
    QByteArray stream;
    if (!file.readStream(streamName, &stream)) {
        setError(file.error());
        return false;
    }
    QString error;
    bool ok = false;
    const int version = Biff::version(stream);
    if (version == Biff::Biff8 && m_reader == Reader::Automatic)
        ok = Biff::read(stream, this, &error);
    else if (version == Biff::Biff8 || version == Biff::Biff5)
        ok = Biff::readWithFreeXL(path, stream, this, &error);
    else
        error = QStringLiteral("The workbook file is damaged: its workbook stream does not start "
                               "like one, or comes from a version of Excel older than 5.0.");
    if (!ok) {
        reset();
        setError(error);
    }
    return ok;
}

bool XlsBook::save(const QString &path)
{
    if (m_sheets.empty()) {
        setError(QStringLiteral("A workbook needs at least one sheet."));
        return false;
    }
    const QByteArray stream = Biff::write(*this);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        setError(file.errorString());
        return false;
    }
    if (!CompoundDocumentWriter::write(file, QStringLiteral("Workbook"), stream)) {
        setError(file.errorString());
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        setError(file.errorString());
        return false;
    }
    return true;
}

ExcelSheet *XlsBook::sheet(int index)
{
    return index >= 0 && index < sheetCount() ? m_sheets.at(size_t(index)).get() : nullptr;
}

QStringList XlsBook::sheetNameProblems(const QString &name) const
{
    QStringList problems;
    for (const QString &problem : ExcelSheetNames::problems(name))
        problems.append(problem.mid(1)); // without the line feed that starts each
    for (const auto &existing : m_sheets) {
        if (existing->name().compare(name, Qt::CaseInsensitive) == 0)
            problems.append(QStringLiteral("A sheet named '%1' already exists.").arg(name));
    }
    return problems;
}

ExcelSheet *XlsBook::addSheet(const QString &name)
{
    const QStringList problems = sheetNameProblems(name);
    if (!problems.isEmpty()) {
        setError(problems.join(QLatin1Char('\n')));
        return nullptr;
    }
    return appendSheet(name);
}

XlsSheet *XlsBook::appendSheet(const QString &name)
{
    m_sheets.push_back(std::make_unique<XlsSheet>(this, name));
    return m_sheets.back().get();
}

int XlsBook::addFormat(const ExcelFormat &format)
{
    const int found = m_formats.indexOf(format);
    if (found >= 0)
        return found;
    m_formats.append(format);
    m_dateFormats.append(ExcelDates::isDateFormat(format.numberFormat, format.numberFormatCode));
    return m_formats.size() - 1;
}

void XlsBook::setFormats(const QVector<ExcelFormat> &formats)
{
    m_formats = formats.isEmpty() ? QVector<ExcelFormat> {ExcelFormat()} : formats;
    m_dateFormats.resize(m_formats.size());
    for (int i = 0; i < m_formats.size(); ++i)
        m_dateFormats[i] = ExcelDates::isDateFormat(m_formats.at(i).numberFormat,
                                                    m_formats.at(i).numberFormatCode);
}

// ---------------------------------------------------------------------------------------------

XlsSheet::XlsSheet(XlsBook *book, const QString &name)
    : m_book(book)
    , m_name(name)
{ }

QString XlsSheet::errorText(int code)
{
    for (const ErrorName &error : ErrorNames) {
        if (error.code == code)
            return QLatin1String(error.text);
    }
    return QStringLiteral("#N/A");
}

int XlsSheet::errorCode(const QString &text)
{
    for (const ErrorName &error : ErrorNames) {
        if (text.compare(QLatin1String(error.text), Qt::CaseInsensitive) == 0)
            return error.code;
    }
    return 0x2A;
}

void XlsSheet::appendCell(const XlsCell &cell)
{
    m_sorted = m_sorted && ExcelCellStore::follows(m_cells, cell);
    // A formatted cell without a value doesn't make the used range larger.
    if (cell.type != quint8(ExcelCellType::Blank))
        m_used.add(cell.row, cell.col);
    m_cells.push_back(cell);
    m_indexed = false;
}

int XlsSheet::addText(const QString &text)
{
    m_texts.append(text);
    return m_texts.size() - 1;
}

void XlsSheet::index() const
{
    ExcelCellStore::index(m_cells, m_sorted, m_rowStarts);
    m_sorted = true;
    m_indexed = true;
}

const XlsCell *XlsSheet::find(int row, int col) const
{
    if (!m_indexed)
        index();
    return ExcelCellStore::find(m_cells, m_rowStarts, row, col);
}

const std::vector<XlsCell> &XlsSheet::cells() const
{
    if (!m_indexed)
        index();
    return m_cells;
}

QString XlsSheet::textOf(const XlsCell &cell) const
{
    if (cell.type == quint8(ExcelCellType::Error))
        return errorText(cell.value);
    if (cell.type != quint8(ExcelCellType::String))
        return QString();
    return cell.flags & XlsCell::OwnText ? m_texts.value(cell.text)
                                         : m_book->sharedStrings().value(cell.text);
}

ExcelCellType XlsSheet::cellType(int row, int col) const
{
    const XlsCell *cell = find(row, col);
    return cell ? ExcelCellType(cell->type) : ExcelCellType::Empty;
}

QString XlsSheet::readStr(int row, int col) const
{
    const XlsCell *cell = find(row, col);
    return cell ? textOf(*cell) : QString();
}

double XlsSheet::readNum(int row, int col) const
{
    const XlsCell *cell = find(row, col);
    return cell && cell->type == quint8(ExcelCellType::Number) ? cell->number : 0.0;
}

bool XlsSheet::readBool(int row, int col) const
{
    const XlsCell *cell = find(row, col);
    return cell && cell->type == quint8(ExcelCellType::Boolean) && cell->value;
}

bool XlsSheet::isDate(int row, int col) const
{
    const XlsCell *cell = find(row, col);
    return cell && cell->type == quint8(ExcelCellType::Number)
        && m_book->formatIsDate(cell->format);
}

int XlsSheet::cellFormat(int row, int col) const
{
    const XlsCell *cell = find(row, col);
    return cell ? cell->format : 0;
}

bool XlsSheet::colHidden(int col) const
{
    return col >= 0 && col < ExcelCells::MaxXlsCols && m_columns[size_t(col)].hidden;
}

double XlsSheet::colWidth(int col) const
{
    return col >= 0 && col < ExcelCells::MaxXlsCols ? m_columns[size_t(col)].width : -1;
}

double XlsSheet::rowHeight(int row) const
{
    return m_rows.value(row).height;
}

// Fills in the position and format; false for a position beyond the format's limits, which
// is dropped (the caller has warned the user of the size before writing).
bool XlsSheet::place(XlsCell &cell, int row, int col, int format)
{
    if (row < 0 || row >= ExcelCells::MaxXlsRows || col < 0 || col >= ExcelCells::MaxXlsCols)
        return false;
    cell.row = quint16(row);
    cell.col = quint8(col);
    cell.format = quint16(qBound(0, format, 0xFFFF));
    return true;
}

void XlsSheet::writeStr(int row, int col, const QString &text, int format)
{
    XlsCell cell {};
    cell.type = quint8(ExcelCellType::String);
    if (!place(cell, row, col, format))
        return;
    cell.flags = XlsCell::OwnText;
    cell.text = addText(text);
    appendCell(cell);
}

void XlsSheet::writeNum(int row, int col, double value, int format)
{
    XlsCell cell {};
    cell.type = quint8(ExcelCellType::Number);
    cell.number = value;
    if (place(cell, row, col, format))
        appendCell(cell);
}

void XlsSheet::writeBool(int row, int col, bool value, int format)
{
    XlsCell cell {};
    cell.type = quint8(ExcelCellType::Boolean);
    cell.value = value ? 1 : 0;
    if (place(cell, row, col, format))
        appendCell(cell);
}

void XlsSheet::writeError(int row, int col, int code, int format)
{
    XlsCell cell {};
    cell.type = quint8(ExcelCellType::Error);
    cell.value = quint8(code);
    if (place(cell, row, col, format))
        appendCell(cell);
}

// Formulas are kept as their text, "=" and all, in a string cell: the stream would need them
// compiled to tokens, and a spreadsheet shows the text the user wrote.
void XlsSheet::writeFormula(int row, int col, const QString &formula, int format)
{
    writeStr(row, col, QLatin1Char('=') + formula, format);
}

void XlsSheet::clear()
{
    m_cells.clear();
    m_cells.shrink_to_fit();
    m_texts.clear();
    m_links.clear();
    m_rowStarts.clear();
    m_used = {};
    m_sorted = true;
    m_indexed = false;
}

void XlsSheet::addHyperlink(const ExcelHyperlink &link)
{
    m_links.append(link);
}

void XlsSheet::setCol(int col, double width, bool hidden)
{
    if (col >= 0 && col < ExcelCells::MaxXlsCols)
        m_columns[size_t(col)] = {width, hidden};
}

void XlsSheet::setRow(int row, double height, bool hidden)
{
    if (row < 0 || row >= ExcelCells::MaxXlsRows)
        return;
    if (height < 0 && !hidden)
        m_rows.remove(row);
    else
        m_rows.insert(row, {height, hidden});
}

void XlsSheet::setCellFormat(int row, int col, int format)
{
    const XlsCell *cell = find(row, col);
    if (cell) {
        const_cast<XlsCell *>(cell)->format = quint16(qBound(0, format, 0xFFFF));
        return;
    }
    XlsCell blank {};
    blank.type = quint8(ExcelCellType::Blank);
    if (place(blank, row, col, format))
        appendCell(blank);
}

void XlsSheet::setMerge(const ExcelRange &range)
{
    m_merges.append(range);
}
