#include "transforms/framework/parameter.h"

#include "transforms/framework/columnsource.h"

#include <QUrl>

#include <algorithm>

// The text forms of options as documents store them, and their reading back.

namespace {

const QChar FieldSeparator(0x1F);
const QLatin1Char OldFieldSeparator('^');
const QLatin1String StartIfMarker("*StartIf*");
const QLatin1String EndIfMarker("*EndIf*");
const QLatin1String NoRenameMarker("*NORENAME*");

// The first document version with "Is empty" and "Is not empty" at 19 and 20.
constexpr int EmptyOperatorsMovedVersion = 57;
constexpr int OperatorCount = 21;

QString flag(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

bool parseInt(const QString &field, int *out)
{
    bool ok = false;
    const int number = field.trimmed().toInt(&ok);
    if (ok)
        *out = number;
    return ok;
}

// Older documents numbered the two emptiness tests 14 and 15; they now follow the fuzzy
// matches. Returns -1 for an operator that no longer exists.
int mapOperator(int op, int version)
{
    if (version < EmptyOperatorsMovedVersion) {
        if (op == 14)
            return 19;
        if (op == 15)
            return 20;
    }
    return op >= 0 && op < OperatorCount ? op : -1;
}

} // namespace

QStringList Parameter::splitFields(const QString &text)
{
    return text.split(text.contains(FieldSeparator) ? FieldSeparator : OldFieldSeparator);
}

QString Parameter::joinFields(const QStringList &fields)
{
    return fields.join(FieldSeparator);
}

QString Parameter::encodeText(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString Parameter::decodeText(const QString &field)
{
    return QUrl::fromPercentEncoding(field.toUtf8());
}

void Parameter::setPendingText(const QString &text, int version)
{
    m_pendingText = text;
    m_pendingVersion = version;
    m_hasPendingText = true;
}

void Parameter::clearPendingText()
{
    m_pendingText.clear();
    m_pendingVersion = -1;
    m_hasPendingText = false;
}

bool Parameter::resolvePendingText()
{
    if (!m_hasPendingText)
        return false;
    if (m_sourceNode && !m_sourceNode->isReady())
        return false;
    const QString text = m_pendingText;
    const int version = m_pendingVersion;
    clearPendingText();
    fromText(text, version);
    return true;
}

QString Parameter::toText() const
{
    return m_hasPendingText ? m_pendingText : textForm();
}

QString Parameter::textForm() const
{
    QStringList fields;
    switch (m_type) {
    case ParameterType::SingleColumn:
        return QString::number(columnNumber(toColumnId()));
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered: {
        const QList<ColumnId> ids = toColumns();
        for (ColumnId id : ids)
            fields.append(QString::number(columnNumber(id)));
        break;
    }
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered: {
        const QList<SortColumn> columns = toSortColumns();
        for (const SortColumn &column : columns) {
            const int number = columnNumber(column.id);
            fields.append(QString::number(column.ascending ? number : -number));
        }
        break;
    }
    case ParameterType::FilterColumns: {
        const FilterTerms filter = toFilterTerms();
        fields << flag(filter.keep) << flag(filter.matchAny);
        for (const FilterTerm &term : filter.terms)
            fields << QString::number(columnNumber(term.column)) << QString::number(term.op)
                   << encodeText(term.value);
        break;
    }
    case ParameterType::Bool:
        return flag(toBool());
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Script:
    case ParameterType::LongText:
        return encodeText(toString());
    case ParameterType::Int:
        return QString::number(toInt());
    case ParameterType::Char: {
        const QChar c = toChar();
        return c.isNull() ? QString() : encodeText(QString(c));
    }
    case ParameterType::If: {
        const IfTerms ifTerms = toIfTerms();
        for (const IfBranch &branch : ifTerms.branches) {
            fields << StartIfMarker;
            for (const FilterTerm &term : branch.terms)
                fields << QString::number(columnNumber(term.column)) << QString::number(term.op)
                       << encodeText(term.value);
            fields << EndIfMarker << encodeText(branch.thenValue);
        }
        fields << encodeText(ifTerms.elseValue);
        break;
    }
    case ParameterType::RenameColumns: {
        const Dataset *dataset = sourceDataset();
        const ColumnRenames renames = toRenameColumns();
        for (int c = 0; dataset && c < dataset->columnCount(); ++c) {
            const auto found = renames.constFind(dataset->columnId(c));
            fields << (found == renames.constEnd() ? QString(NoRenameMarker) : encodeText(*found));
        }
        break;
    }
    case ParameterType::SplitRows: {
        const SplitRowsTerms terms = toSplitRowsTerms();
        fields << flag(terms.splitByName) << flag(terms.automatic) << QString::number(terms.every)
               << QString::number(columnNumber(terms.nameColumn)) << QString::number(terms.times)
               << encodeText(terms.text);
        break;
    }
    case ParameterType::Unique: {
        const Dataset *dataset = sourceDataset();
        const UniqueColumns unique = toUniqueColumns();
        for (int c = 0; dataset && c < dataset->columnCount(); ++c)
            fields << QString::number(unique.value(dataset->columnId(c), UniqueKeepFirst));
        break;
    }
    case ParameterType::ReplaceTerms: {
        const QList<ReplaceTerm> terms = toReplaceTerms();
        for (const ReplaceTerm &term : terms)
            fields << QString::number(term.matchType) << encodeText(term.from)
                   << encodeText(term.to);
        break;
    }
    case ParameterType::Real:
        return QString::number(toReal(), 'g', QLocale::FloatingPointShortest);
    case ParameterType::VerifyRules:
        // Kept as read until the rule set has a structure of its own.
        return m_value.toString();
    case ParameterType::Label:
        return QString();
    case ParameterType::Date: {
        const QDate date = m_value.toDate();
        return date.isValid() ? date.toString(QStringLiteral("yyyy-MM-dd")) : QString();
    }
    case ParameterType::Locale:
        return m_value.isValid() ? toLocale().name() : QString();
    }
    return joinFields(fields);
}

void Parameter::fromText(const QString &text, int version)
{
    if (version < 0)
        version = CurrentDocumentVersion;
    const QStringList fields = splitFields(text);
    const QString &first = fields.first();
    int number = 0;
    switch (m_type) {
    case ParameterType::SingleColumn:
        if (parseInt(first, &number))
            setColumnId(columnAt(number));
        break;
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered:
        readColumnList(fields);
        break;
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered:
        readSortColumns(fields);
        break;
    case ParameterType::FilterColumns:
        readFilterTerms(fields, version);
        break;
    case ParameterType::Bool:
        if (first == QLatin1String("1") || first == QLatin1String("0"))
            m_value = first == QLatin1String("1");
        break;
    case ParameterType::Selection: {
        const QString choice = decodeText(first);
        if (m_options.toStringList().contains(choice))
            m_value = choice;
        break;
    }
    case ParameterType::Text:
    case ParameterType::Script:
    case ParameterType::LongText:
        m_value = decodeText(first);
        break;
    case ParameterType::Int:
        if (parseInt(first, &number))
            m_value = number;
        break;
    case ParameterType::Char: {
        const QString decoded = decodeText(first);
        m_value = decoded.isEmpty() ? QChar() : decoded.at(0);
        break;
    }
    case ParameterType::If:
        readIfTerms(fields, version);
        break;
    case ParameterType::RenameColumns:
        readRenames(fields);
        break;
    case ParameterType::SplitRows:
        readSplitRows(fields);
        break;
    case ParameterType::Unique:
        readUnique(fields);
        break;
    case ParameterType::ReplaceTerms:
        readReplaceTerms(fields);
        break;
    case ParameterType::Real: {
        bool ok = false;
        const double real = first.toDouble(&ok);
        if (ok)
            m_value = real;
        break;
    }
    case ParameterType::VerifyRules:
        m_value = text;
        break;
    case ParameterType::Label:
        break;
    case ParameterType::Date: {
        const QDate date = QDate::fromString(first, QStringLiteral("yyyy-MM-dd"));
        if (date.isValid())
            m_value = date;
        break;
    }
    case ParameterType::Locale:
        m_value = first.isEmpty() ? QVariant() : QVariant(QLocale(first));
        break;
    }
}

void Parameter::readColumnList(const QStringList &fields)
{
    QList<ColumnId> ids;
    int number = 0;
    for (const QString &field : fields) {
        if (!parseInt(field, &number))
            continue;
        const ColumnId id = columnAt(number);
        if (!id.isNull())
            ids.append(id);
    }
    setColumns(ids);
}

void Parameter::readSortColumns(const QStringList &fields)
{
    QList<SortColumn> columns;
    int number = 0;
    for (const QString &field : fields) {
        if (!parseInt(field, &number))
            continue;
        const ColumnId id = columnAt(qAbs(number));
        if (!id.isNull())
            columns.append(SortColumn {id, number > 0});
    }
    setSortColumns(columns);
}

// Reads the three fields of a condition at position at. False when the term is to be left
// out: a field that isn't a number, or an operator that no longer exists.
bool Parameter::readTerm(const QStringList &fields, int at, int version, FilterTerm *term) const
{
    int number = 0;
    int op = 0;
    if (!parseInt(fields.at(at), &number) || !parseInt(fields.at(at + 1), &op))
        return false;
    op = mapOperator(op, version);
    if (op < 0)
        return false;
    term->column = columnAt(number);
    term->op = op;
    term->value = decodeText(fields.at(at + 2));
    return true;
}

void Parameter::readFilterTerms(const QStringList &fields, int version)
{
    if (fields.size() < 5)
        return;
    FilterTerms filter;
    filter.keep = fields.at(0) == QLatin1String("1");
    filter.matchAny = fields.at(1) == QLatin1String("1");
    FilterTerm term;
    for (int i = 2; i + 3 <= fields.size(); i += 3) {
        if (readTerm(fields, i, version, &term))
            filter.terms.append(term);
    }
    setFilterTerms(filter);
}

void Parameter::readIfTerms(QStringList fields, int version)
{
    IfTerms ifTerms;
    ifTerms.elseValue = decodeText(fields.takeLast());
    const int count = fields.size();
    int i = 0;
    while (i < count && fields.at(i) == StartIfMarker && count - i >= 5) {
        ++i;
        IfBranch branch;
        bool closed = false;
        while (i < count && !closed) {
            if (fields.at(i) == EndIfMarker) {
                if (i + 1 >= count)
                    break;
                branch.thenValue = decodeText(fields.at(i + 1));
                i += 2;
                closed = true;
            } else if (i + 3 <= count) {
                FilterTerm term;
                if (readTerm(fields, i, version, &term))
                    branch.terms.append(term);
                i += 3;
            } else {
                break;
            }
        }
        if (!closed)
            break;
        ifTerms.branches.append(branch);
    }
    setIfTerms(ifTerms);
}

void Parameter::readRenames(const QStringList &fields)
{
    ColumnRenames renames;
    const Dataset *dataset = sourceDataset();
    const int count = dataset ? qMin(fields.size(), dataset->columnCount()) : 0;
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        if (fields.at(c) != NoRenameMarker && !id.isNull())
            renames.insert(id, decodeText(fields.at(c)));
    }
    setRenameColumns(renames);
}

void Parameter::readSplitRows(const QStringList &fields)
{
    SplitRowsTerms terms;
    int number = 0;
    if (fields.size() < 6 || !parseInt(fields.at(2), &terms.every)
        || !parseInt(fields.at(3), &number) || !parseInt(fields.at(4), &terms.times))
        return;
    terms.splitByName = fields.at(0) == QLatin1String("1");
    terms.automatic = fields.at(1) == QLatin1String("1");
    terms.nameColumn = columnAt(number);
    terms.text = decodeText(fields.at(5));
    setSplitRowsTerms(terms);
}

void Parameter::readUnique(const QStringList &fields)
{
    UniqueColumns unique;
    const Dataset *dataset = sourceDataset();
    const int count = dataset ? qMin(fields.size(), dataset->columnCount()) : 0;
    int option = 0;
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        if (!id.isNull() && parseInt(fields.at(c), &option))
            unique.insert(id, option);
    }
    setUniqueColumns(unique);
}

void Parameter::readReplaceTerms(const QStringList &fields)
{
    QList<ReplaceTerm> terms;
    ReplaceTerm term;
    for (int i = 0; i + 3 <= fields.size(); i += 3) {
        if (!parseInt(fields.at(i), &term.matchType))
            continue;
        term.from = decodeText(fields.at(i + 1));
        term.to = decodeText(fields.at(i + 2));
        terms.append(term);
    }
    setReplaceTerms(terms);
}
