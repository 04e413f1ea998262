#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/notenode.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "testutil.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformstack.h"

#include <QApplication>
#include <QSignalSpy>
#include <QtTest>

namespace {

// A transform of a chosen number of inputs with one column option per input, bound in turn
// to the inputs; it stacks its inputs' rows, and can claim that reordered inputs changed its
// options, as a key-matching transform would.
class ProbeTransform : public Transform
{
public:
    explicit ProbeTransform(int minimum = 1, int maximum = 1)
    {
        m_descriptor.type = 998;
        m_descriptor.typeName = QStringLiteral("Probe");
        m_descriptor.displayName = QStringLiteral("Probe");
        m_descriptor.minimumInputs = minimum;
        m_descriptor.maximumInputs = maximum;
        m_descriptor.description = QStringLiteral("Stacks rows.");
        m_descriptor.create = createTransform<ProbeTransform>;
        for (int i = 0; i < std::min(maximum, 2); ++i)
            addParameter(new Parameter(ParameterType::SingleColumn,
                                       QStringLiteral("Column_%1").arg(i + 1),
                                       QStringLiteral("Column %1").arg(i + 1), nullptr));
    }

    bool configures = false;
    int configureCalls = 0;

    const TransformDescriptor &descriptor() const override { return m_descriptor; }
    void createParameters(const ColumnSources &, bool) override { }
    bool autoConfigure(const ColumnSources &) override
    {
        ++configureCalls;
        return configures;
    }

protected:
    void copyFrom(const Transform &other) override
    {
        Transform::copyFrom(other);
        const auto &probe = static_cast<const ProbeTransform &>(other);
        m_descriptor = probe.m_descriptor;
        configures = probe.configures;
    }

    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                     bool &) override
    {
        for (const TransformInput &input : inputs) {
            const Dataset *data = input.dataset;
            if (!output.hasColumns()) {
                output.setColumnCount(data->columnCount());
                output.setHeader(data->header());
            }
            for (int r = 0; r < data->rowCount(); ++r)
                output.appendRow(data->row(r), true);
        }
        return output;
    }

private:
    TransformDescriptor m_descriptor;
};

TransformNode *addProbe(GraphScene &scene, const QList<Node *> &inputs, const QPointF &pos,
                        int minimum = 1, int maximum = 1)
{
    return addTransform(scene, new ProbeTransform(minimum, maximum), inputs, pos);
}

ProbeTransform *probe(TransformNode *node)
{
    return static_cast<ProbeTransform *>(node->transform());
}

Node *sourceOf(TransformNode *node, int option)
{
    return dynamic_cast<Node *>(node->transform()->parameters().at(option)->sourceNode());
}

QList<Node *> sortedTargets(const Node *node)
{
    return node->downstream(true);
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
    void snapPoint_data();
    void snapPoint();

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

    void inputOrderFollowsCanvas_data();
    void inputOrderFollowsCanvas();
    void snapAtEndOfMove();

    void deepCopyKeepsStructure();
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
    scene.setAutoRun(false);
    QHash<QString, Node *> named;
    named["in1"] = addTextInput(scene, "a\n1\n", {0, 0});
    named["in2"] = addTextInput(scene, "a\n1\n", {0, 200});
    named["t1"] = addProbe(scene, {named["in1"]}, {250, 0}, 1, 2);
    auto *t2 = addProbe(scene, {named["t1"]}, {500, 0});
    named["t2"] = t2;
    named["t5"] = addProbe(scene, {t2}, {750, 0}, 1, 2);
    auto *out = new OutputNode(-1, "/tmp/x.csv");
    scene.addNode(out);
    QVERIFY(scene.connectNodes(named["in1"], out));
    named["out"] = out;
    named["out2"] = new OutputNode(-1, "/tmp/y.csv");
    scene.addNode(named["out2"]);
    named["note"] = new NoteNode;
    scene.addNode(named["note"]);
    named["t3"] = addProbe(scene, {named["in2"]}, {250, 400}, 1, 2);
    named["t4"] = addProbe(scene, {named["in2"]}, {250, 600}, 1, 1);

    const QList<Node *> candidates = scene.connectionCandidates(t2);
    QCOMPARE(candidates.contains(named[target]), offered);
    // The user's connection follows the same rule.
    const int before = scene.allConnections().size();
    Connection *made = scene.addConnectionByUser(t2, named[target]);
    QCOMPARE(made != nullptr, offered);
    QCOMPARE(scene.allConnections().size(), before + (offered ? 1 : 0));
}

