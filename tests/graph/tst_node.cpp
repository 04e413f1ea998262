#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "testutil.h"
#include "transforms/transformclone.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QtTest>

// The view of an item: its type, its place following the item's, and the drawings that other
// painters share.
class TestNode : public QObject
{
    Q_OBJECT

private slots:
    void viewsFollowTheirItems();
    void statusIconDrawings_data();
    void statusIconDrawings();
};

void TestNode::viewsFollowTheirItems()
{
    GraphScene scene;
    FlowModel *model = scene.model();
    InputItem *input = addTextInput(*model, "a\n1\n", {0, 0});
    TransformItem *transform = addTransform(*model, new TransformClone, {input}, {200, 0});
    auto *output = new OutputItem;
    model->addItem(output);
    auto *note = new NoteItem;
    model->addItem(note);

    const QList<FlowItem *> items {input, transform, output, note};
    const QList<int> types {Node::InputType, Node::TransformType, Node::OutputType, Node::NoteType};
    QCOMPARE(scene.nodes().size(), 4);
    for (int i = 0; i < items.size(); ++i) {
        Node *node = scene.nodeFor(items.at(i));
        QVERIFY(node);
        QCOMPARE(node->item(), items.at(i));
        QCOMPARE(node->type(), types.at(i));
        QVERIFY(Node::isNodeType(node->type()));
        QCOMPARE(scene.nodeById(items.at(i)->id()), node);
    }
    QVERIFY(!Node::isNodeType(Node::InputType - 1));
    QVERIFY(!Node::isNodeType(Node::NoteType + 1));
    QCOMPARE(static_cast<InputNode *>(scene.nodeFor(input))->input(), input);
    QCOMPARE(static_cast<TransformNode *>(scene.nodeFor(transform))->transformItem(), transform);
    QCOMPARE(static_cast<OutputNode *>(scene.nodeFor(output))->output(), output);
    QCOMPARE(static_cast<NoteNode *>(scene.nodeFor(note))->note(), note);
    QCOMPARE(scene.allConnections().size(), 1);

    // The node takes the item's place, and moving the node moves the item.
    Node *node = scene.nodeFor(input);
    input->setPos(QPointF(40, 60));
    QCOMPARE(node->pos(), QPointF(40, 60));
    node->setPos(QPointF(-20, 10));
    QCOMPARE(input->pos(), QPointF(-20, 10));
    // Anchors: middle of the right side out, of the left side in, moved out by the gap.
    QCOMPARE(node->anchor(ConnectionDirection::Out, 4.0).x(),
             node->pos().x() + Node::itemSize().width() + 4.0);
    QCOMPARE(node->anchor(ConnectionDirection::In, 4.0).x(), node->pos().x() - 4.0);

    // A removed item takes its node and arrows with it.
    model->removeItem(transform);
    QCOMPARE(scene.nodes().size(), 3);
    QVERIFY(!scene.nodeFor(transform));
    QVERIFY(scene.allConnections().isEmpty());
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
