#pragma once

#include "transforms/framework/parameter.h"

#include <QSignalSpy>
#include <QWidget>

Q_DECLARE_METATYPE(ParameterType)

// The three signals of a parameter widget, watched from the moment they are made.
struct WidgetSpies
{
    explicit WidgetSpies(QWidget *w)
        : changed(w, SIGNAL(parameterValueChanged(bool)))
        , now(w, SIGNAL(processNow()))
        , interaction(w, SIGNAL(userInteraction()))
    { }
    int total() const { return changed.count() + now.count() + interaction.count(); }
    QSignalSpy changed;
    QSignalSpy now;
    QSignalSpy interaction;
};
