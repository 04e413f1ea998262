#pragma once

#include "transforms/framework/parameterwidgets.h"

#include <QPlainTextEdit>
#include <QSet>
#include <QSyntaxHighlighter>
#include <QTextCharFormat>

class QComboBox;

// Colours the text of a script: keywords, numbers, strings and comments when it is
// Javascript, and in every language the column references, which are replaced wherever they
// stand, inside strings and comments too. A reference to no column of the input is underlined
// as a mistake.
class ScriptHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT

public:
    enum Role { Keyword, Number, String, Comment, Column, UnknownColumn, RoleCount };

    ScriptHighlighter(QTextDocument *document, bool dark);

    void setJavascript(bool on);
    bool isJavascript() const { return m_javascript; }
    // The references that name a column of the input, as "$(name)" and "$(3)".
    void setColumnReferences(const QSet<QString> &references);
    QTextCharFormat format(Role role) const { return m_formats[role]; }

protected:
    void highlightBlock(const QString &text) override;

private:
    void highlightCode(const QString &text);
    void highlightColumns(const QString &text);

    bool m_javascript = false;
    QSet<QString> m_references;
    QTextCharFormat m_formats[RoleCount];
};

// A plain text editor for scripts: fixed-pitch, not wrapped, with line numbers in a gutter
// (the messages of a script name its lines), new lines indented like the line before, and a
// context menu that inserts a column reference at the cursor.
class ScriptWidget : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ScriptWidget(QWidget *parent = nullptr);

    ScriptHighlighter *highlighter() const { return m_highlighter; }
    void setJavascript(bool on) { m_highlighter->setJavascript(on); }
    // The references offered by the context menu, in menu order; all of them and the numbered
    // forms count as known to the highlighter.
    void setColumnReferences(const QStringList &menuReferences, const QSet<QString> &known);
    const QStringList &menuReferences() const { return m_menuReferences; }
    int lineNumberAreaWidth() const;
    QWidget *lineNumberArea() const { return m_lineNumbers; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    friend class ScriptLineNumbers;
    void paintLineNumbers(QPaintEvent *event);
    void updateMargins();
    void placeLineNumbers();
    void updateLineNumbers(const QRect &rect, int dy);

    QWidget *m_lineNumbers;
    ScriptHighlighter *m_highlighter;
    QStringList m_menuReferences;
};

// A script, with a menu of the input's column variables to insert at the cursor.
class ScriptParameterWidget : public ParameterWidgetBase
{
    Q_OBJECT

public:
    ScriptParameterWidget(Parameter *parameter, QWidget *parent = nullptr);
    void updateValue() override;
    void saveValue() override;
    ScriptWidget *editor() const { return m_editor; }
    QComboBox *variables() const { return m_variables; }

private:
    void fillVariables();
    void onVariableChosen(int index);

    ScriptWidget *m_editor;
    QComboBox *m_variables;
    bool m_loading = false;
};
