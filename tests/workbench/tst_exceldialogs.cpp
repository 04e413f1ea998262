#include "testutil.h"

#include "flow/document.h"
#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/outputitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/undo.h"
#include "shell/delaytimer.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "workbench/exceldialogs.h"
#include "workbench/inputitemwidget.h"
#include "workbench/iowidgets.h"
#include "workbench/itempane.h"
#include "workbench/mainwindow.h"
#include "workbench/outputitemwidget.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

#include <algorithm>

// The sheets of books made by openpyxl, chosen in the dialogs as a user would: on dropping a
// book, on the input page, and for an output's style template.
class TestExcelDialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void droppedBookGivesAnInputPerSheet_data();
    void droppedBookGivesAnInputPerSheet();
    void inputPageChoosesASheet_data();
    void inputPageChoosesASheet();
    void styleTemplateTakesTheChosenSheet();

private:
    QString book(const QString &name) const { return m_dir.filePath(name); }
    // Answers the sheet dialogs: ticks, or steps down (up when negative) in the combo, then OK
    // or Cancel; what they showed is kept.
    void answerSheetDialog(const QList<int> &ticks, int comboSteps, bool accept);

    QTemporaryDir m_dir;
    Settings *m_settings = nullptr;
    QStringList m_messages;
    QStringList m_shownLabels;
    QString m_shownCurrent;
    int m_dialogs = 0;
};

void TestExcelDialogs::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // The recovery file of the window lives in the temporary folder; keep ours apart.
    QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("tmp")));
    qputenv("TMPDIR", QFile::encodeName(m_dir.filePath(QStringLiteral("tmp"))));
    m_settings = new Settings(m_dir.filePath(QStringLiteral("tabulon.ini")));
    Settings::setInstance(m_settings);
    // three.xlsx: three sheets with data around an empty one. one.xlsx: an empty first sheet
    // and one with data, which must be named to be read. empty.xlsx: nothing to read.
    const QString script = QStringLiteral(R"(
import openpyxl, sys
folder = sys.argv[1]
wb = openpyxl.Workbook()
alpha = wb.active
alpha.title = 'Alpha'
for row in (['a', 'b'], [1, 2], [3, 4]):
    alpha.append(row)
wb.create_sheet('Empty')
wb.create_sheet('Beta').append(['beta'])
gamma = wb.create_sheet('Gamma')
gamma.append(['x', 'y', 'z'])
gamma.append(['gamma', 1, 2])
wb.save(folder + '/three.xlsx')
wb = openpyxl.Workbook()
wb.active.title = 'Blank'
data = wb.create_sheet('Data')
data.append(['only'])
data.append(['one'])
wb.save(folder + '/one.xlsx')
openpyxl.Workbook().save(folder + '/empty.xlsx')
)");
    QProcess python;
    python.start(QStringLiteral(TABULON_PYTHON), {QStringLiteral("-c"), script, m_dir.path()});
    QVERIFY(python.waitForFinished(60000));
    QVERIFY2(python.exitCode() == 0, python.readAllStandardError().constData());
    // The same text as a book that isn't one, and as the text file dropped beside the books.
    for (const QString &name : {QStringLiteral("broken.xlsx"), QStringLiteral("a.csv")}) {
        QFile file(book(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("name,amount\nann,1\n");
    }
}

void TestExcelDialogs::init()
{
    m_settings->clear();
    m_settings->setProcessingDelay(0.0);
    DelayTimer::setManualClock(true);
    m_messages.clear();
    m_shownLabels.clear();
    m_shownCurrent.clear();
    m_dialogs = 0;
    MessageBoxes::setHandler([this](QMessageBox::Icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons, QMessageBox::StandardButton) {
        m_messages.append(text);
        return QMessageBox::Ok;
    });
}

void TestExcelDialogs::cleanup()
{
    DialogExec::setHook({});
    DesktopHooks::setOpenFileHandler({});
    MessageBoxes::setHandler(nullptr);
    DelayTimer::setManualClock(false);
}

void TestExcelDialogs::cleanupTestCase()
{
    Settings::setInstance(nullptr);
    delete m_settings;
}

void TestExcelDialogs::answerSheetDialog(const QList<int> &ticks, int comboSteps, bool accept)
{
    DialogExec::setHook([=](QDialog *dialog) {
        ++m_dialogs;
        dialog->show();
        QDialogButtonBox *buttons = nullptr;
        if (auto *several = qobject_cast<ExcelWorksheetsDialog *>(dialog)) {
            buttons = several->buttons();
            const QList<QCheckBox *> checks = several->checks();
            for (QCheckBox *check : checks)
                m_shownLabels.append(check->text());
            // Nothing ticked yet, nothing to take.
            if (buttons->button(QDialogButtonBox::Ok)->isEnabled())
                return int(QDialog::Rejected);
            for (int tick : ticks)
                QTest::mouseClick(checks.at(tick), Qt::LeftButton);
        } else if (auto *one = qobject_cast<ExcelWorksheetDialog *>(dialog)) {
            buttons = one->buttons();
            m_shownCurrent = one->combo()->currentText();
            one->combo()->setFocus();
            for (int step = 0; step < qAbs(comboSteps); ++step)
                QTest::keyClick(one->combo(), comboSteps > 0 ? Qt::Key_Down : Qt::Key_Up);
        } else {
            return int(QDialog::Rejected);
        }
        QTest::mouseClick(buttons->button(accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel),
                          Qt::LeftButton);
        return dialog->result();
    });
}

void TestExcelDialogs::droppedBookGivesAnInputPerSheet_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QList<int>>("ticks");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QStringList>("sheets");
    QTest::addColumn<QString>("message");
    QTest::newRow("two of three ticked")
        << "three.xlsx" << QList<int>({0, 2}) << true
        << QStringList({QStringLiteral("Alpha"), QStringLiteral("Gamma")}) << QString();
    QTest::newRow("cancelled") << "three.xlsx" << QList<int>({1}) << false << QStringList()
                               << QString();
    QTest::newRow("one sheet with data, no dialog")
        << "one.xlsx" << QList<int>() << true << QStringList({QStringLiteral("Data")}) << QString();
    QTest::newRow("no sheet with data") << "empty.xlsx" << QList<int>() << true << QStringList()
                                        << QStringLiteral("Can't import any sheets.");
    QTest::newRow("not a book") << "broken.xlsx" << QList<int>() << true << QStringList()
                                << QStringLiteral("Unable to get sheets from '");
}

