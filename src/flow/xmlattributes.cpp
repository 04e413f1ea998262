#include "flow/xmlattributes.h"

#include <QUrl>

namespace XmlAttributes {

QString encode(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString decode(const QString &text)
{
    return QUrl::fromPercentEncoding(text.toLatin1());
}

void setInt(QDomElement &element, const QString &name, int value)
{
    element.setAttribute(name, QString::number(value, 10));
}

void setBool(QDomElement &element, const QString &name, bool value)
{
    setInt(element, name, value ? 1 : 0);
}

void setText(QDomElement &element, const QString &name, const QString &text)
{
    if (!text.isEmpty())
        element.setAttribute(name, encode(text));
}

void setTextList(QDomElement &element, const QString &name, const QStringList &texts)
{
    if (texts.isEmpty())
        return;
    QStringList encoded;
    encoded.reserve(texts.size());
    for (const QString &text : texts)
        encoded.append(encode(text));
    element.setAttribute(name, encoded.join(ListSeparator));
}

void setIntList(QDomElement &element, const QString &name, const QList<int> &values)
{
    if (values.isEmpty())
        return;
    QStringList numbers;
    numbers.reserve(values.size());
    for (int value : values)
        numbers.append(QString::number(value));
    element.setAttribute(name, numbers.join(ListSeparator));
}

void setPosition(QDomElement &element, const QPointF &point)
{
    const QString x = QString::number(point.x(), 'g', 6);
    const QString y = QString::number(point.y(), 'g', 6);
    element.setAttribute(QStringLiteral("pos_v12"), x + ListSeparator + y);
    element.setAttribute(QStringLiteral("pos"), x + QLatin1Char('^') + y);
}

int intValue(const QDomElement &element, const QString &name, int defaultValue)
{
    if (!element.hasAttribute(name))
        return defaultValue;
    bool ok = false;
    const int value = element.attribute(name).toInt(&ok, 10);
    return ok ? value : defaultValue;
}

bool boolValue(const QDomElement &element, const QString &name, bool defaultValue)
{
    return intValue(element, name, defaultValue ? 1 : 0) != 0;
}

QString text(const QDomElement &element, const QString &name, const QString &defaultValue)
{
    if (!element.hasAttribute(name))
        return defaultValue;
    return decode(element.attribute(name));
}

QStringList textList(const QDomElement &element, const QString &name)
{
    QStringList texts;
    const QString raw = element.attribute(name);
    if (raw.isEmpty())
        return texts;
    const QStringList parts = raw.split(ListSeparator);
    for (const QString &part : parts)
        texts.append(decode(part));
    return texts;
}

QList<int> intList(const QDomElement &element, const QString &name)
{
    QList<int> values;
    const QString raw = element.attribute(name);
    if (raw.isEmpty())
        return values;
    const QStringList parts = raw.split(ListSeparator);
    for (const QString &part : parts) {
        bool ok = false;
        const int value = part.toInt(&ok);
        if (ok)
            values.append(value);
    }
    return values;
}

QPointF position(const QDomElement &element)
{
    QString raw = element.attribute(QStringLiteral("pos_v12"));
    QChar separator = ListSeparator;
    if (raw.isEmpty()) {
        raw = element.attribute(QStringLiteral("pos"));
        separator = QLatin1Char('^');
    }
    const QStringList parts = raw.split(separator);
    if (parts.size() != 2)
        return QPointF();
    return QPointF(parts.at(0).toDouble(), parts.at(1).toDouble());
}

} // namespace XmlAttributes
