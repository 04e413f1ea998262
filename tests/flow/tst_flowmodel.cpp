#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "shell/memory.h"
#include "shell/settings.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcase.h"
#include "transforms/transformclone.h"
#include "transforms/transformstack.h"

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
            FlowModel::setStopRequested(true);
        failed = fail;
        return output;
    }

private:
    QStringList *m_journal;
    TransformDescriptor m_descriptor;
};

// Collects every log line of a model in order.
struct LogRecorder
{
    explicit LogRecorder(FlowModel &model)
    {
        QObject::connect(&model, &FlowModel::showLogMessage,
                         [this](const QString &line) { lines.append(line); });
        QObject::connect(&model, &FlowModel::showNodeLogMessage,
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

TransformItem *addProbe(FlowModel &model, const QList<FlowItem *> &inputs, const QPointF &pos,
                        int minimum = 1, int maximum = 1)
{
    return addTransform(model, new ProbeTransform(minimum, maximum), inputs, pos);
}

ProbeTransform *probe(TransformItem *item)
{
    return static_cast<ProbeTransform *>(item->transform());
}

FlowItem *sourceOf(TransformItem *item, int option)
{
    return dynamic_cast<FlowItem *>(item->transform()->parameters().at(option)->sourceNode());
}

} // namespace

class TestFlowModel : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        qRegisterMetaType<FlowItem *>();
        FlowModel::setStopRequested(false);
    }
    void cleanup()
    {
        FlowModel::setStopRequested(false);
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
    void snapPoint_data();
    void snapPoint();
    void inputOrderFollowsCanvas_data();
    void inputOrderFollowsCanvas();
    void deepCopyKeepsStructure();
};

void TestFlowModel::inputCaseCloneEndToEnd()
{
    FlowModel model;
    LogRecorder log(model);
    InputItem *input = addTextInput(model, "name,city\nann smith,paris\nbob,LONDON\n", {0, 0});
    TransformItem *caseNode = addTransform(model, new TransformCase, {input}, {250, 0});
    TransformItem *cloneNode = addTransform(model, new TransformClone, {caseNode}, {500, 0});

    Parameter *columns = caseNode->transform()->parameter("Columns");
    columns->setColumns({ColumnId(input->id(), 1)});
    caseNode->transform()->parameter("Case")->setValue(QString("Title case"));

    model.process(FlowModel::RunAll);

    const Dataset *result = cloneNode->dataset();
    QCOMPARE(result->header(), QStringList({"name", "city"}));
    QCOMPARE(result->rowCount(), 2);
    QCOMPARE(result->row(0), QStringList({"Ann Smith", "paris"}));
    QCOMPARE(result->row(1), QStringList({"Bob", "LONDON"}));
    // The city column was not touched: its cells are still those the input read.
    QCOMPARE(result->cell(0, 1).constData(), input->dataset()->cell(0, 1).constData());
    QCOMPARE(caseNode->transform()->result(), QString("2 changed, 0 unchanged"));
    for (FlowItem *node : {static_cast<FlowItem *>(input), static_cast<FlowItem *>(caseNode),
                           static_cast<FlowItem *>(cloneNode)})
        QCOMPARE(node->status(), int(FlowItem::UpToDate));
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

void TestFlowModel::emptyGraphLogsOnlyStartAndEnd()
{
    FlowModel model;
    LogRecorder log(model);
    QSignalSpy completed(&model, &FlowModel::completedTransforms);
    model.process(FlowModel::RunAll);
    QCOMPARE(log.lines.size(), 2);
    QVERIFY(log.lines.at(0).startsWith("Started run at: "));
    QVERIFY(log.lines.at(1).startsWith("Ended run at: "));
    QCOMPARE(completed.count(), 1);
}

void TestFlowModel::rootsLeftToRightChildrenTopToBottom()
{
    FlowModel model;
    LogRecorder log(model);
    QStringList journal;
    // Created right branch first: the canvas, not the order of creation, decides.
    InputItem *right = addTextInput(model, "a\n1\n", {400, 0});
    InputItem *left = addTextInput(model, "a\n2\n", {0, 300});
    right->setAlias("right");
    left->setAlias("left");
    addTransform(model, new RecordingTransform(&journal, "lower child"), {left}, {200, 400});
    addTransform(model, new RecordingTransform(&journal, "upper child"), {left}, {200, 100});
    addTransform(model, new RecordingTransform(&journal, "right child"), {right}, {600, 0});

    model.process(FlowModel::RunAll);
    QCOMPARE(journal, QStringList({"upper child", "lower child", "right child"}));
    QCOMPARE(processedNames(log.lines).first(), QString("Clipboard"));
    QVERIFY(log.lines.at(1).contains(QString("Id=%1 ").arg(left->id())));
}

void TestFlowModel::twoInputTransformRunsOnceAfterBoth()
{
    FlowModel model;
    QStringList journal;
    InputItem *top = addTextInput(model, "a\ntop\n", {0, 0});
    InputItem *bottom = addTextInput(model, "a\nbottom\n", {0, 200});
    TransformItem *stack
        = addTransform(model, new RecordingTransform(&journal), {bottom, top}, {300, 100});

    model.process(FlowModel::RunAll);
    QCOMPARE(journal, QStringList({"Stack"}));
    QCOMPARE(stack->dataset()->columnValues(0), QStringList({"top", "bottom"}));

    // Moving the bottom input above the other changes the order of the rows at the next run.
    bottom->setPos(QPointF(0, -200));
    model.process(FlowModel::RunAll);
    QCOMPARE(stack->dataset()->columnValues(0), QStringList({"bottom", "top"}));
}

void TestFlowModel::failingInputStopsOnlyItsBranch()
{
    FlowModel model;
    LogRecorder log(model);
    auto *broken = new InputItem;
    broken->setPath("/nonexistent/folder/missing.csv");
    broken->setPos(QPointF(0, 0));
    model.addItem(broken);
    InputItem *good = addTextInput(model, "a\n1\n", {0, 200});
    TransformItem *both = addTransform(model, new RecordingTransform, {broken, good}, {300, 100});
    TransformItem *goodOnly = addTransform(model, new TransformClone, {good}, {300, 300});

    model.process(FlowModel::RunAll);
    QCOMPARE(broken->status(), int(FlowItem::Error));
    QCOMPARE(good->status(), int(FlowItem::UpToDate));
    QCOMPARE(goodOnly->status(), int(FlowItem::UpToDate));
    QCOMPARE(both->status(), int(FlowItem::NeedsUpdate));
    QVERIFY(log.lines.contains("Up to date: 2, Needs updating: 1, Error: 1"));
}

void TestFlowModel::runSelectedLeavesDownstreamMarked()
{
    FlowModel model;
    QStringList journal;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    TransformItem *first
        = addTransform(model, new RecordingTransform(&journal, "first"), {input}, {200, 0});
    TransformItem *second
        = addTransform(model, new RecordingTransform(&journal, "second"), {first}, {400, 0});
    model.process(FlowModel::RunAll);
    journal.clear();

    model.process(FlowModel::RunSelected, false, {first});
    QCOMPARE(journal, QStringList({"first"}));
    QCOMPARE(first->status(), int(FlowItem::UpToDate));
    QCOMPARE(input->status(), int(FlowItem::UpToDate));
    QCOMPARE(second->status(), int(FlowItem::NeedsUpdate));
}

void TestFlowModel::runChangesRerunsOnlyMarkedItems()
{
    FlowModel model;
    QStringList journal;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    TransformItem *upper
        = addTransform(model, new RecordingTransform(&journal, "upper"), {input}, {200, 0});
    addTransform(model, new RecordingTransform(&journal, "lower"), {input}, {200, 200});
    model.process(FlowModel::RunAll);
    journal.clear();

    upper->setStatus(FlowItem::NeedsUpdate, true);
    model.process(FlowModel::RunChanges);
    QCOMPARE(journal, QStringList({"upper"}));
}

void TestFlowModel::stopFlagEndsTheRun()
{
    FlowModel model;
    LogRecorder log(model);
    QStringList journal;
    InputItem *left = addTextInput(model, "a\n1\n", {0, 0});
    InputItem *right = addTextInput(model, "a\n1\n", {500, 0});
    auto *stopper = new RecordingTransform(&journal, "stopper");
    stopper->requestStop = true;
    TransformItem *stopNode = addTransform(model, stopper, {left}, {200, 0});
    TransformItem *after
        = addTransform(model, new RecordingTransform(&journal, "after"), {stopNode}, {400, 0});
    TransformItem *other
        = addTransform(model, new RecordingTransform(&journal, "other"), {right}, {700, 0});

    model.process(FlowModel::RunAll);
    QCOMPARE(journal, QStringList({"stopper"}));
    QVERIFY(log.lines.contains("  Stopped by user"));
    QCOMPARE(after->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(right->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(other->status(), int(FlowItem::NeedsUpdate));
}

void TestFlowModel::failedTransformStopsItsBranch()
{
    FlowModel model;
    QStringList journal;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    auto *failing = new RecordingTransform(&journal, "failing");
    failing->fail = true;
    TransformItem *failNode = addTransform(model, failing, {input}, {200, 0});
    TransformItem *child
        = addTransform(model, new RecordingTransform(&journal, "child"), {failNode}, {400, 0});
    model.process(FlowModel::RunAll);
    QCOMPARE(failNode->status(), int(FlowItem::Error));
    QCOMPARE(child->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(journal, QStringList({"failing"}));
    // Kept: what the transform produced stays in its dataset.
    QCOMPARE(failNode->dataset()->rowCount(), 1);
}

void TestFlowModel::unconnectedTransformWarns()
{
    FlowModel model;
    TransformItem *lonely = addTransform(model, new TransformClone, {}, {0, 0});
    model.process(FlowModel::RunAll);
    QCOMPARE(lonely->status(), int(FlowItem::UpToDate));
    QCOMPARE(lonely->dataset()->columnCount(), 0);
    QCOMPARE(lonely->warnings(), QStringList({"1 upstream connection expected"}));
    QCOMPARE(lonely->statusIcon(), NodeStatusIcon::Warning);
}

void TestFlowModel::outputWithoutInputWarns()
{
    FlowModel model;
    auto *output = new OutputItem;
    model.addItem(output);
    model.process(FlowModel::RunAll);
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QCOMPARE(output->warnings(), QStringList({"No transforms or inputs connected"}));
}

void TestFlowModel::memoryLimitThrowsOutOfRun()
{
    FlowModel model;
    QString csv = "a\n";
    for (int i = 0; i < 3000; ++i)
        csv += "x\n";
    InputItem *input = addTextInput(model, csv, {0, 0});
    TransformItem *caseNode = addTransform(model, new TransformCase, {input}, {200, 0});
    caseNode->transform()->parameter("Columns")->setColumns({ColumnId(input->id(), 1)});
    model.process(FlowModel::RunAll);
    QCOMPARE(caseNode->status(), int(FlowItem::UpToDate));

    Settings::instance()->setMaxMemoryUsage(0.000001);
    caseNode->setStatus(FlowItem::NeedsUpdate, true);
    QVERIFY_EXCEPTION_THROWN(model.process(FlowModel::RunChanges), MaxMemoryException);
    // The run never finished: the engine stays marked as running and the process would end.
    QVERIFY(model.isProcessing());
}

void TestFlowModel::secondRunDuringRunIsDropped()
{
    FlowModel model;
    QStringList journal;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    addTransform(model, new RecordingTransform(&journal), {input}, {200, 0});
    int nested = 0;
    connect(&model, &FlowModel::showProgress, &model, [&](int percent) {
        if (percent == 0) {
            ++nested;
            model.process(FlowModel::RunAll);
        }
    });
    model.process(FlowModel::RunAll);
    QCOMPARE(nested, 1);
    QCOMPARE(journal.size(), 1);
    QVERIFY(!model.isProcessing());
}

void TestFlowModel::batchRunFreesUpstreamData()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a\n1\n2\n", {0, 0});
    TransformItem *first = addTransform(model, new TransformClone, {input}, {200, 0});
    TransformItem *second = addTransform(model, new TransformClone, {input}, {200, 200});
    TransformItem *last = addTransform(model, new TransformClone, {first}, {400, 0});

    model.process(FlowModel::RunAll);
    QCOMPARE(input->dataset()->rowCount(), 2);
    QCOMPARE(first->dataset()->rowCount(), 2);

    model.process(FlowModel::RunBatch, true);
    // Each result lives only until its last consumer is through; the leaves keep theirs.
    QVERIFY(!input->dataset()->hasColumns());
    QVERIFY(!first->dataset()->hasColumns());
    QCOMPARE(second->dataset()->rowCount(), 2);
    QCOMPARE(last->dataset()->rowCount(), 2);
    for (FlowItem *node : model.items())
        QCOMPARE(node->status(), int(FlowItem::UpToDate));
}

void TestFlowModel::batchRunHandsRowsToTheLastReaderOnly()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a\n1\n2\n", {0, 0});
    auto *firstReader = new RecordingTransform(nullptr, "First");
    auto *secondReader = new RecordingTransform(nullptr, "Second");
    firstReader->take = secondReader->take = true;
    TransformItem *first = addTransform(model, firstReader, {input}, {200, 0});
    TransformItem *second = addTransform(model, secondReader, {input}, {200, 200});

    // An interactive run keeps every table on show, so no rows change hands.
    model.process(FlowModel::RunAll);
    QCOMPARE(firstReader->owned, QList<bool> {false});
    QCOMPARE(secondReader->owned, QList<bool> {false});
    QCOMPARE(input->dataset()->rowCount(), 2);

    // The first reader must leave the rows to the second, which takes them over: in a run
    // that frees data as it goes, and in one whose tables nobody looks at.
    for (bool batch : {true, false}) {
        firstReader->owned.clear();
        secondReader->owned.clear();
        model.setRowsHandedOver(!batch);
        model.process(batch ? FlowModel::RunBatch : FlowModel::RunAll, true);
        QCOMPARE(firstReader->owned, QList<bool> {false});
        QCOMPARE(secondReader->owned, QList<bool> {true});
        QCOMPARE(first->dataset()->rowCount(), 2);
        QCOMPARE(second->dataset()->rowCount(), 2);
        QCOMPARE(second->dataset()->cell(1, 0), QStringLiteral("2"));
        QCOMPARE(input->dataset()->hasColumns(), !batch);
    }
}

void TestFlowModel::inputOrderIsTopToBottom()
{
    FlowModel model;
    InputItem *a = addTextInput(model, "a\n1\n", {100, 50.4});
    InputItem *b = addTextInput(model, "a\n2\n", {20, 50.0});
    InputItem *c = addTextInput(model, "a\n3\n", {0, 10.0});
    TransformItem *stack = addTransform(model, new RecordingTransform, {a, b, c}, {300, 0});
    QCOMPARE(stack->upstream(true), QList<FlowItem *>({c, b, a}));
    QList<FlowItem *> roots {a, b, c};
    FlowModel::sortLeftToRight(roots);
    QCOMPARE(roots, QList<FlowItem *>({c, b, a}));
}

void TestFlowModel::disconnectClearsParameterSource()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    TransformItem *caseNode = addTransform(model, new TransformCase, {input}, {200, 0});
    Parameter *columns = caseNode->transform()->parameter("Columns");
    QCOMPARE(columns->sourceNode(), static_cast<ColumnSource *>(input));
    model.process(FlowModel::RunAll);
    model.disconnect(caseNode->connections(ConnectionDirection::In).first());
    QCOMPARE(columns->sourceNode(), static_cast<ColumnSource *>(nullptr));
    QCOMPARE(caseNode->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(input->status(), int(FlowItem::UpToDate));
}

void TestFlowModel::deleteMarksTargets()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    TransformItem *middle = addTransform(model, new TransformClone, {input}, {200, 0});
    TransformItem *last = addTransform(model, new TransformClone, {middle}, {400, 0});
    model.process(FlowModel::RunAll);
    QPointer<TransformItem> removed(middle);
    QSignalSpy removals(&model, &FlowModel::itemRemoved);
    model.removeItem(middle);
    QCOMPARE(removals.count(), 1);
    QVERIFY(!model.items().contains(middle));
    QVERIFY(model.connections().isEmpty());
    // Deleted once control is back in the event loop, not under a run that may be on the stack.
    QVERIFY(removed);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!removed);
    QCOMPARE(last->status(), int(FlowItem::NeedsUpdate));
    QVERIFY(last->upstream().isEmpty());
    QVERIFY(input->downstream().isEmpty());
    QCOMPARE(input->status(), int(FlowItem::UpToDate));
}

void TestFlowModel::cyclesAndDuplicatesRefused()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a\n1\n", {0, 0});
    TransformItem *first = addTransform(model, new RecordingTransform, {input}, {200, 0});
    TransformItem *second = addTransform(model, new RecordingTransform, {first}, {400, 0});
    QVERIFY(!model.connectItems(second, first));
    QVERIFY(!model.connectItems(input, first));
    QVERIFY(!model.connectItems(first, input));
    QVERIFY(!model.connectItems(first, first));
    QCOMPARE(first->upstream().size(), 1);
}

