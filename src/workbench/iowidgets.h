#pragma once

#include <QComboBox>
#include <QWidget>

class QCheckBox;
class QLineEdit;
class QToolButton;

// The text encodings an input or output can name, sorted, without aliases where the
// application has sorted them out.
QStringList encodingNames();

// The delimiter of an input or an output: the list of delimiters, and a one-character edit
// that appears for Custom. Inputs offer Automatic; outputs offer Colon, Space and Custom.
class DelimWidget : public QWidget
{
    Q_OBJECT

public:
    DelimWidget(bool forInput, QWidget *parent = nullptr);

    int delimiter() const;
    QChar customDelimiter() const;
    // Shows the values; emits nothing.
    void setValues(int delimiter, QChar custom);
    QComboBox *combo() const { return m_combo; }
    QLineEdit *customEdit() const { return m_custom; }

signals:
    void delimiterChanged(int delimiter);
    void customDelimiterChanged(QChar delimiter);

private:
    QComboBox *m_combo;
    QLineEdit *m_custom;
};

// Whether an output writes its header, and whether only into an empty file.
class WriteHeaderWidget : public QWidget
{
    Q_OBJECT

public:
    explicit WriteHeaderWidget(QWidget *parent = nullptr);

    void setValues(bool writeHeader, bool onlyIfEmpty);
    QCheckBox *writeHeaderCheck() const { return m_writeHeader; }
    QCheckBox *ifEmptyCheck() const { return m_ifEmpty; }

signals:
    void writeHeaderChanged(bool on);
    void onlyIfEmptyChanged(bool on);

private:
    QCheckBox *m_writeHeader;
    QCheckBox *m_ifEmpty;
};

// The Write mode of an output; "Disabled" stands out in the warning colour.
class WriteModeComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit WriteModeComboBox(QWidget *parent = nullptr);

    int mode() const { return currentIndex(); }
    void setMode(int mode);

signals:
    void modeChanged(int mode);

private:
    void updateLook();
};

// Where an input adds its meta information, and the text it adds.
class MetaInfoWidget : public QWidget
{
    Q_OBJECT

public:
    explicit MetaInfoWidget(QWidget *parent = nullptr);

    void setValues(int place, const QString &text, bool fileSource);
    int place() const { return m_combo->currentIndex(); }
    QString text() const { return m_text; }
    QComboBox *combo() const { return m_combo; }

signals:
    void placeChanged(int place);
    void textChanged(const QString &text);

private:
    void editText();

    QComboBox *m_combo;
    QToolButton *m_edit;
    QString m_text;
    bool m_fileSource = true;
};