void TestExcelDialogs::droppedBookGivesAnInputPerSheet()
{
    QFETCH(QString, name);
    QFETCH(QList<int>, ticks);
    QFETCH(bool, accept);
    QFETCH(QStringList, sheets);
    QFETCH(QString, message);
    m_settings->setOpenAutoRun(0);
    removeRecoveryFile();
    MainWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    answerSheetDialog(ticks, 0, accept);
    // A text file goes first, as several files are dropped together.
    const bool added = window.addFiles(
        {QUrl::fromLocalFile(book(QStringLiteral("a.csv"))), QUrl::fromLocalFile(book(name))},
        QPointF(0, 0));
    QVERIFY(added);

    QList<Node *> nodes = window.graphScene()->nodesOfType(Node::InputType);
    std::sort(nodes.begin(), nodes.end(),
              [](const Node *a, const Node *b) { return a->pos().y() < b->pos().y(); });
    QStringList shownSheets;
    for (const Node *node : qAsConst(nodes))
        shownSheets.append(static_cast<const InputItem *>(node->item())->worksheet());
    QCOMPARE(shownSheets, QStringList(QString()) + sheets);
    for (int i = 1; i < nodes.size(); ++i) {
        const auto *input = static_cast<const InputItem *>(nodes.at(i)->item());
        QCOMPARE(input->path(), book(name));
        QCOMPARE(input->fileType(), int(FileTypeXlsx));
        QVERIFY(nodes.at(i)->pos().y() > nodes.at(i - 1)->pos().y());
    }
    QCOMPARE(m_dialogs, name == QLatin1String("three.xlsx") ? 1 : 0);
    if (m_dialogs)
        QCOMPARE(m_shownLabels,
                 (QStringList {QStringLiteral("Alpha (2 cols x 3 rows)"),
                               QStringLiteral("Beta (1 cols x 1 rows)"),
                               QStringLiteral("Gamma (3 cols x 2 rows)")}));
    if (message.isEmpty()) {
        QVERIFY2(m_messages.isEmpty(), qPrintable(m_messages.join(QLatin1Char('\n'))));
    } else {
        QCOMPARE(m_messages.size(), 1);
        QVERIFY2(m_messages.first().startsWith(message), qPrintable(m_messages.first()));
    }

    // The sheets came in with the file they belong to, in one step.
    QCOMPARE(window.undoHistory()->undoHint(), QStringLiteral("add file(s)"));
    window.undoHistory()->undo();
    QVERIFY(window.graphScene()->nodesOfType(Node::InputType).isEmpty());
    window.setWindowModified(false);
}

