#include "testutil.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/outputitem.h"
#include "io/delimitedtext.h"
#include "io/excelwriter.h"
#include "shell/delaytimer.h"
#include "shell/settings.h"
#include "shell/undostep.h"
#include "workbench/exceldialogs.h"
#include "workbench/iowidgets.h"
#include "workbench/itempane.h"
#include "workbench/outputitemwidget.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

// Keeps the names of the undo steps the page records.
class HintRecorder : public UndoRecorder
{
public:
    void prepare(const QString &hint) override { hints.append(hint); }
    void finish() override { }
    QStringList hints;
};

class TestOutputItemWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void delimiterChangeRewritesTheFile();
    void optionRowsFollowFileType_data();
    void optionRowsFollowFileType();
    void blockedExtensionIsRefused();
    void pathOffersItsType_data();
    void pathOffersItsType();
    void typeOffersItsExtension_data();
    void typeOffersItsExtension();
    void disabledModeStandsOut();
    void headerOnlyIfEmptyFollowsHeader();
    void rowsLeaveTheFormAndComeBackInPlace();
    void columnFormatsFollowTheDialog_data();
    void columnFormatsFollowTheDialog();

private:
    QTemporaryDir m_folder;
    std::optional<MessageBoxAnswerer> m_boxes;
};

void TestOutputItemWidget::init()
{
    // The pause before a run ends when a test fires it, not on the wall clock.
    DelayTimer::setManualClock(true);
    Settings::instance()->setProcessingDelay(0.05);
    m_boxes.emplace();
}

void TestOutputItemWidget::cleanup()
{
    m_boxes.reset();
}

void TestOutputItemWidget::delimiterChangeRewritesTheFile()
{
    const QString path = m_folder.filePath(QStringLiteral("out.csv"));
    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("name,city\nAnn,Paris"), QPointF());
    auto *output = new OutputItem(-1, path);
    output->setByteOrderMark(false);
    output->setPos(QPointF(300, 0));
    model.addItem(output);
    model.connectItems(input, output);
    model.process(FlowModel::RunAll);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("name,city\r\nAnn,Paris\r\n"));
    file.close();

    ItemPane pane;
    pane.show();
    pane.showItems({output});
    auto *page = qobject_cast<OutputItemWidget *>(pane.currentWidget());
    QVERIFY(page);
    QComboBox *combo = page->delimWidget()->combo();
    combo->setCurrentIndex(combo->findData(int(DelimiterSemicolon)));
    QCOMPARE(output->delimiter(), int(DelimiterSemicolon));
    pane.delayTimer()->fire();
    QCOMPARE(output->status(), int(FlowItem::UpToDate));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("name;city\r\nAnn;Paris\r\n"));
}

void TestOutputItemWidget::optionRowsFollowFileType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("delimiter");
    QTest::addColumn<bool>("escape");
    QTest::addColumn<bool>("lineEndings");
    QTest::newRow("delimited") << int(FileTypeDelimited) << true << false << true;
    QTest::newRow("html") << int(FileTypeHtml) << false << true << true;
    QTest::newRow("markdown") << int(FileTypeMarkdown) << false << false << true;
    QTest::newRow("plain text") << int(FileTypePlainText) << false << false << true;
    QTest::newRow("xlsx") << int(FileTypeXlsx) << false << false << false;
    QTest::newRow("xls") << int(FileTypeXls) << false << false << false;
}

void TestOutputItemWidget::optionRowsFollowFileType()
{
    QFETCH(int, type);
    QFETCH(bool, delimiter);
    QFETCH(bool, escape);
    QFETCH(bool, lineEndings);
    FlowModel model;
    auto *output = new OutputItem;
    model.addItem(output);
    OutputItemWidget page(output);
    page.show();
    page.typeCombo()->setCurrentIndex(page.typeCombo()->findData(type));
    QCOMPARE(output->fileType(), type);
    QCOMPARE(page.delimWidget()->isVisible(), delimiter);
    QCOMPARE(page.quotingCombo()->isVisible(), delimiter);
    QCOMPARE(page.escapeCheck()->isVisible(), escape);
    QCOMPARE(page.lineEndingsCombo()->isVisible(), lineEndings);
    QCOMPARE(page.encodingCombo()->isVisible(), lineEndings);
    QVERIFY(page.writeModeCombo()->isVisible());
    // Line endings and the Excel rows exclude each other.
    QCOMPARE(page.sheetEdit()->isVisible(), !lineEndings);
    QCOMPARE(page.overwriteSheetCombo()->isVisible(), !lineEndings);
    QCOMPARE(page.excelFormatsWidget()->isVisible(), !lineEndings);
    QCOMPARE(page.styleTemplateWidget()->isVisible(), !lineEndings);
}

