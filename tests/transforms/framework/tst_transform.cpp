#include "shell/settings.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"

#include <QCoreApplication>
#include <QtTest>

namespace {

// A two-input transform with three column options, one option that depends on another, and
// one remembered option: enough to exercise the framework's shared behaviour.
class FakeMerge : public Transform
{
public:
    FakeMerge()
    {
        m_descriptor.type = 998;
        m_descriptor.typeName = "Fake_Merge";
        m_descriptor.displayName = "Fake Merge";
        m_descriptor.category = CategoryMerge;
        m_descriptor.minimumInputs = 2;
        m_descriptor.maximumInputs = 2;
        m_descriptor.flags = TransformDescriptor::OmitDisabledFromDetails;
        m_descriptor.description = "Merges.";
        m_descriptor.keywords = QStringList {"vlookup"};
        m_descriptor.create = createTransform<FakeMerge>;
    }
    const TransformDescriptor &descriptor() const override { return m_descriptor; }
    void createParameters(const ColumnSources &inputs, bool useRemembered) override
    {
        Transform::createParameters(inputs, useRemembered);
        addParameter(
            new Parameter(ParameterType::SingleColumn, "Column_1", "Top key", inputs.value(0)));
        addParameter(
            new Parameter(ParameterType::SingleColumn, "Column_2", "Bottom key", inputs.value(1)));
        addParameter(
            new Parameter(ParameterType::MultipleColumns, "Columns", "Columns", inputs.value(1)));
        addParameter(new Parameter(ParameterType::Bool, "Fuzzy", "Fuzzy", false));
        auto *threshold = new Parameter(ParameterType::Text, "Threshold", "Threshold", "");
        addParameter(threshold);
        auto *delimiter = new Parameter(ParameterType::Text, "Delim", "Delimiter", ",");
        applyRememberedValue(useRemembered, delimiter);
        addParameter(delimiter);
    }
    QList<ParameterState> parameterStates() const override
    {
        return {{"Threshold", parameter("Fuzzy")->toBool()}};
    }

    TransformDescriptor m_descriptor;
    int m_processed = 0;

protected:
    // Passes its first input through, so that a test sees whether process() ran.
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                     bool &) override
    {
        ++m_processed;
        output = *inputs.first().dataset;
        return output;
    }
};

} // namespace

class TestTransform : public QObject
{
    Q_OBJECT

private slots:
    void categoryNames();
    void keywordsAndMatching_data();
    void keywordsAndMatching();
    void inputHint_data();
    void inputHint();
    void columnOptionsBindToInputsInTurn();
    void requiredOptionsHonourStates();
    void rememberedValues();
    void messagesAndResultTexts();
    void registryHasDistinctTypesAndNames();
    void registryPrototypesSortedAndFound();
    void executeChecksInputsAndOptions_data();
    void executeChecksInputsAndOptions();
};

void TestTransform::categoryNames()
{
    QCOMPARE(transformCategoryName(CategoryAnalysis, true), QString("Anal&ysis"));
    QCOMPARE(transformCategoryName(CategoryMerge), QString("Merge"));
    QCOMPARE(transformCategoryName(6, true), QString("&Other"));
    QCOMPARE(transformCategoryName(42), QString("Other"));
}

void TestTransform::keywordsAndMatching_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<int>("count");

    QTest::newRow("name word") << QStringList {"fake"} << 1;
    QTest::newRow("prefix, any case") << QStringList {"MER"} << 1;
    QTest::newRow("category word") << QStringList {"blend"} << 1;
    QTest::newRow("own keyword") << QStringList {"vlook"} << 1;
    QTest::newRow("two words") << QStringList {"fake", "merges"} << 2;
    QTest::newRow("repeated word counts once") << QStringList {"fake", "FAKE"} << 1;
    QTest::newRow("no prefix inside a word") << QStringList {"erge"} << 0;
    QTest::newRow("unknown") << QStringList {"sort"} << 0;
}

