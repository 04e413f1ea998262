#include "io/xlsxpackage.h"

#include <QDir>
#include <QXmlStreamReader>

#include <quazip/quazip.h>
#include <quazip/quazipfile.h>

namespace XlsxPackage {

// Office Open XML writes characters that XML can't hold as "_xHHHH_".
QString decodeEscapes(const QString &text)
{
    if (!text.contains(QLatin1String("_x")))
        return text;
    QString out;
    out.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('_') && i + 6 < text.size()
            && text.at(i + 1) == QLatin1Char('x') && text.at(i + 6) == QLatin1Char('_')) {
            bool ok = false;
            const ushort code = text.midRef(i + 2, 4).toUShort(&ok, 16);
            if (ok) {
                out.append(QChar(code));
                i += 6;
                continue;
            }
        }
        out.append(text.at(i));
    }
    return out;
}

QString resolveTarget(const QString &sourcePart, const QString &target)
{
    if (target.startsWith(QLatin1Char('/')))
        return QDir::cleanPath(target.mid(1));
    const int slash = sourcePart.lastIndexOf(QLatin1Char('/'));
    const QString folder = slash < 0 ? QString() : sourcePart.left(slash + 1);
    QString resolved = QDir::cleanPath(folder + target);
    while (resolved.startsWith(QLatin1String("../")))
        resolved.remove(0, 3);
    return resolved;
}

QString relationshipsPart(const QString &part)
{
    const int slash = part.lastIndexOf(QLatin1Char('/'));
    return part.left(slash + 1) + QStringLiteral("_rels/") + part.mid(slash + 1)
        + QStringLiteral(".rels");
}

bool hasPart(QuaZip &zip, const QString &part)
{
    return zip.setCurrentFile(part, QuaZip::csInsensitive);
}

bool readPart(QuaZip &zip, const QString &part,
              const std::function<bool(QXmlStreamReader &reader, QString *error)> &read,
              QString *error)
{
    if (!zip.setCurrentFile(part, QuaZip::csInsensitive)) {
        *error = QStringLiteral("Part '%1' is missing.").arg(part);
        return false;
    }
    QuaZipFile file(&zip);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("Part '%1' can't be unpacked.").arg(part);
        return false;
    }
    QXmlStreamReader reader(&file);
    // Read up to the root element, refusing a DTD on the way.
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::DTD) {
            *error
                = QStringLiteral("Part '%1' declares a DTD, which workbooks never do.").arg(part);
            return false;
        }
        if (token == QXmlStreamReader::StartElement)
            break;
    }
    if (reader.hasError()) {
        *error = QStringLiteral("Part '%1' is not well-formed XML: %2")
                     .arg(part, reader.errorString());
        return false;
    }
    if (!read(reader, error))
        return false;
    if (reader.hasError() && reader.error() != QXmlStreamReader::PrematureEndOfDocumentError) {
        *error = QStringLiteral("Part '%1' is not well-formed XML at line %2: %3")
                     .arg(part)
                     .arg(reader.lineNumber())
                     .arg(reader.errorString());
        return false;
    }
    if (file.getZipError() != UNZ_OK) {
        *error = QStringLiteral("Part '%1' is damaged.").arg(part);
        return false;
    }
    return true;
}

QHash<QString, Relationship> readRelationships(QuaZip &zip, const QString &part, QString *error)
{
    QHash<QString, Relationship> relationships;
    const QString relsPart = relationshipsPart(part);
    if (!hasPart(zip, relsPart))
        return relationships;
    readPart(
        zip, relsPart,
        [&](QXmlStreamReader &reader, QString *) {
            while (!reader.atEnd()) {
                if (reader.readNext() != QXmlStreamReader::StartElement
                    || reader.name() != QLatin1String("Relationship"))
                    continue;
                const QXmlStreamAttributes attributes = reader.attributes();
                Relationship relationship;
                const QString type = attributes.value(QLatin1String("Type")).toString();
                relationship.type = type.mid(type.lastIndexOf(QLatin1Char('/')) + 1);
                relationship.external = attributes.value(QLatin1String("TargetMode"))
                                            .compare(QLatin1String("External"), Qt::CaseInsensitive)
                    == 0;
                const QString target = attributes.value(QLatin1String("Target")).toString();
                relationship.target = relationship.external ? target : resolveTarget(part, target);
                relationships.insert(attributes.value(QLatin1String("Id")).toString(),
                                     relationship);
            }
            return true;
        },
        error);
    return relationships;
}

} // namespace XlsxPackage