void TestOutputItemWidget::blockedExtensionIsRefused()
{
    FlowModel model;
    const QString before = m_folder.filePath(QStringLiteral("out.csv"));
    auto *output = new OutputItem(-1, before);
    model.addItem(output);
    OutputItemWidget page(output);
    page.show();
    const QString blocked = m_folder.filePath(QStringLiteral("run.exe"));
    page.pathEdit()->setFocus();
    page.pathEdit()->selectAll();
    QTest::keyClicks(page.pathEdit(), blocked);
    QTest::keyClick(page.pathEdit(), Qt::Key_Return);
    QCOMPARE(m_boxes->texts,
             QStringList {QStringLiteral("The extension for this file is blocked in "
                                         "'Preferences>Output Extensions':\n%1")
                              .arg(blocked)});
    QCOMPARE(output->path(), before);
    QCOMPARE(page.pathEdit()->text(), before);
}

void TestOutputItemWidget::pathOffersItsType_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QStringList>("questions");
    QTest::addColumn<int>("expectedType");
    QTest::newRow("same type") << "b.tsv" << true << QStringList() << int(FileTypeDelimited);
    QTest::newRow("html, yes") << "b.html" << true
                               << QStringList {QStringLiteral("Change file type to 'HTML'?")}
                               << int(FileTypeHtml);
    QTest::newRow("markdown, no") << "b.md" << false
                                  << QStringList {QStringLiteral("Change file type to 'Markdown'?")}
                                  << int(FileTypeDelimited);
}

void TestOutputItemWidget::pathOffersItsType()
{
    QFETCH(QString, name);
    QFETCH(bool, answer);
    QFETCH(QStringList, questions);
    QFETCH(int, expectedType);
    m_boxes->answer = answer ? QMessageBox::Yes : QMessageBox::No;
    FlowModel model;
    auto *output = new OutputItem(-1, m_folder.filePath(QStringLiteral("a.csv")));
    model.addItem(output);
    OutputItemWidget page(output);
    page.choosePath(m_folder.filePath(name));
    QCOMPARE(m_boxes->texts, questions);
    QCOMPARE(output->path(), m_folder.filePath(name));
    QCOMPARE(output->fileType(), expectedType);
    QCOMPARE(page.typeCombo()->currentData().toInt(), expectedType);
}

void TestOutputItemWidget::typeOffersItsExtension_data()
{
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("expectedName");
    QTest::newRow("yes") << true << "a.md";
    QTest::newRow("no") << false << "a.csv";
}

void TestOutputItemWidget::typeOffersItsExtension()
{
    QFETCH(bool, answer);
    QFETCH(QString, expectedName);
    m_boxes->answer = answer ? QMessageBox::Yes : QMessageBox::No;
    FlowModel model;
    auto *output = new OutputItem(-1, m_folder.filePath(QStringLiteral("a.csv")));
    model.addItem(output);
    OutputItemWidget page(output);
    page.show();
    page.typeCombo()->setCurrentIndex(page.typeCombo()->findData(int(FileTypeMarkdown)));
    QCOMPARE(m_boxes->texts, QStringList {QStringLiteral("Change file extension to 'md'?")});
    QCOMPARE(output->fileType(), int(FileTypeMarkdown));
    QCOMPARE(output->path(), m_folder.filePath(expectedName));
    QCOMPARE(page.pathEdit()->text(), m_folder.filePath(expectedName));
}

