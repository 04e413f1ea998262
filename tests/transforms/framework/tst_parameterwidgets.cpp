#include "flow/flowitem.h"
#include "graph/graphscene.h"
#include "graph/undo.h"
#include "testutil.h"
#include "transforms/framework/columnwidgets.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameterwidget.h"
#include "transforms/framework/parameterwidgets.h"
#include "transforms/framework/scriptwidget.h"
#include "transforms/framework/tablewidgets.h"
#include "widgetspies.h"

#include <QApplication>
#include <QComboBox>
#include <QRadioButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

// Whether the caption is drawn in the warning colour: some glyph pixel close to it.
bool paintsWarningColour(QWidget *w)
{
    const QImage image = w->grab().toImage();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (c.red() > 220 && c.green() > 20 && c.green() < 90 && c.blue() < 40)
                return true;
        }
    }
    return false;
}

Parameter *makeParameter(ParameterType type, const QVariant &value,
                         const QVariant &options = QVariant())
{
    auto *p = new Parameter(type, QStringLiteral("Key"), QStringLiteral("Caption"), value, options);
    return p;
}

} // namespace

// The widgets of the options that hold plain values: each shows its option's value without
// looking like an edit, writes it back unchanged, and turns the user's edits into the value,
// one undo step and the right signal.
class TestParameterWidgets : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void roundTrip_data();
    void roundTrip();
    void everyKindHasItsWidget_data();
    void everyKindHasItsWidget();

    void typingGoesThroughTheDelay();
    void controlCharacterIsInsertedAsAnEdit();
    void editRecordsOneUndoStep_data();
    void editRecordsOneUndoStep();
    void warnColourWhileCheckedAndEnabled();
    void disabledWidgetKeepsItsValue();
    void spinBoxStepsAndReturn_data();
    void spinBoxStepsAndReturn();
    void radioChoiceRunsAtOnce();
    void choiceTipsFollowTheOption();
    void comboChoiceWaitsForThePause();
    void charNamesAndTypedCharacters_data();
    void charNamesAndTypedCharacters();
    void localeFromLanguageAndCountry();
    void pendingTextIsResolvedBeforeShowing();
    void scriptInsertsColumnVariable();

private:
    std::unique_ptr<QWidget> m_window;
};

void TestParameterWidgets::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(400, 300);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestParameterWidgets::cleanup()
{
    m_window.reset();
}

void TestParameterWidgets::roundTrip_data()
{
    QTest::addColumn<ParameterType>("type");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("options");

    const QStringList three
        = {QStringLiteral("Left"), QStringLiteral("Right"), QStringLiteral("Both")};
    const QStringList long2 = {QStringLiteral("Number/Boolean/String"), QStringLiteral("String")};
    QTest::newRow("bool on") << ParameterType::Bool << QVariant(true) << QVariant();
    QTest::newRow("bool off") << ParameterType::Bool << QVariant(false) << QVariant();
    QTest::newRow("selection radios")
        << ParameterType::Selection << QVariant(three.at(2)) << QVariant(three);
    QTest::newRow("selection combo")
        << ParameterType::Selection << QVariant(long2.at(1)) << QVariant(long2);
    QTest::newRow("text with separators") << ParameterType::Text
                                          << QVariant(QStringLiteral("a^b\x1f"
                                                                     "c\td"))
                                          << QVariant();
    QTest::newRow("text empty") << ParameterType::Text << QVariant(QString()) << QVariant();
    QTest::newRow("int") << ParameterType::Int << QVariant(4711) << QVariant();
    QTest::newRow("char space") << ParameterType::Char << QVariant(QChar(' ')) << QVariant();
    QTest::newRow("char tab") << ParameterType::Char << QVariant(QChar('\t')) << QVariant();
    QTest::newRow("char S") << ParameterType::Char << QVariant(QChar('S')) << QVariant();
    QTest::newRow("script") << ParameterType::Script
                            << QVariant(QStringLiteral("return $(Name) + 1;\n// end"))
                            << QVariant();
    QTest::newRow("real many decimals")
        << ParameterType::Real << QVariant(12.3456789) << QVariant();
    QTest::newRow("real whole") << ParameterType::Real << QVariant(50.0) << QVariant();
    QTest::newRow("long text") << ParameterType::LongText
                               << QVariant(QStringLiteral("one\ntwo\n\nthree")) << QVariant();
    // A dataset rule, and the rules of a column that the option's input doesn't have.
    const QVariantList datasetRules {QVariant(QVariantList {3, 10, 2, true})};
    const QVariantList columnRules {QVariant(QVariantList {11, 5, 0, true})};
    const QVariantList column {QVariant(QVariantList {1, 1}), 3, QVariant(columnRules)};
    QTest::newRow("verify rules") << ParameterType::VerifyRules
                                  << QVariant(QVariantList {QVariant(datasetRules),
                                                            QVariant(QVariantList {column})})
                                  << QVariant();
    QTest::newRow("label") << ParameterType::Label << QVariant() << QVariant();
    QTest::newRow("date") << ParameterType::Date << QVariant(QDate(2023, 2, 28)) << QVariant();
    QTest::newRow("locale") << ParameterType::Locale << QVariant(QLocale(QStringLiteral("de_CH")))
                            << QVariant();
    QTest::newRow("locale default") << ParameterType::Locale << QVariant() << QVariant();
}

