#include "shell/guards.h"

#include <QGuiApplication>

int BusyCursor::s_depth = 0;

BusyCursor::BusyCursor()
{
    push();
}

BusyCursor::~BusyCursor()
{
    pop();
}

void BusyCursor::push()
{
    if (s_depth++ == 0 && qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

void BusyCursor::pop()
{
    if (s_depth > 0 && --s_depth == 0
        && qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        QGuiApplication::restoreOverrideCursor();
}

int BusyCursor::depth()
{
    return s_depth;
}

UpdateBlocker::UpdateBlocker(QWidget *widget)
    : m_widget(widget)
{
    if (m_widget) {
        m_wasEnabled = m_widget->updatesEnabled();
        m_widget->setUpdatesEnabled(false);
    }
}

UpdateBlocker::~UpdateBlocker()
{
    if (m_widget)
        m_widget->setUpdatesEnabled(m_wasEnabled);
}
