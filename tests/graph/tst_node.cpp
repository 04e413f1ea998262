#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/notenode.h"
#include "graph/transformnode.h"
#include "testutil.h"
#include "transforms/transformclone.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QtTest>

// The item model shared by all kinds: ids, names, sizes, relations, status and progress.
class TestNode : public QObject
{
    Q_OBJECT

private slots:
    void idsComeFromOneCounter();
    void aliasIsTrimmed();
    void sizeTexts_data();
    void sizeTexts();
    void previewItem();
    void relations();
    void statusPropagatesToDescendants();
    void progressIsThrottled();
    void statusIcons();
    void cloneKeepsIdentity();
    void noteIsAlwaysUpToDate();
    void statusIconDrawings_data();
    void statusIconDrawings();
};

void TestNode::idsComeFromOneCounter()
{
    const int next = Node::nextId();
    InputNode automatic;
    QCOMPARE(automatic.id(), next);
    InputNode explicitId(5000);
    QCOMPARE(explicitId.id(), 5000);
    QCOMPARE(Node::nextId(), next + 1);
    automatic.setId(-1);
    QCOMPARE(automatic.id(), next + 1);
    Node::raiseIdCounter(9000);
    QCOMPARE(Node::nextId(), 9001);
    Node::raiseIdCounter(10);
    QCOMPARE(Node::nextId(), 9001);
}

void TestNode::aliasIsTrimmed()
{
    InputNode input;
    input.setAlias("  x ");
    QCOMPARE(input.alias(), QString("x"));
    QCOMPARE(input.titleLine(), QString("x"));
    QCOMPARE(input.nameAndId(), QString("x (%1)").arg(input.id()));
}

void TestNode::sizeTexts_data()
{
    QTest::addColumn<qint64>("rows");
    QTest::addColumn<qint64>("columns");
    QTest::addColumn<QString>("longText");
    QTest::addColumn<QString>("shortText");

    QTest::newRow("singular") << qint64(1) << qint64(1) << "1 row x 1 col"
                              << "1 row x 1 col";
    QTest::newRow("small") << qint64(999) << qint64(12) << "999 rows x 12 cols"
                           << "999 rows x 12 cols";
    QTest::newRow("thousands") << qint64(1500) << qint64(3) << "1,500 rows x 3 cols"
                               << "1.5K rows x 3 cols";
    QTest::newRow("zero decimal dropped") << qint64(2000) << qint64(3) << "2,000 rows x 3 cols"
                                          << "2K rows x 3 cols";
    QTest::newRow("too long keeps no decimals")
        << qint64(123456) << qint64(3) << "123,456 rows x 3 cols"
        << "123K rows x 3 cols";
    QTest::newRow("millions") << qint64(12345678) << qint64(3) << "12,345,678 rows x 3 cols"
                              << "12.3M rows x 3 cols";
    QTest::newRow("billions") << qint64(2500000000) << qint64(3) << "2,500,000,000 rows x 3 cols"
                              << "2.5B rows x 3 cols";
}

void TestNode::sizeTexts()
{
    QFETCH(qint64, rows);
    QFETCH(qint64, columns);
    QFETCH(QString, longText);
    QFETCH(QString, shortText);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QCOMPARE(Node::sizeText(rows, columns), longText);
    QCOMPARE(Node::shortSizeText(rows, columns), shortText);
    QLocale::setDefault(QLocale::c());
}

void TestNode::previewItem()
{
    InputNode preview;
    preview.setPreview(true);
    QCOMPARE(preview.status(), int(Node::UpToDate));
    QCOMPARE(preview.columnCount(), 100);
    QCOMPARE(preview.rowCount(), 100000);
    QVERIFY(preview.toolTipText().isEmpty());
    InputNode normal;
    QVERIFY(!normal.toolTipText().isEmpty());
}

