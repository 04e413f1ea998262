#include "flow/document.h"
#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parametermigration.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"
#include "transforms/transformcase.h"

#include <QDomDocument>
#include <QTemporaryDir>
#include <QtTest>

#include <utime.h>

namespace {

// Stands in for transforms whose options older documents store differently: it has the
// options, kinds and keys of the real one, and does nothing.
class OptionsOnlyTransform : public Transform
{
public:
    using Factory = std::function<void(OptionsOnlyTransform *)>;
    using Migration = std::function<void(int, QList<StoredParameter> *)>;

    OptionsOnlyTransform(const QString &typeName = QString(), Factory factory = nullptr,
                         Migration migration = nullptr)
        : m_factory(std::move(factory))
        , m_migration(std::move(migration))
    {
        m_descriptor.type = 900;
        m_descriptor.typeName = typeName;
        m_descriptor.displayName = typeName;
        m_descriptor.description = QStringLiteral("Options only.");
        m_descriptor.create = createTransform<OptionsOnlyTransform>;
    }

    const TransformDescriptor &descriptor() const override { return m_descriptor; }
    void createParameters(const ColumnSources &inputs, bool useRemembered) override
    {
        Transform::createParameters(inputs, useRemembered);
        if (m_factory)
            m_factory(this);
    }
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override
    {
        if (m_migration)
            m_migration(version, parameters);
    }

protected:
    void copyFrom(const Transform &other) override
    {
        Transform::copyFrom(other);
        const auto &options = static_cast<const OptionsOnlyTransform &>(other);
        m_descriptor = options.m_descriptor;
        m_factory = options.m_factory;
        m_migration = options.m_migration;
    }
    Dataset &process(Dataset &output, const TransformInputs &, const RunContext &, bool &) override
    {
        return output;
    }

private:
    TransformDescriptor m_descriptor;
    Factory m_factory;
    Migration m_migration;
};

const QString SavedBy = QStringLiteral("tester_using_Tabulon_v0_1_0_on_Test_x86_64_at_2026-01-02_"
                                       "03_04_05");

QString documentsFolder()
{
    return QStringLiteral(TABULON_TEST_DATA "/documents");
}

QString readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

bool writeAll(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QDomElement parse(const QString &text)
{
    QDomDocument doc;
    doc.setContent(text);
    return doc.documentElement();
}

QStringList childNames(const QDomElement &element)
{
    QStringList names;
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        names.append(child.tagName());
    return names;
}

// The given attributes of each child of the group, joined by ">".
QStringList attributes(const QDomElement &root, const QString &group, const QStringList &names)
{
    QStringList values;
    for (QDomElement e = root.firstChildElement(group).firstChildElement(); !e.isNull();
         e = e.nextSiblingElement()) {
        QStringList parts;
        for (const QString &name : names)
            parts.append(e.attribute(name));
        values.append(parts.join(QLatin1Char('>')));
    }
    return values;
}

TransformItem *transformById(const FlowModel &model, int id)
{
    return qobject_cast<TransformItem *>(model.itemById(id));
}

QString pendingText(const FlowModel &model, int id, const QString &key)
{
    const TransformItem *node = transformById(model, id);
    if (!node)
        return QStringLiteral("<no item>");
    const Parameter *parameter = node->transform()->parameter(key);
    return parameter ? parameter->toText() : QStringLiteral("<no option>");
}

// The value attribute of one option of one transform in a document's text.
QString storedValue(const QString &text, int id, const QString &key)
{
    const QDomElement transforms = parse(text).firstChildElement(QStringLiteral("transforms"));
    for (QDomElement t = transforms.firstChildElement(); !t.isNull(); t = t.nextSiblingElement()) {
        if (t.attribute(QStringLiteral("id")).toInt() != id)
            continue;
        const QDomElement parameters = t.firstChildElement(QStringLiteral("parameters"));
        for (QDomElement p = parameters.firstChildElement(); !p.isNull();
             p = p.nextSiblingElement()) {
            if (p.attribute(QStringLiteral("name")) == key)
                return p.attribute(QStringLiteral("value"));
        }
    }
    return QStringLiteral("<absent>");
}

} // namespace

// The document file: what is written, in which order and form, what reading makes of current
// and older files, and the lock and recovery file around them.
class TestDocument : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void textsSurviveSaveAndLoad();
    void documentDataSurvives();
    void elementsInOrder();
    void savingTwiceGivesSameText();
    void openAndSaveWithoutRunIsUnchanged();
    void optionsResolveAfterRun();
    void olderRandomLowersMaximumOnce();
    void migrateParameters_data();
    void migrateParameters();
    void olderFilterOperatorsSurviveSave();
    void positions_data();
    void positions();
    void droppedTransforms();
    void missingInputFiles();
    void loadFailures_data();
    void loadFailures();
    void laterVersionAndMissingMeta();
    void lockExcludesSecondHolder();
    void saveRespectsLocks();
    void recoveryFile();

private:
    QString copyDocument(const QString &name);
    bool load(FlowModel &model, const QString &path, DocumentData *data = nullptr,
              QStringList *messages = nullptr);