void TestGraphEditing::startConnection()
{
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    QVERIFY(!scene.canStartConnection(input)); // nothing could take it
    auto *out = new OutputNode(-1, "/tmp/x.csv");
    scene.addNode(out);
    QVERIFY(scene.canStartConnection(input));
    QVERIFY(!scene.canStartConnection(out)); // nothing leaves an output
    QVERIFY(scene.addConnectionByUser(input, out));
    QVERIFY(!scene.canStartConnection(input)); // the only target is full
}

void TestGraphEditing::connectionByUserBindsAndMarks()
{
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *top = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *bottom = addTextInput(scene, "a\n2\n", {0, 200});
    TransformNode *pair = addProbe(scene, {bottom}, {250, 100}, 1, 2);
    scene.process(GraphScene::RunAll);
    QCOMPARE(pair->status(), int(Node::UpToDate));
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(bottom));

    QSignalSpy changed(&scene, &GraphScene::nodeParametersChanged);
    QVERIFY(scene.addConnectionByUser(top, pair));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(pair->status(), int(Node::NeedsUpdate));
    // Options bind in canvas order: the upper input takes the first.
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(top));
    QCOMPARE(sourceOf(pair, 1), static_cast<Node *>(bottom));

    // With Auto Run on, the change runs at once.
    scene.setAutoRun(true);
    InputNode *third = addTextInput(scene, "a\n3\n", {0, 400});
    TransformNode *single = addProbe(scene, {}, {250, 400});
    QVERIFY(scene.addConnectionByUser(third, single));
    QCOMPARE(single->status(), int(Node::UpToDate));
    QCOMPARE(single->dataset()->cell(0, 0), QString("3"));
}

void TestGraphEditing::freePlace_data()
{
    QTest::addColumn<QList<QPointF>>("others");
    QTest::addColumn<bool>("ctrl");
    QTest::addColumn<QPointF>("expected");
    const qreal w = GraphScene::GridWidth;
    const qreal h = GraphScene::GridHeight;
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
    auto *source = new NoteNode;
    source->setPos(100, 300);
    scene.addNode(source);
    for (const QPointF &pos : others) {
        auto *other = new NoteNode;
        other->setPos(pos);
        scene.addNode(other);
    }
    const QPointF place = scene.freePlace({source}, ctrl, QPointF(-7, 11));
    QCOMPARE(place, expected);
    // Without sources the cursor decides as well.
    QCOMPARE(scene.freePlace({}, false, QPointF(-7, 11)), QPointF(-7, 11));
}

void TestGraphEditing::snapPoint_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<QPointF>("snapped");
    const qreal w = GraphScene::GridWidth;
    const qreal h = GraphScene::GridHeight;
    QTest::newRow("on grid") << QPointF(w, h) << QPointF(w, h);
    QTest::newRow("just below half") << QPointF(w / 2 - 0.01, h / 2 - 0.01) << QPointF(0, 0);
    QTest::newRow("half rounds up") << QPointF(w / 2, h / 2) << QPointF(w, h);
    QTest::newRow("negative") << QPointF(-w * 1.3, -h * 2.8) << QPointF(-w, -3 * h);
    QTest::newRow("negative half rounds up") << QPointF(-w / 2, -h / 2) << QPointF(0, 0);
}

void TestGraphEditing::snapPoint()
{
    QFETCH(QPointF, point);
    QFETCH(QPointF, snapped);
    const QPointF result = GraphScene::snapPoint(point);
    QVERIFY2(qAbs(result.x() - snapped.x()) < 1e-9 && qAbs(result.y() - snapped.y()) < 1e-9,
             qPrintable(QString("%1,%2").arg(result.x()).arg(result.y())));
}