void TestParameterWidgets::roundTrip()
{
    QFETCH(ParameterType, type);
    QFETCH(QVariant, value);
    QFETCH(QVariant, options);

    std::unique_ptr<Parameter> p(makeParameter(type, value, options));
    const QString before = p->toText();
    ParameterWidget *w = createParameterWidget(p.get(), m_window.get());
    QVERIFY(w);
    WidgetSpies spies(w->widget());
    w->updateValue();
    QCOMPARE(spies.total(), 0);
    w->saveValue();
    QCOMPARE(p->toText(), before);
    QCOMPARE(p->summary(),
             std::unique_ptr<Parameter>(makeParameter(type, value, options))->summary());
    QCOMPARE(spies.total(), 0);
}

void TestParameterWidgets::everyKindHasItsWidget_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("className");
    QTest::addColumn<int>("layout");
    QTest::addColumn<bool>("columnRelated");
    const char *names[] = {"SingleColumnFilteredParameterWidget",
                           "MultipleColumnsParameterWidget",
                           "SortColumnsParameterWidget",
                           "FilterColumnsParameterWidget",
                           "ReorderColumnsParameterWidget",
                           "BoolParameterWidget",
                           "SelectionParameterWidget",
                           "TextParameterWidget",
                           "IntParameterWidget",
                           "CharParameterWidget",
                           "IfParameterWidget",
                           "MultipleColumnsParameterWidget",
                           "ScriptParameterWidget",
                           "RenameColumnsParameterWidget",
                           "SplitRowsParameterWidget",
                           "UniqueParameterWidget",
                           "ReplaceTermsParameterWidget",
                           "RealParameterWidget",
                           "LongTextParameterWidget",
                           "VerifyRulesParameterWidget",
                           "LabelParameterWidget",
                           "DateParameterWidget",
                           "SortColumnsParameterWidget",
                           "LocaleParameterWidget"};
    const QList<int> rows = {0, 6, 7, 8, 9, 17, 18, 20, 21, 22, 23};
    const QList<int> columnKinds = {0, 1, 2, 3, 4, 10, 11, 12, 13, 14, 15, 19, 22};
    for (int kind = 0; kind < 24; ++kind) {
        const ParameterLayout layout = kind == 5 ? ParameterLayout::Check
            : rows.contains(kind)                ? ParameterLayout::Row
                                                 : ParameterLayout::Block;
        QTest::newRow(names[kind]) << kind << QString::fromLatin1(names[kind]) << int(layout)
                                   << columnKinds.contains(kind);
    }
}

void TestParameterWidgets::everyKindHasItsWidget()
{
    QFETCH(int, kind);
    QFETCH(QString, className);
    QFETCH(int, layout);
    QFETCH(bool, columnRelated);

    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{"A", "B"}, {"1", "2"}})));
    const auto type = static_cast<ParameterType>(kind);
    QCOMPARE(Parameter::isColumnRelatedType(type), columnRelated);
    std::unique_ptr<Parameter> p(
        columnRelated ? new Parameter(type, QStringLiteral("K"), QStringLiteral("L"), node.get())
                      : new Parameter(type, QStringLiteral("K"), QStringLiteral("L"), QVariant()));
    ParameterWidget *w = createParameterWidget(p.get(), m_window.get());
    QVERIFY(w);
    QCOMPARE(QString::fromLatin1(w->widget()->metaObject()->className()), className);
    QCOMPARE(w->widget()->parentWidget(), m_window.get());
    QCOMPARE(w->key(), QStringLiteral("K"));
    QCOMPARE(int(parameterLayout(p.get())), layout);
    QCOMPARE(p->isDisplayed(), kind != int(ParameterType::Label));
    // The panel connects these by name.
    for (const char *signature :
         {"processNow()", "parameterValueChanged(bool)", "userInteraction()"})
        QVERIFY2(w->widget()->metaObject()->indexOfSignal(signature) >= 0, signature);
}