void TestFlowModel::snapPoint_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<QPointF>("snapped");
    const qreal w = FlowModel::GridWidth;
    const qreal h = FlowModel::GridHeight;
    QTest::newRow("on grid") << QPointF(w, h) << QPointF(w, h);
    QTest::newRow("just below half") << QPointF(w / 2 - 0.01, h / 2 - 0.01) << QPointF(0, 0);
    QTest::newRow("half rounds up") << QPointF(w / 2, h / 2) << QPointF(w, h);
    QTest::newRow("negative") << QPointF(-w * 1.3, -h * 2.8) << QPointF(-w, -3 * h);
    QTest::newRow("negative half rounds up") << QPointF(-w / 2, -h / 2) << QPointF(0, 0);
}

void TestFlowModel::snapPoint()
{
    QFETCH(QPointF, point);
    QFETCH(QPointF, snapped);
    const QPointF result = FlowModel::snapPoint(point);
    QVERIFY2(qAbs(result.x() - snapped.x()) < 1e-9 && qAbs(result.y() - snapped.y()) < 1e-9,
             qPrintable(QString("%1,%2").arg(result.x()).arg(result.y())));
}

void TestFlowModel::inputOrderFollowsCanvas_data()
{
    QTest::addColumn<bool>("configures");
    QTest::newRow("options unchanged") << false;
    QTest::newRow("options changed") << true;
}

