#include "transforms/framework/parameterforms.h"

#include "transforms/verifyrules.h"

#include <QLocale>

// The shapes of value that name no columns.

using ParameterForms::flag;
using ParameterForms::parseInt;

namespace ParameterForms {

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

} // namespace ParameterForms

namespace BoolForm {

QString write(const Parameter &p)
{
    return flag(p.toBool());
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    const QString &first = fields.first();
    if (first == QLatin1String("1") || first == QLatin1String("0"))
        p.setValue(first == QLatin1String("1"));
}

QString summary(const Parameter &p)
{
    return p.toBool() ? QStringLiteral("Yes") : QStringLiteral("No");
}

} // namespace BoolForm

namespace SelectionForm {

// A choice that is no longer offered leaves the default in force.
void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    const QString choice = Parameter::decodeText(fields.first());
    if (p.options().toStringList().contains(choice))
        p.setValue(choice);
}

bool isUnset(const Parameter &p)
{
    return p.selectionRequired() && p.toSelectionIndex() == 0;
}

} // namespace SelectionForm

namespace TextForm {

QString write(const Parameter &p)
{
    return Parameter::encodeText(p.toString());
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    p.setValue(Parameter::decodeText(fields.first()));
}

QString summary(const Parameter &p)
{
    return p.toString();
}

bool isUnset(const Parameter &p)
{
    return p.textRequired() && p.toString().isEmpty();
}

bool isBlank(const Parameter &p)
{
    return p.toString().trimmed().isEmpty();
}

} // namespace TextForm

namespace IntForm {

QString write(const Parameter &p)
{
    return QString::number(p.toInt());
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    int number = 0;
    if (parseInt(fields.first(), &number))
        p.setValue(number);
}

QString summary(const Parameter &p)
{
    if (!p.specialValueText().isEmpty() && p.toInt() == p.minimumInt())
        return p.specialValueText();
    return QString::number(p.toInt());
}

bool isUnset(const Parameter &p)
{
    return p.intRequired() && p.toInt() == 0;
}

} // namespace IntForm

namespace CharForm {

QString write(const Parameter &p)
{
    const QChar c = p.toChar();
    return c.isNull() ? QString() : Parameter::encodeText(QString(c));
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    const QString decoded = Parameter::decodeText(fields.first());
    p.setValue(decoded.isEmpty() ? QChar() : decoded.at(0));
}

QString summary(const Parameter &p)
{
    const QChar c = p.toChar();
    if (c == QLatin1Char(' '))
        return QStringLiteral("<Space>");
    if (c == QLatin1Char('\t'))
        return QStringLiteral("<Tab>");
    return c.isNull() ? QString() : QString(c);
}

bool isUnset(const Parameter &p)
{
    return p.toChar().isNull();
}

} // namespace CharForm

namespace ReplaceForm {

QString write(const Parameter &p)
{
    const QList<ReplaceTerm> terms = p.toReplaceTerms();
    QStringList fields;
    for (const ReplaceTerm &term : terms)
        fields << QString::number(term.matchType) << Parameter::encodeText(term.from)
               << Parameter::encodeText(term.to);
    return Parameter::joinFields(fields);
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    QList<ReplaceTerm> terms;
    ReplaceTerm term;
    for (int i = 0; i + 3 <= fields.size(); i += 3) {
        if (!parseInt(fields.at(i), &term.matchType))
            continue;
        term.from = Parameter::decodeText(fields.at(i + 1));
        term.to = Parameter::decodeText(fields.at(i + 2));
        terms.append(term);
    }
    p.setReplaceTerms(terms);
}

QString summary(const Parameter &p)
{
    return QStringLiteral("%1 term(s)").arg(QLocale().toString(p.toReplaceTerms().size()));
}

bool isUnset(const Parameter &p)
{
    return p.toReplaceTerms().isEmpty();
}

} // namespace ReplaceForm

namespace RealForm {

QString write(const Parameter &p)
{
    return QString::number(p.toReal(), 'g', QLocale::FloatingPointShortest);
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    bool ok = false;
    const double real = fields.first().toDouble(&ok);
    if (ok)
        p.setValue(real);
}

QString summary(const Parameter &p)
{
    return QLocale().toString(p.toReal(), 'f', QLocale::FloatingPointShortest);
}

} // namespace RealForm

namespace VerifyRulesForm {

namespace {

using namespace VerifyRules;

// Each rule is its field count and its fields (number, value, severity, active), so that a
// reader skips fields it doesn't know; the dataset's rules are a count and the rules, the
// columns a count and, a column, its number, type, a count and the rules.
constexpr int RuleFields = 4;

void writeRule(QStringList &fields, const VerifyRule &rule, bool datasetRule)
{
    const int kind = datasetRule ? datasetRuleKind(rule.number) : columnRuleKind(rule.number);
    fields << QString::number(RuleFields) << QString::number(rule.number)
           << Parameter::encodeText(valueText(kind, rule.value)) << QString::number(rule.severity)
           << flag(rule.active);
}

class FieldReader
{
public:
    explicit FieldReader(const QStringList &fields)
        : m_fields(fields)
    { }

