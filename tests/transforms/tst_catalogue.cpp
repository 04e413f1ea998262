#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"

#include <QCoreApplication>
#include <QtTest>

// Every registered transform against its catalogue row: type number, names, and its option
// keys and kinds in the order of the Right pane. Option keys are written in documents, so a
// key that drifts breaks every saved document that uses it.
class TestCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void rows_data();
    void rows();
    void everyPrototypeIsListed();
    void typesAndNamesAreUnique();

private:
    QList<Transform *> m_prototypes;
    QSet<QString> m_checked;
};

void TestCatalogue::initTestCase()
{
    m_prototypes = createTransformPrototypes();
}

void TestCatalogue::cleanupTestCase()
{
    qDeleteAll(m_prototypes);
}

void TestCatalogue::rows_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("displayName");
    QTest::addColumn<QString>("typeName");
    QTest::addColumn<QString>("keys");
    // A kind, or two kinds joined by "|" where either form is allowed (ordered or not).
    QTest::addColumn<QString>("kinds");

    QTest::newRow("TransformCalculate") << 0 << QString("Calculate") << QString("Calculate")
                          << QString("Auto_New_Name New_Name Operation Type1 Column1 Constant1 Type2 Column2 Constant2")
                          << QString("5 7 6 6 0 7 6 0 7");
    QTest::newRow("TransformCase") << 1 << QString("Case") << QString("Case")
                          << QString("Columns Case Keep_Upper")
                          << QString("1|11 6 5");
    QTest::newRow("TransformChop") << 2 << QString("Chop") << QString("Chop")
                          << QString("Columns Length From")
                          << QString("1|11 8 6");
    QTest::newRow("TransformClone") << 3 << QString("Clone") << QString("Clone")
                          << QString("")
                          << QString("");
    QTest::newRow("TransformCluster") << 4 << QString("Cluster") << QString("Cluster")
                          << QString("Column Clustering Terms Fuzziness Max_Auto_Clusters Max_Auto_Time Case_Sensitive")
                          << QString("0 6 18 8 8 8 5");
    QTest::newRow("TransformCompare") << 5 << QString("Compare Cols") << QString("Compare_Cols")
                          << QString("Auto_New_Name New_Name Column1 Comparison Column2 Case_Sensitive")
                          << QString("5 7 0 6 0 5");
    QTest::newRow("TransformConcat") << 6 << QString("Concat Cols") << QString("Concat")
                          << QString("Auto_New_Name New_Name Columns Delimiter Keep_Empty")
                          << QString("5 7 1|11 7 5");
    QTest::newRow("TransformConcatRows") << 7 << QString("Concat Rows") << QString("Concat_Rows")
                          << QString("Mode Rows While_Or_Until Matches Value Key_Column Repeat_Key_Column Case_Sensitive Concat_Value")
                          << QString("6 8 6 6 7 0 5 5 6");
    QTest::newRow("TransformCopy") << 8 << QString("Copy Cols") << QString("Copy")
                          << QString("Columns Copies")
                          << QString("1|11 8");
    QTest::newRow("TransformCorrelate") << 9 << QString("Correlate") << QString("Correlate")
                          << QString("Columns")
                          << QString("1|11");
    QTest::newRow("TransformCount") << 10 << QString("Count") << QString("Count")
                          << QString("Auto_New_Name New_Name Column Sort Order Case_Sensitive Drilldown")
                          << QString("5 7 0 6 6 5 5");
    QTest::newRow("TransformCross") << 11 << QString("Cross") << QString("Cross")
                          << QString("")
                          << QString("");
    QTest::newRow("TransformDateFormat") << 12 << QString("DateTime Format") << QString("Date_Format")
                          << QString("Columns Input_Locale Input Output_Locale Output Non_Date User_Defined")
                          << QString("1|11 23 7 23 7 6 7");
    // The choice is keyed "Change"; documents that key it "Decode" are read as well.
    QTest::newRow("TransformDecode") << 13 << QString("Decode") << QString("Decode")
                          << QString("Columns Change")
                          << QString("1|11 6");
    QTest::newRow("TransformDedupe") << 14 << QString("Dedupe") << QString("Dedupe")
                          << QString("Columns Match_Type Fuzziness Case_Sensitive Ignore_Spaces Ignore_Punctuation Dedupe_Mode Drilldown")
                          << QString("1|11 6 8 5 5 5 6 5");
    QTest::newRow("TransformDiff") << 15 << QString("Difference") << QString("Difference")
                          << QString("By Top_Key_Column Bottom_Key_Column Sort_by_Key Case_Sensitive Max_Diffs")
                          << QString("6 0 0 5 5 8");
    QTest::newRow("TransformExtract") << 16 << QString("Extract") << QString("Extract")
                          << QString("Columns Using Length From Offset Matching Case_Sensitive")
                          << QString("1|11 6 8 6 8 7 5");
    QTest::newRow("TransformFillDown") << 17 << QString("Fill") << QString("Fill")
                          << QString("Columns Direction For Key_Column")
                          << QString("1|11 6 6 0");
    QTest::newRow("TransformFilter") << 18 << QString("Filter") << QString("Filter")
                          << QString("Columns Case_Sensitive Disable")
                          << QString("3 5 5");
    QTest::newRow("TransformGather") << 19 << QString("Gather") << QString("Gather")
                          << QString("Columns Key_Column Value_Column")
                          << QString("1|11 7 7");
    QTest::newRow("TransformHash") << 20 << QString("Hash") << QString("Hash")
                          << QString("Columns Hashing Secret")
                          << QString("1|11 6 7");
    QTest::newRow("TransformHeader") << 21 << QString("Header") << QString("Header")
                          << QString("Num_Rows Mode Delimiter")
                          << QString("8 6 7");
    QTest::newRow("TransformIf") << 22 << QString("If") << QString("If")
                          << QString("New_Name If Case_Sensitive")
                          << QString("7 10 5");
    QTest::newRow("TransformImpute") << 23 << QString("Impute") << QString("Impute")
                          << QString("Columns Using Of Matching_Columns Match_Type Case_Sensitive")
                          << QString("1|11 6 6 1|11 6 5");
    QTest::newRow("TransformInsert") << 24 << QString("Insert") << QString("Insert")
                          << QString("Columns Insert With")
                          << QString("1|11 7 6");
    QTest::newRow("TransformInterpolate") << 26 << QString("Interpolate") << QString("Interpolate")
                          << QString("Auto_New_Name New_Name Top_Sample_Column Bottom_Sample_Column Bottom_Value_Column Interpolation_Type")
                          << QString("5 7 0 0 0 6");
    QTest::newRow("TransformIntersect") << 25 << QString("Intersect") << QString("Intersect")
                          << QString("Column_1 Column_2 Case_Sensitive")
                          << QString("0 0 5");
    QTest::newRow("TransformJavascript") << 27 << QString("Javascript") << QString("Javascript")
                          << QString("New_Name Type_As Script")
                          << QString("7 6 12");
    QTest::newRow("TransformJoin") << 28 << QString("Join") << QString("Join")
                          << QString("By Column_1 Include_Non_Matching_1 Column_2 Include_Non_Matching_2 Case_Sensitive Detailed_Report")
                          << QString("6 0 5 0 5 5 5");
    QTest::newRow("TransformLookup") << 29 << QString("Lookup") << QString("Lookup")
                          << QString("Auto_New_Name New_Name Top_Lookup_Column Bottom_Lookup_Column Bottom_Value_Column Match_Type Fuzziness Bottom_Values_Used Fuzzy_Bottom_Values_Used Delim If_No_Match Non_Matching_Value Case_Sensitive")
                          << QString("5 7 0 0 0 6 8 6 6 7 6 7 5");
    QTest::newRow("TransformMoving") << 30 << QString("Moving") << QString("Moving")
                          << QString("Auto_New_Name New_Name Column Calculation Interval Offset Incomplete")
                          << QString("5 7 0 6 8 8 6");
    QTest::newRow("TransformNewCol") << 31 << QString("New Col") << QString("New_Col")
                          << QString("New_Name New_Value")
                          << QString("7 7");
    QTest::newRow("TransformNewRows") << 32 << QString("New Rows") << QString("New_Rows")
                          << QString("Number_How_Name Number_Col_Name Number_Const_Name As_Name User_Defined_Row_Value Location_Name For_Name Match_Column_Name Match_Type_Name Match_Value_Name Match_Case_Sensitive")
                          << QString("6 0 8 6 7 6 6 0 6 7 5");
    QTest::newRow("TransformNgram") << 33 << QString("Ngram") << QString("Ngram")
                          << QString("Column Min_N Max_N Sum Case_Sensitive Drilldown")
                          << QString("0 8 8 0 5 5");
    QTest::newRow("TransformNumBase") << 34 << QString("Num Base") << QString("Num_Base")
                          << QString("Columns From To Non_Numeric")
                          << QString("1|11 8 8 6");
    // The first option is unnamed in the catalogue; it is keyed "Columns" like every other
    // list of columns to change.
    QTest::newRow("TransformNumberFormat") << 35 << QString("Num Format") << QString("Num_Format")
                          << QString("Columns Decimal_From Input_Locale Format Precision Output_Locale Group_Separator Non_Numeric")
                          << QString("1|11 6 23 6 8 23 5 6");
    QTest::newRow("TransformOffset") << 36 << QString("Offset") << QString("Offset")
                          << QString("Columns Offset_Amount Offset_Direction Wraparound New_Value")
                          << QString("1|11 8 6 5 7");
    QTest::newRow("TransformOutliers") << 37 << QString("Outliers") << QString("Outliers")
                          << QString("Column Score_By Threshold Action New_Value Non_Numeric Add_Scores")
                          << QString("0 6 17 6 7 6 5");
    QTest::newRow("TransformPad") << 38 << QString("Pad") << QString("Pad")
                          << QString("Columns Length Left_Right Pad_With")
                          << QString("1|11 8 6 9");
    // Pivot's older documents call the values column "Sum"; the reader takes it as "Values".
    QTest::newRow("TransformPivot") << 39 << QString("Pivot") << QString("Pivot")
                          << QString("Rows Columns Values Summarize_As Non_Calc Totals Total_Type Delimiter Drilldown")
                          << QString("2|22 2|22 0 6 6 5 6 7 5");
    QTest::newRow("TransformPseudonym") << 40 << QString("Pseudonym") << QString("Pseudonym")
                          << QString("Auto_New_Name New_Name Column Prefix Start_At Seed")
                          << QString("5 7 0 7 8 8");
    QTest::newRow("TransformRandom") << 41 << QString("Random") << QString("Random")
                          << QString("New_Name Type Seed Minimum_Real Maximum_Real Minimum_Int Maximum_Int Minimum_Date Maximum_Date Date_Format Text_Values")
                          << QString("7 6 8 17 17 8 8 21 21 7 7");
    QTest::newRow("TransformRemoveCols") << 42 << QString("Remove Cols") << QString("Remove")
                          << QString("Columns")
                          << QString("1|11");
    QTest::newRow("TransformRenameCols") << 44 << QString("Rename Cols") << QString("Rename_Cols")
                          << QString("RenameColumns")
                          << QString("13");
    QTest::newRow("TransformReorder") << 45 << QString("Reorder Cols") << QString("Reorder")
                          << QString("Columns")
                          << QString("4");
    QTest::newRow("TransformReplaceMulti") << 47 << QString("Replace") << QString("Replace_Multi")
                          << QString("Columns Replace Case_Sensitive")
                          << QString("1|11 16 5");
    QTest::newRow("TransformReshape") << 48 << QString("Reshape") << QString("Reshape")
                          << QString("New_Size")
                          << QString("8");
    QTest::newRow("TransformRowNum") << 49 << QString("Row Num") << QString("Row_Num")
                          << QString("New_Name Start_At Increment Every")
                          << QString("7 8 8 8");
    QTest::newRow("TransformSample") << 50 << QString("Sample") << QString("Sample")
                          << QString("Rows Spread Seed Disable")
                          << QString("8 6 8 5");
    QTest::newRow("TransformScale") << 51 << QString("Scale") << QString("Scale")
                          << QString("Columns From To By Of")
                          << QString("1|11 8 8 6 6");
    QTest::newRow("TransformSequence") << 52 << QString("Sequence") << QString("Sequence")
                          << QString("How_Name Col_Name Minimum_Missing_type User_Define_Minimum_Missing_Int User_Define_Minimum_Missing_Date Maximum_Missing_type User_Define_Maximum_Missing_Int User_Define_Maximum_Missing_Date Order As_Name User_Defined_Row_Value")
                          << QString("6 0 6 8 21 6 8 21 6 6 7");
    QTest::newRow("TransformSlice") << 53 << QString("Slice") << QString("Slice")
                          << QString("Keep_Remove From_Mode From_Column From_Operation From_Value From_Include_First To_Mode To_Column To_Operation To_Value To_Include_Last Case_Sensitive")
                          << QString("6 6 0 6 7 5 6 0 6 7 5 5");
    QTest::newRow("TransformSlide") << 54 << QString("Slide") << QString("Slide")
                          << QString("Columns Direction For Key_Column")
                          << QString("1|11 6 6 0");
    QTest::newRow("TransformSort") << 55 << QString("Sort") << QString("Sort")
                          << QString("Columns Rank_Add Rank_Types Rank_By Intelligent_Sort Locale_Aware_Sort Case_Sensitive")
                          << QString("2|22 5 6 0 5 5 5");
    QTest::newRow("TransformSplit") << 56 << QString("Split Col") << QString("Split")
                          << QString("Columns Delimiter_Type Delimiter Lengths Into Order Keep_Empty Min_New_Cols Max_New_Cols")
                          << QString("0 6 7 7 6 6 5 8 8");
    QTest::newRow("TransformSplitName") << 57 << QString("Split Name") << QString("Split_Name")
                          << QString("Column Title Custom_Title First Middle Last Num_Last Suffix Custom_Suffix")
                          << QString("0 5 7 5 5 5 8 5 7");
    QTest::newRow("TransformSplitRows") << 58 << QString("Split Rows") << QString("Split_Rows")
                          << QString("Split_Rows Case_Sensitive")
                          << QString("14 5");
    QTest::newRow("TransformSpread") << 59 << QString("Spread") << QString("Spread")
                          << QString("Key_Column Value_Column Missing_Value Min_New_Cols Max_New_Cols")
                          << QString("0 0 7 8 8");
    QTest::newRow("TransformStack") << 60 << QString("Stack") << QString("Stack")
                          << QString("Align_Cols Only_First_Cols Add_Separators User_Defined_Row_Value")
                          << QString("6 5 5 7");
    QTest::newRow("TransformStamp") << 61 << QString("Stamp") << QString("Stamp")
                          << QString("Format Position New_Name")
                          << QString("7 6 7");
    QTest::newRow("TransformStats") << 62 << QString("Stats") << QString("Stats")
                          << QString("Columns Calculation Percentile On")
                          << QString("1|11 6 8 6");
    QTest::newRow("TransformSubstitute") << 63 << QString("Substitute") << QString("Substitute")
                          << QString("New_Name Script")
                          << QString("7 12");
    QTest::newRow("TransformSubtract") << 64 << QString("Subtract") << QString("Subtract")
                          << QString("Column_1 Column_2 Match Case_Sensitive")
                          << QString("0 0 6 5");
    QTest::newRow("TransformSummary") << 65 << QString("Summary") << QString("Summary")
                          << QString("Columns Check_For_Dates Check_Stats")
                          << QString("1|11 5 5");
    QTest::newRow("TransformTotal") << 66 << QString("Total") << QString("Total")
                          << QString("Auto_New_Name New_Name Column By")
                          << QString("5 7 0 0");
    QTest::newRow("TransformTranspose") << 67 << QString("Transpose") << QString("Transpose")
                          << QString("Header")
                          << QString("5");
    QTest::newRow("TransformUUID") << 72 << QString("UUID") << QString("UUID")
                          << QString("New_Name Format")
                          << QString("7 6");
    QTest::newRow("TransformUnfill") << 69 << QString("Unfill") << QString("Unfill")
                          << QString("Columns Direction For Key_Column")
                          << QString("1|11 6 6 0");
    QTest::newRow("TransformUnique") << 70 << QString("Unique") << QString("Unique")
                          << QString("Column_Options Delim Concat_Ignore_Empty Count Case_Sensitive Drilldown")
                          << QString("15 7 5 5 5 5");
    // The units are keyed "UnitsFrom" and "UnitsTo"; documents that key them "From" and "To"
    // are read as well.
    QTest::newRow("TransformUnits") << 71 << QString("Units") << QString("Units")
                          << QString("Columns Dimension UnitsFrom UnitsTo")
                          << QString("1|11 6 6 6");
    QTest::newRow("TransformVerify") << 73 << QString("Verify") << QString("Verify")
                          << QString("Rules Case_Sensitive Keep_Remove_rows No_Fail No_Info No_Warning No_Error")
                          << QString("19 5 6 5 5 5 5");
    QTest::newRow("TransformWhitespace") << 74 << QString("Whitespace") << QString("Whitespace")
                          << QString("Columns Trim Line_Feed Tab Non_Standard_Spaces Carriage_Return Consecutive_Spaces Non_Printable")
                          << QString("1|11 5 5 5 5 5 5 5");
}

