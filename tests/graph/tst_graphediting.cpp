#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "testutil.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformstack.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

namespace {

TransformNode *addProbe(GraphScene &scene, const QList<Node *> &inputs, const QPointF &pos,
                        int minimum = 1, int maximum = 1)
{
    return addTransform(scene, new ProbeTransform(minimum, maximum), inputs, pos);
}

ProbeTransform *probe(TransformNode *node)
{
    return static_cast<ProbeTransform *>(node->transform());
}

// The node of the item an option of node's transform reads its columns from.
Node *sourceOf(TransformNode *node, int option)
{
    auto *source
        = dynamic_cast<FlowItem *>(node->transform()->parameters().at(option)->sourceNode());
    return source ? node->graphScene()->nodeFor(source) : nullptr;
}

QList<Node *> upstreamOf(const Node *node, bool sorted = false)
{
    return node->graphScene()->nodesFor(node->item()->upstream(sorted));
}

QList<Node *> downstreamOf(const Node *node, bool sorted = false)
{
    return node->graphScene()->nodesFor(node->item()->downstream(sorted));
}

// Adds item to the scene's model and gives its node.
template<typename View> View *addItem(GraphScene &scene, FlowItem *item)
{
    scene.model()->addItem(item);
    return static_cast<View *>(scene.nodeFor(item));
}

void deleteLaterNow()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

// The rules by which the user edits a graph: which connections are offered, where new items
// go, what adding, deleting, disconnecting and duplicating do to connections and to the
// options that follow them.
class TestGraphEditing : public QObject
{
    Q_OBJECT

private slots:
    void candidates_data();
    void candidates();
    void startConnection();
    void connectionByUserBindsAndMarks();

    void freePlace_data();
    void freePlace();

    void canAddTransform_data();
    void canAddTransform();
    void addTransformConnectsSelectionInOrder();
    void addTransformIntoConnection();
    void connectionPlusItemDoesNotInsert();
    void addOutputWarnsAboutExcelSize_data();
    void addOutputWarnsAboutExcelSize();
    void addNoteBesideItem();
    void addInputAtFreePlace();

    void deleteBridgesTransform();
    void deleteBridgeDropsDuplicate();
    void deleteConnectionsOnlyShowsTip();
    void disconnect_data();
    void disconnect();

    void duplicateBranch();

    void snapAtEndOfMove();
};

void TestGraphEditing::candidates_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("offered");
    // The connection starts at t2. Graph: in1 -> t1 (room for two) -> t2 -> t5 (room for
    // two), in1 -> out, in2 -> t3 (room for two), in2 -> t4 (full), out2 and a note alone.
    QTest::newRow("self") << "t2" << false;
    QTest::newRow("cycle") << "t1" << false;
    QTest::newRow("input never") << "in2" << false;
    QTest::newRow("note never") << "note" << false;
    QTest::newRow("duplicate") << "t5" << false;
    QTest::newRow("output with a connection") << "out" << false;
    QTest::newRow("empty output") << "out2" << true;
    QTest::newRow("transform with room") << "t3" << true;
    QTest::newRow("full transform") << "t4" << false;
}

void TestGraphEditing::candidates()
{
    QFETCH(QString, target);
    QFETCH(bool, offered);
    GraphScene scene;
    scene.model()->setAutoRun(false);
    QHash<QString, Node *> named;
    named["in1"] = addTextInput(scene, "a\n1\n", {0, 0});
    named["in2"] = addTextInput(scene, "a\n1\n", {0, 200});
    named["t1"] = addProbe(scene, {named["in1"]}, {250, 0}, 1, 2);
    auto *t2 = addProbe(scene, {named["t1"]}, {500, 0});
    named["t2"] = t2;
    named["t5"] = addProbe(scene, {t2}, {750, 0}, 1, 2);
    Node *out = addItem<Node>(scene, new OutputItem(-1, "/tmp/x.csv"));
    QVERIFY(scene.model()->connectItems(named["in1"]->item(), out->item()));
    named["out"] = out;
    named["out2"] = addItem<Node>(scene, new OutputItem(-1, "/tmp/y.csv"));
    named["note"] = addItem<Node>(scene, new NoteItem);
    named["t3"] = addProbe(scene, {named["in2"]}, {250, 400}, 1, 2);
    named["t4"] = addProbe(scene, {named["in2"]}, {250, 600}, 1, 1);

    const QList<FlowItem *> candidates = scene.model()->connectionCandidates(t2->item());
    QCOMPARE(candidates.contains(named[target]->item()), offered);
    // The user's connection follows the same rule.
    const int before = scene.allConnections().size();
    Connection *made = scene.addConnectionByUser(t2, named[target]);
    QCOMPARE(made != nullptr, offered);
    QCOMPARE(scene.allConnections().size(), before + (offered ? 1 : 0));
}

