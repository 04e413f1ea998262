#include "testutil.h"

#include "graph/graphscene.h"
#include "graph/node.h"
#include "shell/delaytimer.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"
#include "workbench/actionpane.h"
#include "workbench/widgets.h"

#include <QApplication>
#include <QSignalSpy>
#include <QSplitter>
#include <QtTest>

Q_DECLARE_METATYPE(const Transform *)

class TestActionPane : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void keywordFilterWaitsForPause();
    void keywordResetsCategory();
    void categoryRows_data();
    void categoryRows();
    void categoryListsItsTransforms_data();
    void categoryListsItsTransforms();
    void recentListKeepsThirtyNames();
    void lastUsedListsNewestFirst();
    void mostUsedListsHighestCountFirst();
    void clickEmitsPrototype();
    void wrongSelectionIsRefused_data();
    void wrongSelectionIsRefused();
    void grayButtonsFollowSelection();
    void toolTipTellsWhatToSelect();
    void hoverIsReported();
    void buttonTextsAreNeverCut();

private:
    static QStringList distinctTypeNames(int count);
    TransformButton *buttonFor(ActionPane &pane, const QString &typeName) const;

    QStringList m_messages;
};

void TestActionPane::initTestCase()
{
    qRegisterMetaType<const Transform *>();
    // The keyword filter's pause ends when a test fires it, not on the wall clock.
    DelayTimer::setManualClock(true);
}

void TestActionPane::init()
{
    Settings *settings = Settings::instance();
    settings->remove(QStringLiteral("recent_transforms_added"));
    settings->remove(QStringLiteral("all_transforms_added_count"));
    settings->setGrayLeftPaneButtons(false);
    settings->setShowAdvancedTransforms(false);
    m_messages.clear();
    MessageBoxes::setHandler([this](QMessageBox::Icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons, QMessageBox::StandardButton) {
        m_messages.append(text);
        return QMessageBox::Ok;
    });
}

void TestActionPane::cleanup()
{
    MessageBoxes::setHandler(nullptr);
}

QStringList TestActionPane::distinctTypeNames(int count)
{
    ActionPane pane;
    QStringList names;
    for (const TransformButton *button : pane.transformButtons())
        names.append(button->prototype()->typeName());
    return names.mid(0, count);
}

TransformButton *TestActionPane::buttonFor(ActionPane &pane, const QString &typeName) const
{
    for (TransformButton *button : pane.transformButtons())
        if (button->prototype()->typeName() == typeName)
            return button;
    return nullptr;
}

void TestActionPane::keywordFilterWaitsForPause()
{
    ActionPane pane;
    pane.filterEdit()->setDelay(150);
    pane.show();
    const QList<const Transform *> before = pane.shownTransforms();
    QVERIFY(before.size() > 5);

    QTest::keyClicks(pane.filterEdit(), QStringLiteral("case"));
    QCOMPARE(pane.shownTransforms(), before);
    QVERIFY(pane.filterEdit()->isPending());

    QCOMPARE(DelayTimer::firePending(), 1);
    QVERIFY(pane.shownTransforms() != before);
    const QList<const Transform *> after = pane.shownTransforms();
    QVERIFY(!after.isEmpty());
    bool hasCase = false;
    for (const Transform *transform : after) {
        QVERIFY(transform->keywordMatchCount({QStringLiteral("case")}) > 0);
        hasCase = hasCase || transform->typeName() == QLatin1String("Case");
    }
    QVERIFY(hasCase);

    // Clearing the words gives back the whole category.
    pane.filterEdit()->clear();
    QCOMPARE(DelayTimer::firePending(), 1);
    QCOMPARE(pane.shownTransforms(), before);
}

void TestActionPane::keywordResetsCategory()
{
    ActionPane pane;
    pane.filterEdit()->setDelay(0);
    pane.categoryCombo()->setCurrentIndex(3);
    QSignalSpy changed(pane.categoryCombo(), QOverload<int>::of(&QComboBox::currentIndexChanged));
    QTest::keyClicks(pane.filterEdit(), QStringLiteral("ca"));
    DelayTimer::firePending();
    QCOMPARE(pane.categoryCombo()->currentIndex(), 0);
    // Signals are held while the combo goes back, so the words stay.
    QCOMPARE(changed.count(), 0);
    QCOMPARE(pane.filterEdit()->text(), QStringLiteral("ca"));
}

