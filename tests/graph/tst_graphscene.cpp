#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "shell/memory.h"
#include "shell/settings.h"
#include "testutil.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcase.h"
#include "transforms/transformclone.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

namespace {

// A transform of any number of inputs that stacks their rows and records when it ran; it can
// also ask for a stop, or fail as a whole, to test how the engine reacts.
class RecordingTransform : public Transform
{
public:
    explicit RecordingTransform(QStringList *journal = nullptr, const QString &name = "Stack")
        : m_journal(journal)
    {
        m_descriptor.type = 999;
        m_descriptor.typeName = name;
        m_descriptor.displayName = name;
        m_descriptor.maximumInputs = 0x7fffffff;
        m_descriptor.description = "Stacks rows.";
        m_descriptor.create = createTransform<RecordingTransform>;
    }

    bool requestStop = false;
    bool fail = false;
    // With take set, the inputs are read through inputDataset(), and owned records for each
    // whether the rows it gave were this transform's alone.
    bool take = false;
    QList<bool> owned;

    const TransformDescriptor &descriptor() const override { return m_descriptor; }

protected:
    void copyFrom(const Transform &other) override
    {
        Transform::copyFrom(other);
        const auto &recording = static_cast<const RecordingTransform &>(other);
        m_journal = recording.m_journal;
        m_descriptor = recording.m_descriptor;
    }

    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                     bool &failed) override
    {
        if (m_journal)
            m_journal->append(m_descriptor.typeName);
        for (int i = 0; i < inputs.size(); ++i) {
            const Dataset taken = take ? inputDataset(inputs, i) : Dataset();
            const Dataset *data = take ? &taken : inputs.at(i).dataset;
            if (take)
                owned.append(taken.rows().isDetached());
            if (!output.hasColumns()) {
                output.setColumnCount(data->columnCount());
                output.setHeader(data->header());
            }
            for (int r = 0; r < data->rowCount(); ++r)
                output.appendRow(data->row(r), true);
        }
        if (requestStop)
            GraphScene::setStopRequested(true);
        failed = fail;
        return output;
    }

private:
    QStringList *m_journal;
    TransformDescriptor m_descriptor;
};

// Collects every log line of a scene in order.
struct LogRecorder
{
    explicit LogRecorder(GraphScene &scene)
    {
        QObject::connect(&scene, &GraphScene::showLogMessage,
                         [this](const QString &line) { lines.append(line); });
        QObject::connect(&scene, &GraphScene::showNodeLogMessage,
                         [this](const QString &line) { lines.append(line); });
    }
    QStringList lines;
};

QStringList processedNames(const QStringList &lines)
{
    QStringList names;
    static const QRegularExpression pattern("^  Processed \\w+ '([^']*)'");
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = pattern.match(line);
        if (match.hasMatch())
            names.append(match.captured(1));
    }
    return names;
}

} // namespace

class TestGraphScene : public QObject
{
    Q_OBJECT

private slots:
    void init() { GraphScene::setStopRequested(false); }
    void cleanup()
    {
        GraphScene::setStopRequested(false);
        Settings::instance()->setMaxMemoryUsage(4.0);
        setMemoryLimitHandler(nullptr);
    }

    void inputCaseCloneEndToEnd();
    void emptyGraphLogsOnlyStartAndEnd();
    void rootsLeftToRightChildrenTopToBottom();
    void twoInputTransformRunsOnceAfterBoth();
    void failingInputStopsOnlyItsBranch();
    void runSelectedLeavesDownstreamMarked();
    void runChangesRerunsOnlyMarkedItems();
    void stopFlagEndsTheRun();
    void failedTransformStopsItsBranch();
    void unconnectedTransformWarns();
    void outputWithoutInputWarns();
    void memoryLimitThrowsOutOfRun();
    void secondRunDuringRunIsDropped();
    void batchRunFreesUpstreamData();
    void batchRunHandsRowsToTheLastReaderOnly();
    void inputOrderIsTopToBottom();
    void disconnectClearsParameterSource();
    void deleteMarksTargets();
    void cyclesAndDuplicatesRefused();
};

