#pragma once

#include "transforms/framework/parameterwidget.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QList>
#include <QPlainTextEdit>
#include <QSpinBox>

class QButtonGroup;
class QComboBox;
class QRadioButton;

// Declares the three signals through which an option widget tells its panel about edits, and
// forwards the ParameterWidget emitters to them. Each widget whose Qt base isn't the plain
// container needs its own copy, as moc wants the signals in the class itself.
#define TABULON_PARAMETER_WIDGET_EMITTERS                                                          \
    QWidget *widget() override                                                                     \
    {                                                                                              \
        return this;                                                                               \
    }                                                                                              \
                                                                                                   \
protected:                                                                                         \
    void emitParameterValueChanged(bool runNow) override                                           \
    {                                                                                              \
        emit parameterValueChanged(runNow);                                                        \
    }                                                                                              \
    void emitProcessNow() override                                                                 \
    {                                                                                              \
        emit processNow();                                                                         \
    }                                                                                              \
    void emitUserInteraction() override                                                            \
    {                                                                                              \
        emit userInteraction();                                                                    \
    }                                                                                              \
                                                                                                   \
public:

// A check box; an option marked warnWhenSet paints its caption in the warning colour while it
// is checked and enabled, so that a setting that switches work off doesn't go unnoticed.
class BoolParameterWidget : public QCheckBox, public ParameterWidget
{
    Q_OBJECT

public:
    static constexpr QRgb WarningColor = 0xfc3300;

    BoolParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void updateEnabled(bool enabled) override;
    void saveValue() override;
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateWarning();
};

// One of the option's fixed choices: radio buttons for a few short choices, where all of them
// fit in the row and one click chooses, else a combo box.
class SelectionParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    SelectionParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void updateEnabled(bool enabled) override;
    void saveValue() override;
    bool usesRadioButtons() const { return !m_radios.isEmpty(); }
    QComboBox *comboBox() const { return m_combo; }
    QList<QRadioButton *> radioButtons() const { return m_radios; }

private:
    int currentIndex() const;
    void updateChoiceToolTips();

    QComboBox *m_combo = nullptr;
    QButtonGroup *m_group = nullptr;
    QList<QRadioButton *> m_radios;
};

// A line edit whose context menu can insert characters that a keyboard can't type into a
// line edit: tab, line feed, carriage return and the like, which delimiters often need.
class LineEditWithInsertControlChars : public QLineEdit
{
    Q_OBJECT

public:
    explicit LineEditWithInsertControlChars(QWidget *parent = nullptr);

    // The names and characters offered, in menu order.
    static const QList<QPair<QString, QChar>> &controlChars();
    void insertControlChar(QChar c);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
};

// Free text on one line; every key goes through the panel's delay, Return runs at once.
class TextParameterWidget : public LineEditWithInsertControlChars, public ParameterWidget
{
    Q_OBJECT

public:
    TextParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

private slots:
    void onChanged();
};

// A whole number within the option's bounds; steps and typing go through the delay.
class IntParameterWidget : public QSpinBox, public ParameterWidget
{
    Q_OBJECT

public:
    IntParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool m_loading = false;
};

// A number with decimals within the option's bounds; shows as many decimals as the value
// needs, so that showing a value and saving it back doesn't round it.
class RealParameterWidget : public QDoubleSpinBox, public ParameterWidget
{
    Q_OBJECT

public:
    RealParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool m_loading = false;
};

// One character, typed or picked by name for those that can't be seen (Space, Tab).
class CharParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    CharParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QComboBox *comboBox() const { return m_combo; }

    static QString textForChar(QChar c);
    static QChar charForText(const QString &text);

private:
    QComboBox *m_combo;
};

// Multi-line free text.
class LongTextParameterWidget : public QPlainTextEdit, public ParameterWidget
{
    Q_OBJECT

public:
    LongTextParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

private:
    bool m_loading = false;
};

// A caption between options; it has no value.
class LabelParameterWidget : public QLabel, public ParameterWidget
{
    Q_OBJECT

public:
    LabelParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override { }
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();
};

// A date, typed or picked from a calendar.
class DateParameterWidget : public QDateEdit, public ParameterWidget
{
    Q_OBJECT

public:
    DateParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    TABULON_PARAMETER_WIDGET_EMITTERS

signals:
    void processNow();
    void parameterValueChanged(bool runNow);
    void userInteraction();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool m_loading = false;
};

// A locale chosen as a language and one of the countries that speak it; "Default" leaves the
// value unset, which means the system's locale.
class LocaleParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    LocaleParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    QComboBox *languageBox() const { return m_language; }
    QComboBox *countryBox() const { return m_country; }

private:
    void fillCountries(int language);

    QComboBox *m_language;
    QComboBox *m_country;
};
