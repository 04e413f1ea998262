#include "testdata.h"
#include "transforms/framework/parameter.h"

#include <QCoreApplication>
#include <QtTest>

#include <memory>

namespace {

// An upstream table that the test fills directly and declares ready or not.
class SourceNode : public ColumnSource
{
public:
    enum Status { NeedsUpdate, UpToDate };

    const Dataset *columnDataset() const override { return &m_dataset; }
    bool isReady() const override { return m_status == UpToDate; }
    Dataset *dataset() { return &m_dataset; }
    void setTestStatus(Status status) { m_status = status; }

private:
    Dataset m_dataset;
    Status m_status = NeedsUpdate;
};

const ColumnId Name(7, 1);
const ColumnId Age(7, 2);
const ColumnId City(7, 3);
const ColumnId Zip(7, 4);
const ColumnId Gone(7, 99);
const QString Us(QChar(0x1F));

QString fields(const QStringList &list)
{
    return list.join(Us);
}

QVariant columns(const QList<ColumnId> &ids)
{
    Parameter p(ParameterType::MultipleColumns, QString(), QString());
    p.setColumns(ids);
    return p.value();
}

QVariant sortColumns(const QList<SortColumn> &list)
{
    Parameter p(ParameterType::SortColumns, QString(), QString());
    p.setSortColumns(list);
    return p.value();
}

QVariant replaceTerms(const QList<ReplaceTerm> &terms)
{
    Parameter p(ParameterType::ReplaceTerms, QString(), QString());
    p.setReplaceTerms(terms);
    return p.value();
}

QVariant uniqueColumns(const UniqueColumns &map)
{
    return uniqueColumnsToVariant(map);
}

QVariant splitRows(bool byName, bool automatic, int every, ColumnId column, int times)
{
    SplitRowsTerms terms;
    terms.splitByName = byName;
    terms.automatic = automatic;
    terms.every = every;
    terms.nameColumn = column;
    terms.times = times;
    return terms.toVariant();
}

const QStringList Choices {QStringLiteral("Any"), QStringLiteral("First^one"),
                           QStringLiteral("Last")};

} // namespace

class TestParameter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void splitFields_data();
    void splitFields();
    void textForms_data();
    void textForms();
    void freeTextRoundTrips_data();
    void freeTextRoundTrips();
    void oldOperatorsAreMapped_data();
    void oldOperatorsAreMapped();
    void unreadableTextKeepsDefault_data();
    void unreadableTextKeepsDefault();
    void outOfRangeColumnsAreLeftOut();
    void pendingTextIsKeptUntilResolved();
    void renameWithFewerFieldsThanColumns();
    void followsMovedAndRemovedColumns();
    void remapColumnIds_data();
    void remapColumnIds();
    void isUnset_data();
    void isUnset();
    void summary_data();
    void summary();
    void selectAllAndOnlyColumn();
    void cloneIsIndependent();
    void literalValuesPickTheValueConstructor();

private:
    std::unique_ptr<Parameter> make(ParameterType type, const QVariant &value,
                                    const QVariant &options = QVariant());

    SourceNode m_node;
};

void TestParameter::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
}

void TestParameter::init()
{
    *m_node.dataset() = makeDataset({{"Name", "Age", "City", "Zip"},
                                     {"Ann", "31", "Paris", "75001"},
                                     {"Bob", "45", "Lyon", "69001"}});
    m_node.dataset()->assignColumnIds(7);
    m_node.setTestStatus(SourceNode::UpToDate);
}

std::unique_ptr<Parameter> TestParameter::make(ParameterType type, const QVariant &value,
                                               const QVariant &options)
{
    auto p = std::make_unique<Parameter>(type, QStringLiteral("Key"), QStringLiteral("Label"),
                                         value, options);
    p->setSourceNode(&m_node);
    return p;
}

void TestParameter::splitFields_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("neither separator") << "a,b;c" << QStringList {"a,b;c"};
    QTest::newRow("empty") << "" << QStringList {""};
    QTest::newRow("old caret") << "1^2^^3" << QStringList {"1", "2", "", "3"};
    QTest::newRow("unit separator wins over caret")
        << fields({"a^b", "c"}) << QStringList {"a^b", "c"};
}

