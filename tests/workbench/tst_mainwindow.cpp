#include "testutil.h"

#include "flow/document.h"
#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "graph/overlays.h"
#include "graph/undo.h"
#include "shell/delaytimer.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"
#include "transforms/transformclone.h"
#include "workbench/actionpane.h"
#include "workbench/graphpane.h"
#include "workbench/itempane.h"
#include "workbench/logpane.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
#include "workbench/scenehost.h"
#include "workbench/statusbar.h"
// graphpane.h hands out its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QSplitter>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

namespace {

struct Asked
{
    QString text;
    QMessageBox::StandardButtons buttons;
};

QString readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

bool writeText(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) == text.size();
}

bool copyFile(const QString &from, const QString &to)
{
    QFile::remove(to);
    return QFile::copy(from, to);
}

// The document text of a flow with the fields that change from save to save held fixed.
QString canonicalText(const FlowModel &model, const QString &path)
{
    DocumentData data;
    return documentText(model, data, path, QStringLiteral("test"));
}

QString canonicalText(const GraphScene &scene, const QString &path)
{
    return canonicalText(*scene.model(), path);
}

// Nodes in the order of their items on the canvas.
void sortNodes(QList<Node *> &nodes, bool (*less)(const FlowItem *, const FlowItem *))
{
    std::stable_sort(nodes.begin(), nodes.end(),
                     [less](const Node *a, const Node *b) { return less(a->item(), b->item()); });
}

int countOfType(const GraphScene *scene, int type)
{
    return scene->nodesOfType(type).size();
}

} // namespace

// The main window driven as a user would: documents opened and saved through the file flows,
// files dropped, edits undone, questions answered through the message hook.
class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void openedDocumentRunsAndWritesItsOutput();
    void openShowsTheSavedGraph_data();
    void openShowsTheSavedGraph();
    void saveAsThenReopenGivesTheSameGraph();
    void openFailureResetsToNewDocument();
    void openOfHeldDocumentAsks_data();
    void openOfHeldDocumentAsks();
    void openAsksForMissingInputs();
    void openWarnsAboutLaterVersion();

    void droppedFilesBecomeInputs_data();
    void droppedFilesBecomeInputs();
    void dropEventOnCanvasAddsInput();
    void droppedFolderAboveLimitAsks_data();
    void droppedFolderAboveLimitAsks();
    void droppedDocumentIsOpened();
    void pasteOfUnknownDataIsRefused();

    void clickedTransformTakesSelectionInCanvasOrder();
    void draggingFromHandleConnects();
    void deleteKeyBridgesTransform();
    void disconnectAsksAboutColumnOptions_data();
    void disconnectAsksAboutColumnOptions();
    void keyboardWalksAndDuplicates();
    void undoRunsAfterDelay();

    void elevenEditsLeaveTenUndos();
    void undoAfterUndoPushesNothing();

    void newAsksToSaveChanges_data();
    void newAsksToSaveChanges();
    void closeWithChangesCanBeCancelled();

    void memoryLabelColouredFromThreeQuarters_data();
    void memoryLabelColouredFromThreeQuarters();
    void statusIconsCountAndSelect();
    void itemPaneFloatsAndDocksAgain();

private:
    // Mouse events on the canvas at scene points, as a user's hand would send them.
    void mouse(QEvent::Type type, const QPointF &scenePos, Qt::MouseButtons buttons,
               Qt::MouseButton button = Qt::NoButton,
               Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void clickItem(const Node *node, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void dragItem(const Node *node, const QPointF &by);
    TransformButton *transformButton(const QString &typeName) const;
    // A private copy of the example, so that no other program's lock or outputs get in the way.
    QString exampleDocument() const;

    MainWindow *m_window = nullptr;
    QTemporaryDir *m_dir = nullptr;
    Settings *m_settings = nullptr;
    QList<Asked> m_asked;
    QList<QMessageBox::StandardButton> m_answers;
    QStringList m_chosenFiles;
};

void TestMainWindow::initTestCase()
{
    m_dir = new QTemporaryDir;
    QVERIFY(m_dir->isValid());
    // The recovery file lives in the temporary folder; keep ours away from a running program.
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("tmp")));
    qputenv("TMPDIR", QFile::encodeName(m_dir->filePath(QStringLiteral("tmp"))));
    m_settings = new Settings(m_dir->filePath(QStringLiteral("tabulon.ini")));
    Settings::setInstance(m_settings);
    MessageBoxes::setHandler([this](QMessageBox::Icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton defaultButton) {
        m_asked.append({text, buttons});
        if (!m_answers.isEmpty())
            return m_answers.takeFirst();
        return defaultButton == QMessageBox::NoButton ? QMessageBox::Ok : defaultButton;
    });
    MainWindow::setFileDialogHook([this](const QString &, const QString &, const QString &, bool) {
        return m_chosenFiles.isEmpty() ? QString() : m_chosenFiles.takeFirst();
    });
}

void TestMainWindow::init()
{
    m_settings->clear();
    m_settings->setProcessingDelay(0.0);
    m_asked.clear();
    m_answers.clear();
    m_chosenFiles.clear();
    removeRecoveryFile();
    m_window = new MainWindow;
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
    QVERIFY2(!m_window->isWindowModified(), "a new window holds no unsaved change");
}

