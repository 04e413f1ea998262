#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"
#include "transforms/framework/transforminput.h"

#include <QMessageBox>
#include <QPointF>
#include <QStringList>
#include <QTemporaryDir>

class GraphScene;
class InputNode;
class Node;
class Transform;
class TransformNode;

// Builds a dataset from literal rows; the first row is the header when withHeader is true.
Dataset makeDataset(const QList<QStringList> &rows, bool withHeader = true);

// A table that options can bind to, always ready: the input of a transform tested outside a
// flow. Its columns get ids of its own, from a counter apart from that of items.
class DataSource : public ColumnSource
{
public:
    explicit DataSource(const Dataset &dataset);
    const Dataset *columnDataset() const override { return &m_dataset; }
    bool isReady() const override { return true; }
    Dataset *dataset() { return &m_dataset; }
    int id() const { return m_id; }

private:
    Dataset m_dataset;
    int m_id;
};

// A new source over dataset; the caller owns it.
DataSource *makeDataSource(const Dataset &dataset);

// An item that only holds the given dataset, up to date, with ids from the item's id: for
// widgets that show an item's table. The caller owns it.
Node *makeDataNode(const Dataset &dataset);

// Runs transform over the given inputs as the run engine would, and returns the result. The
// inputs' rows are never taken over, so the inputs stay as they are.
Dataset runTransform(Transform &transform, const ColumnSources &inputs, bool *failed = nullptr);
// The same in a run of the given context (its document, its stop flag).
Dataset runTransform(Transform &transform, const ColumnSources &inputs,
                     const RunContext &context);

// Prepares a test process: no display needed, settings kept away from the user's own, and
// temporary files in temporaryFolder, which main owns so that it outlives the whole run.
void prepareTestEnvironment(const QTemporaryDir &temporaryFolder);

// Small graphs built in code: an input over comma separated text (first line the header), and
// a transform item made from a transform whose options are created for its inputs.
InputNode *addTextInput(GraphScene &scene, const QString &csv, const QPointF &pos);
TransformNode *addTransform(GraphScene &scene, Transform *transform, const QList<Node *> &inputs,
                            const QPointF &pos);

// Stands in for the user at every message box while it lives: records each text, answers a
// question that offers Yes with answer, and any other box with Ok.
class MessageBoxAnswerer
{
public:
    MessageBoxAnswerer();
    ~MessageBoxAnswerer();
    MessageBoxAnswerer(const MessageBoxAnswerer &) = delete;
    MessageBoxAnswerer &operator=(const MessageBoxAnswerer &) = delete;

    QStringList texts;
    QMessageBox::StandardButton answer = QMessageBox::Yes;
};

// Like QTEST_MAIN, for tests that need widgets or graphics items, runnable with no display.
#define TABULON_TEST_MAIN(TestObject)                                                              \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        QTemporaryDir temporaryFolder;                                                             \
        prepareTestEnvironment(temporaryFolder);                                                   \
        QApplication app(argc, argv);                                                              \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                   \
        TestObject tc;                                                                             \
        QTEST_SET_MAIN_SOURCE_PATH                                                                 \
        return QTest::qExec(&tc, argc, argv);                                                      \
    }