void TestCatalogue::rows()
{
    QFETCH(int, type);
    QFETCH(QString, displayName);
    QFETCH(QString, typeName);
    QFETCH(QString, keys);
    QFETCH(QString, kinds);

    Transform *prototype = nullptr;
    for (Transform *candidate : qAsConst(m_prototypes)) {
        if (candidate->typeName() == typeName)
            prototype = candidate;
    }
    QVERIFY2(prototype, qPrintable(typeName));
    m_checked.insert(typeName);
    QCOMPARE(prototype->type(), type);
    QCOMPARE(prototype->displayName(), displayName);
    QVERIFY(!prototype->description().isEmpty());

    // Options are made for a one-column input, as when a user adds the transform.
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"a"}, {"1"}})));
    QScopedPointer<Transform> transform(prototype->clone());
    transform->createParameters({input.data()}, false);
    QStringList actualKeys;
    const QList<Parameter *> parameters = transform->parameters();
    const QStringList expectedKinds = kinds.split(' ', Qt::SkipEmptyParts);
    QCOMPARE(parameters.size(), expectedKinds.size());
    for (int i = 0; i < parameters.size(); ++i) {
        actualKeys.append(parameters.at(i)->key());
        const QStringList allowed = expectedKinds.at(i).split('|');
        QVERIFY2(allowed.contains(QString::number(int(parameters.at(i)->type()))),
                 qPrintable(parameters.at(i)->key()));
    }
    QCOMPARE(actualKeys.join(' '), keys);
}

