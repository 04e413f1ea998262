#include "shell/appearancesettings.h"
#include "testutil.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "inspection/datapage.h"
#include "inspection/datatablemodel.h"
#include "inspection/datatableview.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterwidgets.h"
#include "transforms/transformcase.h"
#include "workbench/itempane.h"
#include "workbench/transformitemwidget.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

#include <optional>

// Case with the explore buttons and room for two inputs, to reach what stands before the
// explore windows.
class ExploringCase : public TransformCase
{
public:
    const TransformDescriptor &descriptor() const override
    {
        static const TransformDescriptor descriptor = [] {
            TransformDescriptor d = TransformCase().descriptor();
            d.maximumInputs = 2;
            d.flags
                |= TransformDescriptor::HasKeyColumns | TransformDescriptor::HasDuplicateOptions;
            d.create = createTransform<ExploringCase>;
            return d;
        }();
        return descriptor;
    }
};

// Runs the model with every column of the input chosen, which the input knows only once read.
static void runOnAllColumns(FlowModel &model, TransformItem *node)
{
    model.process(FlowModel::RunAll);
    node->transform()->parameter(QStringLiteral("Columns"))->selectAllColumns();
    node->setStatus(FlowItem::NeedsUpdate, true);
    model.process(FlowModel::RunAll);
}

class TestTransformItemWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void optionsAreLaidOutInOrder();
    void parameterStatesEnableOptions_data();
    void parameterStatesEnableOptions();
    void exploreButtonsOnlyWhenOffered();
    void exploreMessages_data();
    void exploreMessages();
    void editTempWritesTheWholeDataset();
    void exportAsksBeforeReplacing_data();
    void exportAsksBeforeReplacing();
    void compareChangesHighlightsAndWalks();

private:
    std::optional<MessageBoxAnswerer> m_boxes;
};

void TestTransformItemWidget::init()
{
    Settings::instance()->setProcessingDelay(0.05);
    m_boxes.emplace();
}

void TestTransformItemWidget::cleanup()
{
    m_boxes.reset();
    DesktopHooks::setOpenUrlHandler(nullptr);
    DesktopHooks::setSaveFileHandler(nullptr);
}

void TestTransformItemWidget::optionsAreLaidOutInOrder()
{
    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("name\nAnn"), QPointF());
    TransformItem *node = addTransform(model, new TransformCase, {input}, QPointF(300, 0));
    TransformItemWidget page(node);
    const QList<Parameter *> parameters = node->transform()->parameters();
    QCOMPARE(page.parameterWidgets().size(), parameters.size());
    auto *form = page.optionsArea()->findChild<QFormLayout *>();
    QVERIFY(form);
    int lastRow = -1;
    for (int i = 0; i < parameters.size(); ++i) {
        ParameterWidget *widget = page.parameterWidgets().at(i);
        QCOMPARE(widget->parameter(), parameters.at(i));
        int row = -1;
        QFormLayout::ItemRole role;
        form->getWidgetPosition(widget->widget(), &row, &role);
        QVERIFY(row > lastRow);
        lastRow = row;
        auto *label = qobject_cast<QLabel *>(form->labelForField(widget->widget()));
        if (parameterLayout(parameters.at(i)) == ParameterLayout::Row) {
            QVERIFY(label);
            QCOMPARE(label->text(), parameters.at(i)->label() + QLatin1Char(':'));
        } else {
            QVERIFY(!label);
        }
    }
}

void TestTransformItemWidget::parameterStatesEnableOptions_data()
{
    QTest::addColumn<int>("steps");
    QTest::addColumn<bool>("keepUpperEnabled");
    QTest::newRow("lower") << 0 << false;
    QTest::newRow("upper") << 1 << false;
    QTest::newRow("title") << 2 << true;
    QTest::newRow("sentence") << 3 << true;
    QTest::newRow("lower camel") << 4 << false;
}

void TestTransformItemWidget::parameterStatesEnableOptions()
{
    QFETCH(int, steps);
    QFETCH(bool, keepUpperEnabled);
    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("name\nAnn"), QPointF());
    TransformItem *node = addTransform(model, new TransformCase, {input}, QPointF(300, 0));
    TransformItemWidget page(node);
    page.show();
    auto *caseWidget
        = dynamic_cast<SelectionParameterWidget *>(page.parameterWidget(QStringLiteral("Case")));
    QVERIFY(caseWidget && caseWidget->comboBox());
    ParameterWidget *keepUpper = page.parameterWidget(QStringLiteral("Keep_Upper"));
    QVERIFY(keepUpper);
    QVERIFY(!keepUpper->widget()->isEnabled());
    for (int i = 0; i < steps; ++i)
        QTest::keyClick(caseWidget->comboBox(), Qt::Key_Down);
    QCOMPARE(keepUpper->widget()->isEnabled(), keepUpperEnabled);
}

