#pragma once

#include "transforms/framework/parameter.h"

#include <QString>
#include <QVariant>
#include <QWidget>

// The face every option widget shows to the item panel, mixed into a Qt widget class. It
// holds the option it edits (not owned) and turns a user's edit into a saved value, an undo
// step and one signal, so that the panel decides when the graph runs again. The Qt signals
// themselves (processNow(), parameterValueChanged(bool), userInteraction()) are declared by
// each concrete widget, which forwards the emit* operations to them.
class ParameterWidget
{
public:
    explicit ParameterWidget(Parameter *parameter);
    virtual ~ParameterWidget();

    QString key() const;
    Parameter *parameter() const { return m_parameter; }
    QVariant value() const;

    // Shows the option's value; never emits, so that loading a value doesn't look like an edit.
    virtual void updateValue() = 0;
    virtual void updateEnabled(bool enabled);
    virtual void saveValue() = 0;
    virtual QWidget *widget() = 0;
    QString toolTip() const;

protected:
    // Saves the value, records the undo step "'label' change" and tells the panel; runNow
    // asks for a run at once, otherwise the run waits for the panel's delay.
    void commitChange(bool runNow);
    // Brings pending document text into the value once the source can resolve it.
    void resolvePending();

    virtual void emitParameterValueChanged(bool runNow) = 0;
    virtual void emitProcessNow() = 0;
    virtual void emitUserInteraction() = 0;

private:
    Parameter *m_parameter;
};

// A plain container widget carrying the three signals; the base of the compound widgets.
class ParameterWidgetBase : public QWidget, public ParameterWidget
{
    Q_OBJECT

public:
    ParameterWidgetBase(Parameter *parameter, QWidget *parent);

    QWidget *widget() override { return this; }

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

protected:
    void emitParameterValueChanged(bool runNow) override { emit parameterValueChanged(runNow); }
    void emitProcessNow() override { emit processNow(); }
    void emitUserInteraction() override { emit userInteraction(); }
};

// Makes the widget of one kind of option, without showing the value yet.
using ParameterWidgetMaker = ParameterWidget *(*)(Parameter *parameter, QWidget *parent);
// The maker of a kind, from the widget table; null for a kind without a widget.
ParameterWidgetMaker parameterWidgetMaker(ParameterType type);

// Builds the widget of the parameter's kind and shows the value, null for kinds without one. The
// QWidget has the Qt signals processNow(), parameterValueChanged(bool) and userInteraction().
ParameterWidget *createParameterWidget(Parameter *parameter, QWidget *parent);

// How the item widget lays the option out: a "%1:" label and the widget in a form row
// (ParameterLayout::Row), a plain check, or a full-width block.
ParameterLayout parameterLayout(const Parameter *parameter);