void TestGraphEditing::startConnection()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    QVERIFY(!scene.canStartConnection(input)); // nothing could take it
    Node *out = addItem<Node>(scene, new OutputItem(-1, "/tmp/x.csv"));
    QVERIFY(scene.canStartConnection(input));
    QVERIFY(!scene.canStartConnection(out)); // nothing leaves an output
    QVERIFY(scene.addConnectionByUser(input, out));
    QVERIFY(!scene.canStartConnection(input)); // the only target is full
}

void TestGraphEditing::connectionByUserBindsAndMarks()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *top = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *bottom = addTextInput(scene, "a\n2\n", {0, 200});
    TransformNode *pair = addProbe(scene, {bottom}, {250, 100}, 1, 2);
    scene.process(FlowModel::RunAll);
    QCOMPARE(pair->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(bottom));

    QSignalSpy changed(&scene, &GraphScene::nodeParametersChanged);
    QVERIFY(scene.addConnectionByUser(top, pair));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(pair->item()->status(), int(FlowItem::NeedsUpdate));
    // Options bind in canvas order: the upper input takes the first.
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(top));
    QCOMPARE(sourceOf(pair, 1), static_cast<Node *>(bottom));

    // With Auto Run on, the change runs at once.
    scene.model()->setAutoRun(true);
    InputNode *third = addTextInput(scene, "a\n3\n", {0, 400});
    TransformNode *single = addProbe(scene, {}, {250, 400});
    QVERIFY(scene.addConnectionByUser(third, single));
    QCOMPARE(single->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(single->item()->dataset()->cell(0, 0), QString("3"));
}

void TestGraphEditing::freePlace_data()
{
    QTest::addColumn<QList<QPointF>>("others");
    QTest::addColumn<bool>("ctrl");
    QTest::addColumn<QPointF>("expected");
    const qreal w = FlowModel::GridWidth;
    const qreal h = FlowModel::GridHeight;
    // The source stands at (100, 300).
    QTest::newRow("first place") << QList<QPointF>() << false << QPointF(100 + w, 300);
    QTest::newRow("taken: down") << QList<QPointF> {{100 + w, 300}} << false
                                 << QPointF(100 + w, 300 + h);
    QTest::newRow("down taken: up") << QList<QPointF> {{100 + w, 300}, {100 + w + 10, 300 + h}}
                                    << false << QPointF(100 + w, 300 - h);
    QTest::newRow("both taken: two down")
        << QList<QPointF> {{100 + w, 300}, {100 + w, 300 + h}, {100 + w, 300 - h + 5}} << false
        << QPointF(100 + w, 300 + 2 * h);
    QTest::newRow("near miss is free")
        << QList<QPointF> {{100 + w + 180.5, 300}} << false << QPointF(100 + w, 300);
    QTest::newRow("ctrl: cursor") << QList<QPointF>() << true << QPointF(-7, 11);
    // An item far left widens the graph past a row: the search starts under the graph.
    QTest::newRow("new row") << QList<QPointF> {{-1200, 0}, {-1200, 500}} << false
                             << QPointF(-1200, 500 + h);
}

void TestGraphEditing::freePlace()
{
    QFETCH(QList<QPointF>, others);
    QFETCH(bool, ctrl);
    QFETCH(QPointF, expected);
    GraphScene scene;
    auto *sourceItem = new NoteItem;
    sourceItem->setPos(QPointF(100, 300));
    Node *source = addItem<Node>(scene, sourceItem);
    for (const QPointF &pos : others) {
        auto *other = new NoteItem;
        other->setPos(pos);
        scene.model()->addItem(other);
    }
    const QPointF place = scene.freePlace({source}, ctrl, QPointF(-7, 11));
    QCOMPARE(place, expected);
    // Without sources the cursor decides as well.
    QCOMPARE(scene.freePlace({}, false, QPointF(-7, 11)), QPointF(-7, 11));
}