void TestTransform::keywordsAndMatching()
{
    QFETCH(QStringList, words);
    QFETCH(int, count);
    FakeMerge transform;
    QCOMPARE(transform.keywordMatchCount(words), count);
}

void TestTransform::inputHint_data()
{
    QTest::addColumn<int>("maximum");
    QTest::addColumn<QString>("items");
    QTest::newRow("exactly two") << 2 << "2 input/transform items";
    QTest::newRow("range") << 3 << "2 to 3 input/transform items";
    QTest::newRow("unlimited") << 0x7fffffff << "2 or more input/transform items";
}

void TestTransform::inputHint()
{
    QFETCH(int, maximum);
    QFETCH(QString, items);
    FakeMerge transform;
    transform.m_descriptor.maximumInputs = maximum;
    QCOMPARE(transform.inputHint(),
             QString("Select %1 in the Center pane\nand then click this button to perform this "
                     "transform.")
                 .arg(items));
}

void TestTransform::columnOptionsBindToInputsInTurn()
{
    QScopedPointer<DataSource> top(makeDataSource(makeDataset({{"a"}, {"1"}})));
    QScopedPointer<DataSource> bottom(makeDataSource(makeDataset({{"b"}, {"2"}})));
    FakeMerge transform;
    transform.createParameters({}, false);
    transform.connectParameters({top.data(), bottom.data()});
    QCOMPARE(transform.parameter("Column_1")->sourceNode(), top.data());
    QCOMPARE(transform.parameter("Column_2")->sourceNode(), bottom.data());
    // Inputs ran out: the third column option has no source.
    QCOMPARE(transform.parameter("Columns")->sourceNode(), static_cast<DataSource *>(nullptr));
    QCOMPARE(transform.parameterForInput(bottom.data()), transform.parameter("Column_2"));
    QCOMPARE(transform.parametersForInput(top.data()).size(), 1);

    // A one-input transform binds every column option to its single input.
    transform.m_descriptor.maximumInputs = 1;
    transform.connectParameters({top.data(), bottom.data()});
    QCOMPARE(transform.parametersForInput(top.data()).size(), 3);
}

void TestTransform::requiredOptionsHonourStates()
{
    FakeMerge transform;
    transform.createParameters({}, false);
    transform.checkRequiredParameters();
    // Threshold is empty but disabled while Fuzzy is off.
    QCOMPARE(transform.warnings(),
             QStringList({"3 options not set ('Top key','Bottom key','Columns')"}));
    transform.clearMessages();
    transform.parameter("Fuzzy")->setValue(true);
    transform.checkRequiredParameters();
    QCOMPARE(transform.warnings(),
             QStringList({"4 options not set ('Top key','Bottom key','Columns','Threshold')"}));
    QVERIFY(transform.isParameterEnabled("Threshold"));
    QVERIFY(transform.isParameterEnabled("Columns"));
}

void TestTransform::rememberedValues()
{
    Settings::instance()->remove("defaults/transforms/Fake_Merge/Delim");
    FakeMerge first;
    first.createParameters({}, true);
    Parameter *delimiter = first.parameter("Delim");
    QVERIFY(delimiter->remembered());
    QCOMPARE(delimiter->toString(), QString(","));
    delimiter->setValue(QString(";"));
    first.rememberValue(delimiter);
    // Not remembered: never stored.
    first.rememberValue(first.parameter("Fuzzy"));
    QVERIFY(!Settings::instance()->hasTransformDefault("Fake_Merge", "Fuzzy"));

    FakeMerge second;
    second.createParameters({}, true);
    QCOMPARE(second.parameter("Delim")->toString(), QString(";"));
    FakeMerge fresh;
    fresh.createParameters({}, false);
    QCOMPARE(fresh.parameter("Delim")->toString(), QString(","));
    Settings::instance()->remove("defaults/transforms/Fake_Merge/Delim");
}

