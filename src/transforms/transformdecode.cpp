#include "transforms/transformdecode.h"

#include "data/valueinterpretation.h"
#include "transforms/cellrules.h"
#include "transforms/framework/parameter.h"

#include <QHash>
#include <QUrl>

namespace {

// The named references of HTML that ordinary text uses; the others are left as they are.
const QHash<QString, QChar> &htmlNames()
{
    static const QHash<QString, QChar> names {
        {QStringLiteral("amp"), QChar(0x26)},     {QStringLiteral("lt"), QChar(0x3C)},
        {QStringLiteral("gt"), QChar(0x3E)},      {QStringLiteral("quot"), QChar(0x22)},
        {QStringLiteral("apos"), QChar(0x27)},    {QStringLiteral("nbsp"), QChar(0xA0)},
        {QStringLiteral("copy"), QChar(0xA9)},    {QStringLiteral("reg"), QChar(0xAE)},
        {QStringLiteral("trade"), QChar(0x2122)}, {QStringLiteral("euro"), QChar(0x20AC)},
        {QStringLiteral("pound"), QChar(0xA3)},   {QStringLiteral("yen"), QChar(0xA5)},
        {QStringLiteral("cent"), QChar(0xA2)},    {QStringLiteral("sect"), QChar(0xA7)},
        {QStringLiteral("deg"), QChar(0xB0)},     {QStringLiteral("plusmn"), QChar(0xB1)},
        {QStringLiteral("times"), QChar(0xD7)},   {QStringLiteral("divide"), QChar(0xF7)},
        {QStringLiteral("para"), QChar(0xB6)},    {QStringLiteral("middot"), QChar(0xB7)},
        {QStringLiteral("laquo"), QChar(0xAB)},   {QStringLiteral("raquo"), QChar(0xBB)},
        {QStringLiteral("ndash"), QChar(0x2013)}, {QStringLiteral("mdash"), QChar(0x2014)},
        {QStringLiteral("lsquo"), QChar(0x2018)}, {QStringLiteral("rsquo"), QChar(0x2019)},
        {QStringLiteral("ldquo"), QChar(0x201C)}, {QStringLiteral("rdquo"), QChar(0x201D)},
        {QStringLiteral("bull"), QChar(0x2022)},  {QStringLiteral("hellip"), QChar(0x2026)}};
    return names;
}

const QHash<QString, QChar> &xmlNames()
{
    static const QHash<QString, QChar> names {{QStringLiteral("amp"), QChar(0x26)},
                                              {QStringLiteral("lt"), QChar(0x3C)},
                                              {QStringLiteral("gt"), QChar(0x3E)},
                                              {QStringLiteral("quot"), QChar(0x22)},
                                              {QStringLiteral("apos"), QChar(0x27)}};
    return names;
}

// The character of a numeric reference ("#38", "#x26"), as UTF-16; empty when the number is
// no character.
QString numericReference(const QString &name)
{
    bool ok = false;
    const uint code = name.startsWith(QLatin1String("#x"), Qt::CaseInsensitive)
        ? name.midRef(2).toUInt(&ok, 16)
        : name.midRef(1).toUInt(&ok, 10);
    if (!ok || code == 0 || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return QString();
    return QString::fromUcs4(&code, 1);
}

// Replaces each "&name;" that names a character; anything else, a lone "&" included, stays.
QString unescape(const QString &text, const QHash<QString, QChar> &names)
{
    if (!text.contains(QLatin1Char('&')))
        return text;
    QString result;
    result.reserve(text.size());
    int from = 0;
    for (;;) {
        const int amp = text.indexOf(QLatin1Char('&'), from);
        const int semicolon = amp < 0 ? -1 : text.indexOf(QLatin1Char(';'), amp + 1);
        if (semicolon < 0) {
            result += text.midRef(from);
            return result;
        }
        const QString name = text.mid(amp + 1, semicolon - amp - 1);
        const QString character = name.startsWith(QLatin1Char('#'))
            ? numericReference(name)
            : (names.contains(name) ? QString(names.value(name)) : QString());
        result += text.midRef(from, amp - from);
        if (character.isEmpty()) {
            // Not a reference: keep the "&" and look again just after it.
            result += QLatin1Char('&');
            from = amp + 1;
        } else {
            result += character;
            from = semicolon + 1;
        }
    }
}

QString escapeXml(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '&':
            result += QLatin1String("&amp;");
            break;
        case '<':
            result += QLatin1String("&lt;");
            break;
        case '>':
            result += QLatin1String("&gt;");
            break;
        case '"':
            result += QLatin1String("&quot;");
            break;
        case '\'':
            result += QLatin1String("&apos;");
            break;
        default:
            result += c;
        }
    }
    return result;
}

