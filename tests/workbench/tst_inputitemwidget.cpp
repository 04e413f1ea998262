#include "testutil.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "io/delimitedtext.h"
#include "shell/delaytimer.h"
#include "shell/settings.h"
#include "workbench/inputitemwidget.h"
#include "workbench/iowidgets.h"
#include "workbench/itempane.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

class TestInputItemWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void delimiterChangeRereads();
    void optionRowsFollowFileType_data();
    void optionRowsFollowFileType();
    void clipboardSourceHidesFileRows();
    void newPathOffersItsType_data();
    void newPathOffersItsType();
    void clipboardImportAsksAboutType_data();
    void clipboardImportAsksAboutType();
    void ignoredRowsReachTheItem();

private:
    QString writeFile(const QString &name, const QByteArray &bytes);

    QTemporaryDir m_folder;
    std::optional<MessageBoxAnswerer> m_boxes;
};

void TestInputItemWidget::init()
{
    // The pause before a run ends when a test fires it, not on the wall clock.
    DelayTimer::setManualClock(true);
    Settings::instance()->setProcessingDelay(0.05);
    m_boxes.emplace();
}

void TestInputItemWidget::cleanup()
{
    m_boxes.reset();
}

QString TestInputItemWidget::writeFile(const QString &name, const QByteArray &bytes)
{
    const QString path = m_folder.filePath(name);
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
    return path;
}

void TestInputItemWidget::delimiterChangeRereads()
{
    const QString path = writeFile(QStringLiteral("semi.csv"), "name;city\nAnn;Paris\nBob;Rome\n");
    FlowModel model;
    auto *input = new InputItem;
    input->setInputFileType(FileTypeDelimited);
    input->setHeader(InputItem::HasHeader);
    input->setDelimiter(DelimiterComma);
    input->setPath(path);
    model.addItem(input);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->columnCount(), 1);

    ItemPane pane;
    pane.show();
    pane.showItems({input});
    auto *page = qobject_cast<InputItemWidget *>(pane.currentWidget());
    QVERIFY(page);
    QComboBox *combo = page->delimWidget()->combo();
    QCOMPARE(combo->currentData().toInt(), int(DelimiterComma));
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    QCOMPARE(combo->currentData().toInt(), int(DelimiterSemicolon));
    QCOMPARE(input->delimiter(), int(DelimiterSemicolon));

    pane.delayTimer()->fire();
    QCOMPARE(input->columnCount(), 2);
    QCOMPARE(input->dataset()->headers(), (QStringList {"name", "city"}));
    QCOMPARE(input->dataset()->cell(1, 1), QStringLiteral("Rome"));
    QCOMPARE(input->status(), int(FlowItem::UpToDate));
}

void TestInputItemWidget::optionRowsFollowFileType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("delimiter");
    QTest::addColumn<bool>("encoding");
    QTest::addColumn<bool>("ignoredRows");
    QTest::addColumn<bool>("excelHidden");
    QTest::addColumn<bool>("format");
    QTest::newRow("delimited") << int(FileTypeDelimited) << true << true << true << false << false;
    QTest::newRow("plain text") << int(FileTypePlainText) << false << true << true << false
                                << false;
    QTest::newRow("json") << int(FileTypeJson) << false << false << false << false << true;
    QTest::newRow("xml") << int(FileTypeXml) << false << true << false << false << true;
    QTest::newRow("xlsx") << int(FileTypeXlsx) << false << false << true << true << false;
    QTest::newRow("fixed width") << int(FileTypeFixedWidth) << false << true << true << false
                                 << false;
}

void TestInputItemWidget::optionRowsFollowFileType()
{
    QFETCH(int, type);
    QFETCH(bool, delimiter);
    QFETCH(bool, encoding);
    QFETCH(bool, ignoredRows);
    QFETCH(bool, excelHidden);
    QFETCH(bool, format);
    FlowModel model;
    auto *input = new InputItem;
    input->setInputFileType(FileTypeDelimited);
    model.addItem(input);
    InputItemWidget page(input);
    page.show();
    // Choose the type as a user would, in the combo.
    page.typeCombo()->setCurrentIndex(page.typeCombo()->findData(type));
    QCOMPARE(input->fileType(), type);
    QCOMPARE(page.delimWidget()->isVisible(), delimiter);
    QCOMPARE(page.quotingCombo()->isVisible(), delimiter);
    QCOMPARE(page.repeatedDelimitersCheck()->isVisible(), delimiter);
    QCOMPARE(page.encodingCombo()->isVisible(), encoding);
    QCOMPARE(page.ignoredRowsSpin()->isVisible(), ignoredRows);
    QCOMPARE(page.excelHiddenRowsCheck()->isVisible(), excelHidden);
    QCOMPARE(page.excelHiddenColumnsCheck()->isVisible(), excelHidden);
    QCOMPARE(page.sheetEdit()->isVisible(), excelHidden);
    QCOMPARE(page.formatCombo()->isVisible(), format);
    QVERIFY(page.pathEdit()->isVisible());
    QVERIFY(page.watchCheck()->isVisible());
}