void TestParameter::splitFields()
{
    QFETCH(QString, text);
    QFETCH(QStringList, expected);
    QCOMPARE(Parameter::splitFields(text), expected);
}

// Each row is read through fromText and must give the value, and the value must be written
// back as the very same text.
void TestParameter::textForms_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");

    FilterTerms filter;
    filter.keep = false;
    filter.matchAny = true;
    filter.terms = {FilterTerm {City, 1, "Paris"}, FilterTerm {ColumnId(), 19, ""}};
    IfTerms ifTerms;
    ifTerms.branches = {IfBranch {{FilterTerm {Age, 4, "40"}, FilterTerm {Name, 2, "B"}}, "old"},
                        IfBranch {{FilterTerm {Zip, 19, ""}}, "none"}};
    ifTerms.elseValue = "young";
    ColumnRenames renames {{Age, "Years old"}, {Zip, "Post code"}};

    auto row
        = [](const char *name, ParameterType kind, const QVariant &value, const QString &text) {
              QTest::newRow(name) << int(kind) << value << text;
          };
    row("single column", ParameterType::SingleColumn, columnIdToVariant(City), "3");
    row("columns", ParameterType::MultipleColumns, columns({Zip, Name}), fields({"4", "1"}));
    row("reorder", ParameterType::ReorderColumns, columns({Age, City}), fields({"2", "3"}));
    row("sort", ParameterType::SortColumns, sortColumns({{Zip, false}, {Name, true}}),
        fields({"-4", "1"}));
    row("filter", ParameterType::FilterColumns, filter.toVariant(),
        fields({"0", "1", "3", "1", "Paris", "0", "19", ""}));
    row("bool", ParameterType::Bool, true, "1");
    row("text", ParameterType::Text, "a b/c", "a%20b%2Fc");
    row("int", ParameterType::Int, -12, "-12");
    row("char", ParameterType::Char, QChar('\t'), "%09");
    row("null char", ParameterType::Char, QChar(), "");
    row("if", ParameterType::If, ifTerms.toVariant(),
        fields({"*StartIf*", "2", "4", "40", "1", "2", "B", "*EndIf*", "old", "*StartIf*", "4",
                "19", "", "*EndIf*", "none", "young"}));
    row("rename", ParameterType::RenameColumns, columnRenamesToVariant(renames),
        fields({"*NORENAME*", "Years%20old", "*NORENAME*", "Post%20code"}));
    row("split rows", ParameterType::SplitRows, splitRows(false, false, 2, Age, 3),
        fields({"0", "0", "2", "2", "3", ""}));
    row("unique", ParameterType::Unique, uniqueColumns({{Name, 0}, {Age, 3}, {City, 1}, {Zip, 8}}),
        fields({"0", "3", "1", "8"}));
    row("replace", ParameterType::ReplaceTerms, replaceTerms({{0, "a", "b"}, {2, "x y", ""}}),
        fields({"0", "a", "b", "2", "x%20y", ""}));
    row("real", ParameterType::Real, 0.1, "0.1");
    row("long text", ParameterType::LongText, "line 1\nline 2", "line%201%0Aline%202");
    // One dataset rule (number 3, value 10, Error, active) and no column rules; each rule is
    // preceded by its count of fields.
    const QVariantList datasetRule {3, 10, 2, true};
    const QVariantList ruleSet {QVariantList {QVariant(datasetRule)}, QVariantList()};
    row("verify rules", ParameterType::VerifyRules, QVariant(ruleSet),
        fields({"1", "4", "3", "10", "2", "1", "0"}));
    row("date", ParameterType::Date, QDate(2024, 3, 7), "2024-03-07");
    row("sort ordered", ParameterType::SortColumnsOrdered, sortColumns({{Age, true}}), "2");
    row("locale", ParameterType::Locale, QLocale(QLocale::German, QLocale::Switzerland), "de_CH");
    row("default locale", ParameterType::Locale, QVariant(), "");
}

void TestParameter::textForms()
{
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    QFETCH(QString, text);

    const auto written = make(ParameterType(kind), value);
    QCOMPARE(written->toText(), text);

    const auto read = make(ParameterType(kind), QVariant());
    read->fromText(text);
    QCOMPARE(read->value(), value);
}