void TestNode::relations()
{
    GraphScene scene;
    InputNode *a = addTextInput(scene, "a\n1\n", {0, 0});
    InputNode *b = addTextInput(scene, "a\n1\n", {0, 300});
    TransformNode *upper = addTransform(scene, new TransformClone, {a}, {200, 0});
    TransformNode *lower = addTransform(scene, new TransformClone, {a}, {200, 100});
    TransformNode *deep = addTransform(scene, new TransformClone, {lower}, {400, 100});

    QCOMPARE(a->downstream(true), QList<Node *>({upper, lower}));
    QCOMPARE(lower->siblings(), QList<Node *>({upper}));
    QCOMPARE(lower->siblings(true), QList<Node *>({upper, lower}));
    QCOMPARE(lower->previousSibling(), static_cast<Node *>(upper));
    QCOMPARE(upper->nextSibling(), static_cast<Node *>(lower));
    QCOMPARE(lower->nextSibling(), static_cast<Node *>(nullptr));
    QCOMPARE(deep->depth(), 2);
    QCOMPARE(b->depth(), 0);
    QCOMPARE(deep->allUpstream(false), QSet<Node *>({lower, a}));
    QCOMPARE(deep->allUpstreamIterative(true), QSet<Node *>({deep, lower, a}));
    QCOMPARE(a->allDownstream(false), QSet<Node *>({upper, lower, deep}));
    QCOMPARE(a->allDownstreamOfType(Node::TransformType).size(), 3);
    QCOMPARE(deep->allUpstreamOfType(Node::InputType), QSet<Node *>({a}));
    QVERIFY(deep->isUpstream(a));
    QVERIFY(!a->isUpstream(deep));
    QVERIFY(lower->isConnectedFrom(a));
    QCOMPARE(a->connections(ConnectionDirection::Out).size(), 2);
    QCOMPARE(lower->connections(ConnectionDirection::Both).size(), 2);
    // Every transform already has its one input: nothing left for b to feed.
    QVERIFY(!b->canStartConnection());
    addTransform(scene, new TransformClone, {}, {600, 300});
    QVERIFY(b->canStartConnection());
    // Anchors: middle of the right side out, of the left side in, moved out by the gap.
    QCOMPARE(a->anchor(ConnectionDirection::Out, 4.0).x(),
             a->pos().x() + Node::itemSize().width() + 4.0);
    QCOMPARE(a->anchor(ConnectionDirection::In, 4.0).x(), a->pos().x() - 4.0);
}

void TestNode::statusPropagatesToDescendants()
{
    GraphScene scene;
    InputNode *a = addTextInput(scene, "a\n1\n", {0, 0});
    TransformNode *t1 = addTransform(scene, new TransformClone, {a}, {200, 0});
    TransformNode *t2 = addTransform(scene, new TransformClone, {t1}, {400, 0});
    scene.process(GraphScene::RunAll);
    QCOMPARE(t2->status(), int(Node::UpToDate));
    // Propagation reaches every descendant even when the item's own value doesn't change.
    t2->setStatus(Node::NeedsUpdate, false);
    t1->setStatus(Node::UpToDate, true);
    QCOMPARE(t2->status(), int(Node::UpToDate));
    a->setStatus(Node::NeedsUpdate, true);
    QCOMPARE(t1->status(), int(Node::NeedsUpdate));
    QCOMPARE(t2->status(), int(Node::NeedsUpdate));
}

void TestNode::progressIsThrottled()
{
    InputNode node;
    QSignalSpy spy(&node, &Node::processed);
    node.onProcessed(0.5);
    QCOMPARE(spy.count(), 1);
    node.onProcessed(0.5);
    QCOMPARE(spy.count(), 1);
    node.onProcessed(0.9);
    QCOMPARE(spy.count(), 1);
    node.onProcessed(1.0);
    QCOMPARE(spy.count(), 2);
    QTest::qWait(260);
    node.onProcessed(1.01);
    QCOMPARE(spy.count(), 3);
    QTest::qWait(260);
    // Less than 0.02 away from the shown value.
    node.onProcessed(0.5);
    node.onProcessed(0.51);
    QCOMPARE(spy.count(), 4);
    node.reportProgress(999, 1000, 5000);
    node.reportProgress(1000, 1000, 0);
    QCOMPARE(spy.count(), 4);
}