void TestMainWindow::cleanup()
{
    DelayTimer::setManualClock(false);
    m_window->setWindowModified(false);
    delete m_window;
    m_window = nullptr;
}

void TestMainWindow::cleanupTestCase()
{
    MessageBoxes::setHandler(nullptr);
    MainWindow::setFileDialogHook({});
    Settings::setInstance(nullptr);
    delete m_settings;
    delete m_dir;
}

void TestMainWindow::mouse(QEvent::Type type, const QPointF &scenePos, Qt::MouseButtons buttons,
                           Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    GraphPane *pane = m_window->graphPane();
    const QPoint at = pane->mapFromScene(scenePos);
    QMouseEvent event(type, at, pane->viewport()->mapToGlobal(at), button, buttons, modifiers);
    QApplication::sendEvent(pane->viewport(), &event);
}

void TestMainWindow::clickItem(const Node *node, Qt::KeyboardModifiers modifiers)
{
    const QPointF at = node->pos() + node->headerRect().center();
    mouse(QEvent::MouseMove, at, Qt::NoButton);
    mouse(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, modifiers);
    mouse(QEvent::MouseButtonRelease, at, Qt::NoButton, Qt::LeftButton, modifiers);
}

void TestMainWindow::dragItem(const Node *node, const QPointF &by)
{
    const QPointF grip = node->pos() + node->headerRect().center();
    mouse(QEvent::MouseMove, grip, Qt::NoButton);
    mouse(QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    for (int step = 1; step <= 5; ++step)
        mouse(QEvent::MouseMove, grip + by * step / 5.0, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, grip + by, Qt::NoButton, Qt::LeftButton);
}

TransformButton *TestMainWindow::transformButton(const QString &typeName) const
{
    const QList<TransformButton *> buttons = m_window->actionPane()->transformButtons();
    for (TransformButton *button : buttons) {
        if (button->prototype()->typeName() == typeName)
            return button;
    }
    return nullptr;
}

QString TestMainWindow::exampleDocument() const
{
    const QString folder = m_dir->filePath(QStringLiteral("example"));
    const QString document = folder + QStringLiteral("/sales.tabulon");
    if (QDir().mkpath(folder) && copyFile(QFINDTESTDATA("../../examples/sales.tabulon"), document)
        && copyFile(QFINDTESTDATA("../../examples/sales.csv"),
                    folder + QStringLiteral("/sales.csv")))
        return document;
    return QString();
}

void TestMainWindow::openedDocumentRunsAndWritesItsOutput()
{
    // The document writes output.csv beside itself; work on a copy so the source tree stays.
    const QString source = QStringLiteral(TABULON_TEST_DATA "/documents/cli_case");
    QTemporaryDir work;
    QVERIFY(copyFile(source + QStringLiteral("/document.tabulon"),
                     work.filePath(QStringLiteral("document.tabulon"))));
    QVERIFY(copyFile(source + QStringLiteral("/input.csv"),
                     work.filePath(QStringLiteral("input.csv"))));

    QVERIFY(m_window->open(work.filePath(QStringLiteral("document.tabulon"))));
    QTRY_VERIFY(QFile::exists(work.filePath(QStringLiteral("output.csv"))));
    QCOMPARE(readAll(work.filePath(QStringLiteral("output.csv"))),
             readAll(source + QStringLiteral("/expected.csv")));
    QVERIFY(!m_window->isWindowModified());
    QVERIFY(m_asked.isEmpty());
    QVERIFY(!m_window->logPane()->lines().isEmpty());
}

void TestMainWindow::openShowsTheSavedGraph_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("example") << exampleDocument();
    QTest::newRow("input, transform, output")
        << QStringLiteral(TABULON_TEST_DATA "/documents/cli_case/document.tabulon");
}

void TestMainWindow::openShowsTheSavedGraph()
{
    QFETCH(QString, path);
    QVERIFY(!path.isEmpty());
    m_settings->setOpenAutoRun(0);
    FlowModel expected;
    DocumentData data;
    bool later = false;
    QStringList messages;
    QString error;
    QVERIFY2(loadDocument(&expected, path, &data, &later, &messages, &error), qPrintable(error));

    QVERIFY(m_window->open(path));
    QCOMPARE(m_window->documentPath(), QFileInfo(path).absoluteFilePath());
    QCOMPARE(canonicalText(*m_window->graphScene(), path), canonicalText(expected, path));
    QCOMPARE(m_window->documentData().notes, data.notes);
    QVERIFY(m_window->windowTitle().contains(QFileInfo(path).fileName()));
    QVERIFY(!m_window->isWindowModified());
}

void TestMainWindow::saveAsThenReopenGivesTheSameGraph()
{
    m_settings->setOpenAutoRun(0);
    const QString example = exampleDocument();
    QVERIFY(m_window->open(example));
    QCOMPARE(m_settings->recentDocs().value(0),
             QDir::toNativeSeparators(QFileInfo(example).absoluteFilePath()));
    QVERIFY(m_window->windowActions()[MainWindowActions::FileOpenRecent]->isEnabled());
    const QString before = canonicalText(*m_window->graphScene(), example);

    // Saved without an extension: the flow adds it.
    const QString copy = m_dir->filePath(QStringLiteral("copy"));
    m_chosenFiles = QStringList {copy};
    m_window->windowActions()[MainWindowActions::FileSaveAs]->trigger();
    const QString saved = copy + QStringLiteral(".tabulon");
    QVERIFY(QFile::exists(saved));
    QCOMPARE(m_window->documentPath(), saved);

    m_window->windowActions()[MainWindowActions::FileNew]->trigger();
    QCOMPARE(m_window->graphScene()->nodes().size(), 0);
    QVERIFY(m_window->open(saved));
    QCOMPARE(canonicalText(*m_window->graphScene(), example), before);
    QVERIFY(m_asked.isEmpty());
}