void TestTransformItemWidget::exploreButtonsOnlyWhenOffered()
{
    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("name\nAnn"), QPointF());
    TransformItem *plain = addTransform(model, new TransformCase, {input}, QPointF(300, 0));
    TransformItemWidget plainPage(plain);
    QVERIFY(!plainPage.exploreKeysButton());
    QVERIFY(!plainPage.exploreDuplicatesButton());
    TransformItem *exploring = addTransform(model, new ExploringCase, {input}, QPointF(300, 200));
    TransformItemWidget page(exploring);
    QVERIFY(page.exploreKeysButton());
    QCOMPARE(page.exploreKeysButton()->text(), QStringLiteral("Explore Keys..."));
    QVERIFY(page.exploreDuplicatesButton());
    QCOMPARE(page.exploreDuplicatesButton()->text(), QStringLiteral("Explore Duplicates"));
}

void TestTransformItemWidget::exploreMessages_data()
{
    QTest::addColumn<QStringList>("inputs");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("duplicates");
    const QString notYet = QStringLiteral("Explore %1 is not yet available.");
    QTest::newRow("no input") << QStringList() << "2 inputs are required to explore keys."
                              << "An input is required to explore duplicates.";
    QTest::newRow("empty input") << QStringList {QString()}
                                 << "2 inputs are required to explore keys."
                                 << "Input dataset is empty.";
    QTest::newRow("header only") << QStringList {QStringLiteral("name")}
                                 << "2 inputs are required to explore keys."
                                 << "Input dataset has no rows.";
    QTest::newRow("two inputs") << QStringList {QStringLiteral("name\nAnn"),
                                                QStringLiteral("name\nBob")}
                                << notYet.arg(QStringLiteral("Keys"))
                                << notYet.arg(QStringLiteral("Duplicates"));
}

void TestTransformItemWidget::exploreMessages()
{
    QFETCH(QStringList, inputs);
    QFETCH(QString, keys);
    QFETCH(QString, duplicates);
    FlowModel model;
    QList<FlowItem *> nodes;
    for (int i = 0; i < inputs.size(); ++i)
        nodes.append(addTextInput(model, inputs.at(i), QPointF(0, 200 * i)));
    TransformItem *node = addTransform(model, new ExploringCase, nodes, QPointF(300, 0));
    model.process(FlowModel::RunAll);
    TransformItemWidget page(node);
    page.show();
    QTest::mouseClick(page.exploreKeysButton(), Qt::LeftButton);
    QTest::mouseClick(page.exploreDuplicatesButton(), Qt::LeftButton);
    QCOMPARE(m_boxes->texts, (QStringList {keys, duplicates}));
}

void TestTransformItemWidget::editTempWritesTheWholeDataset()
{
    FlowModel model;
    InputItem *input = addTextInput(
        model, QStringLiteral("name,city\nAnn,Paris\nBob,\"Rome, Italy\""), QPointF());
    TransformItem *node = addTransform(model, new TransformCase, {input}, QPointF(300, 0));
    runOnAllColumns(model, node);
    QList<QUrl> opened;
    DesktopHooks::setOpenUrlHandler([&opened](const QUrl &url) {
        opened.append(url);
        return true;
    });
    TransformItemWidget page(node);
    page.show();
    QTest::mouseClick(page.editTempButton(), Qt::LeftButton);
    QCOMPARE(opened.size(), 1);
    QVERIFY(m_boxes->texts.isEmpty());
    const QString path = opened.first().toLocalFile();
    QVERIFY(path.endsWith(QLatin1String(".csv")));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    file.close();
    QFile::remove(path);
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    QCOMPARE(bytes, QByteArray("name,city\r\nann,paris\r\nbob,\"rome, italy\"\r\n"));

    // A failed opening is told, with the file's path.
    DesktopHooks::setOpenUrlHandler([](const QUrl &) { return false; });
    QTest::mouseClick(page.editTempButton(), Qt::LeftButton);
    QCOMPARE(m_boxes->texts.size(), 1);
    QVERIFY(m_boxes->texts.first().startsWith(QStringLiteral("Unable to open '")));
    QVERIFY(m_boxes->texts.first().endsWith(
        QStringLiteral("'. Make sure there is an editor associated with this file type.")));
}