void TestFlowModel::inputOrderFollowsCanvas()
{
    QFETCH(bool, configures);
    FlowModel model;
    model.setAutoRun(true);
    InputItem *first = addTextInput(model, "a\n1\n", {0, 0});
    InputItem *second = addTextInput(model, "a\n2\n", {0, 200});
    auto *transform = new TransformStack;
    TransformItem *stack = addTransform(model, transform, {first, second}, {240, 100});
    auto *probed = addProbe(model, {first, second}, {240, 400}, 1, 2);
    probe(probed)->configures = configures;
    model.process(FlowModel::RunAll);
    QCOMPARE(stack->dataset()->rows(), QList<QStringList>({{"1"}, {"2"}}));
    QCOMPARE(probed->dataset()->rows(), QList<QStringList>({{"1"}, {"2"}}));

    // The user drags the lower input above the upper one.
    second->setPos(QPointF(0, -200));
    model.itemsMoved({second});

    QCOMPARE(probed->upstream(true), QList<FlowItem *>({second, first}));
    QVERIFY(probe(probed)->configureCalls >= 1);
    if (configures) {
        QCOMPARE(probed->dataset()->rows(), QList<QStringList>({{"2"}, {"1"}}));
    } else {
        // Nothing reported changed: the last result stands until the next run.
        QCOMPARE(probed->status(), int(FlowItem::UpToDate));
        QCOMPARE(probed->dataset()->rows(), QList<QStringList>({{"1"}, {"2"}}));
    }
    // Whatever runs next takes the inputs in canvas order.
    model.process(FlowModel::RunAll);
    QCOMPARE(stack->dataset()->rows(), QList<QStringList>({{"2"}, {"1"}}));
}

