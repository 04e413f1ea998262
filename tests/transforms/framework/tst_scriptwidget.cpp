#include "flow/flowitem.h"
#include "testutil.h"
#include "transforms/framework/scriptwidget.h"
#include "widgetspies.h"

#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QTextBlock>
#include <QTimer>
#include <QtTest>

#include <memory>

Q_DECLARE_METATYPE(ScriptHighlighter::Role)

namespace {

constexpr int NoRole = -1;

// The highlighter's role of the character at column of line, told by the format it was given.
int roleAt(ScriptWidget *editor, int line, int column)
{
    const QTextBlock block = editor->document()->findBlockByNumber(line);
    for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
        if (column < range.start || column >= range.start + range.length)
            continue;
        for (int role = 0; role < ScriptHighlighter::RoleCount; ++role) {
            if (range.format == editor->highlighter()->format(ScriptHighlighter::Role(role)))
                return role;
        }
    }
    return NoRole;
}

} // namespace

// The script editor: what its colours say about the text, in Javascript and in plain text,
// its gutter, indentation, and the insertion of column references from its menu and from the
// option widget that holds it.
class TestScriptWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void highlighting_data();
    void highlighting();
    void gutterWidensWithTheLines();
    void newLineKeepsIndentation();
    void contextMenuInsertsColumn();
    void optionWidgetKnowsItsColumnsAndLanguage_data();
    void optionWidgetKnowsItsColumnsAndLanguage();

private:
    std::unique_ptr<QWidget> m_window;
};

void TestScriptWidget::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(500, 300);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestScriptWidget::cleanup()
{
    m_window.reset();
}

void TestScriptWidget::highlighting_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("javascript");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("role");

    using H = ScriptHighlighter;
    const QString code = "return $(Name) + 42 + x42; // $(Gone)\n"
                         "var s = 'a // b $(1)'; /* note\n"
                         "still */ if (true) {}";
    QTest::newRow("keyword") << code << true << 0 << 0 << int(H::Keyword);
    QTest::newRow("known column") << code << true << 0 << 8 << int(H::Column);
    QTest::newRow("number") << code << true << 0 << 17 << int(H::Number);
    QTest::newRow("a name ending in digits is no number") << code << true << 0 << 23 << NoRole;
    QTest::newRow("comment to the line's end") << code << true << 0 << 28 << int(H::Comment);
    QTest::newRow("unknown column, even in a comment")
        << code << true << 0 << 32 << int(H::UnknownColumn);
    QTest::newRow("string") << code << true << 1 << 9 << int(H::String);
    QTest::newRow("// inside a string is string") << code << true << 1 << 11 << int(H::String);
    QTest::newRow("a number reference inside a string")
        << code << true << 1 << 17 << int(H::Column);
    QTest::newRow("comment over two lines") << code << true << 2 << 2 << int(H::Comment);
    QTest::newRow("code after the comment ends") << code << true << 2 << 9 << int(H::Keyword);
    QTest::newRow("literal") << code << true << 2 << 13 << int(H::Keyword);
    QTest::newRow("plain text has no keywords") << code << false << 0 << 0 << NoRole;
    QTest::newRow("plain text has no comments") << code << false << 0 << 28 << NoRole;
    QTest::newRow("plain text marks columns") << code << false << 0 << 8 << int(H::Column);
    QTest::newRow("plain text marks unknown columns")
        << code << false << 0 << 32 << int(H::UnknownColumn);
    QTest::newRow("an unclosed reference is nothing") << "x $(Name" << false << 0 << 3 << NoRole;
}

void TestScriptWidget::highlighting()
{
    QFETCH(QString, text);
    QFETCH(bool, javascript);
    QFETCH(int, line);
    QFETCH(int, column);
    QFETCH(int, role);

    auto *editor = new ScriptWidget(m_window.get());
    editor->setJavascript(javascript);
    editor->setColumnReferences({"$(Name)"}, {"$(Name)", "$(1)"});
    editor->setPlainText(text);
    QCOMPARE(roleAt(editor, line, column), role);
}

