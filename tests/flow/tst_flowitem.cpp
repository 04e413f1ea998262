#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/transformitem.h"
#include "testdata.h"
#include "transforms/transformclone.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QtTest>

// What all kinds of item share: ids, names, sizes, relations, status and progress.
class TestFlowItem : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<FlowItem *>(); }
    void idsComeFromOneCounter();
    void aliasIsTrimmed();
    void sizeTexts_data();
    void sizeTexts();
    void previewItem();
    void relations();
    void statusPropagatesToDescendants();
    void progressIsThrottled();
    void statusIcons();
    void cloneKeepsIdentity();
    void noteIsAlwaysUpToDate();
};

void TestFlowItem::idsComeFromOneCounter()
{
    const int next = FlowItem::nextId();
    InputItem automatic;
    QCOMPARE(automatic.id(), next);
    InputItem explicitId(5000);
    QCOMPARE(explicitId.id(), 5000);
    QCOMPARE(FlowItem::nextId(), next + 1);
    automatic.setId(-1);
    QCOMPARE(automatic.id(), next + 1);
    FlowItem::raiseIdCounter(9000);
    QCOMPARE(FlowItem::nextId(), 9001);
    FlowItem::raiseIdCounter(10);
    QCOMPARE(FlowItem::nextId(), 9001);
}

void TestFlowItem::aliasIsTrimmed()
{
    InputItem input;
    input.setAlias("  x ");
    QCOMPARE(input.alias(), QString("x"));
    QCOMPARE(input.titleLine(), QString("x"));
    QCOMPARE(input.nameAndId(), QString("x (%1)").arg(input.id()));
}

void TestFlowItem::sizeTexts_data()
{
    QTest::addColumn<qint64>("rows");
    QTest::addColumn<qint64>("columns");
    QTest::addColumn<QString>("longText");
    QTest::addColumn<QString>("shortText");

    QTest::newRow("singular") << qint64(1) << qint64(1) << "1 row x 1 col"
                              << "1 row x 1 col";
    QTest::newRow("small") << qint64(999) << qint64(12) << "999 rows x 12 cols"
                           << "999 rows x 12 cols";
    QTest::newRow("thousands") << qint64(1500) << qint64(3) << "1,500 rows x 3 cols"
                               << "1.5K rows x 3 cols";
    QTest::newRow("zero decimal dropped") << qint64(2000) << qint64(3) << "2,000 rows x 3 cols"
                                          << "2K rows x 3 cols";
    QTest::newRow("too long keeps no decimals")
        << qint64(123456) << qint64(3) << "123,456 rows x 3 cols"
        << "123K rows x 3 cols";
    QTest::newRow("millions") << qint64(12345678) << qint64(3) << "12,345,678 rows x 3 cols"
                              << "12.3M rows x 3 cols";
    QTest::newRow("billions") << qint64(2500000000) << qint64(3) << "2,500,000,000 rows x 3 cols"
                              << "2.5B rows x 3 cols";
}

void TestFlowItem::sizeTexts()
{
    QFETCH(qint64, rows);
    QFETCH(qint64, columns);
    QFETCH(QString, longText);
    QFETCH(QString, shortText);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QCOMPARE(FlowItem::sizeText(rows, columns), longText);
    QCOMPARE(FlowItem::shortSizeText(rows, columns), shortText);
    QLocale::setDefault(QLocale::c());
}

void TestFlowItem::previewItem()
{
    InputItem preview;
    preview.setPreview(true);
    QCOMPARE(preview.status(), int(FlowItem::UpToDate));
    QCOMPARE(preview.columnCount(), 100);
    QCOMPARE(preview.rowCount(), 100000);
    QVERIFY(preview.toolTipText().isEmpty());
    InputItem normal;
    QVERIFY(!normal.toolTipText().isEmpty());
}

void TestFlowItem::relations()
{
    FlowModel model;
    InputItem *a = addTextInput(model, "a\n1\n", {0, 0});
    InputItem *b = addTextInput(model, "a\n1\n", {0, 300});
    TransformItem *upper = addTransform(model, new TransformClone, {a}, {200, 0});
    TransformItem *lower = addTransform(model, new TransformClone, {a}, {200, 100});
    TransformItem *deep = addTransform(model, new TransformClone, {lower}, {400, 100});

    QCOMPARE(a->downstream(true), QList<FlowItem *>({upper, lower}));
    QCOMPARE(lower->siblings(), QList<FlowItem *>({upper}));
    QCOMPARE(lower->siblings(true), QList<FlowItem *>({upper, lower}));
    QCOMPARE(lower->previousSibling(), static_cast<FlowItem *>(upper));
    QCOMPARE(upper->nextSibling(), static_cast<FlowItem *>(lower));
    QCOMPARE(lower->nextSibling(), static_cast<FlowItem *>(nullptr));
    QCOMPARE(deep->depth(), 2);
    QCOMPARE(b->depth(), 0);
    QCOMPARE(deep->allUpstream(false), QSet<FlowItem *>({lower, a}));
    QCOMPARE(deep->allUpstreamIterative(true), QSet<FlowItem *>({deep, lower, a}));
    QCOMPARE(a->allDownstream(false), QSet<FlowItem *>({upper, lower, deep}));
    QCOMPARE(a->allDownstreamOfKind(FlowItem::TransformKind).size(), 3);
    QCOMPARE(deep->allUpstreamOfKind(FlowItem::InputKind), QSet<FlowItem *>({a}));
    QVERIFY(deep->isUpstream(a));
    QVERIFY(!a->isUpstream(deep));
    QVERIFY(lower->isConnectedFrom(a));
    QCOMPARE(a->connections(ConnectionDirection::Out).size(), 2);
    QCOMPARE(lower->connections(ConnectionDirection::Both).size(), 2);
    // Every transform already has its one input: nothing left for b to feed.
    QVERIFY(!b->canStartConnection());
    TransformItem *free = addTransform(model, new TransformClone, {}, {600, 300});
    QVERIFY(b->canStartConnection());
    QCOMPARE(model.connectionCandidates(b), QList<FlowItem *>({free}));
    QCOMPARE(model.connectionCandidates(deep), QList<FlowItem *>({free}));
}