void TestParameter::freeTextRoundTrips_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("fieldCount");

    const QString awkward = "a^b" + Us + QString::fromUtf8("c%41 d*EndIf* \u00e9\u20ac");
    FilterTerms filter;
    filter.terms = {FilterTerm {Name, 0, awkward}};
    IfTerms ifTerms;
    ifTerms.branches = {IfBranch {{FilterTerm {Name, 0, awkward}}, awkward}};
    ifTerms.elseValue = awkward;

    QTest::newRow("text") << int(ParameterType::Text) << QVariant(awkward) << 1;
    QTest::newRow("script") << int(ParameterType::Script) << QVariant(awkward) << 1;
    QTest::newRow("selection") << int(ParameterType::Selection) << QVariant("First^one") << 1;
    QTest::newRow("char") << int(ParameterType::Char) << QVariant(QChar(0x1F)) << 1;
    QTest::newRow("filter") << int(ParameterType::FilterColumns) << filter.toVariant() << 5;
    QTest::newRow("if") << int(ParameterType::If) << ifTerms.toVariant() << 7;
    QTest::newRow("replace") << int(ParameterType::ReplaceTerms)
                             << replaceTerms({{1, awkward, awkward}}) << 3;
    QTest::newRow("rename") << int(ParameterType::RenameColumns)
                            << columnRenamesToVariant({{Name, awkward}}) << 4;
}

void TestParameter::freeTextRoundTrips()
{
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    QFETCH(int, fieldCount);

    const QString text = make(ParameterType(kind), value, Choices)->toText();
    QCOMPARE(text.split(Us).size(), fieldCount);
    QVERIFY(!text.contains(QLatin1Char('^')));

    const auto read = make(ParameterType(kind), QVariant(), Choices);
    read->fromText(text);
    QCOMPARE(read->value(), value);
}

void TestParameter::oldOperatorsAreMapped_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QList<int>>("operators");
    QTest::addColumn<QList<int>>("expected");

    QTest::newRow("56: emptiness tests move")
        << 56 << QList<int> {14, 15, 1} << QList<int> {19, 20, 1};
    QTest::newRow("56: unknown dropped") << 56 << QList<int> {21, 3, 25} << QList<int> {3};
    QTest::newRow("57: fuzzy stays") << 57 << QList<int> {14, 15, 20} << QList<int> {14, 15, 20};
    QTest::newRow("current: unknown dropped")
        << CurrentDocumentVersion << QList<int> {21, 18} << QList<int> {18};
}

void TestParameter::oldOperatorsAreMapped()
{
    QFETCH(int, version);
    QFETCH(QList<int>, operators);
    QFETCH(QList<int>, expected);

    QStringList filterFields {"1", "0"};
    QStringList ifFields {"*StartIf*"};
    for (int op : qAsConst(operators)) {
        filterFields << "1" << QString::number(op) << "v";
        ifFields << "1" << QString::number(op) << "v";
    }
    ifFields << "*EndIf*"
             << "then"
             << "else";

    const auto filter = make(ParameterType::FilterColumns, QVariant());
    filter->fromText(filterFields.join(QLatin1Char('^')), version);
    const auto ifParameter = make(ParameterType::If, QVariant());
    ifParameter->fromText(ifFields.join(QLatin1Char('^')), version);

    QList<int> filterOperators;
    for (const FilterTerm &term : filter->toFilterTerms().terms)
        filterOperators << term.op;
    QCOMPARE(filterOperators, expected);

    const IfTerms ifTerms = ifParameter->toIfTerms();
    QCOMPARE(ifTerms.branches.size(), 1);
    QList<int> ifOperators;
    for (const FilterTerm &term : ifTerms.branches.first().terms)
        ifOperators << term.op;
    QCOMPARE(ifOperators, expected);
    QCOMPARE(ifTerms.branches.first().thenValue, QStringLiteral("then"));
    QCOMPARE(ifTerms.elseValue, QStringLiteral("else"));
}