void TestTransformItemWidget::exportAsksBeforeReplacing_data()
{
    QTest::addColumn<bool>("replace");
    QTest::newRow("replace") << true;
    QTest::newRow("keep") << false;
}

void TestTransformItemWidget::exportAsksBeforeReplacing()
{
    QFETCH(bool, replace);
    m_boxes->answer = replace ? QMessageBox::Yes : QMessageBox::No;
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("out.tsv"));
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    DesktopHooks::setSaveFileHandler(
        [path](QWidget *, const QString &, const QString &, const QString &) { return path; });

    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("name,city\nAnn,Paris"), QPointF());
    TransformItem *node = addTransform(model, new TransformCase, {input}, QPointF(300, 0));
    runOnAllColumns(model, node);
    TransformItemWidget page(node);
    page.show();
    QTest::mouseClick(page.exportButton(), Qt::LeftButton);
    QCOMPARE(
        m_boxes->texts,
        QStringList {QStringLiteral("%1 already exists.\nDo you want to replace it?").arg(path)});
    QFile written(path);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QByteArray bytes = written.readAll();
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    QCOMPARE(bytes, replace ? QByteArray("name\tcity\r\nann\tparis\r\n") : QByteArray("old"));
}

void TestTransformItemWidget::compareChangesHighlightsAndWalks()
{
    Settings::instance()->setShowChanges(false);
    const QColor changed(0x12, 0x34, 0x56);
    AppearanceSettings().setChangedDataColor(changed);
    FlowModel flow;
    InputItem *input
        = addTextInput(flow, QStringLiteral("name,city\nANN,paris\nbob,ROME\nCY,OSLO"), QPointF());
    TransformItem *node = addTransform(flow, new TransformCase, {input}, QPointF(300, 0));
    node->transform()->parameter(QStringLiteral("Case"))->setValue(QStringLiteral("Upper case"));
    runOnAllColumns(flow, node);
    QCOMPARE(node->dataset()->cell(0, 1), QStringLiteral("PARIS"));

    TransformItemWidget page(node);
    page.show();
    DataTableView *view = page.dataPage()->view();
    DataTableModel *model = view->dataModel();
    const auto background = [model](int row, int column) {
        return model->index(row, column).data(Qt::BackgroundRole).value<QBrush>().color();
    };
    QVERIFY(!model->comparisonMode());
    QVERIFY(background(0, 1) != changed);

    QTest::mouseClick(page.compareCheck(), Qt::LeftButton, {}, QPoint(5, 5));
    QVERIFY(page.compareCheck()->isChecked());
    QVERIFY(Settings::instance()->showChanges());
    QVERIFY(model->comparisonMode());
    QCOMPARE(background(0, 1), changed);
    QCOMPARE(background(1, 0), changed);
    QVERIFY(background(0, 0) != changed);
    QVERIFY(background(2, 1) != changed);
    QCOMPARE(model->index(0, 1).data(Qt::ToolTipRole).toString(),
             QStringLiteral("'paris' -> 'PARIS'"));

    // Next and previous visit the changed cells only, and stop at the ends.
    const auto current = [view] {
        return qMakePair(view->currentIndex().row(), view->currentIndex().column());
    };
    QTest::mouseClick(page.nextChangeButton(), Qt::LeftButton);
    QCOMPARE(current(), qMakePair(0, 1));
    QTest::mouseClick(page.nextChangeButton(), Qt::LeftButton);
    QCOMPARE(current(), qMakePair(1, 0));
    QTest::mouseClick(page.nextChangeButton(), Qt::LeftButton);
    QCOMPARE(current(), qMakePair(1, 0));
    QTest::mouseClick(page.previousChangeButton(), Qt::LeftButton);
    QCOMPARE(current(), qMakePair(0, 1));

    // With the first row filtered out, its change is skipped.
    model->setRowFilter(QStringLiteral("o"), 1);
    view->setCurrentIndex(QModelIndex());
    QTest::mouseClick(page.nextChangeButton(), Qt::LeftButton);
    QCOMPARE(model->datasetRow(view->currentIndex().row()), 1);
    QCOMPARE(model->datasetColumn(view->currentIndex().column()), 0);

    QTest::mouseClick(page.compareCheck(), Qt::LeftButton, {}, QPoint(5, 5));
    QVERIFY(!model->comparisonMode());
    QVERIFY(!page.nextChangeButton()->isEnabled());
}

TABULON_TEST_MAIN(TestTransformItemWidget)
#include "tst_transformitemwidget.moc"