void TestActionPane::categoryRows_data()
{
    QTest::addColumn<int>("distinct");
    QTest::addColumn<bool>("last10");
    QTest::addColumn<bool>("last15");
    QTest::addColumn<bool>("most10");
    QTest::newRow("9 names") << 9 << false << false << false;
    QTest::newRow("10 names") << 10 << true << false << true;
    QTest::newRow("12 names") << 12 << true << false << true;
    QTest::newRow("15 names") << 15 << true << true << true;
}

void TestActionPane::categoryRows()
{
    QFETCH(int, distinct);
    QFETCH(bool, last10);
    QFETCH(bool, last15);
    QFETCH(bool, most10);
    ActionPane pane;
    const QStringList names = distinctTypeNames(distinct);
    QCOMPARE(names.size(), distinct);
    for (const QString &name : names)
        pane.recordTransformAdded(name);
    // Adding a name again neither adds a row nor removes one.
    pane.recordTransformAdded(names.first());

    pane.show();
    pane.categoryCombo()->showPopup();
    pane.categoryCombo()->hidePopup();
    QComboBox *combo = pane.categoryCombo();
    QCOMPARE(combo->findData(-1) >= 0, last10);
    QCOMPARE(combo->findData(-2) >= 0, last15);
    QCOMPARE(combo->findData(-6) >= 0, most10);
    QCOMPARE(combo->findData(-3), -1);
    QCOMPARE(combo->itemText(0), QStringLiteral("All transforms"));
    if (last10)
        QCOMPARE(combo->itemText(combo->findData(-1)), QStringLiteral("10 last used"));
    if (most10)
        QCOMPARE(combo->itemText(combo->findData(-6)), QStringLiteral("10 most used"));
}

void TestActionPane::categoryListsItsTransforms_data()
{
    QTest::addColumn<int>("category");
    QTest::addColumn<bool>("advanced");
    QTest::addColumn<QString>("names");
    QTest::newRow("merge") << int(CategoryMerge) << true
                           << "Cross|Interpolate|Intersect|Join|Lookup|Stack|Subtract";
    QTest::newRow("column") << int(CategoryColumn) << true
                            << "Calculate|Compare Cols|Concat Cols|Copy Cols|Gather|If|Moving|"
                               "New Col|Offset|Pseudonym|Remove Cols|Rename Cols|Reorder Cols|"
                               "Reshape|Split Col|Split Name|Spread";
    QTest::newRow("row") << int(CategoryRow) << true
                         << "Concat Rows|Dedupe|Filter|Header|New Rows|Row Num|Sample|Sequence|"
                            "Slice|Sort|Split Rows|Unique";
    QTest::newRow("format") << int(CategoryFormat) << true
                            << "Case|Chop|DateTime Format|Decode|Extract|Fill|Insert|Num Base|"
                               "Num Format|Pad|Replace|Scale|Slide|Unfill|Whitespace";
    QTest::newRow("analysis") << int(CategoryAnalysis) << true
                              << "Cluster|Correlate|Count|Difference|Ngram|Pivot|Stats|Summary|"
                                 "Total";
    QTest::newRow("analysis, advanced hidden") << int(CategoryAnalysis) << false << "Count|Summary";
    QTest::newRow("other") << int(CategoryOther) << true
                           << "Clone|Hash|Impute|Javascript|Outliers|Random|Stamp|Substitute|"
                              "Transpose|Units|UUID|Verify";
}

void TestActionPane::categoryListsItsTransforms()
{
    QFETCH(int, category);
    QFETCH(bool, advanced);
    QFETCH(QString, names);
    Settings::instance()->setShowAdvancedTransforms(advanced);
    ActionPane pane;
    pane.categoryCombo()->setCurrentIndex(pane.categoryCombo()->findData(category));
    QStringList shown;
    for (const Transform *transform : pane.shownTransforms())
        shown.append(transform->displayName());
    QCOMPARE(shown.join('|'), names);

    pane.categoryCombo()->setCurrentIndex(pane.categoryCombo()->findData(int(CategoryAll)));
    if (advanced)
        QCOMPARE(pane.shownTransforms().size(), 72);
}