void TestGraphEditing::canAddTransform_data()
{
    // Counts of selected inputs, transforms, outputs, notes, connections; the transform's
    // minimum and maximum inputs.
    QTest::addColumn<QList<int>>("counts");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<bool>("allowed");
    const int many = FlowItem::Unlimited;
    QTest::newRow("one input") << QList<int> {1, 0, 0, 0, 0} << 1 << 1 << true;
    QTest::newRow("nothing") << QList<int> {0, 0, 0, 0, 0} << 1 << 1 << false;
    QTest::newRow("two for one") << QList<int> {1, 1, 0, 0, 0} << 1 << 1 << false;
    QTest::newRow("two for two") << QList<int> {1, 1, 0, 0, 0} << 2 << 2 << true;
    QTest::newRow("three for many") << QList<int> {2, 1, 0, 0, 0} << 1 << many << true;
    QTest::newRow("output selected") << QList<int> {1, 0, 1, 0, 0} << 1 << many << false;
    QTest::newRow("note selected") << QList<int> {1, 0, 0, 1, 0} << 1 << many << false;
    QTest::newRow("one connection") << QList<int> {0, 0, 0, 0, 1} << 2 << 2 << true;
    QTest::newRow("two connections") << QList<int> {0, 0, 0, 0, 2} << 1 << 1 << false;
    QTest::newRow("connection and item") << QList<int> {1, 0, 0, 0, 1} << 1 << 1 << true;
    QTest::newRow("connection and item, two wanted")
        << QList<int> {1, 0, 0, 0, 1} << 2 << 2 << false;
    QTest::newRow("no inputs wanted, none selected")
        << QList<int> {0, 0, 0, 0, 0} << 0 << 0 << true;
}

void TestGraphEditing::canAddTransform()
{
    QFETCH(QList<int>, counts);
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(bool, allowed);
    GraphScene scene;
    QList<QGraphicsItem *> selection;
    for (int i = 0; i < counts.at(0); ++i)
        selection.append(addTextInput(scene, "a\n1\n", {0, 150.0 * i}));
    for (int i = 0; i < counts.at(1); ++i)
        selection.append(addProbe(scene, {}, {250, 150.0 * i}));
    for (int i = 0; i < counts.at(2); ++i) {
        selection.append(addItem<Node>(scene, new OutputItem));
    }
    for (int i = 0; i < counts.at(3); ++i) {
        selection.append(addItem<Node>(scene, new NoteItem));
    }
    for (int i = 0; i < counts.at(4); ++i) {
        InputNode *from = addTextInput(scene, "a\n1\n", {-500, 150.0 * i});
        TransformNode *to = addProbe(scene, {from}, {-250, 150.0 * i});
        selection.append(to->connections(ConnectionDirection::In).first());
    }
    ProbeTransform prototype(minimum, maximum);
    QCOMPARE(GraphScene::canAddTransform(&prototype, selection), allowed);
}

void TestGraphEditing::addTransformConnectsSelectionInOrder()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *lower = addTextInput(scene, "a\n2\n", {0, 300});
    InputNode *upper = addTextInput(scene, "a\n1\n", {50, 0});
    lower->setSelected(true);
    upper->setSelected(true);
    ProbeTransform prototype(2, 2);
    QSignalSpy added(&scene, &GraphScene::transformNodeAddedByUser);
    auto *node
        = static_cast<TransformNode *>(scene.addTransformByUser(&prototype, false, QPointF()));
    QVERIFY(node);
    QCOMPARE(added.count(), 1);
    QCOMPARE(added.first().first().toString(), QString("Probe"));
    QCOMPARE(upstreamOf(node), QList<Node *>({upper, lower}));
    QCOMPARE(sourceOf(node, 0), static_cast<Node *>(upper));
    QCOMPARE(sourceOf(node, 1), static_cast<Node *>(lower));
    QCOMPARE(probe(node)->configureCalls, 1);
    // Right of the right-most source, at its height.
    QCOMPARE(node->pos(), QPointF(50 + FlowModel::GridWidth, 0));
    QCOMPARE(scene.selectedNodes(), QList<Node *>({node}));

    // Refused selections add nothing.
    const int before = scene.nodes().size();
    QVERIFY(!scene.addTransformByUser(&prototype, false, QPointF()));
    QCOMPARE(scene.nodes().size(), before);
}