void TestParameter::unreadableTextKeepsDefault_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");

    FilterTerms filter;
    filter.terms = {FilterTerm {Name, 1, "x"}};

    QTest::newRow("int not a number") << int(ParameterType::Int) << QVariant(5) << "five";
    QTest::newRow("real not a number") << int(ParameterType::Real) << QVariant(2.5) << "x";
    QTest::newRow("bool neither 0 nor 1") << int(ParameterType::Bool) << QVariant(true) << "yes";
    QTest::newRow("selection not offered")
        << int(ParameterType::Selection) << QVariant("Last") << "Middle";
    QTest::newRow("filter under five fields")
        << int(ParameterType::FilterColumns) << filter.toVariant() << fields({"1", "0", "1", "1"});
    QTest::newRow("split rows under six fields")
        << int(ParameterType::SplitRows) << splitRows(true, false, 1, ColumnId(), 0)
        << fields({"0", "1", "2", "1", "3"});
    QTest::newRow("date in another form")
        << int(ParameterType::Date) << QVariant(QDate(2020, 1, 2)) << "02/01/2020";
    QTest::newRow("single column not a number")
        << int(ParameterType::SingleColumn) << columnIdToVariant(Age) << "Age";
}

void TestParameter::unreadableTextKeepsDefault()
{
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    QFETCH(QString, text);

    const auto p = make(ParameterType(kind), value, Choices);
    p->fromText(text);
    QCOMPARE(p->value(), value);
}

void TestParameter::outOfRangeColumnsAreLeftOut()
{
    const auto list = make(ParameterType::MultipleColumnsOrdered, QVariant());
    list->fromText(fields({"3", "9", "0", "-1", "x", "1"}));
    QCOMPARE(list->toColumns(), (QList<ColumnId> {City, Name}));

    const auto sort = make(ParameterType::SortColumns, QVariant());
    sort->fromText(fields({"-9", "-2", "5"}));
    QCOMPARE(sort->toSortColumns(), (QList<SortColumn> {{Age, false}}));

    const auto single = make(ParameterType::SingleColumn, columnIdToVariant(Name));
    single->fromText("5");
    QVERIFY(single->toColumnId().isNull());
    QCOMPARE(single->summary(), QStringLiteral("<None selected>"));
}

void TestParameter::pendingTextIsKeptUntilResolved()
{
    // An old document: caret separators and operator 14 of version 50.
    const QString stored = QStringLiteral("1^0^2^14^^3^0^Par%69s");
    const auto p = make(ParameterType::FilterColumns, QVariant());
    p->setPendingText(stored, 50);
    m_node.setTestStatus(SourceNode::NeedsUpdate);

    QVERIFY(!p->resolvePendingText());
    QVERIFY(p->hasPendingText());
    QCOMPARE(p->toText(), stored);
    QCOMPARE(p->summary(), QStringLiteral("Needs updating"));
    const std::unique_ptr<Parameter> copy(p->clone());
    QCOMPARE(copy->toText(), stored);

    m_node.setTestStatus(SourceNode::UpToDate);
    QVERIFY(p->resolvePendingText());
    QVERIFY(!p->hasPendingText());
    QCOMPARE(p->toText(), fields({"1", "0", "2", "19", "", "3", "0", "Paris"}));
    QCOMPARE(p->summary(), QStringLiteral("2 term(s)"));
    QVERIFY(!p->resolvePendingText());

    // Options without an input resolve at once.
    Parameter text(ParameterType::Text, "Key", "Label", QString());
    text.setPendingText("a%5Eb", 81);
    QVERIFY(text.resolvePendingText());
    QCOMPARE(text.toString(), QStringLiteral("a^b"));
}

void TestParameter::renameWithFewerFieldsThanColumns()
{
    const auto p = make(ParameterType::RenameColumns, QVariant());
    p->fromText(QStringLiteral("*NORENAME*^First%20name"));
    QCOMPARE(p->toRenameColumns(), (ColumnRenames {{Age, QStringLiteral("First name")}}));
    QCOMPARE(p->toText(), fields({"*NORENAME*", "First%20name", "*NORENAME*", "*NORENAME*"}));
    QCOMPARE(p->summary(), QStringLiteral("1 column(s) renamed"));
}

