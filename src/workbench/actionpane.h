#pragma once

#include "workbench/widgets.h"

#include <QList>
#include <QMap>
#include <QStringList>
#include <QWidget>

class QGraphicsItem;
class QVBoxLayout;
class Transform;

// A button that stands for one transform; it tells when the pointer is over it so that the
// canvas can show which items the transform would take.
class TransformButton : public ActionButton
{
    Q_OBJECT

public:
    TransformButton(const Transform *prototype, QWidget *parent = nullptr);

    const Transform *prototype() const { return m_prototype; }
    // The description, what must be selected and, for a hidden advanced one, where to find it.
    static QString toolTipFor(const Transform *prototype, bool showAdvanced);

signals:
    void hoverChanged(bool hovered);

protected:
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    const Transform *m_prototype;
};

// The Left pane: buttons that bring datasets in, the chooser of transforms and the output
// button. It holds no graph state; clicks go out as signals for the window to act on, and it
// keeps the memory of which transforms were added recently and how often.
class ActionPane : public QWidget
{
    Q_OBJECT

public:
    // Takes the application's prototypes.
    explicit ActionPane(QWidget *parent = nullptr);
    ActionPane(const QList<Transform *> &prototypes, QWidget *parent);
    ~ActionPane() override;

    void setSelection(const QList<QGraphicsItem *> &selected);
    void recordTransformAdded(const QString &typeName);
    void setInteractionAllowed(bool allowed);

    // Category rows carry 0 to 6; "last used" rows -1 to -5 and "most used" rows -6 to -10.
    static int rowCount(int data);
    // The prototypes whose buttons stand in the pane, in their order.
    QList<const Transform *> shownTransforms() const;
    QList<TransformButton *> transformButtons() const { return m_buttons; }
    OpeningComboBox *categoryCombo() const { return m_category; }
    DelayedFilterEdit *filterEdit() const { return m_filter; }
    HighlightUncheckedCheckBox *advancedCheck() const { return m_advanced; }
    ActionButton *fromFileButton() const { return m_fromFile; }
    ActionButton *fromClipboardButton() const { return m_fromClipboard; }
    ActionButton *toFileButton() const { return m_toFile; }

    // What stands in the settings.
    static QStringList recentTransforms();
    static QMap<QString, int> transformCounts();
    // The texts of a refused click: empty when the selection suits the transform.
    static QString wrongSelectionMessage(const Transform *prototype, int selectedCount);

signals:
    void inputFileClicked();
    void inputClipboardClicked();
    void outputFileClicked();
    void transformClicked(const Transform *prototype);
    void hoverStatusChanged(bool hovered, const Transform *prototype);

public slots:
    void onCategoryChanged();
    void onMatchTextChanged(const QString &text);
    void onAdvancedChanged(bool on);
    void onComboOpened();

    // Wide enough for the longest button text, so that no name is cut off.
    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void build(const QList<Transform *> &prototypes);
    void addInputButtons(QWidget *column, QVBoxLayout *layout);
    void addTransformChooser(QWidget *column, QVBoxLayout *layout);
    void addTransformButtons(QWidget *column, QVBoxLayout *layout);
    void addOutputButton(QWidget *column, QVBoxLayout *layout);
    void updateCategoryRows();
    void updateButtons();
    void updateEnabled();
    void onTransformButtonClicked(TransformButton *button);
    void offerTips();
    QList<const Transform *> transformsForRow(int data) const;
    const Transform *prototypeNamed(const QString &typeName) const;

    QList<const Transform *> m_prototypes;
    QList<TransformButton *> m_buttons;
    ActionButton *m_fromFile = nullptr;
    ActionButton *m_fromClipboard = nullptr;
    ActionButton *m_toFile = nullptr;
    OpeningComboBox *m_category = nullptr;
    DelayedFilterEdit *m_filter = nullptr;
    HighlightUncheckedCheckBox *m_advanced = nullptr;
    QWidget *m_buttonBox = nullptr;
    QVBoxLayout *m_buttonLayout = nullptr;
    int m_selectedCount = 0;
    bool m_interactionAllowed = true;
    bool m_tipsOffered = false;
};