void TestMainWindow::openFailureResetsToNewDocument()
{
    const QString broken = m_dir->filePath(QStringLiteral("broken.tabulon"));
    QVERIFY(writeText(broken, "this is no document"));
    QVERIFY(!m_window->open(broken));
    QCOMPARE(m_asked.size(), 1);
    QVERIFY2(m_asked.first().text.startsWith(QStringLiteral("Unable to open '")),
             qPrintable(m_asked.first().text));
    QVERIFY(m_window->documentPath().isEmpty());
    QCOMPARE(m_window->graphScene()->nodes().size(), 0);
}

void TestMainWindow::openOfHeldDocumentAsks_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("opened");
    QTest::newRow("cancel") << int(QMessageBox::Cancel) << false;
    QTest::newRow("ok") << int(QMessageBox::Ok) << true;
}

void TestMainWindow::openOfHeldDocumentAsks()
{
    QFETCH(int, answer);
    QFETCH(bool, opened);
    m_settings->setOpenAutoRun(0);
    const QString source = QStringLiteral(TABULON_TEST_DATA "/documents/cli_case");
    QTemporaryDir work;
    const QString document = work.filePath(QStringLiteral("document.tabulon"));
    QVERIFY(copyFile(source + QStringLiteral("/document.tabulon"), document));
    QVERIFY(copyFile(source + QStringLiteral("/input.csv"),
                     work.filePath(QStringLiteral("input.csv"))));
    // Another window has it open.
    DocumentLock other;
    QVERIFY(other.acquire(document));

    m_answers = {QMessageBox::StandardButton(answer)};
    QCOMPARE(m_window->open(document), opened);
    QCOMPARE(m_asked.size(), 1);
    QCOMPARE(m_asked.first().text,
             DocumentLock::failureMessage(QDir::toNativeSeparators(document)));
    QCOMPARE(m_asked.first().buttons, QMessageBox::Ok | QMessageBox::Cancel);
    QCOMPARE(m_window->documentPath().isEmpty(), !opened);
    QCOMPARE(m_window->graphScene()->nodes().isEmpty(), !opened);
}

void TestMainWindow::openAsksForMissingInputs()
{
    m_settings->setOpenAutoRun(0);
    // The document without its data file beside it.
    QTemporaryDir work;
    const QString document = work.filePath(QStringLiteral("sales.tabulon"));
    QVERIFY(copyFile(exampleDocument(), document));
    const QString replacement = work.filePath(QStringLiteral("march.csv"));
    QVERIFY(writeText(replacement, "id,first name\n1,ann\n"));

    m_answers = {QMessageBox::Yes};
    m_chosenFiles = QStringList {replacement};
    QVERIFY(m_window->open(document));
    QCOMPARE(m_asked.size(), 1);
    QVERIFY2(m_asked.first().text.startsWith(
                 QStringLiteral("The following input file cannot be found:\n\n")),
             qPrintable(m_asked.first().text));
    QCOMPARE(m_asked.first().buttons, QMessageBox::Yes | QMessageBox::No);
    auto *input
        = static_cast<InputNode *>(m_window->graphScene()->nodesOfType(Node::InputType).first());
    QCOMPARE(QFileInfo(input->input()->path()).absoluteFilePath(), replacement);
    QVERIFY(m_window->isWindowModified());
}

void TestMainWindow::openWarnsAboutLaterVersion()
{
    m_settings->setOpenAutoRun(0);
    QString text
        = readAll(QStringLiteral(TABULON_TEST_DATA "/documents/cli_case/document.tabulon"));
    QVERIFY(text.contains(QStringLiteral("<version value=\"81\"/>")));
    text.replace(QStringLiteral("<version value=\"81\"/>"),
                 QStringLiteral("<version value=\"95\"/>"));
    const QString later = m_dir->filePath(QStringLiteral("later.tabulon"));
    QVERIFY(writeText(later, text.toUtf8()));
    QVERIFY(m_window->open(later));
    QCOMPARE(m_asked.size(), 2);
    // The missing input comes first; the warning last, once the graph stands.
    QCOMPARE(m_asked.last().text, laterVersionWarning());
    QVERIFY(!m_window->graphScene()->nodes().isEmpty());
}

void TestMainWindow::droppedFilesBecomeInputs_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<int>("inputs");
    QTest::addColumn<QString>("warning");
    QTest::newRow("one csv") << QStringList {QStringLiteral("a.csv")} << 1 << QString();
    QTest::newRow("two files") << QStringList {QStringLiteral("a.csv"), QStringLiteral("b.tsv")}
                               << 2 << QString();
    QTest::newRow("blocked extension")
        << QStringList {QStringLiteral("a.csv"), QStringLiteral("run.exe")} << 1
        << QStringLiteral("The files extensions of the following are blocked in "
                          "'Preferences>Input Extensions':\n");
}