void TestParameterWidgets::typingGoesThroughTheDelay()
{
    std::unique_ptr<Parameter> p(makeParameter(ParameterType::Text, QStringLiteral("x")));
    auto *w = static_cast<TextParameterWidget *>(createParameterWidget(p.get(), m_window.get()));
    WidgetSpies spies(w);
    w->setCursorPosition(1);
    QTest::keyClicks(w, QStringLiteral("yz"));
    QCOMPARE(p->toString(), QStringLiteral("xyz"));
    QCOMPARE(spies.changed.count(), 2);
    for (const QList<QVariant> &arguments : qAsConst(spies.changed))
        QCOMPARE(arguments.at(0).toBool(), false);
    QCOMPARE(spies.now.count(), 0);
    QTest::keyClick(w, Qt::Key_Return);
    QCOMPARE(spies.now.count(), 1);
    QCOMPARE(spies.changed.count(), 2);
}

void TestParameterWidgets::controlCharacterIsInsertedAsAnEdit()
{
    std::unique_ptr<Parameter> p(makeParameter(ParameterType::Text, QStringLiteral("ab")));
    auto *w = static_cast<TextParameterWidget *>(createParameterWidget(p.get(), m_window.get()));
    WidgetSpies spies(w);
    w->setCursorPosition(1);
    w->insertControlChar(QChar('\t'));
    QCOMPARE(p->toString(), QStringLiteral("a\tb"));
    QCOMPARE(spies.changed.count(), 1);
    QVERIFY(LineEditWithInsertControlChars::controlChars().size() >= 3);
}

void TestParameterWidgets::editRecordsOneUndoStep_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("hint");
    QTest::newRow("labelled") << QStringLiteral("New name") << QStringLiteral("'New name' change");
    QTest::newRow("no label") << QString() << QStringLiteral("change");
}

void TestParameterWidgets::editRecordsOneUndoStep()
{
    QFETCH(QString, label);
    QFETCH(QString, hint);

    GraphScene scene;
    UndoHistory history;
    UndoHistory::setCurrent(&history);
    history.setLiveScene(&scene);
    Parameter p(ParameterType::Bool, QStringLiteral("Key"), label, false);
    auto *w = static_cast<BoolParameterWidget *>(createParameterWidget(&p, m_window.get()));
    const int steps = history.count();
    QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(5, w->height() / 2));
    UndoHistory::setCurrent(nullptr);
    QCOMPARE(p.toBool(), true);
    QCOMPARE(history.count(), steps + 1);
    QVERIFY(history.canUndo());
    QCOMPARE(history.undoHint(), hint);
}

void TestParameterWidgets::warnColourWhileCheckedAndEnabled()
{
    Parameter p(ParameterType::Bool, QStringLiteral("Key"), QStringLiteral("disable filtering"),
                false);
    p.setWarnWhenSet(true);
    Parameter plain(ParameterType::Bool, QStringLiteral("Other"), QStringLiteral("other"), true);
    auto *w = static_cast<BoolParameterWidget *>(createParameterWidget(&p, m_window.get()));
    auto *other = static_cast<BoolParameterWidget *>(createParameterWidget(&plain, m_window.get()));
    const QString warn = QStringLiteral("BoolParameterWidget{ color: #fc3300; }");
    QCOMPARE(w->styleSheet(), QString());
    QCOMPARE(other->styleSheet(), QString());

    QSignalSpy changed(w, &BoolParameterWidget::parameterValueChanged);
    QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(5, w->height() / 2));
    QCOMPARE(p.toBool(), true);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(w->styleSheet(), warn);
    QVERIFY(paintsWarningColour(w));
    QVERIFY(!paintsWarningColour(other));

    w->updateEnabled(false);
    QCOMPARE(w->styleSheet(), QString());
    m_window->setEnabled(false); // a disabled panel greys it as well
    w->updateEnabled(true);
    QCOMPARE(w->styleSheet(), QString());
    m_window->setEnabled(true);
    QCOMPARE(w->styleSheet(), warn);

    p.setValue(false);
    w->updateValue();
    QCOMPARE(w->styleSheet(), QString());
}