void TestNode::statusIcons()
{
    GraphScene scene;
    InputNode *empty = addTextInput(scene, "", {0, 0});
    InputNode *full = addTextInput(scene, "a\n1\n", {0, 200});
    QCOMPARE(full->statusIcon(), NodeStatusIcon::NeedsUpdate);
    scene.process(GraphScene::RunAll);
    QCOMPARE(empty->statusIcon(), NodeStatusIcon::Empty);
    QCOMPARE(empty->statusLine(), QString("No data"));
    QCOMPARE(full->statusIcon(), NodeStatusIcon::UpToDate);
    QCOMPARE(full->statusLine(), QString("1 row x 1 col"));
    full->addWarning("careful");
    QCOMPARE(full->statusIcon(), NodeStatusIcon::Warning);
    full->setStatus(Node::Error, false);
    QCOMPARE(full->statusIcon(), NodeStatusIcon::Error);
    QCOMPARE(full->statusLine(), QString("careful"));
}

void TestNode::cloneKeepsIdentity()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, "a\n1\n", {30, 40});
    input->setAlias("source");
    input->setComment("note");
    scene.process(GraphScene::RunAll);
    QScopedPointer<Node> copy(input->clone());
    QCOMPARE(copy->id(), input->id());
    QCOMPARE(copy->alias(), QString("source"));
    QCOMPARE(copy->comment(), QString("note"));
    QCOMPARE(copy->pos(), QPointF(30, 40));
    QCOMPARE(copy->status(), int(Node::UpToDate));
    QVERIFY(copy->connections().isEmpty());
    QCOMPARE(&copy->dataset()->row(0).at(0), &input->dataset()->row(0).at(0));
    QCOMPARE(static_cast<InputNode *>(copy.data())->text(), input->text());
}

void TestNode::noteIsAlwaysUpToDate()
{
    NoteNode note;
    note.setComment("Remember");
    QCOMPARE(note.status(), int(Node::UpToDate));
    QVERIFY(!note.canRun());
    QCOMPARE(note.maximumInputs(), 0);
    QCOMPARE(note.maximumOutputs(), 0);
    QCOMPARE(note.toolTipText(), QString("Remember"));
}

void TestNode::statusIconDrawings_data()
{
    QTest::addColumn<int>("icon");
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<int>("centreWhite");

    // centreWhite: 1 the sign crosses the middle, 0 it leaves it free, -1 not looked at.
    QTest::newRow("empty") << int(NodeStatusIcon::Empty) << QColor(0x909090) << 0;
    QTest::newRow("updating") << int(NodeStatusIcon::Updating) << QColor(0xC8C8C8) << 1;
    QTest::newRow("up to date") << int(NodeStatusIcon::UpToDate) << QColor(0x00AA00) << 0;
    QTest::newRow("warning") << int(NodeStatusIcon::Warning) << QColor(0xFD9A00) << 1;
    QTest::newRow("error") << int(NodeStatusIcon::Error) << QColor(0xAA0000) << 1;
    QTest::newRow("needs update") << int(NodeStatusIcon::NeedsUpdate) << QColor(0xC8C8C8) << -1;
}

void TestNode::statusIconDrawings()
{
    QFETCH(int, icon);
    QFETCH(QColor, fill);
    QFETCH(int, centreWhite);

    // The status bar draws through the static entry with a plain painter.
    QImage image(45, 45, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    Node::drawStatusIcon(&painter, QRectF(0.0, 0.0, 45.0, 45.0), icon);
    painter.end();
    // Inside the circle, outside the inner rectangle of the sign.
    QCOMPARE(image.pixelColor(5, 22), fill);
    QCOMPARE(image.pixelColor(22, 40), fill);
    // Outside the circle.
    QCOMPARE(image.pixelColor(1, 1).alpha(), 0);
    if (centreWhite >= 0)
        QCOMPARE(image.pixelColor(22, 22) == QColor(Qt::white), centreWhite == 1);
}

TABULON_TEST_MAIN(TestNode)
#include "tst_node.moc"
