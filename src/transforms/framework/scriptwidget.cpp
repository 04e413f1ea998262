#include "transforms/framework/scriptwidget.h"

#include "data/dataset.h"
#include "transforms/framework/comparisonoperator.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QTextBlock>
#include <QVBoxLayout>

namespace {

// The state a block leaves behind when it ends inside a comment that goes on.
constexpr int InsideComment = 1;

const QSet<QString> &javascriptKeywords()
{
    static const QSet<QString> words = [] {
        QSet<QString> set;
        for (const QString &word :
             QStringLiteral("break case catch class const continue debugger default delete do "
                            "else export extends finally for function if import in instanceof "
                            "let new of return super switch this throw try typeof var void "
                            "while with yield true false null undefined NaN Infinity")
                 .split(QLatin1Char(' ')))
            set.insert(word);
        return set;
    }();
    return words;
}

bool isIdentifierStart(QChar c)
{
    return c.isLetter() || c == QLatin1Char('_') || c == QLatin1Char('$');
}

bool isIdentifierPart(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('$');
}

// The end of the string that opens at start with its quote; the line's end when it isn't
// closed.
int stringEnd(const QString &text, int start)
{
    const QChar quote = text.at(start);
    for (int i = start + 1; i < text.size(); ++i) {
        if (text.at(i) == QLatin1Char('\\'))
            ++i;
        else if (text.at(i) == quote)
            return i + 1;
    }
    return text.size();
}

} // namespace

ScriptHighlighter::ScriptHighlighter(QTextDocument *document, bool dark)
    : QSyntaxHighlighter(document)
{
    // Two palettes, so that the colours read on the light and on the dark theme.
    m_formats[Keyword].setForeground(QColor(dark ? 0xcc7832 : 0x0033b3));
    m_formats[Keyword].setFontWeight(QFont::Bold);
    m_formats[Number].setForeground(QColor(dark ? 0x6897bb : 0x1750eb));
    m_formats[String].setForeground(QColor(dark ? 0x6a8759 : 0x067d17));
    m_formats[Comment].setForeground(QColor(dark ? 0x808080 : 0x8c8c8c));
    m_formats[Comment].setFontItalic(true);
    m_formats[Column].setForeground(QColor(dark ? 0xd19ad1 : 0x871094));
    m_formats[Column].setBackground(QColor(dark ? 0x3b2e3b : 0xf5eaf5));
    m_formats[Column].setFontWeight(QFont::Bold);
    m_formats[UnknownColumn].setUnderlineStyle(QTextCharFormat::WaveUnderline);
    m_formats[UnknownColumn].setUnderlineColor(QColor(0xfc3300));
    m_formats[UnknownColumn].setToolTip(QStringLiteral("No column of the input has this name."));
}

void ScriptHighlighter::setJavascript(bool on)
{
    if (m_javascript == on)
        return;
    m_javascript = on;
    rehighlight();
}

void ScriptHighlighter::setColumnReferences(const QSet<QString> &references)
{
    if (m_references == references)
        return;
    m_references = references;
    rehighlight();
}

void ScriptHighlighter::highlightBlock(const QString &text)
{
    setCurrentBlockState(0);
    if (m_javascript)
        highlightCode(text);
    highlightColumns(text);
}

void ScriptHighlighter::highlightCode(const QString &text)
{
    int i = 0;
    if (previousBlockState() == InsideComment) {
        const int close = text.indexOf(QLatin1String("*/"));
        i = close < 0 ? text.size() : close + 2;
        setFormat(0, i, m_formats[Comment]);
        if (close < 0)
            setCurrentBlockState(InsideComment);
    }
    while (i < text.size()) {
        const QChar c = text.at(i);
        const QStringRef rest = text.midRef(i);
        int end = i + 1;
        if (rest.startsWith(QLatin1String("//"))) {
            end = text.size();
            setFormat(i, end - i, m_formats[Comment]);
        } else if (rest.startsWith(QLatin1String("/*"))) {
            const int close = text.indexOf(QLatin1String("*/"), i + 2);
            end = close < 0 ? text.size() : close + 2;
            setFormat(i, end - i, m_formats[Comment]);
            if (close < 0)
                setCurrentBlockState(InsideComment);
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'') || c == QLatin1Char('`')) {
            end = stringEnd(text, i);
            setFormat(i, end - i, m_formats[String]);
        } else if (c.isDigit()) {
            while (end < text.size()
                   && (text.at(end).isLetterOrNumber() || text.at(end) == QLatin1Char('.')))
                ++end;
            setFormat(i, end - i, m_formats[Number]);
        } else if (isIdentifierStart(c)) {
            while (end < text.size() && isIdentifierPart(text.at(end)))
                ++end;
            if (javascriptKeywords().contains(text.mid(i, end - i)))
                setFormat(i, end - i, m_formats[Keyword]);
        }
        i = end;
    }
}

