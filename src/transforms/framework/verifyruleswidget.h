#pragma once

#include "transforms/framework/parameterwidgets.h"

// Stands in for the rule editor until it exists; the rule set is kept exactly as it is.
class VerifyRulesParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    VerifyRulesParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override { }
    void saveValue() override { }
};