    QScopedPointer<QTemporaryDir> m_dir;
    QTemporaryDir m_tempFolder;
};

void TestDocument::initTestCase()
{
    QVERIFY(m_tempFolder.isValid());
    // The recovery file lives in the temporary folder; keep the user's own out of reach.
    qputenv("TMPDIR", QFile::encodeName(m_tempFolder.path()));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

    // Random's maximum became exclusive at version 78: the shape of a migration of its own.
    const auto lowerMaximum = [](int version, QList<StoredParameter> *parameters) {
        for (StoredParameter &parameter : *parameters) {
            if (version < 78 && parameter.key == QLatin1String("Maximum_Int"))
                ParameterMigration::lowerByOne(&parameter);
        }
    };
    TransformRegistry::addPrototype(new OptionsOnlyTransform(
        QStringLiteral("Random"),
        [](Transform *t) {
            t->addParameter(new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                          QStringLiteral("New column name"), "Random"));
            t->addParameter(new Parameter(ParameterType::Int, QStringLiteral("Minimum_Int"),
                                          QStringLiteral("Minimum"), 0));
            t->addParameter(new Parameter(ParameterType::Int, QStringLiteral("Maximum_Int"),
                                          QStringLiteral("Maximum"), 100));
        },
        lowerMaximum));
    TransformRegistry::addPrototype(
        new OptionsOnlyTransform(QStringLiteral("Filter"), [](Transform *t) {
            t->addParameter(new Parameter(ParameterType::FilterColumns, QStringLiteral("Terms"),
                                          QStringLiteral("Terms"), nullptr));
            t->addParameter(new Parameter(ParameterType::If, QStringLiteral("Branches"),
                                          QStringLiteral("Branches"), nullptr));
        }));
}

void TestDocument::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(m_dir->isValid());
    removeRecoveryFile();
}

// A copy of a case folder, so that tests may write beside the document.
QString TestDocument::copyDocument(const QString &name)
{
    const QDir source(documentsFolder() + QLatin1Char('/') + name);
    const QDir target(m_dir->filePath(name));
    if (!source.exists() || !QDir().mkpath(target.path()))
        return QString();
    const QStringList files = source.entryList(QDir::Files);
    for (const QString &file : files) {
        if (!QFile::copy(source.filePath(file), target.filePath(file)))
            return QString();
        QFile(target.filePath(file)).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    }
    return target.filePath(QStringLiteral("document.tabulon"));
}

bool TestDocument::load(FlowModel &model, const QString &path, DocumentData *data,
                        QStringList *messages)
{
    DocumentData ignored;
    bool laterVersion = false;
    QString error;
    const bool ok
        = loadDocument(&model, path, data ? data : &ignored, &laterVersion, messages, &error);
    if (!ok)
        qWarning("%s", qPrintable(error));
    return ok;
}

void TestDocument::textsSurviveSaveAndLoad()
{
    // Non-ASCII, quotes and markup, line ends and tabs, the list and point separators, escapes.
    const QString text = QStringLiteral("Größe — Ωmega 数据 😀 \"double\" 'single' <tag> & amp; "
                                        "first\nsecond\r\n\tthird a^b\x1f"
                                        "c %20 %");
    FlowModel model;
    auto *input = new InputItem(1);
    input->setMedium(InputItem::Clipboard);
    input->setText(QStringLiteral("a,b\n1,2\n"));
    input->setAlias(text);
    input->setComment(text);
    model.addItem(input);
    Transform *caseTransform = new TransformCase;
    caseTransform->createParameters({}, false);
    auto *transform = new TransformItem(caseTransform, 2, QString(), text);
    model.addItem(transform);
    auto *output = new OutputItem(3);
    output->setAlias(text);
    output->setComment(text);
    model.addItem(output);
    auto *note = new NoteItem(4);
    note->setComment(text);
    model.addItem(note);
    DocumentData data;
    data.notes = text;

    const QString path = m_dir->filePath(QStringLiteral("texts.tabulon"));
    QString error;
    QVERIFY2(saveDocument(nullptr, model, data, path, &error), qPrintable(error));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    for (const char c : bytes)
        QVERIFY2(static_cast<unsigned char>(c) < 0x80, "a document is pure ASCII");

    FlowModel loaded;
    DocumentData read;
    QVERIFY(load(loaded, path, &read));
    QCOMPARE(loaded.itemById(1)->alias(), text.trimmed());
    QCOMPARE(loaded.itemById(1)->comment(), text);
    QCOMPARE(loaded.itemById(2)->comment(), text);
    QCOMPARE(loaded.itemById(3)->alias(), text.trimmed());
    QCOMPARE(loaded.itemById(3)->comment(), text);
    QCOMPARE(loaded.itemById(4)->comment(), text);
    QCOMPARE(read.notes, text);
}