void TestFlowItem::statusPropagatesToDescendants()
{
    FlowModel model;
    InputItem *a = addTextInput(model, "a\n1\n", {0, 0});
    TransformItem *t1 = addTransform(model, new TransformClone, {a}, {200, 0});
    TransformItem *t2 = addTransform(model, new TransformClone, {t1}, {400, 0});
    model.process(FlowModel::RunAll);
    QCOMPARE(t2->status(), int(FlowItem::UpToDate));
    // Propagation reaches every descendant even when the item's own value doesn't change.
    t2->setStatus(FlowItem::NeedsUpdate, false);
    t1->setStatus(FlowItem::UpToDate, true);
    QCOMPARE(t2->status(), int(FlowItem::UpToDate));
    a->setStatus(FlowItem::NeedsUpdate, true);
    QCOMPARE(t1->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(t2->status(), int(FlowItem::NeedsUpdate));
}

void TestFlowItem::progressIsThrottled()
{
    qint64 now = 1000;
    FlowItem::setProgressClock([&now] { return now; });
    const auto restoreClock = qScopeGuard([] { FlowItem::setProgressClock(nullptr); });
    InputItem node;
    QSignalSpy spy(&node, &FlowItem::processed);
    node.onProcessed(0.5);
    QCOMPARE(spy.count(), 1);
    node.onProcessed(0.5);
    QCOMPARE(spy.count(), 1);
    node.onProcessed(0.9);
    QCOMPARE(spy.count(), 1);
    node.onProcessed(1.0);
    QCOMPARE(spy.count(), 2);
    now += 260;
    node.onProcessed(1.01);
    QCOMPARE(spy.count(), 3);
    now += 249;
    node.onProcessed(0.7);
    QCOMPARE(spy.count(), 3);
    now += 11;
    // Less than 0.02 away from the shown value.
    node.onProcessed(0.5);
    node.onProcessed(0.51);
    QCOMPARE(spy.count(), 4);
    node.reportProgress(999, 1000, 5000);
    node.reportProgress(1000, 1000, 0);
    QCOMPARE(spy.count(), 4);
}

void TestFlowItem::statusIcons()
{
    FlowModel model;
    InputItem *empty = addTextInput(model, "", {0, 0});
    InputItem *full = addTextInput(model, "a\n1\n", {0, 200});
    QCOMPARE(full->statusIcon(), NodeStatusIcon::NeedsUpdate);
    model.process(FlowModel::RunAll);
    QCOMPARE(empty->statusIcon(), NodeStatusIcon::Empty);
    QCOMPARE(empty->statusLine(), QString("No data"));
    QCOMPARE(full->statusIcon(), NodeStatusIcon::UpToDate);
    QCOMPARE(full->statusLine(), QString("1 row x 1 col"));
    full->addWarning("careful");
    QCOMPARE(full->statusIcon(), NodeStatusIcon::Warning);
    full->setStatus(FlowItem::Error, false);
    QCOMPARE(full->statusIcon(), NodeStatusIcon::Error);
    QCOMPARE(full->statusLine(), QString("careful"));
}

void TestFlowItem::cloneKeepsIdentity()
{
    FlowModel model;
    InputItem *input = addTextInput(model, "a\n1\n", {30, 40});
    input->setAlias("source");
    input->setComment("note");
    model.process(FlowModel::RunAll);
    QScopedPointer<FlowItem> copy(input->clone());
    QCOMPARE(copy->id(), input->id());
    QCOMPARE(copy->alias(), QString("source"));
    QCOMPARE(copy->comment(), QString("note"));
    QCOMPARE(copy->pos(), QPointF(30, 40));
    QCOMPARE(copy->status(), int(FlowItem::UpToDate));
    QVERIFY(copy->connections().isEmpty());
    QCOMPARE(&copy->dataset()->row(0).at(0), &input->dataset()->row(0).at(0));
    QCOMPARE(static_cast<InputItem *>(copy.data())->text(), input->text());
}

void TestFlowItem::noteIsAlwaysUpToDate()
{
    NoteItem note;
    note.setComment("Remember");
    QCOMPARE(note.status(), int(FlowItem::UpToDate));
    QVERIFY(!note.canRun());
    QCOMPARE(note.maximumInputs(), 0);
    QCOMPARE(note.maximumOutputs(), 0);
    QCOMPARE(note.toolTipText(), QString("Remember"));
}

QTEST_GUILESS_MAIN(TestFlowItem)
#include "tst_flowitem.moc"