void TestFlowModel::deepCopyKeepsStructure()
{
    FlowModel model;
    model.setAutoRun(false);
    model.setSnapToGrid(true);
    InputItem *top = addTextInput(model, "a\n1\n", {0, 0});
    InputItem *bottom = addTextInput(model, "a\n2\n", {0, 200});
    TransformItem *pair = addProbe(model, {top, bottom}, {240, 100}, 1, 2);
    TransformItem *last = addProbe(model, {pair}, {480, 100});
    auto *note = new NoteItem;
    note->setComment("why");
    model.addItem(note);
    model.process(FlowModel::RunAll);

    QScopedPointer<FlowModel> copy(model.deepCopy());
    QVERIFY(copy->snapToGrid());
    QVERIFY(!copy->autoRun());
    QCOMPARE(copy->items().size(), 5);
    QCOMPARE(copy->connections().size(), 3);
    auto *pairCopy = qobject_cast<TransformItem *>(copy->itemById(pair->id()));
    auto *lastCopy = qobject_cast<TransformItem *>(copy->itemById(last->id()));
    FlowItem *topCopy = copy->itemById(top->id());
    FlowItem *bottomCopy = copy->itemById(bottom->id());
    QVERIFY(pairCopy && lastCopy && topCopy && bottomCopy);
    QVERIFY(pairCopy != pair);
    QCOMPARE(pairCopy->upstream(true), QList<FlowItem *>({topCopy, bottomCopy}));
    QCOMPARE(sourceOf(pairCopy, 0), topCopy);
    QCOMPARE(sourceOf(pairCopy, 1), bottomCopy);
    QCOMPARE(sourceOf(lastCopy, 0), static_cast<FlowItem *>(pairCopy));
    QCOMPARE(pairCopy->status(), int(FlowItem::UpToDate));
    QCOMPARE(pairCopy->pos(), pair->pos());
    QCOMPARE(copy->itemById(note->id())->comment(), QString("why"));
    // The rows are the original's, not copies of them.
    QCOMPARE(&pairCopy->dataset()->rows().at(0).at(0), &pair->dataset()->rows().at(0).at(0));

    // Editing the copy leaves the original alone.
    copy->disconnect(pairCopy->connections(ConnectionDirection::In).first());
    QCOMPARE(pair->upstream().size(), 2);
    QCOMPARE(sourceOf(pair, 0), static_cast<FlowItem *>(top));
}

QTEST_GUILESS_MAIN(TestFlowModel)
#include "tst_flowmodel.moc"