void TestDocument::documentDataSurvives()
{
    FlowModel model;
    auto *note = new NoteItem(7);
    note->setColor(QStringLiteral("#123456"));
    note->setArrow(2);
    note->setPos(QPointF(-12.5, 1234567.0));
    model.addItem(note);
    DocumentData data;
    data.id = QStringLiteral("doc-42");
    data.autoRun = false;
    data.snapToGrid = true;
    data.batchValues = {{0, QStringLiteral("in"), QStringLiteral("/data/a b.csv")},
                        {1, QStringLiteral("in"), QStringLiteral("c:\\x\\*.xlsx[*]")},
                        {0, QStringLiteral("out"), QStringLiteral("{datetime}.csv")}};
    data.batchLogging = {true, true, QStringLiteral("/logs/run log.txt"), 1};

    const QString path = m_dir->filePath(QStringLiteral("data.tabulon"));
    QString error;
    QVERIFY2(saveDocument(nullptr, model, data, path, &error), qPrintable(error));
    FlowModel loaded;
    DocumentData read;
    QVERIFY(load(loaded, path, &read));
    QCOMPARE(read.id, data.id);
    QCOMPARE(read.autoRun, false);
    QCOMPARE(read.snapToGrid, true);
    QCOMPARE(read.batchValues, data.batchValues);
    QCOMPARE(read.batchLogging, data.batchLogging);
    QCOMPARE(read.docPath, QDir::toNativeSeparators(path));
    QCOMPARE(read.locale, QStringLiteral("en_US"));
    QCOMPARE(readAll(path), documentText(model, data, path, read.lastSavedBy));
    QVERIFY(read.lastSavedBy.contains(QStringLiteral("Tabulon_v")));
    QVERIFY(read.lastSavedBy.contains(QDate::currentDate().toString(Qt::ISODate)));
    QVERIFY(!read.lastSavedBy.contains(QLatin1Char(' ')));
    QVERIFY(!read.lastSavedBy.contains(QLatin1Char(':')));

    auto *readNote = qobject_cast<NoteItem *>(loaded.itemById(7));
    QVERIFY(readNote);
    QCOMPARE(readNote->color(), QStringLiteral("#123456"));
    QCOMPARE(readNote->arrow(), 2);
    // Six significant digits, as written.
    QCOMPARE(readNote->pos(), QPointF(-12.5, 1234570.0));
}

void TestDocument::elementsInOrder()
{
    FlowModel model;
    // Created out of id order: groups are written sorted by id.
    FlowItem *input9 = addTextInput(model, QStringLiteral("a\n1\n"), QPointF(0, 100));
    input9->setId(9);
    FlowItem *input3 = addTextInput(model, QStringLiteral("a\n1\n"), QPointF(0, 0));
    input3->setId(3);
    TransformItem *case5 = addTransform(model, new TransformCase, {input9}, QPointF(200, 100));
    case5->setId(5);
    TransformItem *case4 = addTransform(model, new TransformCase, {input3}, QPointF(200, 0));
    case4->setId(4);
    DocumentData data;

    const QString text = documentText(model, data, QStringLiteral("/x/y.tabulon"), SavedBy);
    QVERIFY(text.startsWith(QStringLiteral("<!DOCTYPE Tabulon>\n<root>\n    <meta>")));
    const QDomElement root = parse(text);
    QCOMPARE(childNames(root),
             QStringList({"meta", "inputs", "transforms", "outputs", "notes", "connections",
                          "batch_values", "batch_logging"}));
    const QDomElement meta = root.firstChildElement(QStringLiteral("meta"));
    // No id: the element is left out.
    QCOMPARE(childNames(meta),
             QStringList({"version", "last_saved_by", "locale", "snap_to_grid", "notes", "doc_path",
                          "auto_run_on"}));
    QCOMPARE(meta.firstChildElement(QStringLiteral("version")).attribute(QStringLiteral("value")),
             QStringLiteral("81"));
    QCOMPARE(
        meta.firstChildElement(QStringLiteral("last_saved_by")).attribute(QStringLiteral("value")),
        SavedBy);

    QCOMPARE(attributes(root, "inputs", {"id"}), QStringList({"3", "9"}));
    QCOMPARE(attributes(root, "transforms", {"id"}), QStringList({"4", "5"}));
    QCOMPARE(attributes(root, "connections", {"start_id", "end_id"}), QStringList({"3>4", "9>5"}));

    const QDomElement firstTransform
        = root.firstChildElement(QStringLiteral("transforms")).firstChildElement();
    QCOMPARE(firstTransform.attribute(QStringLiteral("name")), QStringLiteral("Case"));
    QCOMPARE(firstTransform.attribute(QStringLiteral("pos")), QStringLiteral("200^0"));
    QCOMPARE(firstTransform.attribute(QStringLiteral("pos_v12")),
             QStringLiteral("200\x1f"
                            "0"));
    QCOMPARE(childNames(firstTransform.firstChildElement(QStringLiteral("parameters"))),
             QStringList({"parameter", "parameter", "parameter"}));
    const QDomElement caseOption = firstTransform.firstChildElement(QStringLiteral("parameters"))
                                       .firstChildElement()
                                       .nextSiblingElement();
    QCOMPARE(caseOption.attribute(QStringLiteral("name")), QStringLiteral("Case"));
    QCOMPARE(caseOption.attribute(QStringLiteral("type")), QStringLiteral("6"));
    QCOMPARE(caseOption.attribute(QStringLiteral("value")), QStringLiteral("Lower%20case"));
}