void TestParameter::followsMovedAndRemovedColumns()
{
    const auto single = make(ParameterType::SingleColumn, columnIdToVariant(City));
    const auto list = make(ParameterType::MultipleColumns, columns({City, Name}));
    QCOMPARE(single->toColumnIndex(), 2);
    QCOMPARE(list->columnIndexes(), (QList<int> {0, 2}));

    // City moves to the front and is renamed.
    *m_node.dataset()
        = makeDataset({{"Town", "Name", "Age", "Zip"}, {"Paris", "Ann", "31", "75001"}});
    m_node.dataset()->setColumnIds({City, Name, Age, Zip});
    QCOMPARE(single->toColumnIndex(), 0);
    QCOMPARE(single->summary(), QStringLiteral("Town"));
    QCOMPARE(single->toText(), QStringLiteral("1"));
    QCOMPARE(list->columnIndexes(), (QList<int> {0, 1}));

    m_node.dataset()->removeColumn(0);
    QCOMPARE(single->toColumnIndex(), -1);
    QVERIFY(single->isUnset());
    QCOMPARE(single->summary(), QStringLiteral("<None selected>"));
    QCOMPARE(single->toColumnId(), City);

    QList<int> indexes;
    QVERIFY(!list->toColumnIndexes(&indexes, true));
    QCOMPARE(indexes, QList<int> {0});
    QVERIFY(!list->toColumnIndexes(&indexes, false));
    QCOMPARE(indexes, (QList<int> {-1, 0}));
    QCOMPARE(list->toColumns(), (QList<ColumnId> {City, Name}));
    QCOMPARE(list->toText(), fields({"0", "1"}));
    QCOMPARE(list->summary(), QStringLiteral("1 column(s) (Name)"));
}

void TestParameter::remapColumnIds_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QVariant>("expected");

    const ColumnId NewName(9, 1);
    FilterTerms filter;
    filter.terms = {FilterTerm {Name, 1, "a"}, FilterTerm {Age, 1, "b"}, FilterTerm {Zip, 1, "c"}};
    FilterTerms filterAfter = filter;
    filterAfter.terms[0].column = NewName;
    filterAfter.terms[1].column = ColumnId();
    IfTerms ifTerms;
    ifTerms.branches
        = {IfBranch {{FilterTerm {Zip, 1, "a"}}, "x"}, IfBranch {{FilterTerm {Name, 1, "b"}}, "y"}};
    IfTerms ifAfter = ifTerms;
    ifAfter.branches[1].terms[0].column = NewName;

    auto row = [](const char *name, ParameterType kind, const QVariant &value,
                  const QVariant &expected) {
        QTest::newRow(name) << int(kind) << value << expected;
    };
    row("single", ParameterType::SingleColumn, columnIdToVariant(Name), columnIdToVariant(NewName));
    row("single cleared", ParameterType::SingleColumn, columnIdToVariant(Age),
        columnIdToVariant(ColumnId()));
    row("single untouched", ParameterType::SingleColumn, columnIdToVariant(Zip), QVariant());
    row("columns", ParameterType::MultipleColumnsOrdered, columns({Zip, Age, Name}),
        columns({Zip, NewName}));
    row("reorder untouched", ParameterType::ReorderColumns, columns({Zip, City}), QVariant());
    row("sort", ParameterType::SortColumnsOrdered, sortColumns({{Name, false}, {Age, true}}),
        sortColumns({{NewName, false}}));
    row("filter", ParameterType::FilterColumns, filter.toVariant(), filterAfter.toVariant());
    row("if", ParameterType::If, ifTerms.toVariant(), ifAfter.toVariant());
    row("rename", ParameterType::RenameColumns,
        columnRenamesToVariant({{Name, "n"}, {Age, "a"}, {Zip, "z"}}),
        columnRenamesToVariant({{NewName, "n"}, {Zip, "z"}}));
    row("split rows", ParameterType::SplitRows, splitRows(false, false, 2, Name, 2),
        splitRows(false, false, 2, NewName, 2));
    row("unique", ParameterType::Unique, uniqueColumns({{Name, 0}, {City, 2}}),
        uniqueColumns({{NewName, 0}, {City, 2}}));
}