void TestGraphScene::inputCaseCloneEndToEnd()
{
    GraphScene scene;
    LogRecorder log(scene);
    InputNode *input = addTextInput(scene, "name,city\nann smith,paris\nbob,LONDON\n", {0, 0});
    TransformNode *caseNode = addTransform(scene, new TransformCase, {input}, {250, 0});
    TransformNode *cloneNode = addTransform(scene, new TransformClone, {caseNode}, {500, 0});

    Parameter *columns = caseNode->transform()->parameter("Columns");
    columns->setColumns({ColumnId(input->id(), 1)});
    caseNode->transform()->parameter("Case")->setValue(QString("Title case"));

    scene.process(GraphScene::RunAll);

    const Dataset *result = cloneNode->dataset();
    QCOMPARE(result->header(), QStringList({"name", "city"}));
    QCOMPARE(result->rowCount(), 2);
    QCOMPARE(result->row(0), QStringList({"Ann Smith", "paris"}));
    QCOMPARE(result->row(1), QStringList({"Bob", "LONDON"}));
    // The city column was not touched: its cells are still those the input read.
    QCOMPARE(result->cell(0, 1).constData(), input->dataset()->cell(0, 1).constData());
    QCOMPARE(caseNode->transform()->result(), QString("2 changed, 0 unchanged"));
    for (Node *node : {static_cast<Node *>(input), static_cast<Node *>(caseNode),
                       static_cast<Node *>(cloneNode)})
        QCOMPARE(node->status(), int(Node::UpToDate));
    // The clone gets its own ids only for columns that had none; these came from the input.
    QCOMPARE(result->columnId(0), ColumnId(input->id(), 1));

    QCOMPARE(log.lines.size(), 8);
    QVERIFY(log.lines.at(0).startsWith("Started run at: "));
    QVERIFY(log.lines.at(1).startsWith(
        QString("  Processed Input 'Clipboard' Id=%1 (2 rows x 2 cols) in ").arg(input->id())));
    QVERIFY(log.lines.at(1).endsWith("[2 rows x 2 cols], Up to date"));
    QVERIFY(log.lines.at(2).startsWith(
        QString("  Processed Transform 'Case' Id=%1 (2 rows x 2 cols) in ").arg(caseNode->id())));
    QVERIFY(log.lines.at(3).startsWith("  Processed Transform 'Clone'"));
    QVERIFY(log.lines.at(4).startsWith("Ended run at: "));
    QVERIFY(QRegularExpression("^3 item\\(s\\) processed in <?[0-9.]+ second\\(s\\)$")
                .match(log.lines.at(5))
                .hasMatch());
    QCOMPARE(log.lines.at(6), QString("Up to date: 3, Needs updating: 0, Error: 0"));
    QCOMPARE(log.lines.at(7), QString("0 item(s) with warnings\n"));
}

void TestGraphScene::emptyGraphLogsOnlyStartAndEnd()
{
    GraphScene scene;
    LogRecorder log(scene);
    QSignalSpy completed(&scene, &GraphScene::completedTransforms);
    scene.process(GraphScene::RunAll);
    QCOMPARE(log.lines.size(), 2);
    QVERIFY(log.lines.at(0).startsWith("Started run at: "));
    QVERIFY(log.lines.at(1).startsWith("Ended run at: "));
    QCOMPARE(completed.count(), 1);
}

void TestGraphScene::rootsLeftToRightChildrenTopToBottom()
{
    GraphScene scene;
    LogRecorder log(scene);
    QStringList journal;
    // Created right branch first: the canvas, not the order of creation, decides.
    InputNode *right = addTextInput(scene, "a\n1\n", {400, 0});
    InputNode *left = addTextInput(scene, "a\n2\n", {0, 300});
    right->setAlias("right");
    left->setAlias("left");
    addTransform(scene, new RecordingTransform(&journal, "lower child"), {left}, {200, 400});
    addTransform(scene, new RecordingTransform(&journal, "upper child"), {left}, {200, 100});
    addTransform(scene, new RecordingTransform(&journal, "right child"), {right}, {600, 0});

    scene.process(GraphScene::RunAll);
    QCOMPARE(journal, QStringList({"upper child", "lower child", "right child"}));
    QCOMPARE(processedNames(log.lines).first(), QString("Clipboard"));
    QVERIFY(log.lines.at(1).contains(QString("Id=%1 ").arg(left->id())));
}

