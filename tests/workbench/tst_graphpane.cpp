#include "flow/flowmodel.h"
#include "flow/noteitem.h"
#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/overlays.h"
#include "graph/undo.h"
#include "shell/delaytimer.h"
#include "shell/settings.h"
#include "testutil.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"
#include "transforms/transformclone.h"
#include "workbench/graphpane.h"
#include "workbench/typeablemenu.h"

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>
#include <QSignalSpy>
#include <QtTest>

// The canvas driven as a user drives it: zooming, the wheel, making connections from the
// handles, the transform menu, copying, clicking connections, dragging items with their notes
// and dropping files.
class TestGraphPane : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void zoomSteps_data();
    void zoomSteps();
    void zoomFitKeepsItemsVisible();
    void wheel_data();
    void wheel();
    void connectFromHandle_data();
    void connectFromHandle();
    void connectionModeCancels_data();
    void connectionModeCancels();
    void letterOpensTypeableMenu();
    void letterWithoutSelectionDoesNothing();
    void copySelectedData_data();
    void copySelectedData();
    void clickNearConnectionSelectsIt_data();
    void clickNearConnectionSelectsIt();
    void dragMovesItemWithItsNoteInOneUndoStep();
    void dropPassesFilesAndPlace();

private:
    void send(QEvent::Type type, const QPointF &scenePos, Qt::MouseButtons buttons,
              Qt::MouseButton button = Qt::NoButton);
    void moveTo(const QPointF &scenePos, Qt::MouseButtons buttons = Qt::NoButton);
    void press(const QPointF &scenePos);
    void release(const QPointF &scenePos);
    void click(const QPointF &scenePos);

    GraphScene *m_scene = nullptr;
    GraphPane *m_pane = nullptr;
    UndoHistory *m_history = nullptr;
    QList<Transform *> m_prototypes;
};

namespace {

const QString Csv = QStringLiteral("a,b\n1,2\n3,4\n");

} // namespace

void TestGraphPane::initTestCase()
{
    m_prototypes = createTransformPrototypes();
}

void TestGraphPane::init()
{
    Settings::instance()->setMouseWheelBehaviour(0);
    Settings::instance()->setCopyDataAs(0);
    m_history = new UndoHistory;
    UndoHistory::setCurrent(m_history);
    m_scene = new GraphScene;
    m_scene->model()->setAutoRun(false);
    m_history->setLiveScene(m_scene);
    m_pane = new GraphPane;
    m_pane->setPrototypes(m_prototypes);
    m_pane->setGraphScene(m_scene);
    m_pane->resize(900, 600);
    m_pane->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_pane));
}

void TestGraphPane::cleanup()
{
    delete m_pane;
    m_pane = nullptr;
    UndoHistory::setCurrent(nullptr);
    delete m_history;
    m_history = nullptr;
    delete m_scene;
    m_scene = nullptr;
}

void TestGraphPane::send(QEvent::Type type, const QPointF &scenePos, Qt::MouseButtons buttons,
                         Qt::MouseButton button)
{
    const QPoint at = m_pane->mapFromScene(scenePos);
    QMouseEvent event(type, at, m_pane->viewport()->mapToGlobal(at), button, buttons,
                      Qt::NoModifier);
    QApplication::sendEvent(m_pane->viewport(), &event);
}

void TestGraphPane::moveTo(const QPointF &scenePos, Qt::MouseButtons buttons)
{
    send(QEvent::MouseMove, scenePos, buttons);
}

void TestGraphPane::press(const QPointF &scenePos)
{
    send(QEvent::MouseButtonPress, scenePos, Qt::LeftButton, Qt::LeftButton);
}

void TestGraphPane::release(const QPointF &scenePos)
{
    send(QEvent::MouseButtonRelease, scenePos, Qt::NoButton, Qt::LeftButton);
}

void TestGraphPane::click(const QPointF &scenePos)
{
    press(scenePos);
    release(scenePos);
}

void TestGraphPane::zoomSteps_data()
{
    QTest::addColumn<int>("ins");
    QTest::addColumn<int>("outs");
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("canIn");
    QTest::addColumn<bool>("canOut");

    QTest::newRow("one in") << 1 << 0 << 1.25 << true << true;
    QTest::newRow("two out") << 0 << 2 << 0.64 << true << true;
    QTest::newRow("in then out") << 3 << 3 << 1.0 << true << true;
    QTest::newRow("stops at 3") << 12 << 0 << 3.0 << false << true;
    QTest::newRow("stops at 0.1") << 0 << 30 << 0.1 << true << false;
    QTest::newRow("back from the top") << 12 << 1 << 2.4 << true << true;
}