// Name gets a new id, Age is cleared, the others stay; an invalid expected value means that
// nothing changes.
void TestParameter::remapColumnIds()
{
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    QFETCH(QVariant, expected);

    const QHash<ColumnId, ColumnId> map {{Name, ColumnId(9, 1)}, {Age, ColumnId()}, {City, City}};
    const auto p = make(ParameterType(kind), value);
    const bool changed = p->remapColumnIds(map);
    QCOMPARE(changed, expected.isValid());
    QCOMPARE(p->value(), expected.isValid() ? expected : value);
}

void TestParameter::isUnset_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("required");
    QTest::addColumn<bool>("unset");

    FilterTerms filter;
    IfTerms ifTerms;
    auto row = [](const char *name, ParameterType kind, const QVariant &value, bool required,
                  bool unset) {
        QTest::newRow(name) << int(kind) << value << required << unset;
    };

    row("column resolves", ParameterType::SingleColumn, columnIdToVariant(Zip), true, false);
    row("column missing", ParameterType::SingleColumn, columnIdToVariant(Gone), true, true);
    row("column none", ParameterType::SingleColumn, columnIdToVariant(ColumnId()), true, true);
    row("column optional", ParameterType::SingleColumn, columnIdToVariant(ColumnId()), false,
        false);
    row("columns empty", ParameterType::MultipleColumns, columns({}), true, true);
    row("columns kept though gone", ParameterType::MultipleColumns, columns({Gone}), true, false);
    row("sort empty", ParameterType::SortColumns, sortColumns({}), true, true);
    row("sort ordered set", ParameterType::SortColumnsOrdered, sortColumns({{Age, true}}), true,
        false);
    row("filter no terms", ParameterType::FilterColumns, filter.toVariant(), true, true);
    filter.terms = {FilterTerm {ColumnId(), 19, QString()}};
    row("filter a term", ParameterType::FilterColumns, filter.toVariant(), true, false);
    row("if no branch", ParameterType::If, ifTerms.toVariant(), true, true);
    ifTerms.branches = {IfBranch {{}, "x"}};
    row("if a branch", ParameterType::If, ifTerms.toVariant(), true, false);
    row("replace none", ParameterType::ReplaceTerms, replaceTerms({}), true, true);
    row("replace a term", ParameterType::ReplaceTerms, replaceTerms({{0, "a", ""}}), true, false);
    row("selection first required", ParameterType::Selection, "Any", true, true);
    row("selection first optional", ParameterType::Selection, "Any", false, false);
    row("selection other required", ParameterType::Selection, "Last", true, false);
    row("text empty required", ParameterType::Text, "", true, true);
    row("text empty optional", ParameterType::Text, "", false, false);
    row("text blank", ParameterType::Text, " ", true, false);
    row("long text empty", ParameterType::LongText, "", true, true);
    row("int zero required", ParameterType::Int, 0, true, true);
    row("int zero optional", ParameterType::Int, 0, false, false);
    row("int set required", ParameterType::Int, 3, true, false);
    row("char null", ParameterType::Char, QChar(), true, true);
    row("char set", ParameterType::Char, QChar(','), true, false);
    row("script blank", ParameterType::Script, " \n\t", true, true);
    row("script set", ParameterType::Script, "x", true, false);
    row("split rows default", ParameterType::SplitRows, SplitRowsTerms().toVariant(), true, true);
    row("split rows by name", ParameterType::SplitRows, splitRows(true, false, 1, Gone, 0), true,
        false);
    row("split rows automatic", ParameterType::SplitRows, splitRows(false, true, 1, Gone, 0), true,
        false);
    row("split rows every", ParameterType::SplitRows, splitRows(false, false, 2, Age, 2), true,
        false);
    row("split rows column gone", ParameterType::SplitRows, splitRows(false, false, 2, Gone, 2),
        true, true);
    row("split rows no times", ParameterType::SplitRows, splitRows(false, false, 2, Age, 0), true,
        true);
    row("unique none keyed", ParameterType::Unique, uniqueColumns({{Name, 1}, {Age, 3}}), true,
        true);
    row("unique keyed", ParameterType::Unique, uniqueColumns({{Name, 1}, {Age, 0}}), true, false);
    row("bool off", ParameterType::Bool, false, true, false);
    row("real zero", ParameterType::Real, 0.0, true, false);
    row("label", ParameterType::Label, QVariant(), true, false);
    row("verify rules empty", ParameterType::VerifyRules, "", true, false);
    row("date invalid", ParameterType::Date, QDate(), true, false);
}