void TestScriptWidget::gutterWidensWithTheLines()
{
    auto *editor = new ScriptWidget(m_window.get());
    editor->setGeometry(0, 0, 300, 200);
    editor->show();
    const auto gutterBesideText = [editor] {
        const int gutter = editor->lineNumberArea()->width();
        return editor->viewport()->geometry().left() - editor->contentsRect().left() == gutter
            && editor->lineNumberArea()->height() == editor->contentsRect().height();
    };
    editor->setPlainText(QString("x\n").repeated(8));
    const int narrow = editor->lineNumberArea()->width();
    QVERIFY(gutterBesideText());
    editor->setPlainText(QString("x\n").repeated(120));
    QVERIFY(editor->lineNumberArea()->width() > narrow);
    QVERIFY(gutterBesideText());
}

void TestScriptWidget::newLineKeepsIndentation()
{
    auto *editor = new ScriptWidget(m_window.get());
    editor->setFocus();
    QTest::keyClicks(editor, "\tif (x) {");
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::keyClicks(editor, "    y;");
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::keyClicks(editor, "z");
    QCOMPARE(editor->toPlainText(), QString("\tif (x) {\n\t    y;\n\t    z"));
}

void TestScriptWidget::contextMenuInsertsColumn()
{
    auto *editor = new ScriptWidget(m_window.get());
    editor->setColumnReferences({"$(Name)", "$(Total Cost)"}, {});
    editor->setPlainText("return ;");
    QTextCursor cursor = editor->textCursor();
    cursor.setPosition(7);
    editor->setTextCursor(cursor);

    QStringList offered;
    QTimer::singleShot(0, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        for (QAction *action : menu->actions()) {
            if (action->text() != QLatin1String("Insert column"))
                continue;
            for (QAction *column : action->menu()->actions())
                offered.append(column->text());
            action->menu()->actions().at(1)->trigger();
        }
        menu->close();
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), editor->mapToGlobal({5, 5}));
    QApplication::sendEvent(editor->viewport(), &event);
    QCOMPARE(offered, QStringList({"$(Name)", "$(Total Cost)"}));
    QCOMPARE(editor->toPlainText(), QString("return $(Total Cost);"));
}

void TestScriptWidget::optionWidgetKnowsItsColumnsAndLanguage_data()
{
    QTest::addColumn<QVariant>("options");
    QTest::addColumn<bool>("javascript");
    QTest::newRow("Javascript") << QVariant("javascript") << true;
    QTest::newRow("plain text") << QVariant() << false;
}

void TestScriptWidget::optionWidgetKnowsItsColumnsAndLanguage()
{
    QFETCH(QVariant, options);
    QFETCH(bool, javascript);

    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{"Name", ""}, {"a", "1"}})));
    Parameter p(ParameterType::Script, QStringLiteral("Script"), QStringLiteral("Script"),
                node.get());
    p.setOptions(options);
    p.setValue(QStringLiteral("return $(Name) + $(2) + $(3);"));
    auto *w = static_cast<ScriptParameterWidget *>(createParameterWidget(&p, m_window.get()));
    WidgetSpies spies(w);
    w->updateValue();
    QCOMPARE(spies.total(), 0);
    ScriptWidget *editor = w->editor();
    QCOMPARE(editor->highlighter()->isJavascript(), javascript);
    // The unnamed second column is offered by its number.
    QCOMPARE(editor->menuReferences(), QStringList({"$(Name)", "$(2)"}));
    QCOMPARE(roleAt(editor, 0, 7), int(ScriptHighlighter::Column));
    QCOMPARE(roleAt(editor, 0, 17), int(ScriptHighlighter::Column));
    QCOMPARE(roleAt(editor, 0, 24), int(ScriptHighlighter::UnknownColumn));
    QCOMPARE(roleAt(editor, 0, 0), javascript ? int(ScriptHighlighter::Keyword) : NoRole);
}

TABULON_TEST_MAIN(TestScriptWidget)

#include "tst_scriptwidget.moc"