void TestDocument::savingTwiceGivesSameText()
{
    auto build = [](FlowModel &model) {
        FlowItem *input = addTextInput(model, QStringLiteral("a,b\n1,2\n"), QPointF(0, 0));
        input->setId(1);
        input->setAlias(QStringLiteral("in"));
        TransformItem *transform
            = addTransform(model, new TransformCase, {input}, QPointF(150.25, 10));
        transform->setId(2);
        auto *output = new OutputItem(3, QStringLiteral("/out/file.csv"));
        model.addItem(output);
        model.connectItems(transform, output);
        auto *note = new NoteItem(4);
        note->setComment(QStringLiteral("note"));
        model.addItem(note);
    };
    FlowModel model;
    build(model);
    DocumentData data;
    data.notes = QStringLiteral("notes");
    const QString path = QStringLiteral("/docs/same.tabulon");
    const QString first = documentText(model, data, path, SavedBy);
    QCOMPARE(documentText(model, data, path, SavedBy), first);

    // Another model of the same shape gives the same attributes in the same order.
    FlowModel other;
    build(other);
    QCOMPARE(documentText(other, data, path, SavedBy), first);
}

void TestDocument::openAndSaveWithoutRunIsUnchanged()
{
    const QString original = copyDocument(QStringLiteral("unresolved_options"));
    QVERIFY(!original.isEmpty());
    const QString originalText = readAll(original);

    FlowModel model;
    DocumentData data;
    QVERIFY(load(model, original, &data));
    const QString saved = m_dir->filePath(QStringLiteral("saved.tabulon"));
    const QString first = documentText(model, data, saved, SavedBy);
    // Texts that no longer match the data stand as they were read: a column beyond the input,
    // a choice that the transform doesn't offer, a number that isn't one.
    QCOMPARE(storedValue(first, 2, QStringLiteral("Columns")),
             storedValue(originalText, 2, QStringLiteral("Columns")));
    QCOMPARE(storedValue(first, 2, QStringLiteral("Columns")),
             QStringLiteral("7\x1f"
                            "2"));
    QCOMPARE(storedValue(first, 2, QStringLiteral("Case")), QStringLiteral("Shouting%20case"));
    QCOMPARE(storedValue(first, 2, QStringLiteral("Keep_Upper")), QStringLiteral("yes"));
    QCOMPARE(storedValue(first, 3, QStringLiteral("Columns")), QString());

    QVERIFY(writeAll(saved, first.toUtf8()));
    FlowModel again;
    DocumentData dataAgain;
    QVERIFY(load(again, saved, &dataAgain));
    QCOMPARE(documentText(again, dataAgain, saved, SavedBy).toUtf8(), first.toUtf8());
}

void TestDocument::optionsResolveAfterRun()
{
    const QString path = copyDocument(QStringLiteral("unresolved_options"));
    QVERIFY(!path.isEmpty());
    FlowModel model;
    QVERIFY(load(model, path));
    model.process(FlowModel::RunAll, true);
    const TransformItem *node = transformById(model, 2);
    QVERIFY(node);
    QCOMPARE(node->status(), int(FlowItem::UpToDate));
    // Column 7 doesn't exist in the two-column input; column 2 does.
    QCOMPARE(pendingText(model, 2, QStringLiteral("Columns")), QStringLiteral("2"));
    QCOMPARE(pendingText(model, 2, QStringLiteral("Case")), QStringLiteral("Lower%20case"));
    QCOMPARE(node->dataset()->cell(0, 1), QStringLiteral("mixed case"));
}