void TestGraphEditing::canAddTransform_data()
{
    // Counts of selected inputs, transforms, outputs, notes, connections; the transform's
    // minimum and maximum inputs.
    QTest::addColumn<QList<int>>("counts");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<bool>("allowed");
    const int many = Node::Unlimited;
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
        auto *out = new OutputNode;
        scene.addNode(out);
        selection.append(out);
    }
    for (int i = 0; i < counts.at(3); ++i) {
        auto *note = new NoteNode;
        scene.addNode(note);
        selection.append(note);
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
    scene.setAutoRun(false);
    InputNode *lower = addTextInput(scene, "a\n2\n", {0, 300});
    InputNode *upper = addTextInput(scene, "a\n1\n", {50, 0});
    lower->setSelected(true);
    upper->setSelected(true);
    ProbeTransform prototype(2, 2);
    QSignalSpy added(&scene, &GraphScene::transformNodeAddedByUser);
    TransformNode *node = scene.addTransformByUser(&prototype, false, QPointF());
    QVERIFY(node);
    QCOMPARE(added.count(), 1);
    QCOMPARE(added.first().first().toString(), QString("Probe"));
    QCOMPARE(node->upstream(), QList<Node *>({upper, lower}));
    QCOMPARE(sourceOf(node, 0), static_cast<Node *>(upper));
    QCOMPARE(sourceOf(node, 1), static_cast<Node *>(lower));
    QCOMPARE(probe(node)->configureCalls, 1);
    // Right of the right-most source, at its height.
    QCOMPARE(node->pos(), QPointF(50 + GraphScene::GridWidth, 0));
    QCOMPARE(scene.selectedItems(), QList<QGraphicsItem *>({node}));

    // Refused selections add nothing.
    const int before = scene.nodes().size();
    QVERIFY(!scene.addTransformByUser(&prototype, false, QPointF()));
    QCOMPARE(scene.nodes().size(), before);
}

void TestGraphEditing::addTransformIntoConnection()
{
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *target = addProbe(scene, {input}, {240, 0});
    QCOMPARE(sourceOf(target, 0), static_cast<Node *>(input));
    scene.process(GraphScene::RunAll);
    input->connections(ConnectionDirection::Out).first()->setSelected(true);

    ProbeTransform prototype;
    TransformNode *inserted = scene.addTransformByUser(&prototype, false, QPointF());
    QVERIFY(inserted);
    QCOMPARE(input->downstream(), QList<Node *>({inserted}));
    QCOMPARE(inserted->downstream(), QList<Node *>({target}));
    QCOMPARE(target->upstream(), QList<Node *>({inserted}));
    QCOMPARE(scene.allConnections().size(), 2);
    QCOMPARE(sourceOf(target, 0), static_cast<Node *>(inserted));
    QCOMPARE(sourceOf(inserted, 0), static_cast<Node *>(input));
    QCOMPARE(target->status(), int(Node::NeedsUpdate));
    QCOMPARE(input->status(), int(Node::UpToDate));
    // The place right of the source is the target's: the new item goes a step down.
    QCOMPARE(inserted->pos(), QPointF(GraphScene::GridWidth, GraphScene::GridHeight));
}

void TestGraphEditing::connectionPlusItemDoesNotInsert()
{
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *target = addProbe(scene, {input}, {240, 0});
    InputNode *other = addTextInput(scene, "a\n2\n", {0, 400});
    input->connections(ConnectionDirection::Out).first()->setSelected(true);
    other->setSelected(true);

    ProbeTransform prototype;
    TransformNode *added = scene.addTransformByUser(&prototype, false, QPointF());
    QVERIFY(added);
    QCOMPARE(added->upstream(), QList<Node *>({other}));
    QCOMPARE(target->upstream(), QList<Node *>({input}));
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
    scene.setAutoRun(false);
    TransformNode *source = addProbe(scene, {}, {0, 0});
    source->dataset()->setSize(rows, columns);
    QCOMPARE(source->rowCount(), rows);

    QSignalSpy warnings(&scene, &GraphScene::showWarningMessage);
    OutputNode *output = scene.addOutputByUser(source, path);
    QVERIFY(output);
    QCOMPARE(output->upstream(), QList<Node *>({source}));
    QCOMPARE(scene.selectedItems(), QList<QGraphicsItem *>({output}));
    QCOMPARE(output->pos(), QPointF(GraphScene::GridWidth, 0));
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
    NoteNode *first = scene.addNoteByUser(input->pos() + QPointF(10, 10));
    QCOMPARE(first->pos(), QPointF(-GraphScene::GridWidth, 0));
    QCOMPARE(first->arrow(), 2);
    NoteNode *second = scene.addNoteByUser(input->pos() + QPointF(10, 10));
    QCOMPARE(second->pos(), QPointF(0, -GraphScene::GridHeight));
    QCOMPARE(second->arrow(), 3);
    // On empty canvas it stays where asked, without an arrow.
    NoteNode *free = scene.addNoteByUser(QPointF(1000, 1000));
    QCOMPARE(free->pos(), QPointF(1000, 1000));
    QCOMPARE(free->arrow(), 0);
    QCOMPARE(scene.selectedItems(), QList<QGraphicsItem *>({free}));
}