void TestGraphScene::twoInputTransformRunsOnceAfterBoth()
{
    GraphScene scene;
    QStringList journal;
    InputNode *top = addTextInput(scene, "a\ntop\n", {0, 0});
    InputNode *bottom = addTextInput(scene, "a\nbottom\n", {0, 200});
    TransformNode *stack
        = addTransform(scene, new RecordingTransform(&journal), {bottom, top}, {300, 100});

    scene.process(GraphScene::RunAll);
    QCOMPARE(journal, QStringList({"Stack"}));
    QCOMPARE(stack->dataset()->columnValues(0), QStringList({"top", "bottom"}));

    // Moving the bottom input above the other changes the order of the rows at the next run.
    bottom->setPos(0, -200);
    scene.process(GraphScene::RunAll);
    QCOMPARE(stack->dataset()->columnValues(0), QStringList({"bottom", "top"}));
}

void TestGraphScene::failingInputStopsOnlyItsBranch()
{
    GraphScene scene;
    LogRecorder log(scene);
    auto *broken = new InputNode;
    broken->setPath("/nonexistent/folder/missing.csv");
    broken->setPos(0, 0);
    scene.addNode(broken);
    InputNode *good = addTextInput(scene, "a\n1\n", {0, 200});
    TransformNode *both = addTransform(scene, new RecordingTransform, {broken, good}, {300, 100});
    TransformNode *goodOnly = addTransform(scene, new TransformClone, {good}, {300, 300});

    scene.process(GraphScene::RunAll);
    QCOMPARE(broken->status(), int(Node::Error));
    QCOMPARE(good->status(), int(Node::UpToDate));
    QCOMPARE(goodOnly->status(), int(Node::UpToDate));
    QCOMPARE(both->status(), int(Node::NeedsUpdate));
    QVERIFY(log.lines.contains("Up to date: 2, Needs updating: 1, Error: 1"));
}

void TestGraphScene::runSelectedLeavesDownstreamMarked()
{
    GraphScene scene;
    QStringList journal;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *first
        = addTransform(scene, new RecordingTransform(&journal, "first"), {input}, {200, 0});
    TransformNode *second
        = addTransform(scene, new RecordingTransform(&journal, "second"), {first}, {400, 0});
    scene.process(GraphScene::RunAll);
    journal.clear();

    first->setSelected(true);
    scene.process(GraphScene::RunSelected);
    QCOMPARE(journal, QStringList({"first"}));
    QCOMPARE(first->status(), int(Node::UpToDate));
    QCOMPARE(input->status(), int(Node::UpToDate));
    QCOMPARE(second->status(), int(Node::NeedsUpdate));
}

void TestGraphScene::runChangesRerunsOnlyMarkedItems()
{
    GraphScene scene;
    QStringList journal;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *upper
        = addTransform(scene, new RecordingTransform(&journal, "upper"), {input}, {200, 0});
    addTransform(scene, new RecordingTransform(&journal, "lower"), {input}, {200, 200});
    scene.process(GraphScene::RunAll);
    journal.clear();

    upper->setStatus(Node::NeedsUpdate, true);
    scene.process(GraphScene::RunChanges);
    QCOMPARE(journal, QStringList({"upper"}));
}

void TestGraphScene::stopFlagEndsTheRun()
{
    GraphScene scene;
    LogRecorder log(scene);
    QStringList journal;
    InputNode *left = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *right = addTextInput(scene, "a\n1\n", {500, 0});
    auto *stopper = new RecordingTransform(&journal, "stopper");
    stopper->requestStop = true;
    TransformNode *stopNode = addTransform(scene, stopper, {left}, {200, 0});
    TransformNode *after
        = addTransform(scene, new RecordingTransform(&journal, "after"), {stopNode}, {400, 0});
    TransformNode *other
        = addTransform(scene, new RecordingTransform(&journal, "other"), {right}, {700, 0});

    scene.process(GraphScene::RunAll);
    QCOMPARE(journal, QStringList({"stopper"}));
    QVERIFY(log.lines.contains("  Stopped by user"));
    QCOMPARE(after->status(), int(Node::NeedsUpdate));
    QCOMPARE(right->status(), int(Node::NeedsUpdate));
    QCOMPARE(other->status(), int(Node::NeedsUpdate));
}