void TestDocument::olderRandomLowersMaximumOnce()
{
    const QString old = copyDocument(QStringLiteral("version60_random"));
    QVERIFY(!old.isEmpty());
    for (int load = 0; load < 2; ++load) {
        FlowModel model;
        QVERIFY(this->load(model, old));
        QCOMPARE(pendingText(model, 2, QStringLiteral("Maximum_Int")), QStringLiteral("99"));
        QCOMPARE(pendingText(model, 2, QStringLiteral("Minimum_Int")), QStringLiteral("10"));
    }

    FlowModel model;
    DocumentData data;
    QVERIFY(load(model, old, &data));
    const QString saved = m_dir->filePath(QStringLiteral("saved.tabulon"));
    QString error;
    QVERIFY2(saveDocument(nullptr, model, data, saved, &error), qPrintable(error));
    const QString text = readAll(saved);
    QCOMPARE(parse(text)
                 .firstChildElement(QStringLiteral("meta"))
                 .firstChildElement(QStringLiteral("version"))
                 .attribute(QStringLiteral("value")),
             QStringLiteral("81"));
    QCOMPARE(storedValue(text, 2, QStringLiteral("Maximum_Int")), QStringLiteral("99"));

    FlowModel reloaded;
    QVERIFY(load(reloaded, saved));
    QCOMPARE(pendingText(reloaded, 2, QStringLiteral("Maximum_Int")), QStringLiteral("99"));
}

void TestDocument::migrateParameters_data()
{
    QTest::addColumn<QString>("typeName");
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("newKey");
    QTest::addColumn<int>("newType");
    QTest::addColumn<QString>("newText");

    QTest::newRow("Random maximum below 78") << "Random" << 77 << "Maximum_Int" << 8 << "100"
                                             << "Maximum_Int" << 8 << "99";
    QTest::newRow("Random maximum at 78") << "Random" << 78 << "Maximum_Int" << 8 << "100"
                                          << "Maximum_Int" << 8 << "100";
    QTest::newRow("Random maximum negative") << "Random" << 60 << "Maximum_Int" << 8 << "-5"
                                             << "Maximum_Int" << 8 << "-6";
    QTest::newRow("Random maximum not a number") << "Random" << 60 << "Maximum_Int" << 8 << "x"
                                                 << "Maximum_Int" << 8 << "x";
    QTest::newRow("Random minimum") << "Random" << 60 << "Minimum_Int" << 8 << "100"
                                    << "Minimum_Int" << 8 << "100";
    QTest::newRow("other transform's Maximum_Int") << "Sample" << 60 << "Maximum_Int" << 8 << "7"
                                                   << "Maximum_Int" << 8 << "7";
    QTest::newRow("Sequence minimum date")
        << "Sequence" << 77 << "User_Define_Minimum_Missing" << 7 << "2020-1-5"
        << "User_Define_Minimum_Missing_Date" << 21 << "2020-01-05";
    QTest::newRow("Sequence maximum date")
        << "Sequence" << 70 << "User_Define_Maximum_Missing" << 7 << "1999-12-31"
        << "User_Define_Maximum_Missing_Date" << 21 << "1999-12-31";
    QTest::newRow("Sequence minimum number")
        << "Sequence" << 77 << "User_Define_Minimum_Missing" << 7 << "12"
        << "User_Define_Minimum_Missing_Int" << 8 << "12";
    QTest::newRow("Sequence maximum not a date")
        << "Sequence" << 77 << "User_Define_Maximum_Missing" << 7 << "2020-13-01"
        << "User_Define_Maximum_Missing_Int" << 8 << "2020-13-01";
    QTest::newRow("Sequence at 78")
        << "Sequence" << 78 << "User_Define_Minimum_Missing" << 7 << "2020-1-5"
        << "User_Define_Minimum_Missing" << 7 << "2020-1-5";
    QTest::newRow("Split text delimiter") << "Split" << 58 << "Delimiter_Type" << 6 << "Text%20"
                                          << "Delimiter_Type" << 6 << "Text%20delimiter";
    QTest::newRow("Split regex delimiter") << "Split" << 40 << "Delimiter_Type" << 6 << "Regex%20"
                                           << "Delimiter_Type" << 6 << "Regex%20delimiter";
    QTest::newRow("Split at 59") << "Split" << 59 << "Delimiter_Type" << 6 << "Text%20"
                                 << "Delimiter_Type" << 6 << "Text%20";
    QTest::newRow("Split lengths") << "Split" << 58 << "Delimiter_Type" << 6 << "Lengths"
                                   << "Delimiter_Type" << 6 << "Lengths";
}

void TestDocument::migrateParameters()
{
    QFETCH(QString, typeName);
    QFETCH(int, version);
    QFETCH(QString, key);
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(QString, newKey);
    QFETCH(int, newType);
    QFETCH(QString, newText);

    const StoredParameter untouched {QStringLiteral("New_Name"), 7, QStringLiteral("Maximum_Int")};
    QList<StoredParameter> parameters {untouched, {key, type, text}};
    const Transform *prototype = TransformRegistry::prototype(typeName);
    QVERIFY(prototype);
    prototype->migrateParameters(version, &parameters);
    QCOMPARE(parameters.size(), 2);
    QCOMPARE(parameters.at(0).key, untouched.key);
    QCOMPARE(parameters.at(0).text, untouched.text);
    QCOMPARE(parameters.at(1).key, newKey);
    QCOMPARE(parameters.at(1).type, newType);
    QCOMPARE(parameters.at(1).text, newText);
}

