#pragma once

#include <QHash>
#include <QString>

#include <functional>

class QuaZip;
class QXmlStreamReader;

// The zip package of an Office Open XML file: parts found by name without regard to case,
// relationships between parts, and each part read as a stream of XML.
namespace XlsxPackage {

struct Relationship
{
    QString type; // the last segment of the type URI: "worksheet", "sharedStrings", ...
    QString target; // a part name for internal targets, the address for external ones
    bool external = false;
};

// Office Open XML writes characters that XML can't hold as "_xHHHH_"; this reads them back.
QString decodeEscapes(const QString &text);

// The part that a relationship's target names, seen from the part that holds it.
QString resolveTarget(const QString &sourcePart, const QString &target);
// "xl/worksheets/sheet1.xml" -> "xl/worksheets/_rels/sheet1.xml.rels".
QString relationshipsPart(const QString &part);

// Reads a part by handing a positioned reader to `read`, which returns false with an error
// to stop. Documents with a DTD are refused: no workbook part has one, and entity
// declarations are the way to blow a small file up into gigabytes of text.
bool readPart(QuaZip &zip, const QString &part,
              const std::function<bool(QXmlStreamReader &reader, QString *error)> &read,
              QString *error);
bool hasPart(QuaZip &zip, const QString &part);

// The relationships of a part by id; empty when it has none.
QHash<QString, Relationship> readRelationships(QuaZip &zip, const QString &part, QString *error);

} // namespace XlsxPackage