void TestGraphScene::failedTransformStopsItsBranch()
{
    GraphScene scene;
    QStringList journal;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    auto *failing = new RecordingTransform(&journal, "failing");
    failing->fail = true;
    TransformNode *failNode = addTransform(scene, failing, {input}, {200, 0});
    TransformNode *child
        = addTransform(scene, new RecordingTransform(&journal, "child"), {failNode}, {400, 0});
    scene.process(GraphScene::RunAll);
    QCOMPARE(failNode->status(), int(Node::Error));
    QCOMPARE(child->status(), int(Node::NeedsUpdate));
    QCOMPARE(journal, QStringList({"failing"}));
    // Kept: what the transform produced stays in its dataset.
    QCOMPARE(failNode->dataset()->rowCount(), 1);
}

void TestGraphScene::unconnectedTransformWarns()
{
    GraphScene scene;
    TransformNode *lonely = addTransform(scene, new TransformClone, {}, {0, 0});
    scene.process(GraphScene::RunAll);
    QCOMPARE(lonely->status(), int(Node::UpToDate));
    QCOMPARE(lonely->dataset()->columnCount(), 0);
    QCOMPARE(lonely->warnings(), QStringList({"1 upstream connection expected"}));
    QCOMPARE(lonely->statusIcon(), NodeStatusIcon::Warning);
}

void TestGraphScene::outputWithoutInputWarns()
{
    GraphScene scene;
    auto *output = new OutputNode;
    scene.addNode(output);
    scene.process(GraphScene::RunAll);
    QCOMPARE(output->status(), int(Node::UpToDate));
    QCOMPARE(output->warnings(), QStringList({"No transforms or inputs connected"}));
}

void TestGraphScene::memoryLimitThrowsOutOfRun()
{
    GraphScene scene;
    QString csv = "a\n";
    for (int i = 0; i < 3000; ++i)
        csv += "x\n";
    InputNode *input = addTextInput(scene, csv, {0, 0});
    TransformNode *caseNode = addTransform(scene, new TransformCase, {input}, {200, 0});
    caseNode->transform()->parameter("Columns")->setColumns({ColumnId(input->id(), 1)});
    scene.process(GraphScene::RunAll);
    QCOMPARE(caseNode->status(), int(Node::UpToDate));

    Settings::instance()->setMaxMemoryUsage(0.000001);
    caseNode->setStatus(Node::NeedsUpdate, true);
    QVERIFY_EXCEPTION_THROWN(scene.process(GraphScene::RunChanges), MaxMemoryException);
    // The run never finished: the engine stays marked as running and the process would end.
    QVERIFY(scene.isProcessing());
}

void TestGraphScene::secondRunDuringRunIsDropped()
{
    GraphScene scene;
    QStringList journal;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    addTransform(scene, new RecordingTransform(&journal), {input}, {200, 0});
    int nested = 0;
    connect(&scene, &GraphScene::showProgress, &scene, [&](int percent) {
        if (percent == 0) {
            ++nested;
            scene.process(GraphScene::RunAll);
        }
    });
    scene.process(GraphScene::RunAll);
    QCOMPARE(nested, 1);
    QCOMPARE(journal.size(), 1);
    QVERIFY(!scene.isProcessing());
}

void TestGraphScene::batchRunFreesUpstreamData()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n2\n", {0, 0});
    TransformNode *first = addTransform(scene, new TransformClone, {input}, {200, 0});
    TransformNode *second = addTransform(scene, new TransformClone, {input}, {200, 200});
    TransformNode *last = addTransform(scene, new TransformClone, {first}, {400, 0});

    scene.process(GraphScene::RunAll);
    QCOMPARE(input->dataset()->rowCount(), 2);
    QCOMPARE(first->dataset()->rowCount(), 2);

    scene.process(GraphScene::RunBatch, true);
    // Each result lives only until its last consumer is through; the leaves keep theirs.
    QVERIFY(!input->dataset()->hasColumns());
    QVERIFY(!first->dataset()->hasColumns());
    QCOMPARE(second->dataset()->rowCount(), 2);
    QCOMPARE(last->dataset()->rowCount(), 2);
    for (Node *node : scene.nodes())
        QCOMPARE(node->status(), int(Node::UpToDate));
}

