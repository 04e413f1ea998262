#include "workbench/graphpane.h"

#include "flow/flowmodel.h"
#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/overlays.h"
#include "io/outputwriters.h"
#include "shell/application.h"
#include "shell/colors.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"
#include "workbench/typeablemenu.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLocale>
#include <QMimeData>
#include <QScrollBar>
#include <QTextStream>
#include <QWheelEvent>

#include <cmath>

namespace {

// Hand scrolling while this key is held (when nothing is selected, so that it doesn't open
// the transform menu instead).
constexpr int HandDragKey = Qt::Key_Space;
// Room kept around the items when zooming to them.
constexpr qreal FitMargin = 20.0;

} // namespace

GraphPane::GraphPane(QWidget *parent)
    : QGraphicsView(parent)
{
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    setTransformationAnchor(QGraphicsView::AnchorViewCenter);
    setResizeAnchor(QGraphicsView::AnchorViewCenter);
    setDragMode(QGraphicsView::RubberBandDrag);
    setViewportUpdateMode(QGraphicsView::SmartViewportUpdate);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

GraphPane::~GraphPane() = default;

void GraphPane::setGraphScene(GraphScene *scene)
{
    if (m_scene == scene)
        return;
    if (m_scene) {
        if (ConnectionMaker *maker = ConnectionMaker::of(m_scene, false))
            maker->cancel();
        disconnect(m_scene, nullptr, this, nullptr);
    }
    m_scene = scene;
    setScene(scene);
    if (!scene)
        return;
    scene->setBackgroundBrush(Colors::instance()->color(Colors::CenterBackground));
    connect(scene, &GraphScene::nodesAdded, this, &GraphPane::onNodesAdded);
    connect(scene, &GraphScene::nodesDeleted, this, &GraphPane::onNodesDeleted);
    connect(scene, &GraphScene::nodesPosChanged, this, &GraphPane::onAutoZoom);
    connect(scene, &QObject::destroyed, this, [this](QObject *gone) {
        if (gone == m_scene)
            m_scene = nullptr;
    });
    onAutoZoom();
}

GraphScene *GraphPane::graphScene() const
{
    return m_scene;
}

qreal GraphPane::zoomScale() const
{
    return transform().m11();
}

bool GraphPane::canZoomIn() const
{
    return zoomScale() < MaximumScale - 1e-9;
}

bool GraphPane::canZoomOut() const
{
    return zoomScale() > MinimumScale + 1e-9;
}

void GraphPane::setZoomFit(bool on)
{
    m_zoomFit = on;
    if (on)
        onZoomToFit();
}

bool GraphPane::zoomFit() const
{
    return m_zoomFit;
}

void GraphPane::setZoomScale(qreal scale, ViewportAnchor anchor)
{
    scale = std::max(MinimumScale, std::min(MaximumScale, scale));
    const ViewportAnchor previous = transformationAnchor();
    setTransformationAnchor(anchor);
    setTransform(QTransform::fromScale(scale, scale));
    setTransformationAnchor(previous);
}

TypeableMenu *GraphPane::typeableMenu() const
{
    return m_typeableMenu.data();
}

void GraphPane::setPrototypes(const QList<Transform *> &prototypes)
{
    m_prototypes = prototypes;
    m_prototypesSet = true;
}

QList<Transform *> GraphPane::prototypes() const
{
    if (m_prototypesSet)
        return m_prototypes;
    return TransformRegistry::prototypes();
}

void GraphPane::onAutoZoom()
{
    if (m_zoomFit)
        onZoomToFit();
}

void GraphPane::onZoomToFit()
{
    if (!m_scene)
        return;
    QRectF rect = m_scene->itemsBoundingRect();
    if (rect.isEmpty())
        return;
    rect.adjust(-FitMargin, -FitMargin, FitMargin, FitMargin);
    // Grow the rectangle to the view's shape around its centre, so the items stay centred.
    const QSizeF view = viewport()->size();
    if (view.width() > 0 && view.height() > 0) {
        const qreal viewRatio = view.width() / view.height();
        const qreal rectRatio = rect.width() / rect.height();
        const QPointF centre = rect.center();
        if (viewRatio > rectRatio)
            rect.setWidth(rect.height() * viewRatio);
        else
            rect.setHeight(rect.width() / viewRatio);
        rect.moveCenter(centre);
    }
    fitInView(rect, Qt::KeepAspectRatio);
    const qreal scale = zoomScale();
    if (scale > MaximumScale || scale < MinimumScale)
        setZoomScale(scale, AnchorViewCenter);
    centerOn(rect.center());
}

void GraphPane::onZoomIn()
{
    m_zoomFit = false;
    if (canZoomIn())
        setZoomScale(zoomScale() * ZoomInFactor, transformationAnchor());
    emit zoomButtonClicked();
}

void GraphPane::onZoomOut()
{
    m_zoomFit = false;
    if (canZoomOut())
        setZoomScale(zoomScale() * ZoomOutFactor, transformationAnchor());
    emit zoomButtonClicked();
}

void GraphPane::onZoomSelected()
{
    if (!m_scene)
        return;
    QRectF rect;
    const QList<QGraphicsItem *> selected = selectedGraphics();
    for (const QGraphicsItem *item : selected)
        rect |= item->sceneBoundingRect();
    if (rect.isEmpty())
        return;
    m_zoomFit = false;
    fitInView(rect.adjusted(-FitMargin, -FitMargin, FitMargin, FitMargin), Qt::KeepAspectRatio);
    const qreal scale = zoomScale();
    if (scale > MaximumScale || scale < MinimumScale)
        setZoomScale(scale, AnchorViewCenter);
    centerOn(rect.center());
    emit zoomButtonClicked();
}

void GraphPane::onMagnifyUnderCursor(bool on)
{
    if (on == m_magnified)
        return;
    m_magnified = on;
    if (on) {
        m_beforeMagnify = transform();
        setZoomScale(std::max(zoomScale(), 1.0) * MagnifyScale, AnchorUnderMouse);
    } else {
        setTransform(m_beforeMagnify);
    }
}

QList<Node *> GraphPane::selectedNodes() const
{
    return m_scene ? m_scene->selectedNodes() : QList<Node *>();
}

QList<QGraphicsItem *> GraphPane::selectedGraphics() const
{
    return m_scene ? m_scene->QGraphicsScene::selectedItems() : QList<QGraphicsItem *>();
}

void GraphPane::onCopyDataSelected()
{
    const QList<Node *> nodes = selectedNodes();
    if (nodes.size() != 1 || nodes.first()->type() == Node::NoteType)
        return;
    const Dataset &dataset = *nodes.first()->item()->dataset();
    const qint64 rows = dataset.rowCount();
    const qint64 columns = dataset.columnCount();
    if (rows * columns >= LargeCopyCells) {
        const QLocale locale;
        const auto answer = MessageBoxes::show(
            this, QMessageBox::Question, QStringLiteral("Copy"),
            QStringLiteral("Are you sure you want to copy %1 rows x %2 cols into the clipboard?")
                .arg(locale.toString(rows), locale.toString(columns)),
            QMessageBox::Yes | QMessageBox::No);
        if (answer != QMessageBox::Yes)
            return;
    }
    // copy_data_as picks the plain text form; spreadsheets also find the CSV form.
    const auto render = [&dataset](QChar delimiter) {
        QString text;
        QTextStream stream(&text);
        TextWriteOptions options;
        options.delimiter = delimiter;
        options.lineEnding = QStringLiteral("\n");
        WriteReport report;
        writeDelimitedText(stream, dataset, options, report, WriteProgress());
        stream.flush();
        return text;
    };
    const int form = Settings::instance()->copyDataAs();
    auto *mime = new QMimeData;
    const QString csv = render(QLatin1Char(','));
    mime->setText(form == 1 ? csv : render(QLatin1Char('\t')));
    mime->setData(QStringLiteral("text/csv"), csv.toUtf8());
    QApplication::clipboard()->setMimeData(mime);
}

void GraphPane::onNodesAdded()
{
    onAutoZoom();
}

void GraphPane::onNodesDeleted()
{
    if (ConnectionMaker *maker = ConnectionMaker::of(m_scene, false)) {
        if (maker->isActive() && !m_scene->nodes().contains(maker->source()))
            maker->cancel();
    }
    onAutoZoom();
}

void GraphPane::onHighlightTransformNodes(bool on, const Transform *prototype)
{
    if (!m_scene || !prototype)
        return;
    const QList<Node *> transforms = m_scene->nodesOfType(Node::TransformType);
    for (Node *node : transforms) {
        const Transform *transform = static_cast<const TransformNode *>(node)->transform();
        node->setHighlighted(on && transform && transform->typeName() == prototype->typeName());
    }
}

void GraphPane::onCancelConnection()
{
    if (ConnectionMaker *maker = ConnectionMaker::of(m_scene, false))
        maker->cancel();
}

void GraphPane::wheelEvent(QWheelEvent *event)
{
    const int behaviour = Settings::instance()->mouseWheelBehaviour();
    if (behaviour == 3) {
        event->accept();
        return;
    }
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    const bool alt = event->modifiers() & Qt::AltModifier;
    const QPoint angle = event->angleDelta();
    const int delta = angle.y() != 0 ? angle.y() : angle.x();
    const bool zoom = behaviour == 0 ? ctrl : !ctrl;
    if (zoom && !alt) {
        if (delta == 0)
            return;
        // Behaviour 2 turns the wheel round: forward zooms out.
        const bool in = (delta > 0) != (behaviour == 2);
        m_zoomFit = false;
        const qreal scale = zoomScale() * (in ? ZoomInFactor : ZoomOutFactor);
        if ((in && canZoomIn()) || (!in && canZoomOut()))
            setZoomScale(scale, AnchorUnderMouse);
        emit zoomButtonClicked();
        event->accept();
        return;
    }
    QScrollBar *bar = alt ? horizontalScrollBar() : verticalScrollBar();
    bar->setValue(bar->value() - delta / 2);
    event->accept();
}

bool GraphPane::hasScrollRange() const
{
    return horizontalScrollBar()->maximum() > horizontalScrollBar()->minimum()
        || verticalScrollBar()->maximum() > verticalScrollBar()->minimum();
}

void GraphPane::openTypeableMenu(const QString &firstLetters)
{
    if (!m_scene)
        return;
    QRectF around;
    const QList<QGraphicsItem *> selected = selectedGraphics();
    for (const QGraphicsItem *item : selected)
        around |= item->sceneBoundingRect();
    if (m_typeableMenu)
        m_typeableMenu->close();
    auto *menu = new TypeableMenu(prototypes(), this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setToolTip(
        QStringLiteral("Add a new transform quickly by typing a few letters of it's name."));
    menu->setFilterText(firstLetters);
    connect(menu, &TypeableMenu::transformChosen, this, &GraphPane::transformChosen);
    m_typeableMenu = menu;
    menu->popupAt(viewport()->mapToGlobal(mapFromScene(around.center())));
}

void GraphPane::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    if (event->key() == Qt::Key_Escape && ConnectionMaker::isActive(m_scene)) {
        onCancelConnection();
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::Copy)) {
        onCopyDataSelected();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Delete && modifiers == Qt::NoModifier) {
        emit deleteRequested();
        event->accept();
        return;
    }
    const bool selection = !selectedGraphics().isEmpty();
    const int key = event->key();
    if (modifiers == Qt::NoModifier && isInteractive() && !event->isAutoRepeat() && selection
        && ((key >= Qt::Key_A && key <= Qt::Key_Z) || key == Qt::Key_Space)) {
        openTypeableMenu(key == Qt::Key_Space ? QString() : event->text());
        event->accept();
        return;
    }
    if (key == HandDragKey && !selection && hasScrollRange()) {
        if (!m_handDrag) {
            m_handDrag = true;
            setDragMode(QGraphicsView::ScrollHandDrag);
            setInteractive(false);
        }
        event->accept();
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

void GraphPane::keyReleaseEvent(QKeyEvent *event)
{
    if (event->isAutoRepeat()) {
        QGraphicsView::keyReleaseEvent(event);
        return;
    }
    if (event->key() == HandDragKey && m_handDrag) {
        m_handDrag = false;
        setDragMode(QGraphicsView::RubberBandDrag);
        setInteractive(true);
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Menu) {
        QRectF around;
        const QList<QGraphicsItem *> selected = selectedGraphics();
        for (const QGraphicsItem *item : selected)
            around |= item->sceneBoundingRect();
        const QPoint at
            = around.isNull() ? viewport()->rect().center() : mapFromScene(around.center());
        emit contextMenuRequested(viewport()->mapToGlobal(at));
        event->accept();
        return;
    }
    QGraphicsView::keyReleaseEvent(event);
}

void GraphPane::mousePressEvent(QMouseEvent *event)
{
    ConnectionMaker *maker = ConnectionMaker::of(m_scene, false);
    if (maker && maker->isActive() && !maker->isDragging()) {
        // While a connection waits for its end, only a candidate's handle takes the click;
        // a click anywhere else gives up.
        const QList<QGraphicsItem *> under = items(event->pos());
        const bool onCandidate
            = std::any_of(under.cbegin(), under.cend(), [](const QGraphicsItem *item) {
                  return item->type() == ConnectToNodeOverlayItem::Type && item->isVisible();
              });
        if (!onCandidate) {
            maker->cancel();
            event->accept();
            return;
        }
    }
    QGraphicsView::mousePressEvent(event);
}

void GraphPane::mouseMoveEvent(QMouseEvent *event)
{
    if (ConnectionMaker *maker = ConnectionMaker::of(m_scene, false)) {
        if (maker->isActive())
            maker->moveTo(mapToScene(event->pos()));
    }
    QGraphicsView::mouseMoveEvent(event);
}

void GraphPane::mouseReleaseEvent(QMouseEvent *event)
{
    QGraphicsView::mouseReleaseEvent(event);
    onAutoZoom();
}

void GraphPane::contextMenuEvent(QContextMenuEvent *event)
{
    QGraphicsItem *item = itemAt(event->pos());
    while (item && item->parentItem())
        item = item->parentItem();
    if (!item) {
        QGraphicsView::contextMenuEvent(event);
        return;
    }
    if (!item->isSelected() && m_scene) {
        m_scene->clearSelection();
        item->setSelected(true);
    }
    emit contextMenuRequested(event->globalPos());
    event->accept();
}

void GraphPane::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls() || event->mimeData()->hasText())
        event->acceptProposedAction();
    else
        event->ignore();
}

