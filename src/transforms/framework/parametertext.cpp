#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterkind.h"

#include "transforms/framework/columnsource.h"

#include <QUrl>

// The text forms of options as documents store them, and their reading back. The form of
// each kind is in its row of the kind table.

namespace {

const QChar FieldSeparator(0x1F);
const QLatin1Char OldFieldSeparator('^');

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
    return m_hasPendingText ? m_pendingText : kind().write(*this);
}

void Parameter::fromText(const QString &text, int version)
{
    if (version < 0)
        version = CurrentDocumentVersion;
    kind().read(*this, splitFields(text), text, version);
}