void TestParameter::isUnset()
{
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    QFETCH(bool, required);
    QFETCH(bool, unset);

    const auto p = make(ParameterType(kind), value, Choices);
    p->setColumnRequired(required);
    p->setTextRequired(required);
    p->setIntRequired(required);
    p->setSelectionRequired(required);
    QCOMPARE(p->isUnset(), unset);
}

void TestParameter::summary_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");

    FilterTerms filter;
    filter.terms = {FilterTerm {Name, 1, "a"}, FilterTerm {ColumnId(), 19, ""}};
    IfTerms ifTerms;
    ifTerms.branches = {IfBranch {{}, "a"}, IfBranch {{}, "b"}, IfBranch {{}, "c"}};
    auto row
        = [](const char *name, ParameterType kind, const QVariant &value, const QString &expected) {
              QTest::newRow(name) << int(kind) << value << expected;
          };

    row("column", ParameterType::SingleColumn, columnIdToVariant(City), "City");
    row("column missing", ParameterType::SingleColumn, columnIdToVariant(Gone), "<None selected>");
    row("columns by position", ParameterType::MultipleColumns, columns({City, Name}),
        "2 column(s) (Name,City)");
    row("columns in given order", ParameterType::MultipleColumnsOrdered, columns({City, Name}),
        "2 column(s) (City,Name)");
    row("columns beyond three", ParameterType::ReorderColumns, columns({Zip, City, Age, Name}),
        "4 column(s) (Zip,City,Age...)");
    row("columns none", ParameterType::MultipleColumns, columns({}), "0 column(s)");
    row("columns only resolved", ParameterType::MultipleColumns, columns({Gone, Age}),
        "1 column(s) (Age)");
    row("sort", ParameterType::SortColumns, sortColumns({{Zip, false}, {Name, true}}),
        "2 column(s) (Zip,Name)");
    row("filter", ParameterType::FilterColumns, filter.toVariant(), "2 term(s)");
    row("replace", ParameterType::ReplaceTerms, replaceTerms({{0, "a", "b"}}), "1 term(s)");
    row("bool yes", ParameterType::Bool, true, "Yes");
    row("bool no", ParameterType::Bool, false, "No");
    row("selection", ParameterType::Selection, "Last", "Last");
    row("text", ParameterType::Text, "a^b", "a^b");
    row("long text", ParameterType::LongText, "x\ny", "x\ny");
    row("script", ParameterType::Script, "$(1)", "$(1)");
    row("int", ParameterType::Int, -1234, "-1234");
    row("real grouped", ParameterType::Real, 1234.5, "1,234.5");
    row("real decimals", ParameterType::Real, 0.125, "0.125");
    row("real whole", ParameterType::Real, 3.0, "3");
    row("char space", ParameterType::Char, QChar(' '), "<Space>");
    row("char tab", ParameterType::Char, QChar('\t'), "<Tab>");
    row("char other", ParameterType::Char, QChar(';'), ";");
    row("if", ParameterType::If, ifTerms.toVariant(), "3 if/elseif + else");
    row("rename", ParameterType::RenameColumns,
        columnRenamesToVariant({{Name, "n"}, {Zip, "z"}, {Gone, "g"}}), "2 column(s) renamed");
    row("split by name", ParameterType::SplitRows, splitRows(true, true, 2, Age, 3),
        "By matching column names");
    row("split automatic", ParameterType::SplitRows, splitRows(false, true, 2, Age, 3),
        "Automatically by column names");
    row("split once", ParameterType::SplitRows, splitRows(false, false, 2, Age, 1), "1 time");
    row("split every", ParameterType::SplitRows, splitRows(false, false, 2, Age, 3),
        "every 2 column(s), 3 times");
    row("unique", ParameterType::Unique, uniqueColumns({{Name, 0}, {Age, 0}, {City, 3}}),
        "2 unique column(s)");
    const QVariantList datasetRule {3, 10, 2, true};
    row("verify rules", ParameterType::VerifyRules,
        QVariant(QVariantList {QVariantList {QVariant(datasetRule)}, QVariantList()}),
        "1 dataset rule(s) and 0 column rule(s).");
    row("verify rules empty", ParameterType::VerifyRules, "",
        "0 dataset rule(s) and 0 column rule(s).");
    row("label", ParameterType::Label, QVariant(), "");
    row("date", ParameterType::Date, QDate(2024, 3, 7), "3/7/24");
    row("date invalid", ParameterType::Date, QDate(), "1/1/00");
    row("locale", ParameterType::Locale, QLocale(QLocale::German, QLocale::Germany),
        "German (Germany)");
    row("locale unset", ParameterType::Locale, QVariant(), "English (United States)");
}