void TestParameterWidgets::disabledWidgetKeepsItsValue()
{
    Parameter p(ParameterType::Int, QStringLiteral("Key"), QStringLiteral("Count"), 7);
    ParameterWidget *w = createParameterWidget(&p, m_window.get());
    QSignalSpy changed(w->widget(), SIGNAL(parameterValueChanged(bool)));
    w->updateEnabled(false);
    QVERIFY(!w->widget()->isEnabled());
    QTest::keyClick(w->widget(), Qt::Key_Up);
    w->saveValue();
    QCOMPARE(p.toInt(), 7);
    QCOMPARE(changed.count(), 0);
    w->updateEnabled(true);
    QVERIFY(w->widget()->isEnabled());
    QCOMPARE(p.toInt(), 7);
}

void TestParameterWidgets::spinBoxStepsAndReturn_data()
{
    QTest::addColumn<ParameterType>("type");
    QTest::newRow("int") << ParameterType::Int;
    QTest::newRow("real") << ParameterType::Real;
}

void TestParameterWidgets::spinBoxStepsAndReturn()
{
    QFETCH(ParameterType, type);
    Parameter p(type, QStringLiteral("Key"), QStringLiteral("Size"),
                type == ParameterType::Int ? QVariant(9) : QVariant(9.0));
    p.setMinimumInt(1);
    p.setMaximumInt(10);
    p.setMinimumReal(1.0);
    p.setMaximumReal(10.0);
    p.setSuffix(QStringLiteral("rows"));
    ParameterWidget *w = createParameterWidget(&p, m_window.get());
    auto *spin = qobject_cast<QAbstractSpinBox *>(w->widget());
    QVERIFY(spin);
    QVERIFY(spin->text().endsWith(QStringLiteral(" rows")));
    WidgetSpies spies(spin);
    QTest::keyClick(spin, Qt::Key_Up);
    QCOMPARE(p.toReal(), 10.0);
    QTest::keyClick(spin, Qt::Key_Up); // at the maximum: no change, no signal
    QCOMPARE(p.toReal(), 10.0);
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(spies.changed.at(0).at(0).toBool(), false);
    QTest::keyClick(spin, Qt::Key_Return);
    QCOMPARE(spies.now.count(), 1);
}

void TestParameterWidgets::radioChoiceRunsAtOnce()
{
    const QStringList options = {QStringLiteral("Ascending"), QStringLiteral("Descending")};
    Parameter p(ParameterType::Selection, QStringLiteral("Order"), QStringLiteral("Order"),
                options.at(0), options);
    auto *w = static_cast<SelectionParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QVERIFY(w->usesRadioButtons());
    QVERIFY(w->radioButtons().at(0)->isChecked());
    WidgetSpies spies(w);
    QTest::mouseClick(w->radioButtons().at(1), Qt::LeftButton, {},
                      QPoint(5, w->radioButtons().at(1)->height() / 2));
    QCOMPARE(p.toString(), options.at(1));
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(spies.changed.at(0).at(0).toBool(), true);
}

void TestParameterWidgets::choiceTipsFollowTheOption()
{
    const QStringList options = {QStringLiteral("Column"), QStringLiteral("Constant")};
    Parameter p(ParameterType::Selection, QStringLiteral("Type1"), QStringLiteral("Value 1 type"),
                options.at(0), options);
    p.setToolTip(QStringLiteral("Select whether the first value is a column or a constant."));
    p.setChoiceToolTips({QStringLiteral("Set the first value as a column."),
                         QStringLiteral("Set the first value as a constant.")});
    auto *w = static_cast<SelectionParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QVERIFY(w->usesRadioButtons());
    QCOMPARE(w->radioButtons().at(1)->toolTip(), QString("Set the first value as a constant."));

    // The panel passes on new states after each edit; the tips reworded meanwhile follow.
    p.setToolTip(QStringLiteral("Select whether the value is a column or a constant."));
    p.setChoiceToolTips({QStringLiteral("Set the value as a column."),
                         QStringLiteral("Set the value as a constant.")});
    w->updateEnabled(true);
    QCOMPARE(w->QWidget::toolTip(), p.toolTip());
    QCOMPARE(w->radioButtons().at(0)->toolTip(), QString("Set the value as a column."));
}

void TestParameterWidgets::comboChoiceWaitsForThePause()
{
    const QStringList options = {QStringLiteral("Number/Boolean/String"), QStringLiteral("String"),
                                 QStringLiteral("Something else entirely")};
    Parameter p(ParameterType::Selection, QStringLiteral("Type_As"),
                QStringLiteral("Type columns as"), options.at(0), options);
    auto *w = static_cast<SelectionParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QVERIFY(!w->usesRadioButtons());
    WidgetSpies spies(w);
    QTest::keyClick(w->comboBox(), Qt::Key_Down);
    QCOMPARE(p.toString(), options.at(1));
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(spies.changed.at(0).at(0).toBool(), false);
    QTest::keyClick(w->comboBox(), Qt::Key_Down);
    QCOMPARE(p.toString(), options.at(2));
    QCOMPARE(spies.changed.count(), 2);
    QCOMPARE(spies.changed.at(1).at(0).toBool(), false);
    QCOMPARE(spies.now.count(), 0);
}