void TestGraphEditing::addInputAtFreePlace()
{
    GraphScene scene;
    scene.setAutoRun(false);
    QSignalSpy added(&scene, &GraphScene::nodesAdded);
    auto *first = new InputNode;
    scene.addInputNodeByUser(first, QPointF());
    auto *second = new InputNode;
    scene.addInputNodeByUser(second, QPointF());
    auto *dropped = new InputNode;
    scene.addInputNodeByUser(dropped, QPointF(500, 40));
    QCOMPARE(added.count(), 3);
    QCOMPARE(first->pos(), QPointF(0, 0));
    QCOMPARE(second->pos(), QPointF(0, GraphScene::GridHeight));
    QCOMPARE(dropped->pos(), QPointF(500, 40));
    QCOMPARE(scene.selectedItems(), QList<QGraphicsItem *>({dropped}));
}

void TestGraphEditing::deleteBridgesTransform()
{
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *source = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *middle = addProbe(scene, {source}, {240, 0});
    TransformNode *upper = addProbe(scene, {middle}, {480, 0});
    TransformNode *lower = addProbe(scene, {middle}, {480, 200});
    QCOMPARE(sourceOf(upper, 0), static_cast<Node *>(middle));
    scene.process(GraphScene::RunAll);

    QSignalSpy tips(&scene, &GraphScene::showTip);
    QSignalSpy deleted(&scene, &GraphScene::nodesDeleted);
    middle->setSelected(true);
    scene.deleteSelectedByUser();
    deleteLaterNow();

    QCOMPARE(scene.nodes().size(), 3);
    QCOMPARE(sortedTargets(source), QList<Node *>({upper, lower}));
    QCOMPARE(scene.allConnections().size(), 2);
    QCOMPARE(sourceOf(upper, 0), static_cast<Node *>(source));
    QCOMPARE(sourceOf(lower, 0), static_cast<Node *>(source));
    QCOMPARE(upper->status(), int(Node::NeedsUpdate));
    QCOMPARE(lower->status(), int(Node::NeedsUpdate));
    QCOMPARE(source->status(), int(Node::UpToDate));
    QCOMPARE(tips.count(), 0);
    QCOMPARE(deleted.count(), 1);
}

void TestGraphEditing::deleteBridgeDropsDuplicate()
{
    // source feeds the two-input target directly and through middle; bridging middle would
    // join source to target twice.
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *source = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *middle = addProbe(scene, {source}, {240, 200});
    TransformNode *target = addProbe(scene, {source, middle}, {480, 0}, 1, 2);
    middle->setSelected(true);
    scene.deleteSelectedByUser();
    deleteLaterNow();
    QCOMPARE(target->upstream(), QList<Node *>({source}));
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
    QVERIFY(c->upstream().isEmpty());
}

void TestGraphEditing::deleteConnectionsOnlyShowsTip()
{
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *target = addProbe(scene, {input}, {240, 0});
    scene.process(GraphScene::RunAll);
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
    QCOMPARE(target->status(), int(Node::NeedsUpdate));
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
    scene.setAutoRun(false);
    InputNode *input = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *side = addTextInput(scene, "a\n1\n", {0, 300});
    TransformNode *middle = addProbe(scene, {input}, {240, 0});
    TransformNode *last = addProbe(scene, {middle, side}, {480, 0}, 1, 2);
    TransformNode *tail = addProbe(scene, {last}, {720, 0});
    scene.process(GraphScene::RunAll);
    middle->setSelected(true);

    const auto how = GraphScene::Disconnect(direction);
    QCOMPARE(scene.columnOptionsAtRisk(how), atRisk);
    scene.disconnectSelectedByUser(how);
    QCOMPARE(middle->upstream().size(), keepsIn ? 1 : 0);
    QCOMPARE(middle->downstream().size(), keepsOut ? 1 : 0);
    QCOMPARE(sourceOf(middle, 0), keepsIn ? static_cast<Node *>(input) : nullptr);
    QCOMPARE(sourceOf(last, 0), keepsOut ? static_cast<Node *>(middle) : nullptr);
    QCOMPARE(sourceOf(last, 1), static_cast<Node *>(side));
    QCOMPARE(middle->status(), int(keepsIn ? Node::UpToDate : Node::NeedsUpdate));
    // Everything below a changed item waits for a run.
    QCOMPARE(last->status(), int(Node::NeedsUpdate));
    QCOMPARE(tail->status(), int(Node::NeedsUpdate));
    QCOMPARE(input->status(), int(Node::UpToDate));
    QCOMPARE(side->status(), int(Node::UpToDate));
}