void TestCatalogue::everyPrototypeIsListed()
{
    for (const Transform *prototype : qAsConst(m_prototypes))
        QVERIFY2(m_checked.contains(prototype->typeName()), qPrintable(prototype->typeName()));
}

// Documents name a transform by its type name and settings by its type number, so two classes
// sharing either would load as each other.
void TestCatalogue::typesAndNamesAreUnique()
{
    QCOMPARE(m_prototypes.size(), 72);
    QSet<int> types;
    QSet<QString> typeNames;
    QSet<QString> displayNames;
    for (const Transform *prototype : qAsConst(m_prototypes)) {
        QVERIFY2(!types.contains(prototype->type()), qPrintable(prototype->typeName()));
        QVERIFY2(!typeNames.contains(prototype->typeName()), qPrintable(prototype->typeName()));
        QVERIFY2(!displayNames.contains(prototype->displayName()),
                 qPrintable(prototype->displayName()));
        types.insert(prototype->type());
        typeNames.insert(prototype->typeName());
        displayNames.insert(prototype->displayName());
    }
    // The numbers left free in the catalogue stay free.
    for (int unused : {43, 46, 68})
        QVERIFY(!types.contains(unused));
}

QTEST_GUILESS_MAIN(TestCatalogue)
#include "tst_catalogue.moc"