void TestDocument::olderFilterOperatorsSurviveSave()
{
    const QString old = copyDocument(QStringLiteral("version56_filter"));
    QVERIFY(!old.isEmpty());
    FlowModel model;
    DocumentData data;
    QVERIFY(load(model, old, &data));
    const QString saved = m_dir->filePath(QStringLiteral("saved.tabulon"));
    QString error;
    QVERIFY2(saveDocument(nullptr, model, data, saved, &error), qPrintable(error));
    const QString text = readAll(saved);
    // "Is empty" and "Is not empty" were 14 and 15; the file of version 81 holds 19 and 20.
    QCOMPARE(storedValue(text, 2, QStringLiteral("Terms")),
             QStringLiteral("1^0^0^19^^1^20^^0^3^x%5Ey"));
    QCOMPARE(storedValue(text, 2, QStringLiteral("Branches")),
             QStringLiteral("*StartIf*\x1f"
                            "0\x1f"
                            "19\x1f\x1f"
                            "0\x1f"
                            "20\x1f"
                            "a\x1f"
                            "*EndIf*\x1f"
                            "then\x1f"
                            "else"));

    FlowModel reloaded;
    QVERIFY(load(reloaded, saved));
    TransformItem *node = transformById(reloaded, 2);
    QVERIFY(node);
    Parameter *terms = node->transform()->parameter(QStringLiteral("Terms"));
    QVERIFY(terms->resolvePendingText());
    const FilterTerms filter = terms->toFilterTerms();
    QCOMPARE(filter.terms.size(), 3);
    QCOMPARE(filter.terms.at(0).op, 19);
    QCOMPARE(filter.terms.at(1).op, 20);
    QCOMPARE(filter.terms.at(2).op, 3);
    QCOMPARE(filter.terms.at(2).value, QStringLiteral("x^y"));
    Parameter *branches = node->transform()->parameter(QStringLiteral("Branches"));
    QVERIFY(branches->resolvePendingText());
    const IfTerms ifTerms = branches->toIfTerms();
    QCOMPARE(ifTerms.branches.size(), 1);
    QCOMPARE(ifTerms.branches.at(0).terms.size(), 2);
    QCOMPARE(ifTerms.branches.at(0).terms.at(0).op, 19);
    QCOMPARE(ifTerms.branches.at(0).terms.at(1).op, 20);
    QCOMPARE(ifTerms.elseValue, QStringLiteral("else"));
}

void TestDocument::positions_data()
{
    QTest::addColumn<QString>("attributes");
    QTest::addColumn<QPointF>("expected");
    QTest::newRow("pos_v12 and pos")
        << QStringLiteral("pos_v12=\"10.5&#x1f;-20\" pos=\"1^2\"") << QPointF(10.5, -20);
    QTest::newRow("pos only") << QStringLiteral("pos=\"30^40.25\"") << QPointF(30, 40.25);
    QTest::newRow("empty pos_v12") << QStringLiteral("pos_v12=\"\" pos=\"-5^6\"") << QPointF(-5, 6);
}

void TestDocument::positions()
{
    QFETCH(QString, attributes);
    QFETCH(QPointF, expected);
    const QString text = QStringLiteral("<!DOCTYPE Tabulon>\n<root>\n<inputs><input id=\"1\" "
                                        "text=\"a\" %1/></inputs>\n<transforms><transform "
                                        "id=\"2\" name=\"Case\" %1/></transforms>\n<outputs>"
                                        "<output id=\"3\" %1/></outputs>\n<notes><note id=\"4\" "
                                        "%1/></notes>\n</root>\n")
                             .arg(attributes);
    const QString path = m_dir->filePath(QStringLiteral("positions.tabulon"));
    QVERIFY(writeAll(path, text.toUtf8()));
    FlowModel model;
    QVERIFY(load(model, path));
    QCOMPARE(model.items().size(), 4);
    for (int id = 1; id <= 4; ++id) {
        QVERIFY(model.itemById(id));
        QCOMPARE(model.itemById(id)->pos(), expected);
    }
}

