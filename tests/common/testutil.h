#pragma once

#include "testdata.h"

#include <QMessageBox>
#include <QPointF>
#include <QStringList>
#include <QTemporaryDir>

class GraphScene;
class InputNode;
class Node;
class Transform;
class TransformNode;

// The helpers of testdata on the scene's model, giving the new items' nodes.
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
// Tests of the core use QTEST_GUILESS_MAIN and link no GUI.
#define TABULON_TEST_MAIN(TestObject)                                                              \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))                                        \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                               \
        QApplication app(argc, argv);                                                              \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                   \
        TestObject tc;                                                                             \
        QTEST_SET_MAIN_SOURCE_PATH                                                                 \
        return QTest::qExec(&tc, argc, argv);                                                      \
    }
