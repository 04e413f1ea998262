#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/undo.h"
#include "testutil.h"
#include "transforms/transformstack.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

namespace {

// A transform that, while the scene runs, does what a user might try through a pumped event.
class ReentrantTransform : public TransformStack
{
public:
    std::function<void()> during;

    const TransformDescriptor &descriptor() const override
    {
        static const TransformDescriptor descriptor = [] {
            TransformDescriptor d = TransformStack().descriptor();
            d.create = createTransform<ReentrantTransform>;
            return d;
        }();
        return descriptor;
    }

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override
    {
        if (during)
            during();
        return TransformStack::process(output, inputs, context, failed);
    }
};

int notesOf(const FlowModel *model)
{
    return model->itemsOfKind(FlowItem::NoteKind).size();
}

// The live scene shows as many as its model holds.
int notesOf(const GraphScene *scene)
{
    const int shown = scene->nodesOfType(Node::NoteType).size();
    return shown == notesOf(scene->model()) ? shown : -1;
}

// A window's arrangement: the scenes share a parent, the history follows the live one.
struct Workbench
{
    Workbench()
    {
        auto *scene = new GraphScene(nullptr, &owner);
        scene->model()->setAutoRun(false);
        history.setLiveScene(scene);
        UndoHistory::setCurrent(&history);
        QObject::connect(&history, &UndoHistory::sceneSwapped,
                         [this](GraphScene *live, GraphScene *old) {
                             swapped.append(live);
                             replaced.append(old);
                         });
    }
    ~Workbench() { UndoHistory::setCurrent(nullptr); }

    GraphScene *live() const { return history.liveScene(); }
    void addNote() { live()->addNoteByUser(QPointF(1000.0 * live()->nodes().size(), 0)); }

    QObject owner;
    UndoHistory history;
    QList<GraphScene *> swapped;
    QList<GraphScene *> replaced;
};

} // namespace

// Undo by snapshots: what one step is, how many are kept, how undo and redo walk the list,
// and that a snapshot costs no copy of the data.
class TestUndo : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { UndoHistory::setCurrent(nullptr); }

    void eachEditIsOneStep_data();
    void eachEditIsOneStep();
    void elevenEditsKeepTen();
    void undoAfterUndoPushesNothing();
    void changeAfterUndoDropsRedo();
    void nestedStepsAreOne();
    void pairSpansEvents();
    void withoutHistoryNothingIsRecorded();
    void undoIgnoredWhileRunning();
    void newDocumentForgetsSteps();
    void snapshotSharesRows();
};

void TestUndo::eachEditIsOneStep_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("hint");
    QTest::newRow("note") << "note"
                          << "add note";
    QTest::newRow("output") << "output"
                            << "add output";
    QTest::newRow("transform") << "transform"
                               << "add 'Stack'";
    QTest::newRow("connection") << "connection"
                                << "add connection";
    QTest::newRow("delete") << "delete"
                            << "delete";
    QTest::newRow("disconnect") << "disconnect"
                                << "disconnect";
    QTest::newRow("duplicate") << "duplicate"
                               << "duplicate branch";
    QTest::newRow("snap on") << "snap"
                             << "snap on";
    QTest::newRow("move") << "move"
                          << "move item(s)";
}

