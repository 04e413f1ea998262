#pragma once

#include <QDomElement>
#include <QList>
#include <QPointF>
#include <QString>
#include <QStringList>

// The value forms of a document's attributes. Every text is percent-encoded, so a document
// is pure ASCII; empty texts and lists are left out; list items are joined by U+001F.
namespace XmlAttributes {

constexpr QChar ListSeparator = QChar(0x1F);

void setInt(QDomElement &element, const QString &name, int value);
void setBool(QDomElement &element, const QString &name, bool value);
void setText(QDomElement &element, const QString &name, const QString &text);
void setTextList(QDomElement &element, const QString &name, const QStringList &texts);
void setIntList(QDomElement &element, const QString &name, const QList<int> &values);
// Writes both point forms: pos_v12 as a list, and the older pos joined by "^".
void setPosition(QDomElement &element, const QPointF &point);

// Readers: a missing attribute, or one that does not parse, gives the default.
int intValue(const QDomElement &element, const QString &name, int defaultValue);
bool boolValue(const QDomElement &element, const QString &name, bool defaultValue);
QString text(const QDomElement &element, const QString &name,
             const QString &defaultValue = QString());
QStringList textList(const QDomElement &element, const QString &name);
QList<int> intList(const QDomElement &element, const QString &name);
// pos_v12 when present and not empty, else pos.
QPointF position(const QDomElement &element);

QString encode(const QString &text);
QString decode(const QString &text);

} // namespace XmlAttributes