void TestDocument::droppedTransforms()
{
    const QString path = copyDocument(QStringLiteral("dropped_transforms"));
    QVERIFY(!path.isEmpty());
    FlowModel model;
    QStringList messages;
    QVERIFY(load(model, path, nullptr, &messages));
    QCOMPARE(messages,
             QStringList({"The following deprecated transforms were not added:\n"
                          "'Replace' (1 item) - use the newer 'Replace' transform.\n"
                          "'Trim' (2 items) - use the newer 'Whitespace' transform.",
                          "The following unknown transforms were not added:\n"
                          "'Frobnicate' (1 item)"}));
    QList<int> ids;
    const QList<FlowItem *> nodes = model.items();
    for (const FlowItem *node : nodes)
        ids.append(node->id());
    std::sort(ids.begin(), ids.end());
    QCOMPARE(ids, QList<int>({1, 3, 4}));
    // Only input 1 to Case 4 remains; the connections through the dropped items are gone.
    const QList<FlowConnection *> connections = model.connections();
    QCOMPARE(connections.size(), 1);
    QCOMPARE(connections.first()->source()->id(), 1);
    QCOMPARE(connections.first()->target()->id(), 4);
    QVERIFY(model.itemById(3)->upstream().isEmpty());
    // New items never take an id that the document used.
    QVERIFY(FlowItem::nextId() > 12);
}

void TestDocument::missingInputFiles()
{
    const QString path = copyDocument(QStringLiteral("unresolved_options"));
    const QString inputPath = QFileInfo(path).absolutePath() + QStringLiteral("/input.csv");
    FlowModel model;
    QVERIFY(load(model, path));
    QVERIFY(inputsWithMissingFiles(model).isEmpty());
    QVERIFY(QFile::remove(inputPath));
    const QList<InputItem *> one = inputsWithMissingFiles(model);
    QCOMPARE(one.size(), 1);
    QCOMPARE(missingInputFilesQuestion(one),
             QStringLiteral("The following input file cannot be found:\n\n%1\n\nDo you wish to "
                            "choose a new input file?")
                 .arg(inputPath));

    // Clipboard inputs and inputs without a path have no file to miss.
    addTextInput(model, QStringLiteral("a\n"), QPointF(0, 300));
    model.addItem(new InputItem(50));
    QStringList expected;
    for (int i = 0; i < 11; ++i) {
        auto *input = new InputItem(100 + i);
        input->setPath(m_dir->filePath(QStringLiteral("gone%1.csv").arg(i)));
        model.addItem(input);
        if (i < 9)
            expected.append(input->path());
    }
    const QList<InputItem *> many = inputsWithMissingFiles(model);
    QCOMPARE(many.size(), 12);
    QCOMPARE(many.first()->id(), 1);
    QCOMPARE(missingInputFilesQuestion(many),
             QStringLiteral("The following 12 input files cannot be found:\n\n%1\n%2\n+ 2 more\n\n"
                            "Do you wish to choose new input files?")
                 .arg(inputPath, expected.join(QLatin1Char('\n'))));
}

void TestDocument::loadFailures_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("File '%1' is empty (size=0).");
    QTest::newRow("not XML") << QByteArray("<!DOCTYPE Tabulon>\n<root>\n<meta>\n</root>\n")
                             << QStringLiteral("Format error 'tag mismatch' detected at line 4 "
                                               "column 7.\nContact support if you are sure this "
                                               "a Tabulon file.");
    QTest::newRow("other document type")
        << QByteArray("<!DOCTYPE Other>\n<root/>\n") << QStringLiteral("Incorrect document type.");
    QTest::newRow("no document type")
        << QByteArray("<root/>\n") << QStringLiteral("Incorrect document type.");
}

void TestDocument::loadFailures()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    const QString path = m_dir->filePath(QStringLiteral("bad.tabulon"));
    QVERIFY(writeAll(path, content));
    FlowModel model;
    DocumentData data;
    bool laterVersion = true;
    QString error;
    QVERIFY(!loadDocument(&model, path, &data, &laterVersion, nullptr, &error));
    QCOMPARE(error, message.contains(QLatin1String("%1")) ? message.arg(path) : message);
    QVERIFY(!laterVersion);
    QVERIFY(model.items().isEmpty());

    const QString missing = m_dir->filePath(QStringLiteral("missing.tabulon"));
    QVERIFY(!loadDocument(&model, missing, &data, &laterVersion, nullptr, &error));
    QCOMPARE(error, QStringLiteral("Can't open file '%1'.").arg(missing));
}

void TestDocument::laterVersionAndMissingMeta()
{
    const QString path = m_dir->filePath(QStringLiteral("meta.tabulon"));
    QVERIFY(writeAll(path,
                     "<!DOCTYPE Tabulon>\n<root>\n<meta><version value=\"82\"/></meta>\n"
                     "<notes><note id=\"1\" comment=\"from%20the%20future\" "
                     "future_attribute=\"1\"/></notes>\n<future_element/>\n</root>\n"));
    FlowModel model;
    DocumentData data;
    data.autoRun = false;
    data.snapToGrid = true;
    bool laterVersion = false;
    QString error;
    QVERIFY2(loadDocument(&model, path, &data, &laterVersion, nullptr, &error), qPrintable(error));
    QVERIFY(laterVersion);
    QCOMPARE(model.itemById(1)->comment(), QStringLiteral("from the future"));
    QVERIFY(data.autoRun);
    QVERIFY(!data.snapToGrid);

    QVERIFY(writeAll(path, "<!DOCTYPE Tabulon>\n<root/>\n"));
    FlowModel empty;
    QVERIFY(loadDocument(&empty, path, &data, &laterVersion, nullptr, &error));
    QVERIFY(!laterVersion);
    QVERIFY(data.autoRun);
}