void TestExcelDialogs::inputPageChoosesASheet_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("steps");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QString>("firstHeader");
    QTest::addColumn<QString>("message");
    // The page starts on sheet "beta", which the dialog finds without regard to case.
    QTest::newRow("next sheet") << "three.xlsx" << 1 << true << "Gamma"
                                << "x" << QString();
    QTest::newRow("cancelled") << "three.xlsx" << 1 << false << "beta"
                               << "beta" << QString();
    QTest::newRow("missing book") << "gone.xlsx" << 0 << true << "beta" << QString()
                                  << QStringLiteral("File '%1' not found.");
}

void TestExcelDialogs::inputPageChoosesASheet()
{
    QFETCH(QString, name);
    QFETCH(int, steps);
    QFETCH(bool, accept);
    QFETCH(QString, sheet);
    QFETCH(QString, firstHeader);
    QFETCH(QString, message);
    FlowModel model;
    auto *input = new InputItem;
    input->setInputFileType(FileTypeXlsx);
    input->setHeader(InputItem::HasHeader);
    input->setPath(book(name));
    input->setWorksheet(QStringLiteral("beta"));
    model.addItem(input);
    model.process(FlowModel::RunAll);
    ItemPane pane;
    pane.show();
    pane.showItems({input});
    auto *page = qobject_cast<InputItemWidget *>(pane.currentWidget());
    QVERIFY(page);
    QVERIFY(page->sheetEdit()->isVisible());
    QCOMPARE(page->sheetEdit()->text(), QStringLiteral("beta"));

    answerSheetDialog({}, steps, accept);
    QTest::mouseClick(page->chooseSheetButton(), Qt::LeftButton);
    QCOMPARE(input->worksheet(), sheet);
    QCOMPARE(page->sheetEdit()->text(), sheet);
    if (message.isEmpty()) {
        QCOMPARE(m_dialogs, 1);
        QCOMPARE(m_shownCurrent, QStringLiteral("Beta (1 cols x 1 rows)"));
        QCOMPARE(input->status(), int(FlowItem::UpToDate));
        QCOMPARE(input->dataset()->headers().value(0), firstHeader);
    } else {
        QCOMPARE(m_dialogs, 0);
        QCOMPARE(m_messages, QStringList(message.arg(QDir::toNativeSeparators(book(name)))));
    }
}

void TestExcelDialogs::styleTemplateTakesTheChosenSheet()
{
    FlowModel model;
    auto *output = new OutputItem(-1, m_dir.filePath(QStringLiteral("out.xlsx")));
    output->setExcelUseStyleTemplate(true);
    output->setExcelStyleTemplatePath(book(QStringLiteral("three.xlsx[Gamma]")));
    model.addItem(output);
    OutputItemWidget page(output);
    page.show();
    QStringList offered = {book(QStringLiteral("three.xlsx")), book(QStringLiteral("one.xlsx"))};
    DesktopHooks::setOpenFileHandler([&](QWidget *, const QString &, const QString &,
                                         const QString &) { return offered.takeFirst(); });
    ExcelStyleTemplateWidget *style = page.styleTemplateWidget();

    // Several sheets: asked, with the sheet of the path preselected.
    answerSheetDialog({}, -1, true);
    QTest::mouseClick(style->browseButton(), Qt::LeftButton);
    QCOMPARE(m_shownCurrent, QStringLiteral("Gamma (3 cols x 2 rows)"));
    QCOMPARE(output->excelStyleTemplatePath(), book(QStringLiteral("three.xlsx[Beta]")));
    QCOMPARE(style->pathEdit()->text(), output->excelStyleTemplatePath());

    // One sheet with data: taken by name without a question.
    QTest::mouseClick(style->browseButton(), Qt::LeftButton);
    QCOMPARE(m_dialogs, 1);
    QCOMPARE(output->excelStyleTemplatePath(), book(QStringLiteral("one.xlsx[Data]")));
}

TABULON_TEST_MAIN(TestExcelDialogs)
#include "tst_exceldialogs.moc"
