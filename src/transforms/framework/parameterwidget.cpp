#include "transforms/framework/parameterwidget.h"

#include "graph/undo.h"
#include "transforms/framework/columnwidgets.h"
#include "transforms/framework/parameterwidgets.h"
#include "transforms/framework/tablewidgets.h"

ParameterWidget::ParameterWidget(Parameter *parameter)
    : m_parameter(parameter)
{ }

ParameterWidget::~ParameterWidget() = default;

QString ParameterWidget::key() const
{
    return m_parameter ? m_parameter->key() : QString();
}

QVariant ParameterWidget::value() const
{
    return m_parameter ? m_parameter->value() : QVariant();
}

void ParameterWidget::updateEnabled(bool enabled)
{
    if (QWidget *w = widget())
        w->setEnabled(enabled);
}

QString ParameterWidget::toolTip() const
{
    return m_parameter ? m_parameter->toolTip() : QString();
}

void ParameterWidget::commitChange(bool runNow)
{
    {
        // The snapshot must be taken before the value changes, so the step wraps the save.
        const QString label = m_parameter ? m_parameter->label() : QString();
        UndoStep step(label.isEmpty() ? QStringLiteral("change")
                                      : QStringLiteral("'%1' change").arg(label));
        saveValue();
        // The user's value wins over document text that never got resolved.
        if (m_parameter && m_parameter->hasPendingText())
            m_parameter->clearPendingText();
    }
    emitParameterValueChanged(runNow);
}

void ParameterWidget::resolvePending()
{
    if (m_parameter && m_parameter->hasPendingText())
        m_parameter->resolvePendingText();
}

ParameterWidgetBase::ParameterWidgetBase(Parameter *parameter, QWidget *parent)
    : QWidget(parent)
    , ParameterWidget(parameter)
{ }

ParameterWidget *createParameterWidget(Parameter *parameter, QWidget *parent)
{
    if (!parameter)
        return nullptr;
    ParameterWidget *widget = nullptr;
    switch (parameter->type()) {
    case ParameterType::SingleColumn:
        widget = new SingleColumnFilteredParameterWidget(parameter, parent);
        break;
    case ParameterType::MultipleColumns:
    case ParameterType::MultipleColumnsOrdered:
        widget = new MultipleColumnsParameterWidget(parameter, parent);
        break;
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered:
        widget = new SortColumnsParameterWidget(parameter, parent);
        break;
    case ParameterType::FilterColumns:
        widget = new FilterColumnsParameterWidget(parameter, parent);
        break;
    case ParameterType::ReorderColumns:
        widget = new ReorderColumnsParameterWidget(parameter, parent);
        break;
    case ParameterType::Bool:
        widget = new BoolParameterWidget(parameter, parent);
        break;
    case ParameterType::Selection:
        widget = new SelectionParameterWidget(parameter, parent);
        break;
    case ParameterType::Text:
        widget = new TextParameterWidget(parameter, parent);
        break;
    case ParameterType::Int:
        widget = new IntParameterWidget(parameter, parent);
        break;
    case ParameterType::Char:
        widget = new CharParameterWidget(parameter, parent);
        break;
    case ParameterType::If:
        widget = new IfParameterWidget(parameter, parent);
        break;
    case ParameterType::Script:
        widget = new ScriptParameterWidget(parameter, parent);
        break;
    case ParameterType::RenameColumns:
        widget = new RenameColumnsParameterWidget(parameter, parent);
        break;
    case ParameterType::SplitRows:
        widget = new SplitRowsParameterWidget(parameter, parent);
        break;
    case ParameterType::Unique:
        widget = new UniqueParameterWidget(parameter, parent);
        break;
    case ParameterType::ReplaceTerms:
        widget = new ReplaceTermsParameterWidget(parameter, parent);
        break;
    case ParameterType::Real:
        widget = new RealParameterWidget(parameter, parent);
        break;
    case ParameterType::LongText:
        widget = new LongTextParameterWidget(parameter, parent);
        break;
    case ParameterType::VerifyRules:
        widget = new VerifyRulesParameterWidget(parameter, parent);
        break;
    case ParameterType::Label:
        widget = new LabelParameterWidget(parameter, parent);
        break;
    case ParameterType::Date:
        widget = new DateParameterWidget(parameter, parent);
        break;
    case ParameterType::Locale:
        widget = new LocaleParameterWidget(parameter, parent);
        break;
    }
    if (widget)
        widget->updateValue();
    return widget;
}

ParameterLayout parameterLayout(const Parameter *parameter)
{
    return Parameter::layoutFor(parameter->type());
}