    bool takeInt(int *out) { return m_at < m_fields.size() && parseInt(m_fields.at(m_at++), out); }

    bool takeRule(bool datasetRule, VerifyRule *rule)
    {
        int count = 0;
        if (!takeInt(&count) || count < 0 || m_at + count > m_fields.size())
            return false;
        const QStringList fields = m_fields.mid(m_at, count);
        m_at += count;
        QVariantList list;
        int number = 0;
        if (count >= RuleFields && parseInt(fields.at(0), &number)) {
            const int kind = datasetRule ? datasetRuleKind(number) : columnRuleKind(number);
            list = {number, valueFromText(kind, Parameter::decodeText(fields.at(1))),
                    fields.at(2).toInt(), fields.at(3) == QLatin1String("1")};
        }
        *rule = VerifyRule::fromVariant(list, datasetRule);
        return true;
    }

private:
    const QStringList &m_fields;
    int m_at = 0;
};

} // namespace

QString write(const Parameter &p)
{
    const VerifyRuleSet set = VerifyRuleSet::fromVariant(p.value());
    QStringList fields;
    fields << QString::number(set.datasetRules().size());
    for (const VerifyRule &rule : set.datasetRules())
        writeRule(fields, rule, true);
    fields << QString::number(set.columns().size());
    for (const VerifyColumn &column : set.columns()) {
        fields << QString::number(p.columnNumber(column.column)) << QString::number(column.type)
               << QString::number(column.rules.size());
        for (const VerifyRule &rule : column.rules)
            writeRule(fields, rule, false);
    }
    return Parameter::joinFields(fields);
}

// A text that ends early keeps what was read up to there.
void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    VerifyRuleSet set;
    FieldReader reader(fields);
    VerifyRule rule;
    int count = 0;
    bool complete = reader.takeInt(&count);
    for (int i = 0; complete && i < count; ++i) {
        complete = reader.takeRule(true, &rule);
        if (complete)
            set.appendDatasetRule(rule);
    }
    int columns = 0;
    complete = complete && reader.takeInt(&columns);
    for (int i = 0; complete && i < columns; ++i) {
        VerifyColumn column;
        int number = 0;
        complete
            = reader.takeInt(&number) && reader.takeInt(&column.type) && reader.takeInt(&count);
        for (int r = 0; complete && r < count; ++r) {
            complete = reader.takeRule(false, &rule);
            if (complete)
                column.rules.append(rule);
        }
        column.column = p.columnAt(number);
        column.type = qBound(0, column.type, ColumnTypeCount - 1);
        if (!column.column.isNull())
            set.setColumn(column);
    }
    p.setValue(set.toVariant());
}

QString summary(const Parameter &p)
{
    const VerifyRuleSet set = VerifyRuleSet::fromVariant(p.value());
    const int columnRules
        = set.activeColumnRuleCount([&p](ColumnId id) { return p.columnPosition(id) >= 0; });
    return VerifyRuleSet::countText(set.activeDatasetRuleCount(), columnRules);
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    VerifyRuleSet set = VerifyRuleSet::fromVariant(p.value());
    const bool changed = set.remap(map);
    if (changed)
        p.setValue(set.toVariant());
    return changed;
}

} // namespace VerifyRulesForm

namespace LabelForm {

QString write(const Parameter &)
{
    return QString();
}

void read(Parameter &, const QStringList &, const QString &, int) { }

QString summary(const Parameter &)
{
    return QString();
}

} // namespace LabelForm

namespace DateForm {

QString write(const Parameter &p)
{
    const QDate date = p.value().toDate();
    return date.isValid() ? date.toString(QStringLiteral("yyyy-MM-dd")) : QString();
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    const QDate date = QDate::fromString(fields.first(), QStringLiteral("yyyy-MM-dd"));
    if (date.isValid())
        p.setValue(date);
}

QString summary(const Parameter &p)
{
    return QLocale().toString(p.toDate(), QLocale::ShortFormat);
}

} // namespace DateForm

namespace LocaleForm {

QString write(const Parameter &p)
{
    return p.value().isValid() ? p.toLocale().name() : QString();
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    const QString &first = fields.first();
    p.setValue(first.isEmpty() ? QVariant() : QVariant(QLocale(first)));
}

QString summary(const Parameter &p)
{
    const QLocale chosen = p.toLocale();
    const QString language = QLocale::languageToString(chosen.language());
    if (chosen.country() == QLocale::AnyCountry)
        return language;
    return QStringLiteral("%1 (%2)").arg(language, QLocale::countryToString(chosen.country()));
}

} // namespace LocaleForm
