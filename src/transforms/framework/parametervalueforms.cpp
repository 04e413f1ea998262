#include "transforms/framework/parameterforms.h"

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

QString write(const Parameter &p)
{
    return p.value().toString();
}

void read(Parameter &p, const QStringList &, const QString &text, int)
{
    p.setValue(text);
}

QString summary(const Parameter &p)
{
    const QString text = p.value().toString();
    const int count = text.isEmpty() ? 0 : Parameter::splitFields(text).size();
    return QStringLiteral("%1 rule field(s)").arg(QLocale().toString(count));
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