void TestGraphEditing::addTransformIntoConnection()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *target = addProbe(scene, {input}, {240, 0});
    QCOMPARE(sourceOf(target, 0), static_cast<Node *>(input));
    scene.process(FlowModel::RunAll);
    input->connections(ConnectionDirection::Out).first()->setSelected(true);

    ProbeTransform prototype;
    auto *inserted
        = static_cast<TransformNode *>(scene.addTransformByUser(&prototype, false, QPointF()));
    QVERIFY(inserted);
    QCOMPARE(downstreamOf(input), QList<Node *>({inserted}));
    QCOMPARE(downstreamOf(inserted), QList<Node *>({target}));
    QCOMPARE(upstreamOf(target), QList<Node *>({inserted}));
    QCOMPARE(scene.allConnections().size(), 2);
    QCOMPARE(sourceOf(target, 0), static_cast<Node *>(inserted));
    QCOMPARE(sourceOf(inserted, 0), static_cast<Node *>(input));
    QCOMPARE(target->item()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(input->item()->status(), int(FlowItem::UpToDate));
    // The place right of the source is the target's: the new item goes a step down.
    QCOMPARE(inserted->pos(), QPointF(FlowModel::GridWidth, FlowModel::GridHeight));
}

void TestGraphEditing::connectionPlusItemDoesNotInsert()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *target = addProbe(scene, {input}, {240, 0});
    InputNode *other = addTextInput(scene, "a\n2\n", {0, 400});
    input->connections(ConnectionDirection::Out).first()->setSelected(true);
    other->setSelected(true);

    ProbeTransform prototype;
    auto *added
        = static_cast<TransformNode *>(scene.addTransformByUser(&prototype, false, QPointF()));
    QVERIFY(added);
    QCOMPARE(upstreamOf(added), QList<Node *>({other}));
    QCOMPARE(upstreamOf(target), QList<Node *>({input}));
    QCOMPARE(sourceOf(target, 0), static_cast<Node *>(input));
}

void TestGraphEditing::addOutputWarnsAboutExcelSize_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("kind");
    QTest::newRow("xlsx rows") << "/tmp/o.xlsx" << 1048576 << 1 << "Excel .xlsx";
    QTest::newRow("xlsx columns") << "/tmp/o.xlsx" << 1 << 16384 << "Excel .xlsx";
    QTest::newRow("xlsx rows fit") << "/tmp/o.xlsx" << 1048575 << 1 << "";
    QTest::newRow("xlsx columns fit") << "/tmp/o.xlsx" << 1 << 16383 << "";
    QTest::newRow("xls rows") << "/tmp/o.xls" << 65536 << 1 << "Excel .xls";
    QTest::newRow("xls columns") << "/tmp/o.xls" << 1 << 256 << "Excel .xls";
    QTest::newRow("xls rows fit") << "/tmp/o.xls" << 65535 << 1 << "";
    QTest::newRow("xls columns fit") << "/tmp/o.xls" << 1 << 255 << "";
    QTest::newRow("csv has no limit") << "/tmp/o.csv" << 1048576 << 1 << "";
}

void TestGraphEditing::addOutputWarnsAboutExcelSize()
{
    QFETCH(QString, path);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QString, kind);
    GraphScene scene;
    scene.model()->setAutoRun(false);
    TransformNode *source = addProbe(scene, {}, {0, 0});
    source->item()->dataset()->setSize(rows, columns);
    QCOMPARE(source->item()->rowCount(), rows);

    QSignalSpy warnings(&scene, &GraphScene::showWarningMessage);
    Node *output = scene.addOutputByUser(source, path);
    QVERIFY(output);
    QCOMPARE(upstreamOf(output), QList<Node *>({source}));
    QCOMPARE(scene.selectedNodes(), QList<Node *>({output}));
    QCOMPARE(output->pos(), QPointF(FlowModel::GridWidth, 0));
    if (kind.isEmpty()) {
        QCOMPARE(warnings.count(), 0);
    } else {
        QCOMPARE(warnings.count(), 1);
        const QString text = warnings.first().at(1).toString();
        QVERIFY2(text.startsWith("The output dataset exceeds the maximum size for an " + kind
                                 + " file of "),
                 qPrintable(text));
        QVERIFY(text.endsWith(" columns. It may be truncated by Excel."));
    }
}