void TestGraphPane::zoomSteps()
{
    QFETCH(int, ins);
    QFETCH(int, outs);
    QFETCH(qreal, scale);
    QFETCH(bool, canIn);
    QFETCH(bool, canOut);

    QSignalSpy clicked(m_pane, &GraphPane::zoomButtonClicked);
    for (int i = 0; i < ins; ++i)
        m_pane->onZoomIn();
    for (int i = 0; i < outs; ++i)
        m_pane->onZoomOut();
    QVERIFY2(qAbs(m_pane->zoomScale() - scale) < 1e-9,
             qPrintable(QString::number(m_pane->zoomScale())));
    QCOMPARE(m_pane->canZoomIn(), canIn);
    QCOMPARE(m_pane->canZoomOut(), canOut);
    QCOMPARE(clicked.count(), ins + outs);
}

void TestGraphPane::zoomFitKeepsItemsVisible()
{
    addTextInput(*m_scene, Csv, QPointF(-1200.0, -700.0));
    addTextInput(*m_scene, Csv, QPointF(2500.0, 1600.0));
    const auto allVisible = [this] {
        const QRectF visible = m_pane->mapToScene(m_pane->viewport()->rect()).boundingRect();
        const QList<Node *> nodes = m_scene->nodes();
        return std::all_of(nodes.cbegin(), nodes.cend(), [&visible](const Node *node) {
            return visible.contains(node->sceneBoundingRect());
        });
    };
    QVERIFY(!allVisible());
    m_pane->setZoomFit(true);
    QVERIFY(m_pane->zoomFit());
    QVERIFY(allVisible());
    QVERIFY(m_pane->zoomScale() < 1.0);

    // While fit is on, a new item far away is brought in too.
    addTextInput(*m_scene, Csv, QPointF(-4000.0, 3000.0));
    emit m_scene->nodesAdded();
    QVERIFY(allVisible());

    // Zooming by hand leaves fit.
    m_pane->onZoomIn();
    QVERIFY(!m_pane->zoomFit());
}

void TestGraphPane::wheel_data()
{
    QTest::addColumn<int>("behaviour");
    QTest::addColumn<bool>("ctrl");
    QTest::addColumn<int>("delta");
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<bool>("scrolls");

    QTest::newRow("0: forward scrolls") << 0 << false << 120 << 1.0 << true;
    QTest::newRow("0: ctrl zooms in") << 0 << true << 120 << 1.25 << false;
    QTest::newRow("1: forward zooms in") << 1 << false << 120 << 1.25 << false;
    QTest::newRow("1: back zooms out") << 1 << false << -120 << 0.8 << false;
    QTest::newRow("1: ctrl scrolls") << 1 << true << 120 << 1.0 << true;
    QTest::newRow("2: forward zooms out") << 2 << false << 120 << 0.8 << false;
    QTest::newRow("2: ctrl scrolls") << 2 << true << -120 << 1.0 << true;
    QTest::newRow("3: nothing") << 3 << false << 120 << 1.0 << false;
    QTest::newRow("3: nothing with ctrl") << 3 << true << 120 << 1.0 << false;
}

