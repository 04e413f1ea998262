#include "testutil.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"
#include "workbench/typeablemenu.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtTest>

#include <algorithm>

// The transform menu that narrows as the user types.
class TestTypeableMenu : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void filtered_data();
    void filtered();
    void typingNarrowsAndKeysChoose();
    void returnWithNothingMatchingChoosesNothing();
    void shortListComesBackToItsAnchor();

private:
    QList<Transform *> m_prototypes;
};

void TestTypeableMenu::initTestCase()
{
    m_prototypes = createTransformPrototypes();
    std::sort(m_prototypes.begin(), m_prototypes.end(), [](const Transform *a, const Transform *b) {
        return a->displayName().compare(b->displayName(), Qt::CaseInsensitive) < 0;
    });
}

void TestTypeableMenu::cleanupTestCase()
{
    qDeleteAll(m_prototypes);
}

void TestTypeableMenu::filtered_data()
{
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QStringList>("names");

    QTest::newRow("start of name before start of word")
        << "co" << QStringList {"Concat Cols", "Concat Rows", "Copy Cols",
                                "Remove Cols", "Rename Cols", "Reorder Cols"};
    QTest::newRow("any case") << "SORT" << QStringList {"Sort"};
    QTest::newRow("every word must be there")
        << "cols re" << QStringList {"Remove Cols", "Rename Cols", "Reorder Cols"};
    QTest::newRow("word starts only")
        << "rows" << QStringList {"Concat Rows", "New Rows", "Split Rows"};
    QTest::newRow("inside a word after the starts")
        << "ub" << QStringList {"Substitute", "Subtract"};
    QTest::newRow("nothing") << "qqz" << QStringList();
    QTest::newRow("spaces alone are no filter") << "  " << QStringList();
}

void TestTypeableMenu::filtered()
{
    QFETCH(QString, filter);
    QFETCH(QStringList, names);

    const QList<const Transform *> found = TypeableMenu::filtered(m_prototypes, filter);
    QStringList foundNames;
    for (const Transform *transform : found)
        foundNames.append(transform->displayName());
    if (filter.trimmed().isEmpty()) {
        QCOMPARE(found.size(), m_prototypes.size());
        return;
    }
    // The catalogue grows: every name found must hold the filter's words, and the names
    // listed must all be there in the order given.
    const QStringList words = filter.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &name : qAsConst(foundNames)) {
        for (const QString &word : words)
            QVERIFY2(name.contains(word, Qt::CaseInsensitive), qPrintable(name));
    }
    QStringList listed;
    for (const QString &name : qAsConst(foundNames)) {
        if (names.contains(name))
            listed.append(name);
    }
    QCOMPARE(listed, names);
    if (names.isEmpty())
        QVERIFY(foundNames.isEmpty());
}

void TestTypeableMenu::typingNarrowsAndKeysChoose()
{
    TypeableMenu menu(m_prototypes);
    QList<const Transform *> chosen;
    connect(&menu, &TypeableMenu::transformChosen, this,
            [&chosen](const Transform *prototype) { chosen.append(prototype); });
    menu.setFilterText(QStringLiteral("x"));
    menu.popup(QPoint(100, 100));
    QTRY_VERIFY(menu.isVisible());

    QTest::keyClick(&menu, Qt::Key_Backspace);
    QCOMPARE(menu.filterText(), QString());
    QCOMPARE(menu.matches().size(), m_prototypes.size());
    QTest::keyClicks(&menu, "sta");
    QCOMPARE(menu.filterText(), QStringLiteral("sta"));
    QCOMPARE(menu.matches().size(), 3);
    QCOMPARE(menu.matches().at(0)->displayName(), QStringLiteral("Stack"));
    QCOMPARE(menu.matches().at(1)->displayName(), QStringLiteral("Stamp"));
    QCOMPARE(menu.matches().at(2)->displayName(), QStringLiteral("Stats"));
    QCOMPARE(menu.activeAction()->text(), QStringLiteral("Stack"));

    QTest::keyClick(&menu, Qt::Key_Down);
    QCOMPARE(menu.activeAction()->text(), QStringLiteral("Stamp"));
    QTest::keyClick(&menu, Qt::Key_Return);
    QCOMPARE(chosen.size(), 1);
    QCOMPARE(chosen.first()->displayName(), QStringLiteral("Stamp"));
}

void TestTypeableMenu::shortListComesBackToItsAnchor()
{
    TypeableMenu menu(m_prototypes);
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    const QPoint anchor(room.left() + 50, room.bottom() - 200);
    menu.popupAt(anchor);
    QTRY_VERIFY(menu.isVisible());
    // The whole list doesn't fit under the anchor: it is pushed up, and stays on the screen.
    QVERIFY(menu.height() > 200);
    QVERIFY(menu.geometry().top() < anchor.y());
    QVERIFY(room.contains(menu.geometry()));

    QTest::keyClicks(&menu, "stack");
    QCOMPARE(menu.matches().size(), 1);
    QVERIFY(menu.height() < 200);
    QCOMPARE(menu.geometry().topLeft(), anchor);
}

void TestTypeableMenu::returnWithNothingMatchingChoosesNothing()
{
    TypeableMenu menu(m_prototypes);
    int chosen = 0;
    connect(&menu, &TypeableMenu::transformChosen, this, [&chosen] { ++chosen; });
    menu.popup(QPoint(100, 100));
    QTRY_VERIFY(menu.isVisible());
    QTest::keyClicks(&menu, "qqz");
    QVERIFY(menu.matches().isEmpty());
    QTest::keyClick(&menu, Qt::Key_Return);
    QCOMPARE(chosen, 0);
}

TABULON_TEST_MAIN(TestTypeableMenu)
#include "tst_typeablemenu.moc"