void ScriptHighlighter::highlightColumns(const QString &text)
{
    for (int start = text.indexOf(QLatin1String("$(")); start >= 0;
         start = text.indexOf(QLatin1String("$("), start + 2)) {
        const int close = text.indexOf(QLatin1Char(')'), start + 2);
        if (close < 0)
            return;
        const int length = close + 1 - start;
        const bool known = m_references.contains(text.mid(start, length));
        setFormat(start, length, m_formats[known ? Column : UnknownColumn]);
    }
}

// The gutter of line numbers, painted by its editor.
class ScriptLineNumbers : public QWidget
{
public:
    explicit ScriptLineNumbers(ScriptWidget *editor)
        : QWidget(editor)
        , m_editor(editor)
    { }
    QSize sizeHint() const override { return QSize(m_editor->lineNumberAreaWidth(), 0); }

protected:
    void paintEvent(QPaintEvent *event) override { m_editor->paintLineNumbers(event); }

private:
    ScriptWidget *m_editor;
};

ScriptWidget::ScriptWidget(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_lineNumbers(new ScriptLineNumbers(this))
    , m_highlighter(
          new ScriptHighlighter(document(), palette().color(QPalette::Base).lightness() < 128))
{
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setTabStopDistance(4 * fontMetrics().horizontalAdvance(QLatin1Char(' ')));
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setMinimumHeight(6 * fontMetrics().lineSpacing());
    connect(this, &QPlainTextEdit::blockCountChanged, this, &ScriptWidget::updateMargins);
    connect(this, &QPlainTextEdit::updateRequest, this, &ScriptWidget::updateLineNumbers);
    updateMargins();
}

void ScriptWidget::setColumnReferences(const QStringList &menuReferences,
                                       const QSet<QString> &known)
{
    m_menuReferences = menuReferences;
    m_highlighter->setColumnReferences(known);
}

int ScriptWidget::lineNumberAreaWidth() const
{
    const int digits = QString::number(qMax(1, blockCount())).size();
    return 8 + fontMetrics().horizontalAdvance(QLatin1Char('9')) * qMax(2, digits);
}

void ScriptWidget::updateMargins()
{
    setViewportMargins(lineNumberAreaWidth(), 0, 0, 0);
    placeLineNumbers();
}

void ScriptWidget::placeLineNumbers()
{
    const QRect area = contentsRect();
    m_lineNumbers->setGeometry(area.left(), area.top(), lineNumberAreaWidth(), area.height());
}

void ScriptWidget::updateLineNumbers(const QRect &rect, int dy)
{
    if (dy != 0)
        m_lineNumbers->scroll(0, dy);
    else
        m_lineNumbers->update(0, rect.y(), m_lineNumbers->width(), rect.height());
}

void ScriptWidget::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    placeLineNumbers();
}

void ScriptWidget::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateMargins();
        m_lineNumbers->update();
    }
}

void ScriptWidget::paintLineNumbers(QPaintEvent *event)
{
    QPainter painter(m_lineNumbers);
    const QPalette colours = palette();
    painter.fillRect(event->rect(), colours.color(QPalette::AlternateBase));
    const int edge = m_lineNumbers->width() - 1;
    painter.setPen(colours.color(QPalette::Midlight));
    painter.drawLine(edge, event->rect().top(), edge, event->rect().bottom());
    painter.setPen(colours.color(QPalette::Disabled, QPalette::Text));
    const int current = textCursor().blockNumber();
    const int right = m_lineNumbers->width() - 5;
    QTextBlock block = firstVisibleBlock();
    int top = qRound(blockBoundingGeometry(block).translated(contentOffset()).top());
    while (block.isValid() && top <= event->rect().bottom()) {
        const int height = qRound(blockBoundingRect(block).height());
        if (block.isVisible() && top + height >= event->rect().top()) {
            QFont font = painter.font();
            font.setBold(block.blockNumber() == current);
            painter.setFont(font);
            painter.drawText(0, top, right, fontMetrics().height(), Qt::AlignRight,
                             QString::number(block.blockNumber() + 1));
        }
        top += height;
        block = block.next();
    }
}

