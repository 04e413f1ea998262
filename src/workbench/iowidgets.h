#pragma once

#include <QComboBox>
#include <QWidget>

#include <functional>

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

// How an Excel output formats its cells: automatically, all General, or by column, with a
// button to the dialog of the columns' formats (Manual only).
class ExcelColumnFormatsWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ExcelColumnFormatsWidget(QWidget *parent = nullptr);

    // The names of the columns the dialog lists, asked for when it opens.
    void setColumnNames(const std::function<QStringList()> &names) { m_columnNames = names; }
    // Shows the values; emits nothing.
    void setValues(int formatting, const QList<int> &formats);
    int formatting() const { return m_combo->currentIndex(); }
    QList<int> formats() const { return m_formats; }
    QComboBox *combo() const { return m_combo; }
    QToolButton *editButton() const { return m_edit; }

signals:
    void formattingChanged(int formatting);
    void formatsChanged(const QList<int> &formats);

private:
    void editFormats();

    QComboBox *m_combo;
    QToolButton *m_edit;
    QList<int> m_formats;
    std::function<QStringList()> m_columnNames;
};

// Whether an Excel output copies the styling of a template sheet, and the template's path
// with its sheet in brackets.
class ExcelStyleTemplateWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ExcelStyleTemplateWidget(QWidget *parent = nullptr);

    // Shows the values; emits nothing.
    void setValues(bool use, const QString &path);
    QCheckBox *useCheck() const { return m_use; }
    QLineEdit *pathEdit() const { return m_path; }
    QToolButton *browseButton() const { return m_browse; }

signals:
    void useChanged(bool on);
    void pathChanged(const QString &path);

private:
    void browse();
    void updateEnabled();

    QCheckBox *m_use;
    QLineEdit *m_path;
    QToolButton *m_browse;
    QString m_value;
};
