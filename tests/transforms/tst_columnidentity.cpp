#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcase.h"
#include "transforms/transformrenamecols.h"
#include "transforms/transformreorder.h"

#include <QtTest>

// A column option names a column by identity, not by name or place: set once, it follows its
// column through renames and moves upstream in a real graph, run after run.
class TestColumnIdentity : public QObject
{
    Q_OBJECT

private slots:
    void optionFollowsRenameAndMove();
};

void TestColumnIdentity::optionFollowsRenameAndMove()
{
    FlowModel model;
    InputItem *input
        = addTextInput(model, "id,name,city\n1,ann lee,paris\n2,bob ray,rome\n", QPointF(0, 0));
    auto *renameTransform = new TransformRenameCols;
    auto *reorderTransform = new TransformReorder;
    auto *caseTransform = new TransformCase;
    TransformItem *rename = addTransform(model, renameTransform, {input}, QPointF(200, 0));
    TransformItem *reorder = addTransform(model, reorderTransform, {rename}, QPointF(400, 0));
    TransformItem *upper = addTransform(model, caseTransform, {reorder}, QPointF(600, 0));
    model.process(FlowModel::RunAll);
    QCOMPARE(upper->status(), FlowItem::UpToDate);
    QCOMPARE(upper->dataset()->headers(), QStringList({"id", "name", "city"}));

    const Dataset &source = *input->dataset();
    const ColumnId idColumn = source.columnId(0);
    const ColumnId nameColumn = source.columnId(1);
    const ColumnId cityColumn = source.columnId(2);
    QVERIFY(!nameColumn.isNull());
    caseTransform->parameter("Columns")->setColumns({nameColumn});
    caseTransform->parameter("Case")->setValue(QString("Upper case"));

    renameTransform->parameter("RenameColumns")->setRenameColumns({{nameColumn, "Full name"}});
    reorderTransform->parameter("Columns")->setColumns({nameColumn});
    rename->setStatus(FlowItem::NeedsUpdate, true);
    model.process(FlowModel::RunAll);
    QCOMPARE(upper->status(), FlowItem::UpToDate);
    const Dataset *result = upper->dataset();
    QCOMPARE(result->headers(), QStringList({"Full name", "id", "city"}));
    QCOMPARE(result->row(0), QStringList({"ANN LEE", "1", "paris"}));
    QCOMPARE(result->row(1), QStringList({"BOB RAY", "2", "rome"}));
    QCOMPARE(caseTransform->result(), QString("2 changed, 0 unchanged"));

    renameTransform->parameter("RenameColumns")
        ->setRenameColumns({{nameColumn, "Person"}, {cityColumn, "Town"}});
    reorderTransform->parameter("Columns")->setColumns({cityColumn, idColumn});
    rename->setStatus(FlowItem::NeedsUpdate, true);
    model.process(FlowModel::RunAll);
    QCOMPARE(upper->status(), FlowItem::UpToDate);
    result = upper->dataset();
    QCOMPARE(result->headers(), QStringList({"Town", "id", "Person"}));
    QCOMPARE(result->row(0), QStringList({"paris", "1", "ANN LEE"}));
    QCOMPARE(result->row(1), QStringList({"rome", "2", "BOB RAY"}));
    QCOMPARE(caseTransform->parameter("Columns")->toColumns(), QList<ColumnId> {nameColumn});
    // The document form names the column by its place in the Case's own input.
    QCOMPARE(caseTransform->parameter("Columns")->toText(), QString("3"));
}

QTEST_GUILESS_MAIN(TestColumnIdentity)
#include "tst_columnidentity.moc"
