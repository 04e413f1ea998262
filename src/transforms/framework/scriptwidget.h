#pragma once

#include "transforms/framework/parameterwidgets.h"

class QComboBox;
class QPlainTextEdit;

// A script, with a menu of the input's column variables to insert at the cursor.
class ScriptParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    ScriptParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QPlainTextEdit *editor() const { return m_editor; }
    QComboBox *variables() const { return m_variables; }

private:
    void fillVariables();
    void onVariableChosen(int index);

    QPlainTextEdit *m_editor;
    QComboBox *m_variables;
    bool m_loading = false;
};