void TestTransform::messagesAndResultTexts()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QCOMPARE(Transform::cellsChangedText(0, 10), QString("No changes"));
    QCOMPARE(Transform::cellsChangedText(1234, 5), QString("1,234 changed, 5 unchanged"));
    QCOMPARE(Transform::rowsRemovedText(1), QString("1 row removed"));
    QCOMPARE(Transform::rowsRemovedText(2000), QString("2,000 rows removed"));
    QCOMPARE(Transform::rowsRemovedText(0), QString("No changes"));
    QLocale::setDefault(QLocale::c());
}

void TestTransform::registryHasDistinctTypesAndNames()
{
    const QList<Transform *> prototypes = createTransformPrototypes();
    QSet<int> types;
    QSet<QString> names;
    QString previousClass;
    for (const Transform *prototype : prototypes) {
        QVERIFY2(!types.contains(prototype->type()), qPrintable(prototype->typeName()));
        QVERIFY2(!names.contains(prototype->typeName()), qPrintable(prototype->typeName()));
        types.insert(prototype->type());
        names.insert(prototype->typeName());
        // Prototypes carry no options of their own.
        QVERIFY(prototype->parameters().isEmpty());
        const QString className = prototype->metaObject()->className();
        // Alphabetical regardless of case: TransformUnique, TransformUnits, TransformUUID.
        QVERIFY2(previousClass.compare(className, Qt::CaseInsensitive) < 0,
                 qPrintable(className));
        previousClass = className;
    }
    qDeleteAll(prototypes);
}

void TestTransform::registryPrototypesSortedAndFound()
{
    const QList<Transform *> &prototypes = TransformRegistry::prototypes();
    QStringList lowered;
    for (const Transform *transform : prototypes)
        lowered.append(transform->displayName().toLower());
    QVERIFY(std::is_sorted(lowered.begin(), lowered.end()));

    // One prototype of every class in the list, each found by its typeName.
    const QList<Transform *> made = createTransformPrototypes();
    QCOMPARE(prototypes.size(), made.size());
    for (const Transform *transform : made) {
        Transform *prototype = TransformRegistry::prototype(transform->typeName());
        QVERIFY2(prototype, qPrintable(transform->typeName()));
        QVERIFY(prototypes.contains(prototype));
        QCOMPARE(prototype->metaObject()->className(), transform->metaObject()->className());
    }
    qDeleteAll(made);
    QCOMPARE(TransformRegistry::prototype(QStringLiteral("NoSuchTransform")), nullptr);
    QCOMPARE(TransformRegistry::prototype(QString()), nullptr);
}

void TestTransform::executeChecksInputsAndOptions_data()
{
    QTest::addColumn<int>("inputCount");
    QTest::addColumn<QString>("droppedOption");
    QTest::addColumn<bool>("runs");
    QTest::addColumn<QString>("result");

    QTest::newRow("no input") << 0 << "" << false << "";
    QTest::newRow("one input of two") << 1 << "" << true << "";
    QTest::newRow("two inputs") << 2 << "" << true << "";
    QTest::newRow("more than the maximum") << 3 << "" << false << "";
    QTest::newRow("an option missing") << 2 << "Delim" << false << Transform::failureText();
}

void TestTransform::executeChecksInputsAndOptions()
{
    QFETCH(int, inputCount);
    QFETCH(QString, droppedOption);
    QFETCH(bool, runs);
    QFETCH(QString, result);

    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"a"}, {"1"}})));
    // Options built as a fresh instance builds them, but for the one dropped, as a
    // transform made by hand may lack one.
    FakeMerge complete;
    complete.createParameters({}, false);
    FakeMerge transform;
    for (const Parameter *parameter : complete.parameters()) {
        if (parameter->key() != droppedOption)
            transform.addParameter(parameter->clone());
    }
    ColumnSources inputs;
    for (int i = 0; i < inputCount; ++i)
        inputs.append(input.data());
    const Dataset output = runTransform(transform, inputs);
    QCOMPARE(transform.m_processed, runs ? 1 : 0);
    QCOMPARE(output.rowCount(), runs ? 1 : 0);
    QCOMPARE(transform.result(), result);
}

QTEST_GUILESS_MAIN(TestTransform)
#include "tst_transform.moc"

