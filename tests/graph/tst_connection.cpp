#include "flow/flowitem.h"
#include "flow/flowmodel.h"
#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "testutil.h"
#include "transforms/transformclone.h"
#include "transforms/transformstack.h"

#include <QtTest>

#include <algorithm>

// Where connection ends stand on an item's sides, how the curves bend, where the arrow head
// points and how near a click must come to hit a connection.
class TestConnection : public QObject
{
    Q_OBJECT

private slots:
    void endsSpreadAlongSide_data();
    void endsSpreadAlongSide();
    void endsFollowMovedItems();
    void controlPointsAreLimitedByDistance_data();
    void controlPointsAreLimitedByDistance();
    void arrowHeadPointsAtTarget();
    void hitShapeIsWiderThanLine_data();
    void hitShapeIsWiderThanLine();
};

namespace {

const QString Csv = QStringLiteral("a\n1\n");

Connection *connectionBetween(const Node *source, const Node *target)
{
    const QList<Connection *> all = source->connections(ConnectionDirection::Out);
    for (Connection *connection : all) {
        if (connection->target() == target)
            return connection;
    }
    return nullptr;
}

} // namespace

void TestConnection::endsSpreadAlongSide_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<qreal>("spacing");
    QTest::addColumn<QList<qreal>>("controls");

    QTest::newRow("one sits in the middle") << 1 << 0.0 << QList<qreal> {75.0};
    QTest::newRow("two") << 2 << 16.0 << QList<qreal> {75.0, 75.0};
    QTest::newRow("five still fit at 16")
        << 5 << 16.0 << QList<qreal> {75.0, 125.0, 175.0, 125.0, 75.0};
    // 0.75 of the height 90 over 5 gaps is 13.5.
    QTest::newRow("six shrink") << 6 << 13.5
                                << QList<qreal> {75.0, 125.0, 175.0, 175.0, 125.0, 75.0};
    QTest::newRow("nine shrink more")
        << 9 << 67.5 / 8.0
        << QList<qreal> {75.0, 125.0, 175.0, 225.0, 275.0, 225.0, 175.0, 125.0, 75.0};
}

void TestConnection::endsSpreadAlongSide()
{
    QFETCH(int, count);
    QFETCH(qreal, spacing);
    QFETCH(QList<qreal>, controls);

    // Sources are added in a scrambled order of height: the ends must follow the heights, not
    // the order of connecting.
    GraphScene scene;
    QList<int> heights;
    for (int i = 0; i < count; ++i)
        heights.append((i * 7) % count);
    QList<Node *> sources;
    for (int height : qAsConst(heights))
        sources.append(addTextInput(scene, Csv, QPointF(0.0, height * 150.0)));
    TransformNode *stack = addTransform(scene, new TransformStack, sources, QPointF(600.0, 0.0));

    QCOMPARE(stack->connections(ConnectionDirection::In).size(), count);
    for (int i = 0; i < count; ++i) {
        Connection *connection = connectionBetween(sources.at(i), stack);
        QVERIFY(connection);
        QCOMPARE(connection->link()->source(), sources.at(i)->item());
        QCOMPARE(connection->link()->target(), stack->item());
        const int rank = heights.at(i);
        const qreal expected = (rank - (count - 1) / 2.0) * spacing;
        QVERIFY2(qAbs(connection->targetOffset() - expected) < 1e-9,
                 qPrintable(QStringLiteral("rank %1: %2, expected %3")
                                .arg(rank)
                                .arg(connection->targetOffset())
                                .arg(expected)));
        QCOMPARE(connection->targetControl(), controls.at(rank));
        QCOMPARE(connection->endPoint().y(), stack->item()->centrePos().y() + expected);
        // Each source has one connection: its end is in its middle.
        QCOMPARE(connection->sourceOffset(), 0.0);
        QCOMPARE(connection->startPoint(), sources.at(i)->anchor(ConnectionDirection::Out));
    }
}

void TestConnection::endsFollowMovedItems()
{
    GraphScene scene;
    InputNode *upper = addTextInput(scene, Csv, QPointF(0.0, 0.0));
    InputNode *lower = addTextInput(scene, Csv, QPointF(0.0, 200.0));
    TransformNode *stack
        = addTransform(scene, new TransformStack, {upper, lower}, QPointF(400.0, 100.0));
    QCOMPARE(connectionBetween(upper, stack)->targetOffset(), -8.0);

    // Moving the upper source below the other swaps the ends without any further call.
    upper->setPos(0.0, 400.0);
    QCOMPARE(connectionBetween(upper, stack)->targetOffset(), 8.0);
    QCOMPARE(connectionBetween(lower, stack)->targetOffset(), -8.0);

    // A third source moved in makes room at the target.
    TransformNode *other = addTransform(scene, new TransformClone, {}, QPointF(0.0, 800.0));
    QVERIFY(scene.model()->connectItems(other->item(), stack->item()));
    other->setPos(0.0, 900.0);
    QCOMPARE(connectionBetween(lower, stack)->targetOffset(), -16.0);
    QCOMPARE(connectionBetween(upper, stack)->targetOffset(), 0.0);
    QCOMPARE(connectionBetween(other, stack)->targetOffset(), 16.0);
}

