#include "transforms/framework/scriptwidget.h"

#include "data/dataset.h"
#include "transforms/framework/comparisonoperator.h"

#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QVBoxLayout>

ScriptParameterWidget::ScriptParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_editor(new QPlainTextEdit(this))
    , m_variables(new QComboBox(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_editor, 1);
    auto *row = new QHBoxLayout;
    row->addWidget(m_variables);
    row->addStretch(1);
    layout->addLayout(row);
    setFocusProxy(m_editor);

    m_editor->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_editor->setTabStopDistance(4 * m_editor->fontMetrics().horizontalAdvance(QLatin1Char(' ')));
    m_editor->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_editor->setMinimumHeight(6 * m_editor->fontMetrics().lineSpacing());
    m_variables->setToolTip(QStringLiteral("Insert the value of a column at the cursor."));
    m_variables->setSizeAdjustPolicy(QComboBox::AdjustToContents);

    connect(m_editor, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_loading)
            commitChange(false);
    });
    connect(m_variables, QOverload<int>::of(&QComboBox::activated), this,
            &ScriptParameterWidget::onVariableChosen);
}

void ScriptParameterWidget::fillVariables()
{
    const QSignalBlocker blocker(m_variables);
    m_variables->clear();
    m_variables->addItem(QStringLiteral("Insert column..."));
    const Dataset *dataset = parameter()->sourceDataset();
    if (dataset) {
        for (int c = 0; c < dataset->columnCount(); ++c) {
            const QString name = dataset->headerText(c).trimmed();
            const QString token = name.isEmpty() ? ComparisonOperator::columnVariable(c + 1)
                                                 : ComparisonOperator::columnVariable(name);
            m_variables->addItem(token, token);
        }
    }
    m_variables->setEnabled(m_variables->count() > 1);
}

void ScriptParameterWidget::onVariableChosen(int index)
{
    const QString token = m_variables->itemData(index).toString();
    {
        const QSignalBlocker blocker(m_variables);
        m_variables->setCurrentIndex(0);
    }
    if (token.isEmpty())
        return;
    m_editor->insertPlainText(token); // textChanged commits the edit
    m_editor->setFocus();
}

void ScriptParameterWidget::updateValue()
{
    resolvePending();
    fillVariables();
    if (m_editor->toPlainText() == parameter()->toString())
        return; // keeps the cursor and the scroll position
    m_loading = true;
    m_editor->setPlainText(parameter()->toString());
    m_loading = false;
}

void ScriptParameterWidget::saveValue()
{
    parameter()->setValue(m_editor->toPlainText());
}