void TestMainWindow::droppedFilesBecomeInputs()
{
    QFETCH(QStringList, names);
    QFETCH(int, inputs);
    QFETCH(QString, warning);
    QTemporaryDir folder;
    QList<QUrl> urls;
    for (const QString &name : qAsConst(names)) {
        QVERIFY(writeText(folder.filePath(name), "name,amount\nann,1\nbob,2\n"));
        urls.append(QUrl::fromLocalFile(folder.filePath(name)));
    }
    m_window->addFiles(urls, QPointF(0, 0));
    GraphScene *scene = m_window->graphScene();
    QCOMPARE(countOfType(scene, Node::InputType), inputs);
    if (warning.isEmpty()) {
        QVERIFY(m_asked.isEmpty());
    } else {
        QCOMPARE(m_asked.size(), 1);
        QVERIFY2(m_asked.first().text.startsWith(warning), qPrintable(m_asked.first().text));
    }
    const QList<Node *> added = scene->nodesOfType(Node::InputType);
    for (Node *node : added)
        QTRY_COMPARE(node->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(added.first()->item()->rowCount(), 2);
    QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("add file(s)"));
    QVERIFY(m_window->isWindowModified());
}

void TestMainWindow::dropEventOnCanvasAddsInput()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("dropped.csv"));
    QVERIFY(writeText(path, "x,y\n1,2\n"));
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(path)});
    QWidget *viewport = m_window->graphPane()->viewport();
    const QPoint at = viewport->rect().center();
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    QTRY_COMPARE(countOfType(m_window->graphScene(), Node::InputType), 1);
    auto *input
        = static_cast<InputNode *>(m_window->graphScene()->nodesOfType(Node::InputType).first());
    QCOMPARE(QFileInfo(input->input()->path()).absoluteFilePath(),
             QFileInfo(path).absoluteFilePath());
    // It stands where it was dropped, is the selection, and runs at once.
    QVERIFY(input->sceneBoundingRect().contains(m_window->graphPane()->mapToScene(at)));
    QVERIFY(input->isSelected());
    QTRY_COMPARE(input->input()->status(), int(FlowItem::UpToDate));
    QCOMPARE(input->input()->dataset()->rows(), QList<QStringList>({{"1", "2"}}));
}

void TestMainWindow::droppedFolderAboveLimitAsks_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<int>("inputs");
    QTest::newRow("at the limit") << 20 << int(QMessageBox::No) << false << 20;
    QTest::newRow("above, refused") << 21 << int(QMessageBox::No) << true << 0;
    QTest::newRow("above, accepted") << 21 << int(QMessageBox::Yes) << true << 21;
}

void TestMainWindow::droppedFolderAboveLimitAsks()
{
    QFETCH(int, files);
    QFETCH(int, answer);
    QFETCH(bool, asked);
    QFETCH(int, inputs);
    m_settings->setOpenAutoRun(0);
    m_window->newDocument();
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("nested")));
    for (int i = 0; i < files; ++i) {
        // Half of them one level down: folders are walked.
        const QString name = QStringLiteral("%1/f%2.csv")
                                 .arg(i % 2 ? QStringLiteral("nested") : QStringLiteral("."))
                                 .arg(i);
        QVERIFY(writeText(folder.filePath(name), "a\n1\n"));
    }
    m_answers = {QMessageBox::StandardButton(answer)};
    m_window->addFiles({QUrl::fromLocalFile(folder.path())}, QPointF(0, 0));
    QCOMPARE(!m_asked.isEmpty(), asked);
    if (asked)
        QVERIFY(m_asked.first().text.startsWith(QStringLiteral("More than 20 files found.")));
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), inputs);
}

void TestMainWindow::droppedDocumentIsOpened()
{
    m_settings->setOpenAutoRun(0);
    const QString example = exampleDocument();
    QVERIFY(!m_window->isWindowModified());
    m_window->addFiles({QUrl::fromLocalFile(example)}, QPointF());
    QCOMPARE(m_window->documentPath(), QFileInfo(example).absoluteFilePath());
    QVERIFY(m_window->graphScene()->nodes().size() > 1);

    // A web address never becomes an input.
    m_asked.clear();
    m_window->addFiles({QUrl(QStringLiteral("https://example.com/data.csv"))}, QPointF());
    QCOMPARE(m_asked.size(), 1);
    QCOMPARE(m_asked.first().text,
             QStringLiteral("'https://example.com/data.csv' is not a local file"));
}

void TestMainWindow::pasteOfUnknownDataIsRefused()
{
    auto *mime = new QMimeData;
    mime->setData(QStringLiteral("application/x-unknown"), "\x01\x02");
    QGuiApplication::clipboard()->setMimeData(mime);
    m_window->windowActions()[MainWindowActions::EditPaste]->trigger();
    QCOMPARE(m_asked.size(), 1);
    QCOMPARE(m_asked.first().text, QStringLiteral("Data type pasted not recognized."));
    QCOMPARE(m_window->graphScene()->nodes().size(), 0);

    QGuiApplication::clipboard()->setText(QStringLiteral("a,b\n1,2\n"));
    m_window->windowActions()[MainWindowActions::EditPaste]->trigger();
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 1);
    QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("add clipboard"));
}