void TestOutputItemWidget::disabledModeStandsOut()
{
    FlowModel model;
    auto *output = new OutputItem(-1, m_folder.filePath(QStringLiteral("a.csv")));
    model.addItem(output);
    OutputItemWidget page(output);
    WriteModeComboBox *mode = page.writeModeCombo();
    QCOMPARE(mode->currentText(), QStringLiteral("Overwrite"));
    QVERIFY(mode->styleSheet().isEmpty());
    mode->setCurrentIndex(0);
    QCOMPARE(output->writeMode(), int(OutputItem::Disabled));
    QCOMPARE(mode->styleSheet(), QStringLiteral("QComboBox{ color: #fc3300; }"));
    // Only Overwrite decides between the whole Excel file and the sheet.
    QVERIFY(!page.overwriteSheetCombo()->isEnabled());
    QVERIFY(mode->toolTip().startsWith(QStringLiteral("Disabled=Do not write to this file.\n")));
}

void TestOutputItemWidget::headerOnlyIfEmptyFollowsHeader()
{
    FlowModel model;
    auto *output = new OutputItem(-1, m_folder.filePath(QStringLiteral("a.csv")));
    model.addItem(output);
    OutputItemWidget page(output);
    page.show();
    WriteHeaderWidget *header = page.writeHeaderWidget();
    QVERIFY(header->ifEmptyCheck()->isEnabled());
    QTest::mouseClick(header->writeHeaderCheck(), Qt::LeftButton);
    QVERIFY(!output->writeHeader());
    QVERIFY(!header->ifEmptyCheck()->isEnabled());
    QTest::mouseClick(header->writeHeaderCheck(), Qt::LeftButton);
    QTest::mouseClick(header->ifEmptyCheck(), Qt::LeftButton);
    QVERIFY(output->writeHeader());
    QVERIFY(!output->writeHeaderFirstAppendOnly());
}

// The fields of the form's rows, top to bottom.
static QList<QWidget *> formFields(const QFormLayout *form)
{
    QList<QWidget *> fields;
    for (int row = 0; row < form->rowCount(); ++row) {
        QLayoutItem *item = form->itemAt(row, QFormLayout::FieldRole);
        if (!item)
            item = form->itemAt(row, QFormLayout::SpanningRole);
        fields.append(item ? item->widget() : nullptr);
    }
    return fields;
}

void TestOutputItemWidget::rowsLeaveTheFormAndComeBackInPlace()
{
    FlowModel model;
    auto *output = new OutputItem;
    model.addItem(output);
    OutputItemWidget page(output);
    page.show();
    auto *form = page.optionsArea()->findChild<QFormLayout *>();
    QVERIFY(form);
    page.typeCombo()->setCurrentIndex(page.typeCombo()->findData(int(FileTypeDelimited)));
    const QList<QWidget *> delimited = formFields(form);
    QVERIFY(delimited.contains(page.delimWidget()));
    QVERIFY(!delimited.contains(page.escapeCheck()));

    // A row that doesn't apply leaves no empty space: it is not in the form at all.
    page.typeCombo()->setCurrentIndex(page.typeCombo()->findData(int(FileTypeHtml)));
    const QList<QWidget *> html = formFields(form);
    QVERIFY(!html.contains(page.delimWidget()));
    QVERIFY(!html.contains(page.quotingCombo()));
    QVERIFY(html.contains(page.escapeCheck()));
    QVERIFY(html.indexOf(page.writeHeaderWidget()) < html.indexOf(page.escapeCheck()));
    QVERIFY(html.indexOf(page.escapeCheck()) < html.indexOf(page.aliasEdit()));
    QVERIFY(!form->labelForField(page.quotingCombo()));

    page.typeCombo()->setCurrentIndex(page.typeCombo()->findData(int(FileTypeDelimited)));
    QCOMPARE(formFields(form), delimited);
    auto *label = qobject_cast<QLabel *>(form->labelForField(page.quotingCombo()));
    QVERIFY(label);
    QCOMPARE(label->text(), QStringLiteral("Quoting:"));
    QVERIFY(label->isVisible());
}

