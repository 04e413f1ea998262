#include "shell/insufficientmemorydialog.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

InsufficientMemoryDialog::InsufficientMemoryDialog(double limitGiB, double useGiB, bool modified,
                                                   QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Insufficient Memory"));

    auto *text = new QLabel(
        QStringLiteral("You have exceed the maximum process memory set in 'Preferences'.\n\n"
                       "Maximum memory usage=%1 GB. Current memory usage=%2 GB.\n\n"
                       "Would you like to?:")
            .arg(QString::number(limitGiB, 'f', 1), QString::number(useGiB, 'f', 1)),
        this);

    m_increaseButton = new QRadioButton(QStringLiteral("Increase maximum memory usage to:"), this);
    m_increaseButton->setToolTip(QStringLiteral(
        "Increase the maximum memory to this amount in 'Preferences' and try to continue."));
    m_increaseButton->setChecked(true);

    m_limitSpinBox = new QDoubleSpinBox(this);
    m_limitSpinBox->setDecimals(1);
    m_limitSpinBox->setSingleStep(0.5);
    m_limitSpinBox->setSuffix(QStringLiteral(" GB"));
    m_limitSpinBox->setMaximum(qMax(1024.0, useGiB * 4.0));
    m_limitSpinBox->setMinimum(useGiB + 0.5);
    m_limitSpinBox->setValue(useGiB + 0.5);
    m_limitSpinBox->setToolTip(m_increaseButton->toolTip());

    m_exitButton = new QRadioButton(
        QStringLiteral("%1 (%2)").arg(QStringLiteral("Exit now"),
                                      modified ? QStringLiteral("changes not saved")
                                               : QStringLiteral("no changes to save")),
        this);
    m_exitButton->setToolTip(
        QStringLiteral("Exit Tabulon immediately. Any unsaved changes will be lost."));
    connect(m_increaseButton, &QRadioButton::toggled, m_limitSpinBox, &QWidget::setEnabled);

    auto *choices = new QGridLayout;
    choices->addWidget(m_increaseButton, 0, 0);
    choices->addWidget(m_limitSpinBox, 0, 1);
    choices->addWidget(m_exitButton, 1, 0, 1, 2);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addLayout(choices);
    layout->addWidget(buttons);
}

bool InsufficientMemoryDialog::increaseChosen() const
{
    return m_increaseButton->isChecked();
}

double InsufficientMemoryDialog::newLimit() const
{
    return m_limitSpinBox->value();
}