void TestMainWindow::clickedTransformTakesSelectionInCanvasOrder()
{
    m_window->addClipboardText(QStringLiteral("n\ntop\n"), QPointF(0, 0));
    m_window->addClipboardText(QStringLiteral("n\nbottom\n"), QPointF(0, 240));
    GraphScene *scene = m_window->graphScene();
    QList<Node *> inputs = scene->nodesOfType(Node::InputType);
    sortNodes(inputs, FlowItem::topToBottom);
    Node *top = inputs.at(0);
    Node *bottom = inputs.at(1);
    QTRY_COMPARE(bottom->item()->status(), int(FlowItem::UpToDate));

    // Picked bottom first: the order of the clicks must not matter, only the canvas.
    clickItem(bottom);
    clickItem(top, Qt::ControlModifier);
    QCOMPARE(scene->selectedItems().size(), 2);
    TransformButton *stackButton = transformButton(QStringLiteral("Stack"));
    QVERIFY(stackButton);
    QVERIFY(stackButton->isVisible());
    QVERIFY(stackButton->isEnabled());
    QTest::mouseClick(stackButton, Qt::LeftButton);

    QCOMPARE(countOfType(scene, Node::TransformType), 1);
    Node *stack = scene->nodesOfType(Node::TransformType).first();
    QCOMPARE(stack->item()->upstream(true), QList<FlowItem *>({top->item(), bottom->item()}));
    QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("add 'Stack'"));
    QVERIFY(stack->isSelected());
    QVERIFY(stack->pos().x() > top->pos().x());
    QTRY_COMPARE(stack->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(stack->item()->dataset()->rows(), QList<QStringList>({{"top"}, {"bottom"}}));

    // Dragging the lower input above the other swaps the inputs of the transform.
    dragItem(bottom, QPointF(0, -480));
    QVERIFY(bottom->pos().y() < top->pos().y());
    QCOMPARE(stack->item()->upstream(true), QList<FlowItem *>({bottom->item(), top->item()}));
    QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("move item(s)"));
    m_window->windowActions()[MainWindowActions::RunEverything]->setEnabled(true);
    m_window->windowActions()[MainWindowActions::RunEverything]->trigger();
    QTRY_COMPARE(stack->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(stack->item()->dataset()->rows(), QList<QStringList>({{"bottom"}, {"top"}}));

    // What was built by hand survives a save and a reopen.
    const QString saved = m_dir->filePath(QStringLiteral("built.tabulon"));
    QVERIFY(m_window->save(saved));
    const QString before = canonicalText(*m_window->graphScene(), saved);
    m_window->newDocument();
    QVERIFY(m_window->open(saved));
    QCOMPARE(canonicalText(*m_window->graphScene(), saved), before);
    Node *reopened = m_window->graphScene()->nodesOfType(Node::TransformType).first();
    QTRY_COMPARE(reopened->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(reopened->item()->dataset()->rows(), QList<QStringList>({{"bottom"}, {"top"}}));
}

void TestMainWindow::draggingFromHandleConnects()
{
    m_settings->setOpenAutoRun(0);
    m_window->newDocument();
    m_window->addClipboardText(QStringLiteral("n\n1\n"), QPointF(0, 0));
    GraphScene *scene = m_window->graphScene();
    Node *input = scene->nodesOfType(Node::InputType).first();
    auto *fullItem = new OutputItem(-1, m_dir->filePath(QStringLiteral("full.csv")));
    fullItem->setPos(QPointF(400, 240));
    scene->model()->addItem(fullItem);
    QVERIFY(scene->model()->connectItems(input->item(), fullItem));
    auto *emptyItem = new OutputItem(-1, m_dir->filePath(QStringLiteral("empty.csv")));
    emptyItem->setPos(QPointF(400, 0));
    scene->model()->addItem(emptyItem);
    Node *full = scene->nodeFor(fullItem);
    Node *empty = scene->nodeFor(emptyItem);
    m_window->graphPane()->centerOn(300, 150);

    mouse(QEvent::MouseMove, input->item()->centrePos(), Qt::NoButton);
    // The guide shows after a pause of the pointer; end the pause instead of waiting.
    DelayTimer::firePending();
    QVERIFY(input->connectFromOverlay());
    const QPointF handle = input->connectFromOverlay()->scenePos();
    mouse(QEvent::MouseButtonPress, handle, Qt::LeftButton, Qt::LeftButton);
    // An output takes one input: only the empty one is offered.
    QVERIFY(empty->connectToOverlay());
    QVERIFY(!full->connectToOverlay());
    const QPointF target = empty->connectToOverlay()->scenePos();
    mouse(QEvent::MouseMove, (handle + target) / 2.0, Qt::LeftButton);
    mouse(QEvent::MouseMove, target, Qt::LeftButton);
    mouse(QEvent::MouseButtonRelease, target, Qt::NoButton, Qt::LeftButton);

    QVERIFY(emptyItem->isConnectedFrom(input->item()));
    QCOMPARE(input->connections(ConnectionDirection::Out).size(), 2);
    QVERIFY(!ConnectionMaker::isActive(scene));
    QCOMPARE(m_window->windowActions()[MainWindowActions::EditUndo]->text(),
             QStringLiteral("&Undo add connection"));
    QVERIFY(m_window->isWindowModified());
    QCOMPARE(empty->item()->status(), int(FlowItem::NeedsUpdate));

    const int emptyId = emptyItem->id();
    m_window->windowActions()[MainWindowActions::EditUndo]->trigger();
    Node *restored = m_window->graphScene()->nodeById(emptyId);
    QVERIFY(restored);
    QVERIFY(restored->connections(ConnectionDirection::In).isEmpty());
}

void TestMainWindow::deleteKeyBridgesTransform()
{
    m_settings->setOpenAutoRun(0);
    m_window->newDocument();
    GraphScene *scene = m_window->graphScene();
    InputNode *source = addTextInput(*scene, QStringLiteral("n\n1\n"), QPointF(0, 0));
    TransformNode *middle = addTransform(*scene, new TransformClone, {source}, QPointF(240, 0));
    TransformNode *upper = addTransform(*scene, new TransformClone, {middle}, QPointF(480, -120));
    TransformNode *lower = addTransform(*scene, new TransformClone, {middle}, QPointF(480, 120));
    m_window->graphPane()->centerOn(middle);

    clickItem(middle);
    QCOMPARE(scene->selectedNodes(), QList<Node *>({middle}));
    QTest::keyClick(m_window->graphPane()->viewport(), Qt::Key_Delete);

    QCOMPARE(scene->nodes().size(), 3);
    QCOMPARE(scene->allConnections().size(), 2);
    QCOMPARE(scene->nodesFor(source->input()->downstream(true)), QList<Node *>({upper, lower}));
    QCOMPARE(upper->transformItem()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(lower->transformItem()->status(), int(FlowItem::NeedsUpdate));
    QCOMPARE(m_window->windowActions()[MainWindowActions::EditUndo]->text(),
             QStringLiteral("&Undo delete"));
}

void TestMainWindow::disconnectAsksAboutColumnOptions_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("disconnected");
    QTest::newRow("cancel") << int(QMessageBox::Cancel) << false;
    QTest::newRow("ok") << int(QMessageBox::Ok) << true;
}

void TestMainWindow::disconnectAsksAboutColumnOptions()
{
    QFETCH(int, answer);
    QFETCH(bool, disconnected);
    m_settings->setOpenAutoRun(0);
    QVERIFY(m_window->open(exampleDocument()));
    GraphScene *scene = m_window->graphScene();
    Node *input = scene->nodesOfType(Node::InputType).first();
    const int connections = scene->allConnections().size();
    m_window->graphPane()->centerOn(input);
    clickItem(input);
    QCOMPARE(scene->selectedNodes(), QList<Node *>({input}));

    m_answers = {QMessageBox::StandardButton(answer)};
    m_window->windowActions()[MainWindowActions::DisconnectFromSelected]->trigger();
    QCOMPARE(m_asked.size(), 1);
    QVERIFY2(m_asked.first().text.startsWith(QStringLiteral("This disconnection may reset ")),
             qPrintable(m_asked.first().text));
    QCOMPARE(m_asked.first().buttons, QMessageBox::Ok | QMessageBox::Cancel);
    QCOMPARE(input->connections(ConnectionDirection::Out).isEmpty(), disconnected);
    QCOMPARE(scene->allConnections().size(), connections - (disconnected ? 1 : 0));
    QCOMPARE(m_window->isWindowModified(), disconnected);
    if (disconnected)
        QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("disconnect"));
}

