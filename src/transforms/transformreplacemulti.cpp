#include "transforms/transformreplacemulti.h"

#include "transforms/cellrules.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"

#include <QHash>
#include <QRegularExpression>

namespace {

bool inClass(uint ucs4, int matchType)
{
    switch (matchType) {
    case TransformReplaceMulti::Letters:
        return QChar::isLetter(ucs4);
    case TransformReplaceMulti::Digits:
        return QChar::isDigit(ucs4);
    case TransformReplaceMulti::Punctuation:
        return QChar::isPunct(ucs4);
    case TransformReplaceMulti::Symbols:
        return QChar::isSymbol(ucs4);
    case TransformReplaceMulti::Whitespace:
        return QChar::isSpace(ucs4);
    case TransformReplaceMulti::Currency:
        return QChar::category(ucs4) == QChar::Symbol_Currency;
    case TransformReplaceMulti::NonAscii:
        return ucs4 > 127;
    default:
        return false;
    }
}

// The code point at i and the number of UTF-16 units it takes; a lone surrogate is taken
// as it stands.
uint codePointAt(const QString &text, int i, int *units)
{
    const QChar c = text.at(i);
    if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
        *units = 2;
        return QChar::surrogateToUcs4(c, text.at(i + 1));
    }
    *units = 1;
    return c.unicode();
}

// One term made ready for a run: its regular expression compiled once, unless its pattern
// holds column variables and so differs from row to row.
struct PreparedTerm
{
    int matchType = TransformReplaceMulti::Text;
    QString from;
    QString to;
    bool fromVaries = false;
    bool toVaries = false;
    // Only for a pattern that varies: whether regex has been built for the row's pattern.
    bool compiled = false;
    QRegularExpression regex;
};

constexpr int MaximumListed = 5;

class TermRunner
{
public:
    TermRunner(const QList<ReplaceTerm> &terms, Qt::CaseSensitivity cs, const Dataset &source)
        : m_cs(cs)
        , m_variables(source)
    {
        for (const ReplaceTerm &term : terms) {
            PreparedTerm prepared;
            prepared.matchType = term.matchType >= TransformReplaceMulti::Text
                    && term.matchType <= TransformReplaceMulti::NonAscii
                ? term.matchType
                : int(TransformReplaceMulti::Text);
            prepared.from = term.from;
            prepared.to = term.to;
            const bool usesFrom = prepared.matchType <= TransformReplaceMulti::Regex;
            prepared.fromVaries = usesFrom && CellRules::hasColumnVariables(term.from);
            prepared.toVaries = CellRules::hasColumnVariables(term.to);
            // A term without a text to look for would insert its replacement between every
            // two characters: it does nothing instead.
            if ((prepared.matchType == TransformReplaceMulti::Text
                 || prepared.matchType == TransformReplaceMulti::Regex)
                && term.from.isEmpty())
                continue;
            if (prepared.matchType == TransformReplaceMulti::Regex && !prepared.fromVaries)
                prepared.regex = compile(term.from);
            m_varies = m_varies || prepared.fromVaries || prepared.toVaries;
            m_terms.append(prepared);
        }
        m_rowTerms = m_terms;
    }

    QString apply(int r, const QString &cell)
    {
        if (m_varies && r != m_row)
            prepareRow(r);
        QString text = cell;
        for (const PreparedTerm &term : qAsConst(m_rowTerms)) {
            switch (term.matchType) {
            case TransformReplaceMulti::Text:
                if (text.contains(term.from, m_cs))
                    text.replace(term.from, term.to, m_cs);
                break;
            case TransformReplaceMulti::ExactText:
                if (text.compare(term.from, m_cs) == 0)
                    text = term.to;
                break;
            case TransformReplaceMulti::Regex:
                if (term.regex.isValid())
                    text.replace(term.regex, term.to);
                break;
            case TransformReplaceMulti::Empty:
                if (text.isEmpty())
                    text = term.to;
                break;
            default:
                text = TransformReplaceMulti::replaceCharacters(text, term.matchType, term.to);
                break;
            }
        }
        return text;
    }

private:
    void prepareRow(int r)
    {
        m_row = r;
        for (int i = 0; i < m_terms.size(); ++i) {
            const PreparedTerm &term = m_terms.at(i);
            PreparedTerm &rowTerm = m_rowTerms[i];
            if (term.fromVaries) {
                const QString from = m_variables.substitute(term.from, r);
                if (!rowTerm.compiled || from != rowTerm.from) {
                    rowTerm.from = from;
                    rowTerm.compiled = true;
                    if (term.matchType == TransformReplaceMulti::Regex)
                        rowTerm.regex = compile(from);
                }
            }
            if (term.toVaries)
                rowTerm.to = m_variables.substitute(term.to, r);
        }
    }