void TestGraphPane::wheel()
{
    QFETCH(int, behaviour);
    QFETCH(bool, ctrl);
    QFETCH(int, delta);
    QFETCH(qreal, scale);
    QFETCH(bool, scrolls);

    Settings::instance()->setMouseWheelBehaviour(behaviour);
    addTextInput(*m_scene, Csv, QPointF(0.0, -3000.0));
    addTextInput(*m_scene, Csv, QPointF(0.0, 3000.0));
    m_scene->setSceneRect(m_scene->itemsBoundingRect());
    QScrollBar *bar = m_pane->verticalScrollBar();
    bar->setValue((bar->minimum() + bar->maximum()) / 2);
    const int before = bar->value();

    const QPoint at = m_pane->viewport()->rect().center();
    QWheelEvent event(at, m_pane->viewport()->mapToGlobal(at), QPoint(), QPoint(0, delta),
                      Qt::NoButton, ctrl ? Qt::ControlModifier : Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(m_pane->viewport(), &event);
    QVERIFY2(qAbs(m_pane->zoomScale() - scale) < 1e-9,
             qPrintable(QString::number(m_pane->zoomScale())));
    if (scrolls)
        QCOMPARE(bar->value() < before, delta > 0);
    else if (scale == 1.0)
        QCOMPARE(bar->value(), before);
}

void TestGraphPane::connectFromHandle_data()
{
    QTest::addColumn<bool>("drag");
    QTest::newRow("drag to the handle") << true;
    QTest::newRow("click, then click the handle") << false;
}

void TestGraphPane::connectFromHandle()
{
    QFETCH(bool, drag);

    InputNode *input = addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    TransformNode *free = addTransform(*m_scene, new TransformClone, {}, QPointF(400.0, 200.0));
    TransformNode *fed = addTransform(*m_scene, new TransformClone, {input}, QPointF(400.0, 0.0));
    m_pane->centerOn(300.0, 150.0);

    moveTo(input->item()->centrePos());
    // The guide shows after a pause of the pointer; end the pause instead of waiting.
    DelayTimer::firePending();
    QVERIFY(input->connectFromOverlay());
    const QPointF handle = input->connectFromOverlay()->scenePos();
    QCOMPARE(handle, input->anchor(ConnectionDirection::Out));

    press(handle);
    ConnectionMaker *maker = ConnectionMaker::of(m_scene, false);
    QVERIFY(maker && maker->isActive());
    QCOMPARE(maker->source(), static_cast<Node *>(input));
    QVERIFY(!(input->flags() & QGraphicsItem::ItemIsMovable));
    // Only the candidate gets a handle: the other transform has its one input already.
    QVERIFY(free->connectToOverlay());
    QVERIFY(!fed->connectToOverlay());
    QVERIFY(!input->connectToOverlay());
    const QPointF target = free->connectToOverlay()->scenePos();
    QCOMPARE(target, free->anchor(ConnectionDirection::In));

    if (drag) {
        moveTo((handle + target) / 2.0, Qt::LeftButton);
        QCOMPARE(maker->guide()->to(), (handle + target) / 2.0);
        moveTo(target, Qt::LeftButton);
        release(target);
    } else {
        release(handle);
        QVERIFY(maker->isActive());
        moveTo(target);
        QCOMPARE(maker->guide()->to(), target);
        click(target);
    }
    QVERIFY(free->item()->isConnectedFrom(input->item()));
    QCOMPARE(input->connections(ConnectionDirection::Out).size(), 2);
    QVERIFY(!maker->isActive());
    QVERIFY(!free->connectToOverlay());
    QVERIFY(input->flags() & QGraphicsItem::ItemIsMovable);
    QCOMPARE(m_history->undoHint(), QStringLiteral("add connection"));
}

void TestGraphPane::connectionModeCancels_data()
{
    QTest::addColumn<bool>("escape");
    QTest::newRow("Escape") << true;
    QTest::newRow("click elsewhere") << false;
}

void TestGraphPane::connectionModeCancels()
{
    QFETCH(bool, escape);

    InputNode *input = addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    TransformNode *free = addTransform(*m_scene, new TransformClone, {}, QPointF(400.0, 0.0));
    m_pane->centerOn(300.0, 50.0);
    moveTo(input->item()->centrePos());
    // The guide shows after a pause of the pointer; end the pause instead of waiting.
    DelayTimer::firePending();
    QVERIFY(input->connectFromOverlay());
    const QPointF handle = input->connectFromOverlay()->scenePos();
    click(handle);
    ConnectionMaker *maker = ConnectionMaker::of(m_scene, false);
    QVERIFY(maker->isActive());
    QVERIFY(free->connectToOverlay());

    if (escape) {
        QTest::keyClick(m_pane, Qt::Key_Escape);
    } else {
        // Empty canvas below the items.
        click(QPointF(300.0, 300.0));
    }
    QVERIFY(!maker->isActive());
    QVERIFY(!maker->guide());
    QVERIFY(!free->connectToOverlay());
    QVERIFY(free->connections().isEmpty());
    QVERIFY(input->flags() & QGraphicsItem::ItemIsMovable);
}

void TestGraphPane::letterOpensTypeableMenu()
{
    InputNode *input = addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    input->setSelected(true);
    QList<const Transform *> chosen;
    connect(m_pane, &GraphPane::transformChosen, this,
            [&chosen](const Transform *prototype) { chosen.append(prototype); });
    m_pane->setFocus();
    QTest::keyClick(m_pane, Qt::Key_S);
    TypeableMenu *menu = m_pane->typeableMenu();
    QVERIFY(menu);
    QTRY_VERIFY(menu->isVisible());
    QCOMPARE(menu->filterText(), QStringLiteral("s"));
    const int broad = menu->matches().size();

    QTest::keyClicks(menu, "ort");
    QCOMPARE(menu->filterText(), QStringLiteral("sort"));
    QVERIFY(menu->matches().size() < broad);
    QVERIFY(!menu->matches().isEmpty());
    QCOMPARE(menu->matches().first()->displayName(), QStringLiteral("Sort"));

    QTest::keyClick(menu, Qt::Key_Return);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first()->displayName(), QStringLiteral("Sort"));
}

