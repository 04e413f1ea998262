#pragma once

#include <QDialog>

class QDoubleSpinBox;
class QRadioButton;

// Asks the user, once the memory in use has passed the limit of the preferences, whether
// to raise the limit and carry on or to end the program at once.
class InsufficientMemoryDialog : public QDialog
{
    Q_OBJECT

public:
    InsufficientMemoryDialog(double limitGiB, double useGiB, bool modified,
                             QWidget *parent = nullptr);

    // True when the user chose to raise the limit to newLimit().
    bool increaseChosen() const;
    double newLimit() const;

private:
    QRadioButton *m_increaseButton = nullptr;
    QRadioButton *m_exitButton = nullptr;
    QDoubleSpinBox *m_limitSpinBox = nullptr;
};