void TestParameterWidgets::charNamesAndTypedCharacters_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QChar>("expected");
    QTest::newRow("named space") << QStringLiteral("Space") << QChar(' ');
    QTest::newRow("named tab, any case") << QStringLiteral("tab") << QChar('\t');
    QTest::newRow("one character") << QStringLiteral("s") << QChar('s');
    QTest::newRow("first of several") << QStringLiteral("#x") << QChar('#');
}

void TestParameterWidgets::charNamesAndTypedCharacters()
{
    QFETCH(QString, typed);
    QFETCH(QChar, expected);
    Parameter p(ParameterType::Char, QStringLiteral("Pad_With"), QStringLiteral("Pad with"), '0');
    auto *w = static_cast<CharParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QCOMPARE(w->comboBox()->currentText(), QStringLiteral("0"));
    WidgetSpies spies(w);
    w->comboBox()->lineEdit()->selectAll();
    QTest::keyClicks(w->comboBox()->lineEdit(), typed);
    QCOMPARE(p.toChar(), expected);
    QCOMPARE(spies.changed.count(), typed.size());
    QCOMPARE(spies.changed.last().at(0).toBool(), false);
}

void TestParameterWidgets::localeFromLanguageAndCountry()
{
    Parameter p(ParameterType::Locale, QStringLiteral("Locale"), QStringLiteral("Locale"),
                QVariant());
    auto *w = static_cast<LocaleParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QCOMPARE(w->languageBox()->currentText(), QStringLiteral("Default"));
    QVERIFY(!w->countryBox()->isEnabled());
    WidgetSpies spies(w);
    const int french = w->languageBox()->findData(int(QLocale::French));
    QVERIFY(french > 0);
    w->languageBox()->setCurrentIndex(french);
    emit w->languageBox()->activated(french);
    QCOMPARE(p.toLocale().language(), QLocale::French);
    QVERIFY(w->countryBox()->findData(int(QLocale::Canada)) >= 0);
    const int canada = w->countryBox()->findData(int(QLocale::Canada));
    w->countryBox()->setCurrentIndex(canada);
    emit w->countryBox()->activated(canada);
    QCOMPARE(p.toText(), QStringLiteral("fr_CA"));
    QCOMPARE(spies.changed.count(), 2);
    QCOMPARE(p.summary(), QStringLiteral("French (Canada)"));
}

void TestParameterWidgets::pendingTextIsResolvedBeforeShowing()
{
    Parameter p(ParameterType::Text, QStringLiteral("Key"), QStringLiteral("Caption"),
                QStringLiteral("default"));
    p.setPendingText(Parameter::encodeText(QStringLiteral("from the document")), 80);
    auto *w = static_cast<TextParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QCOMPARE(w->text(), QStringLiteral("from the document"));
    QVERIFY(!p.hasPendingText());
}

void TestParameterWidgets::scriptInsertsColumnVariable()
{
    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{"Name", "Total Cost"}, {"a", "1"}})));
    Parameter p(ParameterType::Script, QStringLiteral("Script"), QStringLiteral("Script"),
                node.get());
    p.setValue(QStringLiteral("return ;"));
    auto *w = static_cast<ScriptParameterWidget *>(createParameterWidget(&p, m_window.get()));
    QCOMPARE(w->variables()->count(), 3);
    QCOMPARE(w->variables()->itemText(2), QStringLiteral("$(Total Cost)"));
    WidgetSpies spies(w);
    QTextCursor cursor = w->editor()->textCursor();
    cursor.setPosition(7);
    w->editor()->setTextCursor(cursor);
    emit w->variables()->activated(2);
    QCOMPARE(p.toString(), QStringLiteral("return $(Total Cost);"));
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(w->variables()->currentIndex(), 0);
    QTest::keyClicks(w->editor(), QStringLiteral("x"));
    QCOMPARE(p.toString(), QStringLiteral("return $(Total Cost)x;"));
    QCOMPARE(spies.changed.count(), 2);
}

TABULON_TEST_MAIN(TestParameterWidgets)

#include "tst_parameterwidgets.moc"