void TestGraphEditing::addNoteBesideItem()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    // Over an input the note goes left first; with that side taken, above.
    auto *first = static_cast<NoteNode *>(scene.addNoteByUser(input->pos() + QPointF(10, 10)));
    QCOMPARE(first->pos(), QPointF(-FlowModel::GridWidth, 0));
    QCOMPARE(first->note()->arrow(), 2);
    auto *second = static_cast<NoteNode *>(scene.addNoteByUser(input->pos() + QPointF(10, 10)));
    QCOMPARE(second->pos(), QPointF(0, -FlowModel::GridHeight));
    QCOMPARE(second->note()->arrow(), 3);
    // On empty canvas it stays where asked, without an arrow.
    auto *free = static_cast<NoteNode *>(scene.addNoteByUser(QPointF(1000, 1000)));
    QCOMPARE(free->pos(), QPointF(1000, 1000));
    QCOMPARE(free->note()->arrow(), 0);
    QCOMPARE(scene.selectedNodes(), QList<Node *>({free}));
}

void TestGraphEditing::addInputAtFreePlace()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    QSignalSpy added(&scene, &GraphScene::nodesAdded);
    auto *first = new InputItem;
    QCOMPARE(scene.addInputByUser(first, QPointF())->item(), first);
    auto *second = new InputItem;
    scene.addInputByUser(second, QPointF());
    auto *dropped = new InputItem;
    Node *droppedNode = scene.addInputByUser(dropped, QPointF(500, 40));
    QCOMPARE(added.count(), 3);
    QCOMPARE(first->pos(), QPointF(0, 0));
    QCOMPARE(second->pos(), QPointF(0, FlowModel::GridHeight));
    QCOMPARE(dropped->pos(), QPointF(500, 40));
    QCOMPARE(scene.selectedNodes(), QList<Node *>({droppedNode}));
    QCOMPARE(scene.selectedItems(), QList<FlowItem *>({dropped}));
}