    QRegularExpression compile(const QString &pattern)
    {
        QRegularExpression regex(pattern);
        if (m_cs == Qt::CaseInsensitive)
            regex.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
        if (!regex.isValid() && !m_invalid.contains(pattern))
            m_invalid.insert(pattern, regex.errorString());
        if (!regex.isValid() && m_invalidOrder.size() < MaximumListed
            && !m_invalidOrder.contains(pattern))
            m_invalidOrder.append(pattern);
        return regex;
    }

public:
    // The first few invalid patterns, and a count of the others.
    QStringList invalidMessages() const
    {
        QStringList messages;
        for (const QString &pattern : m_invalidOrder)
            messages.append(QStringLiteral("Invalid regular expression '%1': %2")
                                .arg(pattern, m_invalid.value(pattern)));
        const int others = m_invalid.size() - MaximumListed;
        if (others > 0)
            messages.append(QStringLiteral("+ %1 %2").arg(QString::number(others),
                                                          others == 1 ? QStringLiteral("other")
                                                                      : QStringLiteral("others")));
        return messages;
    }

private:
    Qt::CaseSensitivity m_cs;
    CellRules::RowVariables m_variables;
    QList<PreparedTerm> m_terms;
    QList<PreparedTerm> m_rowTerms;
    bool m_varies = false;
    int m_row = -1;
    // Invalid patterns with their errors, and the first few in the order met.
    QHash<QString, QString> m_invalid;
    QStringList m_invalidOrder;
};

} // namespace

const TransformDescriptor &TransformReplaceMulti::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 47;
        d.typeName = QStringLiteral("Replace_Multi");
        d.displayName = QStringLiteral("Replace");
        d.category = CategoryFormat;
        d.flags
            = TransformDescriptor::ChangesValuesOnly | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Replace multiple text in the selected column(s).");
        d.keywords = QStringList {
            QStringLiteral("substitute"),  QStringLiteral("regex"),       QStringLiteral("regular"),
            QStringLiteral("expressions"), QStringLiteral("search"),      QStringLiteral("find"),
            QStringLiteral("change"),      QStringLiteral("remove"),      QStringLiteral("letters"),
            QStringLiteral("digits"),      QStringLiteral("punctuation"), QStringLiteral("symbols"),
            QStringLiteral("currency"),    QStringLiteral("ascii"),       QStringLiteral("empty"),
            QStringLiteral("blanks"),      QStringLiteral("variables")};
        d.create = createTransform<TransformReplaceMulti>;
        return d;
    }();
    return descriptor;
}

QStringList TransformReplaceMulti::matchTypeNames()
{
    return {
        QStringLiteral("Text"),        QStringLiteral("Exact text"), QStringLiteral("Regex"),
        QStringLiteral("Empty"),       QStringLiteral("Letters"),    QStringLiteral("Digits"),
        QStringLiteral("Punctuation"), QStringLiteral("Symbols"),    QStringLiteral("Whitespace"),
        QStringLiteral("Currency"),    QStringLiteral("Non-ASCII")};
}

// Each character is judged once, as it stood: a replacement never takes part in the test,
// which is what a walk from the end that removes and inserts would give. A surrogate pair is
// judged as the character it encodes.
QString TransformReplaceMulti::replaceCharacters(const QString &text, int matchType,
                                                 const QString &to)
{
    const int length = text.size();
    int first = 0;
    int units = 1;
    while (first < length && !inClass(codePointAt(text, first, &units), matchType))
        first += units;
    if (first == length)
        return text;
    QString result;
    result.reserve(length + to.size() * 4);
    result.append(text.constData(), first);
    for (int i = first; i < length; i += units) {
        const uint ucs4 = codePointAt(text, i, &units);
        if (inClass(ucs4, matchType))
            result.append(to);
        else
            result.append(text.constData() + i, units);
    }
    return result;
}

void TransformReplaceMulti::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) you want to replace text in.")));

    auto *replace = new Parameter(ParameterType::ReplaceTerms, QStringLiteral("Replace"),
                                  QStringLiteral("Replace"));
    replace->setToolTip(
        QStringLiteral("The replacements, applied in order.\nUse %1 or %2 for the value of a "
                       "column in the same row.")
            .arg(ComparisonOperator::columnVariable(1),
                 ComparisonOperator::columnVariable(QStringLiteral("name"))));
    addParameter(replace);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("case sensitive"), true);
    caseSensitive->setToolTip(
        QStringLiteral("Check for case sensitive matching of 'Text', 'Exact text' and 'Regex'."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

Dataset &TransformReplaceMulti::process(Dataset &output, const TransformInputs &inputs,
                                        const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const Parameter *replaceOption = &option(QStringLiteral("Replace"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));

    const Dataset &input = *inputs.first().dataset;
    output = input;
    const QList<int> columns = CellRules::selectedColumns(*columnsOption);
    TermRunner runner(replaceOption->toReplaceTerms(),
                      caseOption->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive, input);
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, columns, [&runner](int r, const QString &cell) { return runner.apply(r, cell); },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    for (const QString &message : runner.invalidMessages())
        addWarning(message);
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