void TestGraphScene::batchRunHandsRowsToTheLastReaderOnly()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n2\n", {0, 0});
    auto *firstReader = new RecordingTransform(nullptr, "First");
    auto *secondReader = new RecordingTransform(nullptr, "Second");
    firstReader->take = secondReader->take = true;
    TransformNode *first = addTransform(scene, firstReader, {input}, {200, 0});
    TransformNode *second = addTransform(scene, secondReader, {input}, {200, 200});

    // An interactive run keeps every table on show, so no rows change hands.
    scene.process(GraphScene::RunAll);
    QCOMPARE(firstReader->owned, QList<bool> {false});
    QCOMPARE(secondReader->owned, QList<bool> {false});
    QCOMPARE(input->dataset()->rowCount(), 2);

    // The first reader must leave the rows to the second, which takes them over: in a run
    // that frees data as it goes, and in one whose tables nobody looks at.
    for (bool batch : {true, false}) {
        firstReader->owned.clear();
        secondReader->owned.clear();
        scene.setRowsHandedOver(!batch);
        scene.process(batch ? GraphScene::RunBatch : GraphScene::RunAll, true);
        QCOMPARE(firstReader->owned, QList<bool> {false});
        QCOMPARE(secondReader->owned, QList<bool> {true});
        QCOMPARE(first->dataset()->rowCount(), 2);
        QCOMPARE(second->dataset()->rowCount(), 2);
        QCOMPARE(second->dataset()->cell(1, 0), QStringLiteral("2"));
        QCOMPARE(input->dataset()->hasColumns(), !batch);
    }
}

void TestGraphScene::inputOrderIsTopToBottom()
{
    GraphScene scene;
    InputNode *a = addTextInput(scene, "a\n1\n", {100, 50.4});
    InputNode *b = addTextInput(scene, "a\n2\n", {20, 50.0});
    InputNode *c = addTextInput(scene, "a\n3\n", {0, 10.0});
    TransformNode *stack = addTransform(scene, new RecordingTransform, {a, b, c}, {300, 0});
    QCOMPARE(stack->upstream(true), QList<Node *>({c, b, a}));
    QList<Node *> roots {a, b, c};
    GraphScene::sortLeftToRight(roots);
    QCOMPARE(roots, QList<Node *>({c, b, a}));
}

void TestGraphScene::disconnectClearsParameterSource()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *caseNode = addTransform(scene, new TransformCase, {input}, {200, 0});
    Parameter *columns = caseNode->transform()->parameter("Columns");
    QCOMPARE(columns->sourceNode(), static_cast<Node *>(input));
    scene.process(GraphScene::RunAll);
    scene.disconnect(caseNode->connections(ConnectionDirection::In).first());
    QCOMPARE(columns->sourceNode(), static_cast<Node *>(nullptr));
    QCOMPARE(caseNode->status(), int(Node::NeedsUpdate));
    QCOMPARE(input->status(), int(Node::UpToDate));
}

void TestGraphScene::deleteMarksTargets()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *middle = addTransform(scene, new TransformClone, {input}, {200, 0});
    TransformNode *last = addTransform(scene, new TransformClone, {middle}, {400, 0});
    scene.process(GraphScene::RunAll);
    middle->deleteNode();
    QCOMPARE(last->status(), int(Node::NeedsUpdate));
    QVERIFY(last->upstream().isEmpty());
    QVERIFY(input->downstream().isEmpty());
    QCOMPARE(input->status(), int(Node::UpToDate));
}

void TestGraphScene::cyclesAndDuplicatesRefused()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *first = addTransform(scene, new RecordingTransform, {input}, {200, 0});
    TransformNode *second = addTransform(scene, new RecordingTransform, {first}, {400, 0});
    QVERIFY(!scene.connectNodes(second, first));
    QVERIFY(!scene.connectNodes(input, first));
    QVERIFY(!scene.connectNodes(first, input));
    QVERIFY(!scene.connectNodes(first, first));
    QCOMPARE(first->upstream().size(), 1);
}

TABULON_TEST_MAIN(TestGraphScene)
#include "tst_graphscene.moc"