void TestGraphEditing::deleteBridgesTransform()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *source = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *middle = addProbe(scene, {source}, {240, 0});
    TransformNode *upper = addProbe(scene, {middle}, {480, 0});
    TransformNode *lower = addProbe(scene, {middle}, {480, 200});
    QCOMPARE(sourceOf(upper, 0), static_cast<Node *>(middle));
    scene.process(FlowModel::RunAll);

    QSignalSpy tips(&scene, &GraphScene::showTip);
    QSignalSpy deleted(&scene, &GraphScene::nodesDeleted);
    middle->setSelected(true);
    scene.deleteSelectedByUser();
    deleteLaterNow();

    QCOMPARE(scene.nodes().size(), 3);
    QCOMPARE(downstreamOf(source, true), QList<Node *>({upper, lower}));
    QCOMPARE(scene.allConnections().size(), 2);
    QCOMPARE(sourceOf(upper, 0), static_cast<Node *>(source));
    QCOMPARE(sourceOf(lower, 0), static_cast<Node *>(source));
    QCOMPARE(upper->item()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(lower->item()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(source->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(tips.count(), 0);
    QCOMPARE(deleted.count(), 1);
}

void TestGraphEditing::deleteBridgeDropsDuplicate()
{
    // source feeds the two-input target directly and through middle; bridging middle would
    // join source to target twice.
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *source = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *middle = addProbe(scene, {source}, {240, 200});
    TransformNode *target = addProbe(scene, {source, middle}, {480, 0}, 1, 2);
    middle->setSelected(true);
    scene.deleteSelectedByUser();
    deleteLaterNow();
    QCOMPARE(upstreamOf(target), QList<Node *>({source}));
    QCOMPARE(scene.allConnections().size(), 1);

    // A transform whose source is deleted with it is not bridged.
    InputNode *a = addTextInput(scene, "a\n1\n", {0, 600});
    TransformNode *b = addProbe(scene, {a}, {240, 600});
    TransformNode *c = addProbe(scene, {b}, {480, 600});
    scene.clearSelection();
    a->setSelected(true);
    b->setSelected(true);
    scene.deleteSelectedByUser();
    deleteLaterNow();
    QVERIFY(upstreamOf(c).isEmpty());
}

void TestGraphEditing::deleteConnectionsOnlyShowsTip()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *target = addProbe(scene, {input}, {240, 0});
    scene.process(FlowModel::RunAll);
    QSignalSpy tips(&scene, &GraphScene::showTip);
    target->connections(ConnectionDirection::In).first()->setSelected(true);
    scene.deleteSelectedByUser();
    QCOMPARE(tips.count(), 1);
    QCOMPARE(tips.first().at(0).toString(), QString("Deleting connections"));
    QCOMPARE(tips.first().at(1).toString(),
             QString("You can delete/insert transforms without deleting connections. See "
                     "'Reference>Connections' in the help."));
    QCOMPARE(tips.first().at(2).toInt(), 20000);
    QVERIFY(scene.allConnections().isEmpty());
    QCOMPARE(target->item()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(sourceOf(target, 0), static_cast<Node *>(nullptr));
}

void TestGraphEditing::disconnect_data()
{
    QTest::addColumn<int>("direction");
    QTest::addColumn<int>("atRisk");
    QTest::addColumn<bool>("keepsIn");
    QTest::addColumn<bool>("keepsOut");
    // input -> middle (1 column option) -> last (two options, two inputs) -> tail (1).
    // middle is selected.
    QTest::newRow("both") << int(GraphScene::Disconnect::Both) << 1 + 2 + 1 << false << false;
    QTest::newRow("out") << int(GraphScene::Disconnect::Out) << 2 + 1 << true << false;
    QTest::newRow("in") << int(GraphScene::Disconnect::In) << 1 + 2 + 1 << false << true;
}

void TestGraphEditing::disconnect()
{
    QFETCH(int, direction);
    QFETCH(int, atRisk);
    QFETCH(bool, keepsIn);
    QFETCH(bool, keepsOut);
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *side = addTextInput(scene, "a\n1\n", {0, 300});
    TransformNode *middle = addProbe(scene, {input}, {240, 0});
    TransformNode *last = addProbe(scene, {middle, side}, {480, 0}, 1, 2);
    TransformNode *tail = addProbe(scene, {last}, {720, 0});
    scene.process(FlowModel::RunAll);
    middle->setSelected(true);

    const auto how = GraphScene::Disconnect(direction);
    QCOMPARE(scene.columnOptionsAtRisk(how), atRisk);
    scene.disconnectSelectedByUser(how);
    QCOMPARE(upstreamOf(middle).size(), keepsIn ? 1 : 0);
    QCOMPARE(downstreamOf(middle).size(), keepsOut ? 1 : 0);
    QCOMPARE(sourceOf(middle, 0), keepsIn ? static_cast<Node *>(input) : nullptr);
    QCOMPARE(sourceOf(last, 0), keepsOut ? static_cast<Node *>(middle) : nullptr);
    QCOMPARE(sourceOf(last, 1), static_cast<Node *>(side));
    QCOMPARE(middle->item()->status(), int(keepsIn ? FlowItem::UpToDate : FlowItem::NeedsUpdate));
    // Everything below a changed item waits for a run.
    QCOMPARE(last->item()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(tail->item()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(input->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(side->item()->status(), int(FlowItem::UpToDate));
}

void TestGraphEditing::duplicateBranch()
{
    QTemporaryDir folder;
    GraphScene scene;
    scene.model()->setAutoRun(false);
    InputNode *outside = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *other = addTextInput(scene, "a\n2\n", {0, -200});
    outside->item()->setAlias("in");
    TransformNode *root = addProbe(scene, {outside}, {240, 0});
    TransformNode *pair = addProbe(scene, {root, other}, {480, 0}, 1, 2);
    auto *outputItem = new OutputItem(-1, folder.filePath("dup.csv"));
    outputItem->setAlias("out");
    outputItem->setPos(QPointF(720, 0));
    auto *output = addItem<OutputNode>(scene, outputItem);
    QVERIFY(scene.model()->connectItems(pair->item(), output->item()));
    scene.process(FlowModel::RunAll);
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(other));
    QCOMPARE(sourceOf(pair, 1), static_cast<Node *>(root));
    const int before = scene.nodes().size();
    const int nextId = FlowItem::nextId();

    root->setSelected(true);
    scene.duplicateBranchByUser();
    QCOMPARE(scene.nodes().size(), before + 3);

    // The outside sources now feed both branches.
    QCOMPARE(downstreamOf(outside).size(), 2);
    QCOMPARE(downstreamOf(other).size(), 2);
    auto *rootCopy = qobject_cast<TransformNode *>(downstreamOf(outside).at(1));
    QVERIFY(rootCopy && rootCopy != root);
    QCOMPARE(scene.selectedNodes(), QList<Node *>({rootCopy}));
    auto *pairCopy = qobject_cast<TransformNode *>(downstreamOf(rootCopy).value(0));
    QVERIFY(pairCopy && pairCopy != pair);
    QCOMPARE(upstreamOf(pairCopy, true), QList<Node *>({other, rootCopy}));
    auto *outputCopy = qobject_cast<OutputNode *>(downstreamOf(pairCopy).value(0));
    QVERIFY(outputCopy && outputCopy != output);

    // New ids, unique aliases, the same file, options bound to the copies.
    QVERIFY(rootCopy->item()->id() >= nextId && pairCopy->item()->id() >= nextId
            && outputCopy->item()->id() >= nextId);
    QCOMPARE(outputCopy->item()->alias(), QString("out2"));
    QCOMPARE(outputCopy->output()->path(), outputItem->path());
    QCOMPARE(sourceOf(rootCopy, 0), static_cast<Node *>(outside));
    QCOMPARE(sourceOf(pairCopy, 0), static_cast<Node *>(other));
    QCOMPARE(sourceOf(pairCopy, 1), static_cast<Node *>(rootCopy));
    QCOMPARE(sourceOf(pair, 1), static_cast<Node *>(root));

    // Under the graph, keeping the branch's shape.
    QCOMPARE(rootCopy->pos(), root->pos() + QPointF(0, FlowModel::GridHeight));
    QCOMPARE(pairCopy->pos() - rootCopy->pos(), pair->pos() - root->pos());

    // Running the copy gives what the original gives.
    rootCopy->item()->setStatus(FlowItem::NeedsUpdate, true);
    scene.process(FlowModel::RunChanges);
    QCOMPARE(pairCopy->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(pairCopy->item()->dataset()->rows(), pair->item()->dataset()->rows());

    // A multi-file output's copy takes "multifile".
    scene.clearSelection();
    outputItem->setSingleOrMulti(OutputItem::MultipleFiles);
    output->setSelected(true);
    scene.duplicateBranchByUser();
    QCOMPARE(downstreamOf(pair).size(), 2);
    QCOMPARE(downstreamOf(pair).at(1)->item()->alias(), QString("multifile"));
}

void TestGraphEditing::snapAtEndOfMove()
{
    GraphScene scene;
    scene.model()->setAutoRun(false);
    Node *note = addItem<Node>(scene, new NoteItem);
    note->setPos(250, 130);
    note->setSelected(true);
    QSignalSpy moved(&scene, &GraphScene::nodesPosChanged);
    scene.endItemsMove();
    QCOMPARE(note->pos(), QPointF(250, 130)); // no grid: left where dropped
    scene.setSnapToGrid(true);
    QVERIFY(scene.snapToGrid());
    QVERIFY(scene.model()->snapToGrid());
    scene.endItemsMove();
    QVERIFY(qAbs(note->pos().x() - FlowModel::GridWidth) < 1e-9);
    QVERIFY(qAbs(note->pos().y() - FlowModel::GridHeight) < 1e-9);
    QCOMPARE(moved.count(), 2);
}

TABULON_TEST_MAIN(TestGraphEditing)
#include "tst_graphediting.moc"