void TestMainWindow::keyboardWalksAndDuplicates()
{
    m_settings->setOpenAutoRun(0);
    QVERIFY(m_window->open(exampleDocument()));
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window));
    GraphScene *scene = m_window->graphScene();
    Node *input = scene->nodesOfType(Node::InputType).first();
    m_window->graphPane()->setFocus();

    QTest::keyClick(m_window->graphPane(), Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(scene->selectedNodes(), QList<Node *>({input}));
    QTest::keyClick(m_window->graphPane(), Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(scene->selectedItems().size(), 1);
    Node *next = scene->nodeFor(input->item()->downstream(true).first());
    QCOMPARE(scene->selectedNodes().first(), next);
    QTest::keyClick(m_window->graphPane(), Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(scene->selectedNodes().first(), input);

    // The whole flow hangs off the input: Ctrl+D copies every item but the note.
    const int items = scene->nodes().size();
    const int notes = countOfType(scene, Node::NoteType);
    const int connections = scene->allConnections().size();
    QTest::keyClick(m_window->graphPane(), Qt::Key_D, Qt::ControlModifier);
    QCOMPARE(scene->nodes().size(), 2 * items - notes);
    QCOMPARE(scene->allConnections().size(), 2 * connections);
    QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("duplicate branch"));

    // Ctrl+Shift+digit counts outputs the same way; a note then goes to the output's right.
    QTest::keyClick(m_window->graphPane(), Qt::Key_1, Qt::ControlModifier | Qt::ShiftModifier);
    QList<Node *> outputs = scene->nodesOfType(Node::OutputType);
    sortNodes(outputs, FlowItem::leftToRight);
    QCOMPARE(scene->selectedNodes(), QList<Node *>({outputs.first()}));
    QTest::keyClick(m_window->graphPane(), Qt::Key_H, Qt::ControlModifier);
    QCOMPARE(countOfType(scene, Node::NoteType), notes + 1);
    QCOMPARE(m_window->undoHistory()->undoHint(), QStringLiteral("add note"));
    QCOMPARE(scene->selectedItems().size(), 1);
    auto *note = static_cast<NoteNode *>(scene->selectedNodes().first());
    QCOMPARE(note->type(), int(Node::NoteType));
    QCOMPARE(note->pos(), outputs.first()->pos() + QPointF(FlowModel::GridWidth, 0));
    QCOMPARE(note->note()->arrow(), 4);
}

void TestMainWindow::undoRunsAfterDelay()
{
    m_settings->setOpenAutoRun(0);
    m_settings->setProcessingDelay(0.05);
    DelayTimer::setManualClock(true);
    m_window->newDocument();
    m_window->addClipboardText(QStringLiteral("n\n1\n2\n"), QPointF(0, 0));
    GraphScene *scene = m_window->graphScene();
    Node *input = scene->nodesOfType(Node::InputType).first();
    QCOMPARE(input->item()->status(), int(FlowItem::NeedsUpdate));
    input->setSelected(true);
    // The snapshot of this step holds the input before any run.
    m_window->onTransformClicked(transformButton(QStringLiteral("Clone"))->prototype());
    m_window->windowActions()[MainWindowActions::RunAuto]->trigger();
    Node *clone = scene->nodesOfType(Node::TransformType).first();
    QTRY_COMPARE(clone->item()->status(), int(FlowItem::UpToDate));

    const int logLines = m_window->logPane()->lines().size();
    m_window->windowActions()[MainWindowActions::EditUndo]->trigger();
    GraphScene *live = m_window->graphScene();
    QVERIFY(live != scene);
    QCOMPARE(m_window->graphPane()->scene(), live);
    QCOMPARE(countOfType(live, Node::TransformType), 0);
    Node *restored = live->nodesOfType(Node::InputType).first();
    // Not at once: a quick series of undos runs once, after the delay.
    QCOMPARE(restored->item()->status(), int(FlowItem::NeedsUpdate));
    DelayTimer *delay = m_window->sceneHost()->undoRunDelay();
    QVERIFY(delay->isActive());
    QCOMPARE(delay->interval(), 50);
    delay->fire();
    QCOMPARE(restored->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(restored->item()->rowCount(), 2);
    // The swapped-in scene talks to the window: its run reached the log.
    QVERIFY(m_window->logPane()->lines().size() > logLines);
}

void TestMainWindow::elevenEditsLeaveTenUndos()
{
    m_settings->setOpenAutoRun(0);
    m_window->newDocument();
    for (int i = 0; i < 11; ++i)
        m_window->addClipboardText(QStringLiteral("n\n%1\n").arg(i), QPointF(0, 130.0 * i));
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 11);

    QAction *undo = m_window->windowActions()[MainWindowActions::EditUndo];
    QAction *redo = m_window->windowActions()[MainWindowActions::EditRedo];
    QCOMPARE(undo->text(), QStringLiteral("&Undo add clipboard"));
    QVERIFY(!redo->isEnabled());
    QCOMPARE(redo->text(), QStringLiteral("&Redo"));
    int undone = 0;
    while (undo->isEnabled() && undone < 20) {
        undo->trigger();
        ++undone;
    }
    QCOMPARE(undone, 10);
    QCOMPARE(undo->text(), QStringLiteral("&Undo"));
    // The oldest snapshot kept is the scene after the first edit.
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 1);
    QVERIFY(redo->isEnabled());
    QCOMPARE(redo->text(), QStringLiteral("&Redo add clipboard"));
}