QString fromBase64(const QString &text)
{
    const QByteArray::FromBase64Result decoded = QByteArray::fromBase64Encoding(
        text.trimmed().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? QString::fromUtf8(decoded.decoded) : text;
}

} // namespace

const TransformDescriptor &TransformDecode::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 13;
        d.typeName = QStringLiteral("Decode");
        d.displayName = QStringLiteral("Decode");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly;
        d.description = QStringLiteral("Convert to/from Base64 encoding, URL encoding, escaped "
                                       "HTML or escaped XML.");
        d.keywords = QStringLiteral("encode encoding escape unescape base64 url percent html xml "
                                    "entities")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformDecode>;
        return d;
    }();
    return descriptor;
}

QStringList TransformDecode::changeNames()
{
    return {QStringLiteral("<select>"),           QStringLiteral("From Base64 encoding"),
            QStringLiteral("To Base64 encoding"), QStringLiteral("From URL encoding"),
            QStringLiteral("To URL encoding"),    QStringLiteral("From escaped HTML"),
            QStringLiteral("To escaped HTML"),    QStringLiteral("From escaped XML"),
            QStringLiteral("To escaped XML")};
}

void TransformDecode::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    addParameter(CellRules::createColumnsParameter(
        inputs.value(0), QStringLiteral("Select the column(s) to decode or encode.")));

    const QStringList names = changeNames();
    auto *change = new Parameter(ParameterType::Selection, QStringLiteral("Change"),
                                 QStringLiteral("Decode"), names.first(), names);
    change->setToolTip(QStringLiteral("Select how to decode/encode the data."));
    applyRememberedValue(useRemembered, change);
    addParameter(change);
}

void TransformDecode::migrateParameters(int, QList<StoredParameter> *parameters) const
{
    // Some documents name the choice after its label.
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key == QLatin1String("Decode"))
            parameter.key = QStringLiteral("Change");
    }
}

QString TransformDecode::changed(const QString &text, int change)
{
    if (text.isEmpty())
        return text;
    switch (change) {
    case FromBase64:
        return fromBase64(text);
    case ToBase64:
        return QString::fromLatin1(text.toUtf8().toBase64());
    case FromUrl:
        return QUrl::fromPercentEncoding(text.toUtf8());
    case ToUrl:
        return QString::fromLatin1(QUrl::toPercentEncoding(text));
    case FromHtml:
        return unescape(text, htmlNames());
    case ToHtml:
        return text.toHtmlEscaped();
    case FromXml:
        return unescape(text, xmlNames());
    case ToXml:
        return escapeXml(text);
    default:
        return text;
    }
}

Dataset &TransformDecode::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &, bool &)
{
    const Parameter *columnsOption = &option(QStringLiteral("Columns"));
    const int change = option(QStringLiteral("Change")).toSelectionIndex();

    output = inputDataset(inputs, 0);
    if (change <= Unchosen) {
        setResult(cellsChangedText(0, 0));
        return output;
    }
    const CellRules::Counts counts = CellRules::rewriteCells(
        output, CellRules::selectedColumns(*columnsOption),
        [change](int, const QString &cell) { return changed(cell, change); },
        [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(cellsChangedText(counts.changed, counts.unchanged));
    return output;
}
