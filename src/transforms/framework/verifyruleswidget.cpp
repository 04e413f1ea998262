#include "transforms/framework/verifyruleswidget.h"

#include <QLabel>
#include <QVBoxLayout>

VerifyRulesParameterWidget::VerifyRulesParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *label = new QLabel(QStringLiteral("The rules editor isn't available yet."), this);
    label->setWordWrap(true);
    layout->addWidget(label);
}