void TestOutputItemWidget::columnFormatsFollowTheDialog_data()
{
    QTest::addColumn<QList<int>>("stored");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QList<int>>("expected");
    // A column with no stored format shows, as it is written, as Text.
    const QString allText = QStringLiteral("name=Text born=Text city=Text");
    QTest::newRow("selected column to Date") << QList<int>() << allText << 1 << "Selected"
                                             << "Date" << true << QList<int>({5, 2, 5});
    QTest::newRow("all to Number") << QList<int>() << allText << -1 << "All"
                                   << "Number" << true << QList<int>({4, 4, 4});
    QTest::newRow("in the row's own combo") << QList<int>() << allText << 2 << QString()
                                            << "Hyperlink" << true << QList<int>({5, 5, 8});
    QTest::newRow("formats past the columns are kept")
        << QList<int>({4, 4, 4, 1}) << "name=Number born=Number city=Number" << 0 << "Selected"
        << "Date" << true << QList<int>({2, 4, 4, 1});
    QTest::newRow("cancel") << QList<int>({3}) << "name=General born=Text city=Text" << 1
                            << "Selected"
                            << "Date" << false << QList<int>({3});
    QTest::newRow("Text as before is no change") << QList<int>() << allText << -1 << "All"
                                                 << "Text" << true << QList<int>();
}

void TestOutputItemWidget::columnFormatsFollowTheDialog()
{
    QFETCH(QList<int>, stored);
    QFETCH(QString, shown);
    QFETCH(int, row);
    QFETCH(QString, mode);
    QFETCH(QString, value);
    QFETCH(bool, accept);
    QFETCH(QList<int>, expected);
    FlowModel model;
    InputItem *input
        = addTextInput(model, QStringLiteral("name,born,city\nAnn,2001-02-03,Paris"), QPointF());
    auto *output = new OutputItem(-1, m_folder.filePath(QStringLiteral("out.xlsx")));
    output->setExcelManualColFormats(stored);
    output->setPos(QPointF(300, 0));
    model.addItem(output);
    model.connectItems(input, output);
    // Only the source has run: the names come from it.
    input->run(false, false);
    OutputItemWidget page(output);
    page.show();
    HintRecorder recorder;
    UndoRecorder::setCurrent(&recorder);

    ExcelColumnFormatsWidget *formats = page.excelFormatsWidget();
    QVERIFY(!formats->editButton()->isEnabled());
    formats->combo()->setFocus();
    QTest::keyClicks(formats->combo(), QStringLiteral("Manual"));
    QCOMPARE(output->excelOutput(), int(ExcelFormatting::Manual));
    QVERIFY(formats->editButton()->isEnabled());

    QStringList shownNames;
    DialogExec::setHook([&](QDialog *dialog) {
        auto *choices = qobject_cast<ExcelColumnFormatsDialog *>(dialog);
        if (!choices)
            return int(QDialog::Rejected);
        choices->show();
        QTableWidget *table = choices->table();
        for (int r = 0; r < table->rowCount(); ++r)
            shownNames.append(table->item(r, 0)->text() + QLatin1Char('=')
                              + choices->valueCombo(r)->currentText());
        if (row >= 0)
            QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                              table->visualItemRect(table->item(row, 0)).center());
        QComboBox *target = mode.isEmpty() ? choices->valueCombo(row) : choices->setValueCombo();
        target->setFocus();
        QTest::keyClicks(target, value);
        if (!mode.isEmpty()) {
            choices->setModeCombo()->setFocus();
            QTest::keyClicks(choices->setModeCombo(), mode);
            QTest::mouseClick(choices->setButton(), Qt::LeftButton);
        }
        QTest::mouseClick(
            choices->buttons()->button(accept ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel),
            Qt::LeftButton);
        return choices->result();
    });
    QTest::mouseClick(formats->editButton(), Qt::LeftButton);
    DialogExec::setHook({});
    UndoRecorder::setCurrent(nullptr);

    QCOMPARE(shownNames.join(QLatin1Char(' ')), shown);
    QCOMPARE(output->excelManualColFormats(), expected);
    QStringList hints = {QStringLiteral("formatting")};
    if (expected != stored)
        hints.append(QStringLiteral("column formats"));
    QCOMPARE(recorder.hints, hints);
    QCOMPARE(output->status(), int(FlowItem::NeedsUpdate));
}

TABULON_TEST_MAIN(TestOutputItemWidget)
#include "tst_outputitemwidget.moc"