void TestGraphEditing::duplicateBranch()
{
    QTemporaryDir folder;
    GraphScene scene;
    scene.setAutoRun(false);
    InputNode *outside = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *other = addTextInput(scene, "a\n2\n", {0, -200});
    outside->setAlias("in");
    TransformNode *root = addProbe(scene, {outside}, {240, 0});
    TransformNode *pair = addProbe(scene, {root, other}, {480, 0}, 1, 2);
    auto *output = new OutputNode(-1, folder.filePath("dup.csv"));
    output->setAlias("out");
    output->setPos(720, 0);
    scene.addNode(output);
    QVERIFY(scene.connectNodes(pair, output));
    scene.process(GraphScene::RunAll);
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(other));
    QCOMPARE(sourceOf(pair, 1), static_cast<Node *>(root));
    const int before = scene.nodes().size();
    const int nextId = Node::nextId();

    root->setSelected(true);
    scene.duplicateBranchByUser();
    QCOMPARE(scene.nodes().size(), before + 3);

    // The outside sources now feed both branches.
    QCOMPARE(outside->downstream().size(), 2);
    QCOMPARE(other->downstream().size(), 2);
    auto *rootCopy = qobject_cast<TransformNode *>(outside->downstream().at(1));
    QVERIFY(rootCopy && rootCopy != root);
    QCOMPARE(scene.selectedItems(), QList<QGraphicsItem *>({rootCopy}));
    auto *pairCopy = qobject_cast<TransformNode *>(rootCopy->downstream().value(0));
    QVERIFY(pairCopy && pairCopy != pair);
    QCOMPARE(pairCopy->upstream(true), QList<Node *>({other, rootCopy}));
    auto *outputCopy = qobject_cast<OutputNode *>(pairCopy->downstream().value(0));
    QVERIFY(outputCopy && outputCopy != output);

    // New ids, unique aliases, the same file, options bound to the copies.
    QVERIFY(rootCopy->id() >= nextId && pairCopy->id() >= nextId && outputCopy->id() >= nextId);
    QCOMPARE(outputCopy->alias(), QString("out2"));
    QCOMPARE(outputCopy->path(), output->path());
    QCOMPARE(sourceOf(rootCopy, 0), static_cast<Node *>(outside));
    QCOMPARE(sourceOf(pairCopy, 0), static_cast<Node *>(other));
    QCOMPARE(sourceOf(pairCopy, 1), static_cast<Node *>(rootCopy));
    QCOMPARE(sourceOf(pair, 1), static_cast<Node *>(root));

    // Under the graph, keeping the branch's shape.
    QCOMPARE(rootCopy->pos(), root->pos() + QPointF(0, GraphScene::GridHeight));
    QCOMPARE(pairCopy->pos() - rootCopy->pos(), pair->pos() - root->pos());

    // Running the copy gives what the original gives.
    rootCopy->setStatus(Node::NeedsUpdate, true);
    scene.process(GraphScene::RunChanges);
    QCOMPARE(pairCopy->status(), int(Node::UpToDate));
    QCOMPARE(pairCopy->dataset()->rows(), pair->dataset()->rows());

    // A multi-file output's copy takes "multifile".
    scene.clearSelection();
    output->setSingleOrMulti(OutputNode::MultipleFiles);
    output->setSelected(true);
    scene.duplicateBranchByUser();
    QCOMPARE(pair->downstream().size(), 2);
    QCOMPARE(pair->downstream().at(1)->alias(), QString("multifile"));
}

void TestGraphEditing::inputOrderFollowsCanvas_data()
{
    QTest::addColumn<bool>("configures");
    QTest::newRow("options unchanged") << false;
    QTest::newRow("options changed") << true;
}

