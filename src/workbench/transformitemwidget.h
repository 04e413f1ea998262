#pragma once

#include "workbench/itemwidget.h"

#include <QList>

class ColorButton;
class ParameterWidget;
class QCheckBox;
class QHBoxLayout;
class QPushButton;
class QToolButton;
class Transform;
class TransformItem;

// The page of a transform item: one widget per option of its transform, built by the option
// widget factory, and the tools to export, edit externally, compare and explore its data.
class TransformItemWidget : public ItemWidget
{
    Q_OBJECT

public:
    explicit TransformItemWidget(TransformItem *item, QWidget *parent = nullptr);
    ~TransformItemWidget() override;

    TransformItem *transformItem() const;
    QList<ParameterWidget *> parameterWidgets() const { return m_parameterWidgets; }
    ParameterWidget *parameterWidget(const QString &key) const;
    QPushButton *exploreKeysButton() const { return m_exploreKeys; }
    QPushButton *exploreDuplicatesButton() const { return m_exploreDuplicates; }
    QToolButton *exportButton() const { return m_export; }
    QToolButton *editTempButton() const { return m_editTemp; }

    // What stands before the explore windows open; empty when they can open.
    QString exploreKeysProblem() const;
    QString exploreDuplicatesProblem() const;
    // Writes the dataset as a temporary .csv file; the path, or empty with *error set.
    QString writeTemporaryCsv(QString *error) const;

    void refreshAfterRun() override;
    QCheckBox *compareCheck() const { return m_compare; }
    QToolButton *nextChangeButton() const { return m_nextChange; }
    QToolButton *previousChangeButton() const { return m_previousChange; }

public slots:
    void onProcessNow();
    void onParameterChange(bool runNow);
    void onParameterInteraction();
    void onClickedExport();
    void onClickedEditTemp();
    void onClickedExploreKeys();
    void onClickedExploreDuplicates();

private:
    void buildParameters();
    void buildTools();
    void addComparisonTools(QHBoxLayout *row);
    void addVerifyColorButtons(QHBoxLayout *row);
    void addExploreButtons(QHBoxLayout *row, const Transform *transform);
    void connectTools();
    void updateParameterStates();
    void moveToChange(int direction);
    void applyComparison();

    QList<ParameterWidget *> m_parameterWidgets;
    QToolButton *m_export = nullptr;
    QToolButton *m_editTemp = nullptr;
    QCheckBox *m_compare = nullptr;
    QToolButton *m_nextChange = nullptr;
    QToolButton *m_previousChange = nullptr;
    ColorButton *m_changesColor = nullptr;
    QPushButton *m_exploreKeys = nullptr;
    QPushButton *m_exploreDuplicates = nullptr;
};