void TestConnection::controlPointsAreLimitedByDistance_data()
{
    QTest::addColumn<QPointF>("targetPos");
    QTest::addColumn<qreal>("reach");

    // Source at the origin: its anchor is at (180, 45); the target's at (x - 2, y + 45).
    QTest::newRow("level: never below 24") << QPointF(682.0, 0.0) << 24.0;
    QTest::newRow("far both ways: 75") << QPointF(682.0, 400.0) << 75.0;
    QTest::newRow("steep: width / 2.5") << QPointF(282.0, 400.0) << 40.0;
    QTest::newRow("flat: height / 2.5") << QPointF(682.0, 100.0) << 40.0;
    QTest::newRow("backwards") << QPointF(-300.0, 400.0) << 75.0;
}

void TestConnection::controlPointsAreLimitedByDistance()
{
    QFETCH(QPointF, targetPos);
    QFETCH(qreal, reach);

    GraphScene scene;
    InputNode *input = addTextInput(scene, Csv, QPointF(0.0, 0.0));
    TransformNode *clone = addTransform(scene, new TransformClone, {input}, targetPos);
    Connection *connection = connectionBetween(input, clone);
    QVERIFY(connection);
    const QPainterPath path = connection->path();
    QCOMPARE(path.elementCount(), 4);
    const QPointF start = path.elementAt(0);
    const QPointF c1 = path.elementAt(1);
    const QPointF c2 = path.elementAt(2);
    const QPointF end = path.elementAt(3);
    QCOMPARE(start, connection->startPoint());
    QCOMPARE(end, connection->endPoint());
    QVERIFY(qAbs((c1.x() - start.x()) - reach) < 1e-9);
    QVERIFY(qAbs((end.x() - c2.x()) - reach) < 1e-9);
    QCOMPARE(c1.y(), start.y());
    QCOMPARE(c2.y(), end.y());
}

void TestConnection::arrowHeadPointsAtTarget()
{
    GraphScene scene;
    InputNode *input = addTextInput(scene, Csv, QPointF(0.0, 0.0));
    TransformNode *clone = addTransform(scene, new TransformClone, {input}, QPointF(500.0, 0.0));
    Connection *connection = connectionBetween(input, clone);
    const QPolygonF head = connection->arrowHead();
    QCOMPARE(head.size(), 4);
    QCOMPARE(head.first(), connection->endPoint());
    QCOMPARE(head.last(), connection->endPoint());
    // The head points right: both corners behind the tip, one above and one below it.
    QVERIFY(head.at(1).x() < head.first().x() && head.at(2).x() < head.first().x());
    QVERIFY((head.at(1).y() - head.first().y()) * (head.at(2).y() - head.first().y()) < 0.0);
    const QPointF base = connection->buttonPoint();
    QVERIFY(base.x() < connection->endPoint().x() - 4.0);
    QVERIFY(qAbs(base.y() - connection->endPoint().y()) < 0.01);
    // The tip stands just off the target, outside its box.
    QVERIFY(connection->endPoint().x() < clone->sceneBoundingRect().left() + 3.0);
}

void TestConnection::hitShapeIsWiderThanLine_data()
{
    QTest::addColumn<qreal>("distance");
    QTest::addColumn<bool>("hit");

    QTest::newRow("on the line") << 0.0 << true;
    QTest::newRow("4 above") << -4.0 << true;
    QTest::newRow("4.5 below") << 4.5 << true;
    QTest::newRow("6 below") << 6.0 << false;
    QTest::newRow("12 above") << -12.0 << false;
}

void TestConnection::hitShapeIsWiderThanLine()
{
    QFETCH(qreal, distance);
    QFETCH(bool, hit);

    GraphScene scene;
    InputNode *input = addTextInput(scene, Csv, QPointF(0.0, 0.0));
    TransformNode *clone = addTransform(scene, new TransformClone, {input}, QPointF(600.0, 0.0));
    Connection *connection = connectionBetween(input, clone);
    const QPointF middle = connection->path().pointAtPercent(0.5);
    QCOMPARE(connection->shape().contains(middle + QPointF(0.0, distance)), hit);
    QCOMPARE(scene.items(middle + QPointF(0.0, distance)).contains(connection), hit);
}

TABULON_TEST_MAIN(TestConnection)
#include "tst_connection.moc"
