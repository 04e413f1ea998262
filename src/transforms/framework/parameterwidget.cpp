#include "transforms/framework/parameterwidget.h"

#include "shell/undostep.h"
#include "transforms/framework/columnwidgets.h"
#include "transforms/framework/parameterkind.h"
#include "transforms/framework/parameterwidgets.h"
#include "transforms/framework/scriptwidget.h"
#include "transforms/framework/tablewidgets.h"
#include "transforms/framework/verifyruleswidget.h"

#include <iterator>

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
    if (QWidget *w = widget()) {
        w->setEnabled(enabled);
        // A transform may reword its tips as other options change.
        w->setToolTip(toolTip());
    }
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

namespace {

template<typename W> ParameterWidget *make(Parameter *parameter, QWidget *parent)
{
    return new W(parameter, parent);
}

struct WidgetKind
{
    ParameterType type;
    ParameterWidgetMaker make;
};

// In ParameterType order; the other half of a kind's description, next to its row in the
// kind table of parameterkind.cpp, kept here because the core may not see widgets.
constexpr WidgetKind WidgetKinds[] = {
    {ParameterType::SingleColumn, make<SingleColumnFilteredParameterWidget>},
    {ParameterType::MultipleColumns, make<MultipleColumnsParameterWidget>},
    {ParameterType::SortColumns, make<SortColumnsParameterWidget>},
    {ParameterType::FilterColumns, make<FilterColumnsParameterWidget>},
    {ParameterType::ReorderColumns, make<ReorderColumnsParameterWidget>},
    {ParameterType::Bool, make<BoolParameterWidget>},
    {ParameterType::Selection, make<SelectionParameterWidget>},
    {ParameterType::Text, make<TextParameterWidget>},
    {ParameterType::Int, make<IntParameterWidget>},
    {ParameterType::Char, make<CharParameterWidget>},
    {ParameterType::If, make<IfParameterWidget>},
    {ParameterType::MultipleColumnsOrdered, make<MultipleColumnsParameterWidget>},
    {ParameterType::Script, make<ScriptParameterWidget>},
    {ParameterType::RenameColumns, make<RenameColumnsParameterWidget>},
    {ParameterType::SplitRows, make<SplitRowsParameterWidget>},
    {ParameterType::Unique, make<UniqueParameterWidget>},
    {ParameterType::ReplaceTerms, make<ReplaceTermsParameterWidget>},
    {ParameterType::Real, make<RealParameterWidget>},
    {ParameterType::LongText, make<LongTextParameterWidget>},
    {ParameterType::VerifyRules, make<VerifyRulesParameterWidget>},
    {ParameterType::Label, make<LabelParameterWidget>},
    {ParameterType::Date, make<DateParameterWidget>},
    {ParameterType::SortColumnsOrdered, make<SortColumnsParameterWidget>},
    {ParameterType::Locale, make<LocaleParameterWidget>},
};

constexpr bool widgetRowsInTypeOrder()
{
    for (int i = 0; i < int(std::size(WidgetKinds)); ++i) {
        if (int(WidgetKinds[i].type) != i)
            return false;
    }
    return true;
}

static_assert(std::size(WidgetKinds) == ParameterKindCount, "one widget a kind");
static_assert(widgetRowsInTypeOrder(), "rows in ParameterType order");

} // namespace

ParameterWidgetMaker parameterWidgetMaker(ParameterType type)
{
    const int index = int(type);
    return index >= 0 && index < ParameterKindCount ? WidgetKinds[index].make : nullptr;
}

ParameterWidget *createParameterWidget(Parameter *parameter, QWidget *parent)
{
    const ParameterWidgetMaker make = parameter ? parameterWidgetMaker(parameter->type()) : nullptr;
    if (!make)
        return nullptr;
    ParameterWidget *widget = make(parameter, parent);
    widget->updateValue();
    return widget;
}

ParameterLayout parameterLayout(const Parameter *parameter)
{
    return parameter->kind().layout;
}