void TestGraphEditing::inputOrderFollowsCanvas()
{
    QFETCH(bool, configures);
    GraphScene scene;
    scene.setAutoRun(true);
    InputNode *first = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *second = addTextInput(scene, "a\n2\n", {0, 200});
    auto *transform = new TransformStack;
    TransformNode *stack = addTransform(scene, transform, {first, second}, {240, 100});
    auto *probed = addProbe(scene, {first, second}, {240, 400}, 1, 2);
    probe(probed)->configures = configures;
    scene.process(GraphScene::RunAll);
    QCOMPARE(stack->dataset()->rows(), QList<QStringList>({{"1"}, {"2"}}));
    QCOMPARE(probed->dataset()->rows(), QList<QStringList>({{"1"}, {"2"}}));

    // The user drags the lower input above the upper one.
    second->setSelected(true);
    second->setPos(0, -200);
    scene.endItemsMove();

    QCOMPARE(probed->upstream(true), QList<Node *>({second, first}));
    QVERIFY(probe(probed)->configureCalls >= 1);
    if (configures) {
        QCOMPARE(probed->dataset()->rows(), QList<QStringList>({{"2"}, {"1"}}));
    } else {
        // Nothing reported changed: the last result stands until the next run.
        QCOMPARE(probed->status(), int(Node::UpToDate));
        QCOMPARE(probed->dataset()->rows(), QList<QStringList>({{"1"}, {"2"}}));
    }
    // Whatever runs next takes the inputs in canvas order.
    scene.process(GraphScene::RunAll);
    QCOMPARE(stack->dataset()->rows(), QList<QStringList>({{"2"}, {"1"}}));
}

void TestGraphEditing::snapAtEndOfMove()
{
    GraphScene scene;
    scene.setAutoRun(false);
    auto *note = new NoteNode;
    scene.addNode(note);
    note->setPos(250, 130);
    note->setSelected(true);
    QSignalSpy moved(&scene, &GraphScene::nodesPosChanged);
    scene.endItemsMove();
    QCOMPARE(note->pos(), QPointF(250, 130)); // no grid: left where dropped
    scene.setSnapToGrid(true);
    QVERIFY(scene.snapToGrid());
    scene.endItemsMove();
    QVERIFY(qAbs(note->pos().x() - GraphScene::GridWidth) < 1e-9);
    QVERIFY(qAbs(note->pos().y() - GraphScene::GridHeight) < 1e-9);
    QCOMPARE(moved.count(), 2);
}

void TestGraphEditing::deepCopyKeepsStructure()
{
    GraphScene scene;
    scene.setAutoRun(false);
    scene.initSnapToGrid(true);
    InputNode *top = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *bottom = addTextInput(scene, "a\n2\n", {0, 200});
    TransformNode *pair = addProbe(scene, {top, bottom}, {240, 100}, 1, 2);
    TransformNode *last = addProbe(scene, {pair}, {480, 100});
    auto *note = new NoteNode;
    note->setComment("why");
    scene.addNode(note);
    scene.process(GraphScene::RunAll);

    QScopedPointer<GraphScene> copy(scene.deepCopy());
    QVERIFY(copy->snapToGrid());
    QVERIFY(!copy->autoRun());
    QCOMPARE(copy->nodes().size(), 5);
    QCOMPARE(copy->allConnections().size(), 3);
    auto *pairCopy = qobject_cast<TransformNode *>(copy->nodeById(pair->id()));
    auto *lastCopy = qobject_cast<TransformNode *>(copy->nodeById(last->id()));
    Node *topCopy = copy->nodeById(top->id());
    Node *bottomCopy = copy->nodeById(bottom->id());
    QVERIFY(pairCopy && lastCopy && topCopy && bottomCopy);
    QVERIFY(pairCopy != pair);
    QCOMPARE(pairCopy->upstream(true), QList<Node *>({topCopy, bottomCopy}));
    QCOMPARE(sourceOf(pairCopy, 0), topCopy);
    QCOMPARE(sourceOf(pairCopy, 1), bottomCopy);
    QCOMPARE(sourceOf(lastCopy, 0), static_cast<Node *>(pairCopy));
    QCOMPARE(pairCopy->status(), int(Node::UpToDate));
    QCOMPARE(pairCopy->pos(), pair->pos());
    QCOMPARE(copy->nodeById(note->id())->comment(), QString("why"));
    // The rows are the original's, not copies of them.
    QCOMPARE(&pairCopy->dataset()->rows().at(0).at(0), &pair->dataset()->rows().at(0).at(0));

    // Editing the copy leaves the original alone.
    copy->disconnect(pairCopy->connections(ConnectionDirection::In).first());
    QCOMPARE(pair->upstream().size(), 2);
    QCOMPARE(sourceOf(pair, 0), static_cast<Node *>(top));
}

TABULON_TEST_MAIN(TestGraphEditing)
#include "tst_graphediting.moc"