void TestDocument::lockExcludesSecondHolder()
{
    const QString path = m_dir->filePath(QStringLiteral("locked.tabulon"));
    DocumentLock first;
    QVERIFY(first.acquire(path));
    QVERIFY(first.isHeld());
    QCOMPARE(first.path(), path);
    DocumentLock second;
    QVERIFY(!second.acquire(path));
    QVERIFY(!second.isHeld());
    first.release();
    QVERIFY(second.acquire(path));
    QCOMPARE(DocumentLock::failureMessage(path),
             QStringLiteral("Cannot open '%1' to write.\nYou may have insufficient access, it may "
                            "be read-only or it may be open in another application.")
                 .arg(path));
}

void TestDocument::saveRespectsLocks()
{
    FlowModel model;
    addTextInput(model, QStringLiteral("a\n1\n"), QPointF(0, 0));
    DocumentData data;
    const QString path = m_dir->filePath(QStringLiteral("held.tabulon"));
    DocumentLock held;
    QVERIFY(held.acquire(path));

    // Another holder of the document may not write over it.
    QString error;
    QVERIFY(!saveDocument(nullptr, model, data, path, &error));
    QCOMPARE(error, QStringLiteral("Can't open file '%1' to write.").arg(path));
    QCOMPARE(QFileInfo(path).size(), 0);

    // The holder may, and holds the new file afterwards.
    QVERIFY2(saveDocument(&held, model, data, path, &error), qPrintable(error));
    QVERIFY(held.isHeld());
    QVERIFY(readAll(path).contains(QStringLiteral("<inputs>")));
    DocumentLock other;
    QVERIFY(!other.acquire(path));
    held.release();
    QVERIFY(other.acquire(path));

    const QString nowhere = m_dir->filePath(QStringLiteral("no/such/folder/x.tabulon"));
    QVERIFY(!saveDocument(nullptr, model, data, nowhere, &error));
    QCOMPARE(error, QStringLiteral("Can't open file '%1' to write.").arg(nowhere));
}

void TestDocument::recoveryFile()
{
    const QString path = recoveryFilePath();
    QCOMPARE(path, m_tempFolder.filePath(QStringLiteral("TabulonAutoRecovery.tabulon")));
    QCOMPARE(recoveryFileAge(), -1);

    FlowModel model;
    DocumentData data;
    data.id = QStringLiteral("the-id");
    data.notes = QStringLiteral("kept");
    data.autoRun = false;
    QVERIFY(!isRecoverySaveDue(true, 0));
    QVERIFY(!isEmergencySaveDue(0));
    QVERIFY(!periodicRecoverySave(model, data, true));
    QVERIFY(!QFile::exists(path));

    addTextInput(model, QStringLiteral("a\n1\n"), QPointF(0, 0));
    QVERIFY(!isRecoverySaveDue(false, 1));
    QStringList shown;
    QVERIFY(periodicRecoverySave(model, data, true,
                                 [&shown](const QString &text) { shown.append(text); }));
    QCOMPARE(shown, QStringList({"Saving auto recovery file"}));
    QCOMPARE(recoveryFileAge(), 0);
    // Written a moment ago: neither save is due.
    QVERIFY(!isRecoverySaveDue(true, 1));
    QVERIFY(!isEmergencySaveDue(1));

    FlowModel recovered;
    DocumentData read;
    QVERIFY(load(recovered, path, &read));
    QCOMPARE(recovered.items().size(), 1);
    QVERIFY(read.id.isEmpty());
    QCOMPARE(read.notes, QStringLiteral("kept"));
    QVERIFY(!read.autoRun);

    auto age = [&path](int seconds) {
        const time_t then = time(nullptr) - seconds;
        const utimbuf times {then, then};
        return utime(QFile::encodeName(path).constData(), &times) == 0;
    };
    QVERIFY(age(30));
    QVERIFY(!isRecoverySaveDue(true, 1));
    QVERIFY(isEmergencySaveDue(1));
    QVERIFY(emergencyRecoverySave(model, data));
    QVERIFY(age(61));
    QVERIFY(recoveryFileAge() >= 61);
    QVERIFY(isRecoverySaveDue(true, 1));

    QVERIFY(removeRecoveryFile());
    QCOMPARE(recoveryFileAge(), -1);
    QVERIFY(isRecoverySaveDue(true, 1));
}

QTEST_GUILESS_MAIN(TestDocument)
#include "tst_document.moc"