void TestGraphPane::letterWithoutSelectionDoesNothing()
{
    addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    m_pane->setFocus();
    QTest::keyClick(m_pane, Qt::Key_S);
    QVERIFY(!m_pane->typeableMenu());
}

void TestGraphPane::copySelectedData_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<QString>("text");
    QTest::newRow("tabs") << 0 << QStringLiteral("a\tb\n1\t2\n3\t4\n");
    QTest::newRow("commas") << 1 << QStringLiteral("a,b\n1,2\n3,4\n");
}

void TestGraphPane::copySelectedData()
{
    QFETCH(int, form);
    QFETCH(QString, text);

    Settings::instance()->setCopyDataAs(form);
    InputNode *input = addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    m_scene->process(FlowModel::RunAll, true);
    QCOMPARE(input->item()->rowCount(), 2);
    QApplication::clipboard()->clear();
    input->setSelected(true);
    QTest::keyClick(m_pane, Qt::Key_C, Qt::ControlModifier);
    const QMimeData *mime = QApplication::clipboard()->mimeData();
    QVERIFY(mime);
    QCOMPARE(mime->text(), text);
    QCOMPARE(QString::fromUtf8(mime->data(QStringLiteral("text/csv"))),
             QStringLiteral("a,b\n1,2\n3,4\n"));
}

void TestGraphPane::clickNearConnectionSelectsIt_data()
{
    QTest::addColumn<qreal>("distance");
    QTest::addColumn<bool>("selected");
    QTest::newRow("3 below") << 3.0 << true;
    QTest::newRow("3 above") << -3.0 << true;
    QTest::newRow("10 below") << 10.0 << false;
}

void TestGraphPane::clickNearConnectionSelectsIt()
{
    QFETCH(qreal, distance);
    QFETCH(bool, selected);

    InputNode *input = addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    TransformNode *clone = addTransform(*m_scene, new TransformClone, {input}, QPointF(600.0, 0.0));
    Connection *connection = clone->connections(ConnectionDirection::In).first();
    const QPointF middle = connection->path().pointAtPercent(0.5);
    m_pane->centerOn(middle);
    click(middle + QPointF(0.0, distance));
    QCOMPARE(connection->isSelected(), selected);
    QVERIFY(!input->isSelected() && !clone->isSelected());
}

void TestGraphPane::dragMovesItemWithItsNoteInOneUndoStep()
{
    Settings::instance()->setAutoMoveNotes(true);
    InputNode *input = addTextInput(*m_scene, Csv, QPointF(0.0, 0.0));
    auto *pointing = new NoteItem;
    pointing->setArrow(NoteItem::Left);
    pointing->setPos(QPointF(-239.4, 0.0));
    m_scene->model()->addItem(pointing);
    auto *elsewhere = new NoteItem;
    elsewhere->setArrow(NoteItem::Below);
    elsewhere->setPos(QPointF(-239.4, 30.0));
    m_scene->model()->addItem(elsewhere);
    m_pane->centerOn(0.0, 50.0);

    const QPointF grip = input->headerRect().center() + input->pos();
    const QPointF by(60.0, 40.0);
    moveTo(grip);
    press(grip);
    for (int step = 1; step <= 4; ++step)
        moveTo(grip + by * step / 4.0, Qt::LeftButton);
    release(grip + by);

    QCOMPARE(input->pos(), by);
    QCOMPARE(input->item()->pos(), by);
    // The note to the left with its arrow towards the item travels; the one whose arrow
    // points elsewhere stays.
    QCOMPARE(pointing->pos(), QPointF(-239.4, 0.0) + by);
    QCOMPARE(m_scene->nodeFor(pointing)->pos(), QPointF(-239.4, 0.0) + by);
    QCOMPARE(elsewhere->pos(), QPointF(-239.4, 30.0));
    QCOMPARE(m_history->count(), 1);
    QCOMPARE(m_history->undoHint(), QStringLiteral("move item(s)"));
}

void TestGraphPane::dropPassesFilesAndPlace()
{
    QSignalSpy files(m_pane, &GraphPane::filesDropped);
    QMimeData mime;
    const QList<QUrl> urls {QUrl::fromLocalFile(QStringLiteral("/tmp/a.csv"))};
    mime.setUrls(urls);
    const QPointF where(120.0, 80.0);
    const QPoint at = m_pane->mapFromScene(where);
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_pane->viewport(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_pane->viewport(), &drop);
    QCOMPARE(files.count(), 1);
    QCOMPARE(files.first().at(0).value<QList<QUrl>>(), urls);
    QCOMPARE(files.first().at(1).toPointF(), m_pane->mapToScene(at));
}

TABULON_TEST_MAIN(TestGraphPane)
#include "tst_graphpane.moc"