void TestInputItemWidget::clipboardSourceHidesFileRows()
{
    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("name\nAnn"), QPointF());
    InputItemWidget page(input);
    page.show();
    QVERIFY(!page.pathEdit()->isVisible());
    QVERIFY(!page.watchCheck()->isVisible());
    QVERIFY(!page.encodingCombo()->isVisible());
    QCOMPARE(page.sourceButton()->text(), QStringLiteral("Import from clipboard."));
    QCOMPARE(page.sourceButton()->toolTip(),
             QStringLiteral("Process data previously imported from the clipboard.\nPress the "
                            "'Import from clipboard' button to re-import from the clipboard.\n"
                            "Does not run items downstream."));
}

void TestInputItemWidget::newPathOffersItsType_data()
{
    QTest::addColumn<bool>("answer");
    QTest::addColumn<int>("expectedType");
    QTest::newRow("yes") << true << int(FileTypePlainText);
    QTest::newRow("no") << false << int(FileTypeDelimited);
}

void TestInputItemWidget::newPathOffersItsType()
{
    QFETCH(bool, answer);
    QFETCH(int, expectedType);
    m_boxes->answer = answer ? QMessageBox::Yes : QMessageBox::No;
    const QString path = writeFile(QStringLiteral("notes.log"), "one\ntwo\n");
    FlowModel model;
    auto *input = new InputItem;
    input->setInputFileType(FileTypeDelimited);
    model.addItem(input);
    InputItemWidget page(input);
    page.show();
    page.pathEdit()->setFocus();
    QTest::keyClicks(page.pathEdit(), path);
    QTest::keyClick(page.pathEdit(), Qt::Key_Return);
    QCOMPARE(input->path(), path);
    QCOMPARE(m_boxes->texts, QStringList {QStringLiteral("Change file type to 'Plain text'?")});
    QCOMPARE(input->fileType(), expectedType);
    QCOMPARE(page.typeCombo()->currentData().toInt(), expectedType);
}

void TestInputItemWidget::clipboardImportAsksAboutType_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QStringList>("questions");
    QTest::addColumn<int>("expectedType");
    QTest::newRow("csv, no question")
        << "a,b\n1,2" << true << QStringList() << int(FileTypeDelimited);
    QTest::newRow("json, yes") << "[{\"a\": 1}]" << true
                               << QStringList {QStringLiteral("Change file type to 'JSON'?")}
                               << int(FileTypeJson);
    QTest::newRow("json, no") << "[{\"a\": 1}]" << false
                              << QStringList {QStringLiteral("Change file type to 'JSON'?")}
                              << int(FileTypeDelimited);
}

void TestInputItemWidget::clipboardImportAsksAboutType()
{
    QFETCH(QString, text);
    QFETCH(bool, answer);
    QFETCH(QStringList, questions);
    QFETCH(int, expectedType);
    m_boxes->answer = answer ? QMessageBox::Yes : QMessageBox::No;
    FlowModel model;
    InputItem *input = addTextInput(model, QStringLiteral("old\nrow"), QPointF());
    InputItemWidget page(input);
    page.show();
    QGuiApplication::clipboard()->setText(text);
    QTest::mouseClick(page.sourceButton(), Qt::LeftButton);
    QCOMPARE(m_boxes->texts, questions);
    QCOMPARE(input->text(), text);
    QCOMPARE(input->fileType(), expectedType);
}

void TestInputItemWidget::ignoredRowsReachTheItem()
{
    const QString path = writeFile(QStringLiteral("rows.csv"), "junk\nname\nAnn\nBob\n");
    FlowModel model;
    auto *input = new InputItem;
    input->setInputFileType(FileTypeDelimited);
    input->setHeader(InputItem::HasHeader);
    input->setPath(path);
    model.addItem(input);
    model.process(FlowModel::RunAll);
    QCOMPARE(input->dataset()->headers(), QStringList {QStringLiteral("junk")});

    ItemPane pane;
    pane.show();
    pane.showItems({input});
    auto *page = qobject_cast<InputItemWidget *>(pane.currentWidget());
    QVERIFY(page);
    page->ignoredRowsSpin()->setFocus();
    QTest::keyClick(page->ignoredRowsSpin(), Qt::Key_Up);
    QCOMPARE(input->ignoredRows(), 1);
    pane.delayTimer()->fire();
    QCOMPARE(input->dataset()->headers(), QStringList {QStringLiteral("name")});
    QCOMPARE(input->rowCount(), 2);
}

TABULON_TEST_MAIN(TestInputItemWidget)
#include "tst_inputitemwidget.moc"