void ScriptWidget::keyPressEvent(QKeyEvent *event)
{
    const bool newLine = (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    if (!newLine) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    // A new line starts where the one before it started.
    const QString line = textCursor().block().text();
    int indent = 0;
    while (indent < line.size()
           && (line.at(indent) == QLatin1Char(' ') || line.at(indent) == QLatin1Char('\t')))
        ++indent;
    QTextCursor cursor = textCursor();
    cursor.insertText(QLatin1Char('\n') + line.left(indent));
    setTextCursor(cursor);
    ensureCursorVisible();
}

void ScriptWidget::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu(event->pos());
    menu->addSeparator();
    QMenu *columns = menu->addMenu(QStringLiteral("Insert column"));
    columns->setEnabled(!m_menuReferences.isEmpty() && !isReadOnly());
    for (const QString &reference : qAsConst(m_menuReferences)) {
        columns->addAction(reference, this, [this, reference] {
            insertPlainText(reference);
            setFocus();
        });
    }
    menu->exec(event->globalPos());
    delete menu;
}

ScriptParameterWidget::ScriptParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_editor(new ScriptWidget(this))
    , m_variables(new QComboBox(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_editor, 1);
    auto *row = new QHBoxLayout;
    row->addWidget(m_variables);
    row->addStretch(1);
    layout->addLayout(row);
    setFocusProxy(m_editor);

    // The option's choices name the language of the text; without one it is plain text.
    m_editor->setJavascript(parameter->options().toString() == QLatin1String("javascript"));
    m_variables->setToolTip(QStringLiteral("Insert the value of a column at the cursor."));
    m_variables->setSizeAdjustPolicy(QComboBox::AdjustToContents);

    connect(m_editor, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_loading)
            commitChange(false);
    });
    connect(m_variables, QOverload<int>::of(&QComboBox::activated), this,
            &ScriptParameterWidget::onVariableChosen);
}

void ScriptParameterWidget::fillVariables()
{
    const QSignalBlocker blocker(m_variables);
    m_variables->clear();
    m_variables->addItem(QStringLiteral("Insert column..."));
    QStringList menu;
    QSet<QString> known;
    const Dataset *dataset = parameter()->sourceDataset();
    if (dataset) {
        for (int c = 0; c < dataset->columnCount(); ++c) {
            const QString name = dataset->headerText(c).trimmed();
            const QString token = name.isEmpty() ? ComparisonOperator::columnVariable(c + 1)
                                                 : ComparisonOperator::columnVariable(name);
            m_variables->addItem(token, token);
            menu.append(token);
            known.insert(token);
            known.insert(ComparisonOperator::columnVariable(c + 1));
        }
    }
    m_variables->setEnabled(m_variables->count() > 1);
    m_editor->setColumnReferences(menu, known);
}

void ScriptParameterWidget::onVariableChosen(int index)
{
    const QString token = m_variables->itemData(index).toString();
    {
        const QSignalBlocker blocker(m_variables);
        m_variables->setCurrentIndex(0);
    }
    if (token.isEmpty())
        return;
    m_editor->insertPlainText(token); // textChanged commits the edit
    m_editor->setFocus();
}

void ScriptParameterWidget::updateValue()
{
    resolvePending();
    // Colouring the references anew changes formats, never the text; guarded all the same.
    m_loading = true;
    fillVariables();
    // An unchanged text keeps the cursor and the scroll position.
    if (m_editor->toPlainText() != parameter()->toString())
        m_editor->setPlainText(parameter()->toString());
    m_loading = false;
}

void ScriptParameterWidget::saveValue()
{
    parameter()->setValue(m_editor->toPlainText());
}