void TestParameter::summary()
{
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    QFETCH(QString, expected);
    QCOMPARE(make(ParameterType(kind), value, Choices)->summary(), expected);
}

void TestParameter::selectAllAndOnlyColumn()
{
    const auto all = make(ParameterType::MultipleColumns, columns({Age}));
    QVERIFY(all->selectAllColumns());
    QCOMPARE(all->toColumns(), (QList<ColumnId> {Name, Age, City, Zip}));
    const auto single = make(ParameterType::SingleColumn, QVariant());
    QVERIFY(!single->selectAllColumns());
    QVERIFY(!single->selectOnlyColumn());
    QVERIFY(single->toColumnId().isNull());

    SourceNode narrow;
    *narrow.dataset() = makeDataset({{"Only"}, {"x"}});
    narrow.dataset()->assignColumnIds(3);
    Parameter one(ParameterType::SingleColumn, "Column", "Column", &narrow);
    QVERIFY(one.toColumnId().isNull());
    QVERIFY(one.selectOnlyColumn());
    QCOMPARE(one.toColumnId(), ColumnId(3, 1));
    Parameter many(ParameterType::MultipleColumns, "Columns", "Columns", &narrow);
    QVERIFY(many.selectOnlyColumn());
    QCOMPARE(many.toColumns(), QList<ColumnId> {ColumnId(3, 1)});
    Parameter ordered(ParameterType::MultipleColumnsOrdered, "Columns", "Columns", &narrow);
    QVERIFY(!ordered.selectOnlyColumn());
    QVERIFY(ordered.toColumns().isEmpty());
    QVERIFY(ordered.selectAllColumns());
    QCOMPARE(ordered.toColumns(), QList<ColumnId> {ColumnId(3, 1)});

    narrow.dataset()->clear();
    Parameter empty(ParameterType::MultipleColumns, "Columns", "Columns", &narrow);
    QVERIFY(!empty.selectAllColumns());
    QVERIFY(!empty.selectOnlyColumn());
}

void TestParameter::cloneIsIndependent()
{
    const auto p = make(ParameterType::Int, 4);
    p->setMinimumInt(2);
    p->setSuffix(" rows");
    p->setRemembered(true);
    const std::unique_ptr<Parameter> copy(p->clone());
    p->setValue(9);
    p->setSuffix(QString());
    QCOMPARE(copy->value(), QVariant(4));
    QCOMPARE(copy->minimumInt(), 2);
    QCOMPARE(copy->suffix(), QStringLiteral(" rows"));
    QVERIFY(copy->remembered());
    QCOMPARE(copy->sourceNode(), static_cast<ColumnSource *>(&m_node));
}

void TestParameter::literalValuesPickTheValueConstructor()
{
    Parameter zero(ParameterType::Int, "Key", "Label", 0);
    QCOMPARE(zero.value(), QVariant(0));
    Parameter text(ParameterType::Text, "Key", "Label", "words");
    QCOMPARE(text.value(), QVariant(QStringLiteral("words")));
    Parameter flag(ParameterType::Bool, "Key", "Label", true);
    QCOMPARE(flag.value().userType(), int(QMetaType::Bool));
    Parameter character(ParameterType::Char, "Key", "Label", ',');
    QCOMPARE(character.toChar(), QChar(','));
    Parameter column(ParameterType::FilterColumns, "Key", "Label", nullptr);
    QVERIFY(column.toFilterTerms().keep);
    QVERIFY(column.value().isValid());
}

QTEST_GUILESS_MAIN(TestParameter)

#include "tst_parameter.moc"