void TestMainWindow::undoAfterUndoPushesNothing()
{
    m_settings->setOpenAutoRun(0);
    m_window->newDocument();
    for (int i = 0; i < 3; ++i)
        m_window->addClipboardText(QStringLiteral("n\n%1\n").arg(i), QPointF(0, 130.0 * i));
    UndoHistory *history = m_window->undoHistory();
    QCOMPARE(history->count(), 3);
    m_window->windowActions()[MainWindowActions::EditUndo]->trigger();
    // The live state joins the list once, so that redo can come back to it.
    QCOMPARE(history->count(), 4);
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 2);
    m_window->windowActions()[MainWindowActions::EditUndo]->trigger();
    QCOMPARE(history->count(), 4);
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 1);
    m_window->windowActions()[MainWindowActions::EditRedo]->trigger();
    m_window->windowActions()[MainWindowActions::EditRedo]->trigger();
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 3);
    QVERIFY(!m_window->windowActions()[MainWindowActions::EditRedo]->isEnabled());

    // A change after an undo drops what could have been redone.
    m_window->windowActions()[MainWindowActions::EditUndo]->trigger();
    QVERIFY(m_window->windowActions()[MainWindowActions::EditRedo]->isEnabled());
    m_window->addClipboardText(QStringLiteral("n\n3\n"), QPointF(0, 390));
    QVERIFY(!m_window->windowActions()[MainWindowActions::EditRedo]->isEnabled());
    QCOMPARE(m_window->windowActions()[MainWindowActions::EditRedo]->text(),
             QStringLiteral("&Redo"));
    QCOMPARE(countOfType(m_window->graphScene(), Node::InputType), 3);
    // The window follows the swapped scene: the canvas shows the live one.
    QCOMPARE(m_window->graphPane()->scene(), m_window->graphScene());
}

void TestMainWindow::newAsksToSaveChanges_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("cleared");
    QTest::addColumn<bool>("written");
    QTest::newRow("cancel") << int(QMessageBox::Cancel) << false << false;
    QTest::newRow("discard") << int(QMessageBox::Discard) << true << false;
    QTest::newRow("save") << int(QMessageBox::Save) << true << true;
}