void TestActionPane::recentListKeepsThirtyNames()
{
    ActionPane pane;
    const QStringList names = distinctTypeNames(31);
    QCOMPARE(names.size(), 31);
    for (int i = 0; i < 30; ++i)
        pane.recordTransformAdded(names.at(i));
    QCOMPARE(ActionPane::recentTransforms(), names.mid(0, 30));

    // A name already there moves to the end; nothing drops off.
    pane.recordTransformAdded(names.at(5));
    QStringList expected = names.mid(0, 30);
    expected.removeAt(5);
    expected.append(names.at(5));
    QCOMPARE(ActionPane::recentTransforms(), expected);

    // The 31st new name pushes out the oldest.
    pane.recordTransformAdded(names.at(30));
    expected.removeFirst();
    expected.append(names.at(30));
    QCOMPARE(ActionPane::recentTransforms(), expected);
    QCOMPARE(ActionPane::recentTransforms().size(), 30);

    const QMap<QString, int> counts = ActionPane::transformCounts();
    QCOMPARE(counts.size(), 31);
    QCOMPARE(counts.value(names.at(5)), 2);
    QCOMPARE(counts.value(names.at(0)), 1);
}

void TestActionPane::lastUsedListsNewestFirst()
{
    ActionPane pane;
    const QStringList names = distinctTypeNames(12);
    for (const QString &name : names)
        pane.recordTransformAdded(name);
    pane.categoryCombo()->showPopup();
    pane.categoryCombo()->hidePopup();
    pane.categoryCombo()->setCurrentIndex(pane.categoryCombo()->findData(-1));
    QStringList shown;
    for (const Transform *transform : pane.shownTransforms())
        shown.append(transform->typeName());
    QStringList expected;
    for (int i = 11; i >= 2; --i)
        expected.append(names.at(i));
    QCOMPARE(shown, expected);
}

void TestActionPane::mostUsedListsHighestCountFirst()
{
    ActionPane pane;
    const QStringList names = distinctTypeNames(10);
    for (const QString &name : names)
        pane.recordTransformAdded(name);
    for (int i = 0; i < 3; ++i)
        pane.recordTransformAdded(names.at(7));
    pane.recordTransformAdded(names.at(4));
    pane.categoryCombo()->showPopup();
    pane.categoryCombo()->hidePopup();
    pane.categoryCombo()->setCurrentIndex(pane.categoryCombo()->findData(-6));
    const QList<const Transform *> shown = pane.shownTransforms();
    QCOMPARE(shown.size(), 10);
    QCOMPARE(shown.at(0)->typeName(), names.at(7));
    QCOMPARE(shown.at(1)->typeName(), names.at(4));
}

