#pragma once

#include <QGraphicsView>
#include <QList>
#include <QPointF>
#include <QPointer>
#include <QTransform>
#include <QUrl>

class GraphScene;
class Node;
class Transform;
class TypeableMenu;

// The canvas: shows the flow graph, zooms and scrolls it, and turns the user's mouse and key
// gestures into edits of the scene (moves, selections, connections, drops). The rules of what
// may be edited stay with the scene; the pane only asks and passes on.
class GraphPane : public QGraphicsView
{
    Q_OBJECT

public:
    static constexpr qreal ZoomInFactor = 1.25;
    static constexpr qreal ZoomOutFactor = 0.8;
    static constexpr qreal MaximumScale = 3.0;
    static constexpr qreal MinimumScale = 0.1;
    static constexpr qreal MagnifyScale = 2.0;
    // Rows times columns from which copying asks first.
    static constexpr qint64 LargeCopyCells = 1000000;

    explicit GraphPane(QWidget *parent = nullptr);
    ~GraphPane() override;

    void setGraphScene(GraphScene *scene);
    GraphScene *graphScene() const;

    bool canZoomIn() const;
    bool canZoomOut() const;
    void setZoomFit(bool on);
    bool zoomFit() const;
    qreal zoomScale() const;

    // The transforms TypeableMenu offers; the application's prototypes unless set.
    void setPrototypes(const QList<Transform *> &prototypes);
    QList<Transform *> prototypes() const;
    // The menu open now, if any.
    TypeableMenu *typeableMenu() const;
    // Whether a held key has the view scrolling by hand.
    bool isHandDragging() const { return m_handDrag; }

public slots:
    void onAutoZoom();
    void onZoomToFit();
    void onZoomIn();
    void onZoomOut();
    void onZoomSelected();
    void onCopyDataSelected();
    void onMagnifyUnderCursor(bool on);
    void onNodesAdded();
    void onNodesDeleted();
    // Marks every transform item of the prototype's type while its Left pane button is
    // hovered.
    void onHighlightTransformNodes(bool on, const Transform *prototype);
    void onCancelConnection();

signals:
    void zoomButtonClicked();
    void filesDropped(const QList<QUrl> &urls, const QPointF &scenePos);
    void textDropped(const QString &text, const QPointF &scenePos);
    void transformChosen(const Transform *prototype);
    void deleteRequested();
    void contextMenuRequested(const QPoint &globalPos);

protected:
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void drawBackground(QPainter *painter, const QRectF &rect) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void setZoomScale(qreal scale, ViewportAnchor anchor);
    void openTypeableMenu(const QString &firstLetters);
    QList<Node *> selectedNodes() const;
    // Everything selected on the canvas, arrows included.
    QList<QGraphicsItem *> selectedGraphics() const;
    bool hasScrollRange() const;

    GraphScene *m_scene = nullptr;
    bool m_zoomFit = false;
    bool m_handDrag = false;
    bool m_magnified = false;
    QTransform m_beforeMagnify;
    QList<Transform *> m_prototypes;
    bool m_prototypesSet = false;
    QPointer<TypeableMenu> m_typeableMenu;
};