void GraphPane::dragMoveEvent(QDragMoveEvent *event)
{
    if (event->mimeData()->hasUrls() || event->mimeData()->hasText())
        event->acceptProposedAction();
    else
        event->ignore();
}

void GraphPane::dropEvent(QDropEvent *event)
{
    const QPointF at = mapToScene(event->pos());
    const QMimeData *mime = event->mimeData();
    if (mime->hasUrls()) {
        emit filesDropped(mime->urls(), at);
        event->acceptProposedAction();
    } else if (mime->hasText()) {
        emit textDropped(mime->text(), at);
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void GraphPane::drawBackground(QPainter *painter, const QRectF &rect)
{
    const Colors *colors = Colors::instance();
    painter->fillRect(rect, colors->color(Colors::CenterBackground));
    if (!m_scene || !m_scene->snapToGrid() || zoomScale() < 0.3)
        return;
    // The grid points the items snap to.
    painter->setPen(QPen(colors->color(Colors::Grid), 2.0 / zoomScale()));
    const qreal left = std::floor(rect.left() / FlowModel::GridWidth) * FlowModel::GridWidth;
    const qreal top = std::floor(rect.top() / FlowModel::GridHeight) * FlowModel::GridHeight;
    QVector<QPointF> points;
    for (qreal x = left; x <= rect.right(); x += FlowModel::GridWidth) {
        for (qreal y = top; y <= rect.bottom(); y += FlowModel::GridHeight)
            points.append(QPointF(x, y));
    }
    painter->drawPoints(points.constData(), points.size());
}

void GraphPane::resizeEvent(QResizeEvent *event)
{
    QGraphicsView::resizeEvent(event);
    onAutoZoom();
}