void TestActionPane::clickEmitsPrototype()
{
    ActionPane pane;
    pane.show();
    GraphScene scene;
    pane.setSelection({addTextInput(scene, "a\n1\n", QPointF())});
    QSignalSpy clicked(&pane, &ActionPane::transformClicked);
    TransformButton *button = buttonFor(pane, QStringLiteral("Case"));
    QVERIFY(button);
    QVERIFY(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    QCOMPARE(clicked.first().first().value<const Transform *>(), button->prototype());
    QVERIFY(m_messages.isEmpty());
    QVERIFY(Settings::instance()->tipShown(QStringLiteral("tip_transform_button")));
}

void TestActionPane::wrongSelectionIsRefused_data()
{
    QTest::addColumn<int>("selected");
    QTest::addColumn<QString>("message");
    QTest::newRow("none") << 0
                          << "No items selected.\nTo add a 'Case' transform you need to first "
                             "select just 1 input or transform item in the Center pane.";
    QTest::newRow("two") << 2
                         << "2 input or transform item(s) selected.\nTo add a 'Case' transform "
                            "you need to first select just 1 input or transform item in the "
                            "Center pane.";
}

void TestActionPane::wrongSelectionIsRefused()
{
    QFETCH(int, selected);
    QFETCH(QString, message);
    ActionPane pane;
    pane.show();
    GraphScene scene;
    QList<QGraphicsItem *> selection;
    for (int i = 0; i < selected; ++i)
        selection.append(addTextInput(scene, "a\n1\n", QPointF(0, 200 * i)));
    pane.setSelection(selection);
    QSignalSpy clicked(&pane, &ActionPane::transformClicked);
    TransformButton *button = buttonFor(pane, QStringLiteral("Case"));
    QVERIFY(button && button->isEnabled());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(m_messages, QStringList {message});
}

void TestActionPane::grayButtonsFollowSelection()
{
    Settings::instance()->setGrayLeftPaneButtons(true);
    ActionPane pane;
    TransformButton *button = buttonFor(pane, QStringLiteral("Case"));
    QVERIFY(button);
    pane.setSelection({});
    QVERIFY(!button->isEnabled());
    QVERIFY(!pane.toFileButton()->isEnabled());
    GraphScene scene;
    pane.setSelection({addTextInput(scene, "a\n1\n", QPointF())});
    QVERIFY(button->isEnabled());
    QVERIFY(pane.toFileButton()->isEnabled());
    pane.setInteractionAllowed(false);
    QVERIFY(!button->isEnabled());
    QVERIFY(!pane.fromFileButton()->isEnabled());
    pane.setInteractionAllowed(true);
    QVERIFY(button->isEnabled());
}

void TestActionPane::toolTipTellsWhatToSelect()
{
    ActionPane pane;
    pane.show();
    for (const TransformButton *button : pane.transformButtons()) {
        const Transform *prototype = button->prototype();
        const QString hidden = TransformButton::toolTipFor(prototype, false);
        QVERIFY(hidden.startsWith(prototype->description()));
        QVERIFY(hidden.contains(prototype->inputHint()));
        QCOMPARE(hidden.contains(QStringLiteral("Check 'show advanced' (above) to see all "
                                                "transforms.")),
                 prototype->isAdvanced());
        QVERIFY(!TransformButton::toolTipFor(prototype, true)
                     .contains(QStringLiteral("show advanced")));
        if (button->isVisible())
            QCOMPARE(button->toolTip(), hidden);
    }
    QCOMPARE(pane.fromFileButton()->toolTip().left(38),
             QStringLiteral("Input a dataset from a file. (Alt+I)\n\n"));
}

void TestActionPane::hoverIsReported()
{
    ActionPane pane;
    pane.show();
    TransformButton *button = buttonFor(pane, QStringLiteral("Case"));
    QSignalSpy hover(&pane, &ActionPane::hoverStatusChanged);
    QEvent enter(QEvent::Enter);
    QApplication::sendEvent(button, &enter);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(button, &leave);
    QCOMPARE(hover.count(), 2);
    QCOMPARE(hover.at(0).at(0).toBool(), true);
    QCOMPARE(hover.at(0).at(1).value<const Transform *>(), button->prototype());
    QCOMPARE(hover.at(1).at(0).toBool(), false);
}

void TestActionPane::buttonTextsAreNeverCut()
{
    // In a splitter, as in the window, the pane starts wide enough for every name, also for
    // the buttons that only a keyword or 'show advanced' brings up.
    QSplitter splitter;
    auto *pane = new ActionPane(&splitter);
    splitter.addWidget(pane);
    splitter.addWidget(new QWidget(&splitter));
    splitter.resize(1200, 700);
    splitter.show();
    QVERIFY(QTest::qWaitForWindowExposed(&splitter));
    int checked = 0;
    for (QToolButton *button : pane->findChildren<QToolButton *>()) {
        if (button->isVisible()) {
            QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->text()));
            ++checked;
        }
    }
    QVERIFY(checked > 10);
    pane->advancedCheck()->setChecked(true);
    QApplication::processEvents();
    for (TransformButton *button : pane->transformButtons())
        QVERIFY2(button->width() >= button->sizeHint().width(), qPrintable(button->text()));
}

TABULON_TEST_MAIN(TestActionPane)
#include "tst_actionpane.moc"