void TestUndo::eachEditIsOneStep()
{
    QFETCH(QString, edit);
    QFETCH(QString, hint);
    QTemporaryDir folder;
    Workbench bench;
    GraphScene *scene = bench.live();
    InputNode *input = addTextInput(*scene, "a\n1\n", {0, 0});
    InputNode *loose = addTextInput(*scene, "a\n2\n", {0, 300});
    TransformNode *stack = addTransform(*scene, new TransformStack, {input}, {240, 0});
    scene->process(FlowModel::RunAll);
    FlowModel *model = scene->model();
    QSignalSpy recovery(&bench.history, &UndoHistory::recoveryDue);

    auto shape = [](GraphScene *s) {
        QList<int> result;
        for (Node *node : s->nodes())
            result.append(node->item()->id());
        std::sort(result.begin(), result.end());
        QStringList connections;
        for (Connection *c : s->allConnections())
            connections.append(
                QString("%1>%2").arg(c->source()->item()->id()).arg(c->target()->item()->id()));
        connections.sort();
        QStringList positions;
        for (Node *node : s->nodes())
            positions.append(QString("%1@%2,%3")
                                 .arg(node->item()->id())
                                 .arg(node->item()->pos().x())
                                 .arg(node->item()->pos().y()));
        positions.sort();
        return QStringList {QString::number(result.size()), connections.join(' '),
                            positions.join(' '), QString::number(s->snapToGrid())};
    };
    const QStringList before = shape(scene);

    TransformStack prototype;
    if (edit == "note") {
        scene->addNoteByUser({600, 600});
    } else if (edit == "output") {
        QVERIFY(scene->addOutputByUser(stack, folder.filePath("o.csv")));
    } else if (edit == "transform") {
        stack->setSelected(true);
        QVERIFY(scene->addTransformByUser(&prototype, false, QPointF()));
    } else if (edit == "connection") {
        QVERIFY(scene->addConnectionByUser(loose, stack));
    } else if (edit == "delete") {
        stack->setSelected(true);
        scene->deleteSelectedByUser();
    } else if (edit == "disconnect") {
        stack->setSelected(true);
        scene->disconnectSelectedByUser(GraphScene::Disconnect::Both);
    } else if (edit == "duplicate") {
        input->setSelected(true);
        scene->duplicateBranchByUser();
    } else if (edit == "snap") {
        scene->setSnapToGrid(true);
    } else if (edit == "move") {
        // As the canvas does it: the step opens when the press first moves.
        loose->setSelected(true);
        beginUndoStep("move item(s)");
        loose->setPos(50, 500);
        scene->endItemsMove();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const QStringList after = shape(scene);
    QVERIFY(after != before);
    QCOMPARE(bench.history.count(), 1);
    QCOMPARE(recovery.count(), 1);
    QCOMPARE(bench.history.undoHint(), hint);
    QVERIFY(!isUndoStepOpen());

    bench.history.undo();
    QVERIFY(bench.live() != scene);
    QVERIFY(bench.live()->model() != model);
    QCOMPARE(shape(bench.live()), before);
    QCOMPARE(bench.history.redoHint(), hint);
    bench.history.redo();
    QCOMPARE(bench.live()->model(), model);
    QCOMPARE(shape(bench.live()), after);
    QCOMPARE(bench.swapped.size(), 2);
}

void TestUndo::elevenEditsKeepTen()
{
    Workbench bench;
    for (int i = 0; i < 11; ++i)
        bench.addNote();
    QCOMPARE(bench.history.count(), 10);
    int undone = 0;
    while (bench.history.canUndo()) {
        bench.history.undo();
        ++undone;
        QCOMPARE(notesOf(bench.live()), 11 - undone);
    }
    QCOMPARE(undone, 10);
    // The first edit is out of reach.
    QCOMPARE(notesOf(bench.live()), 1);
    while (bench.history.canRedo())
        bench.history.redo();
    QCOMPARE(notesOf(bench.live()), 11);
}

void TestUndo::undoAfterUndoPushesNothing()
{
    Workbench bench;
    GraphScene *original = bench.live();
    FlowModel *originalModel = original->model();
    bench.addNote();
    bench.addNote();
    bench.addNote();
    QCOMPARE(bench.history.count(), 3);
    QSignalSpy about(&bench.history, &UndoHistory::aboutToSwapScene);

    bench.history.undo();
    // The live state joined the list, so that redo can return to it.
    QCOMPARE(bench.history.count(), 4);
    QCOMPARE(bench.history.index(), 1);
    QCOMPARE(bench.history.snapshot(0), originalModel);
    QCOMPARE(bench.swapped.size(), 1);
    QCOMPARE(about.count(), 1);
    QCOMPARE(bench.swapped.first(), bench.live());
    QCOMPARE(bench.replaced.first(), original);

    bench.history.undo();
    QCOMPARE(bench.history.count(), 4);
    QCOMPARE(bench.history.index(), 2);
    QCOMPARE(notesOf(bench.live()), 1);
}

void TestUndo::changeAfterUndoDropsRedo()
{
    Workbench bench;
    QPointer<FlowModel> dropped = bench.live()->model();
    bench.addNote();
    bench.addNote();
    bench.addNote();
    bench.history.undo();
    bench.history.undo();
    bench.history.redo();
    QCOMPARE(notesOf(bench.live()), 2);
    QVERIFY(bench.history.canRedo());
    QPointer<GraphScene> live = bench.live();

    live->addNoteByUser({-500, -500});
    QVERIFY(!bench.history.canRedo());
    QCOMPARE(bench.history.index(), -1);
    // Before the two undone steps: the empty scene, one note, and the state just left.
    QCOMPARE(bench.history.count(), 3);
    QCOMPARE(bench.history.undoHint(), QString("add note"));
    QCOMPARE(notesOf(bench.history.snapshot(0)), 2);
    QVERIFY(dropped.isNull());
    QVERIFY(!live.isNull());
    QCOMPARE(bench.live(), live.data());
    QCOMPARE(notesOf(live), 3);
}

void TestUndo::nestedStepsAreOne()
{
    Workbench bench;
    {
        UndoStep outer("add file(s)");
        bench.addNote();
        bench.live()->addInputByUser(new InputItem, QPointF(0, 500));
        QVERIFY(isUndoStepOpen());
    }
    QVERIFY(!isUndoStepOpen());
    QCOMPARE(bench.history.count(), 1);
    QCOMPARE(bench.history.undoHint(), QString("add file(s)"));
    bench.history.undo();
    QVERIFY(bench.live()->nodes().isEmpty());
}

void TestUndo::pairSpansEvents()
{
    Workbench bench;
    QSignalSpy changed(&bench.history, &UndoHistory::changed);
    beginUndoStep("move item(s)");
    bench.addNote(); // a guard inside the open pair records nothing
    endUndoStep();
    QVERIFY(!isUndoStepOpen());
    endUndoStep(); // a stray end is harmless
    QCOMPARE(bench.history.count(), 1);
    QCOMPARE(bench.history.undoHint(), QString("move item(s)"));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(changed.first().first().toBool(), true);

    // A stray end cannot close a guard's step.
    {
        UndoStep step("outer");
        endUndoStep();
        QVERIFY(isUndoStepOpen());
    }
    QCOMPARE(bench.history.count(), 2);
}

void TestUndo::withoutHistoryNothingIsRecorded()
{
    UndoHistory history;
    auto *scene = new GraphScene(nullptr, &history);
    history.setLiveScene(scene);
    // Not current: as on the command line, edits go through without steps.
    scene->addNoteByUser(QPointF());
    {
        UndoStep step("x");
        QVERIFY(!isUndoStepOpen());
    }
    beginUndoStep("y");
    endUndoStep();
    QCOMPARE(history.count(), 0);
    QCOMPARE(scene->nodes().size(), 1);
}

void TestUndo::undoIgnoredWhileRunning()
{
    Workbench bench;
    GraphScene *scene = bench.live();
    InputNode *input = addTextInput(*scene, "a\n1\n", {0, 0});
    bench.addNote();
    auto *transform = new ReentrantTransform;
    addTransform(*scene, transform, {input}, {240, 0});
    transform->during = [&bench]() {
        bench.history.undo();
    };
    scene->process(FlowModel::RunAll);
    QCOMPARE(bench.live(), scene);
    QCOMPARE(bench.history.index(), -1);
    QVERIFY(bench.swapped.isEmpty());
    transform->during = nullptr;
    bench.history.undo();
    QVERIFY(bench.live() != scene);
}

void TestUndo::newDocumentForgetsSteps()
{
    Workbench bench;
    bench.addNote();
    bench.addNote();
    QPointer<FlowModel> snapshot = bench.history.snapshot(1);
    QVERIFY(snapshot);
    auto *fresh = new GraphScene(nullptr, &bench.owner);
    bench.history.setLiveScene(fresh);
    QCOMPARE(bench.history.count(), 0);
    QVERIFY(!bench.history.canUndo());
    QVERIFY(snapshot.isNull());
    QCOMPARE(bench.live(), fresh);
}

void TestUndo::snapshotSharesRows()
{
    Workbench bench;
    GraphScene *scene = bench.live();
    InputNode *input = addTextInput(*scene, "a\n1\n", {0, 0});
    TransformNode *stack = addTransform(*scene, new TransformStack, {input}, {240, 0});
    stack->item()->dataset()->setSize(1000000, 3);
    stack->item()->setStatus(FlowItem::UpToDate, false);
    bench.addNote();
    FlowModel *snapshot = bench.history.snapshot(0);
    const FlowItem *copy = snapshot->itemById(stack->item()->id());
    QVERIFY(copy && copy != stack->item());
    QCOMPARE(copy->rowCount(), 1000000);
    QCOMPARE(&copy->dataset()->rows().first(), &stack->item()->dataset()->rows().first());
    QCOMPARE(&copy->dataset()->rows().last().last(),
             &stack->item()->dataset()->rows().last().last());
}

TABULON_TEST_MAIN(TestUndo)
#include "tst_undo.moc"