void TestMainWindow::newAsksToSaveChanges()
{
    QFETCH(int, answer);
    QFETCH(bool, cleared);
    QFETCH(bool, written);
    m_settings->setOpenAutoRun(0);
    m_window->addClipboardText(QStringLiteral("n\n1\n"), QPointF(0, 0));
    QVERIFY(m_window->isWindowModified());

    const QString target = m_dir->filePath(QStringLiteral("asked.tabulon"));
    QFile::remove(target);
    m_chosenFiles = QStringList {target};
    m_answers = {QMessageBox::StandardButton(answer)};
    m_window->windowActions()[MainWindowActions::FileNew]->trigger();

    QCOMPARE(m_asked.size(), 1);
    QCOMPARE(m_asked.first().text, QStringLiteral("Save changes?"));
    QCOMPARE(m_asked.first().buttons,
             QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    QCOMPARE(m_window->graphScene()->nodes().isEmpty(), cleared);
    QCOMPARE(m_window->isWindowModified(), !cleared);
    QCOMPARE(QFile::exists(target), written);
    if (written) {
        FlowModel reread;
        DocumentData data;
        bool later = false;
        QStringList messages;
        QString error;
        QVERIFY(loadDocument(&reread, target, &data, &later, &messages, &error));
        QCOMPARE(reread.itemsOfKind(FlowItem::InputKind).size(), 1);
    }
}

void TestMainWindow::closeWithChangesCanBeCancelled()
{
    m_window->addClipboardText(QStringLiteral("n\n1\n"), QPointF(0, 0));
    m_answers = {QMessageBox::Cancel};
    QVERIFY(!m_window->close());
    QVERIFY(m_window->isVisible());
    QCOMPARE(m_asked.size(), 1);

    m_answers = {QMessageBox::Discard};
    QVERIFY(m_window->close());
    QVERIFY(!m_settings->geometry().isEmpty());
}

void TestMainWindow::memoryLabelColouredFromThreeQuarters_data()
{
    QTest::addColumn<double>("use");
    QTest::addColumn<double>("limit");
    QTest::addColumn<bool>("coloured");
    QTest::newRow("just under") << 2.99 << 4.0 << false;
    QTest::newRow("three quarters") << 3.0 << 4.0 << true;
    QTest::newRow("over") << 5.0 << 4.0 << true;
}

void TestMainWindow::memoryLabelColouredFromThreeQuarters()
{
    QFETCH(double, use);
    QFETCH(double, limit);
    QFETCH(bool, coloured);
    StatusBar *bar = m_window->windowStatusBar();
    // From the other state first, so a stale style can't pass for a fresh one.
    bar->setMemoryReading(coloured ? 0.0 : limit, limit);
    bar->setMemoryReading(use, limit);
    QLabel *label = bar->memoryLabel();
    QCOMPARE(bar->isMemoryWarning(), coloured);
    QCOMPARE(label->styleSheet().contains(QStringLiteral("#fc3300")), coloured);
    QVERIFY2(label->text().startsWith(QStringLiteral(" Memory usage: ")),
             qPrintable(label->text()));
    QVERIFY(label->text().endsWith(QStringLiteral(" of %1GB").arg(limit, 0, 'f', 1)));
}

void TestMainWindow::itemPaneFloatsAndDocksAgain()
{
    auto *twoScreens = m_window->findChild<QAction *>(QStringLiteral("TwoScreenModeToggled"));
    auto *splitter = m_window->findChild<QSplitter *>(QStringLiteral("mainSplitter"));
    QVERIFY(twoScreens && splitter);
    ItemPane *pane = m_window->itemPane();
    QCOMPARE(splitter->count(), 3);

    twoScreens->setChecked(true);
    QVERIFY(pane->isWindow());
    QVERIFY(pane->isVisible());
    QCOMPARE(splitter->count(), 2);

    // Closing the floating pane puts it back in its place, and the action follows.
    QVERIFY(!pane->close());
    QVERIFY(!twoScreens->isChecked());
    QVERIFY(!pane->isWindow());
    QCOMPARE(splitter->count(), 3);
    QCOMPARE(splitter->widget(2), static_cast<QWidget *>(pane));

    // Closing the window docks a floating pane first, so that three widths are remembered
    // and no stray window keeps the program running.
    twoScreens->setChecked(true);
    QVERIFY(m_window->close());
    QVERIFY(!pane->isWindow());
    QVERIFY(!pane->isVisible());
    QCOMPARE(m_settings->splitterWidths().size(), 3);
}

void TestMainWindow::statusIconsCountAndSelect()
{
    m_settings->setOpenAutoRun(0);
    QVERIFY(
        m_window->open(QStringLiteral(TABULON_TEST_DATA "/documents/cli_case/document.tabulon")));
    NodeStatusWidget *icons = m_window->windowStatusBar()->nodeStatusWidget();
    const int pending = static_cast<int>(NodeStatusIcon::NeedsUpdate);
    QCOMPARE(icons->count(pending), 3);
    QToolButton *button = icons->button(pending);
    QVERIFY(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(m_window->graphScene()->selectedItems().size(), 3);
}

TABULON_TEST_MAIN(TestMainWindow)

#include "tst_mainwindow.moc"
