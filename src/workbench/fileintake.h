#pragma once

#include <QObject>
#include <QPointF>
#include <QStringList>
#include <QUrl>

class FlowItem;
class MainWindow;

// How data comes into the window and goes out of it: files dropped, pasted or chosen become
// inputs, clipboard text becomes a clipboard input, and a chosen file becomes an output of the
// selected item. Each addition is one undo step.
class FileIntake : public QObject
{
    Q_OBJECT

public:
    explicit FileIntake(MainWindow *window);

    bool addFiles(const QList<QUrl> &urls, const QPointF &scenePos);
    // Adds a clipboard input holding text, in one undo step.
    void addClipboardText(const QString &text, const QPointF &scenePos);

public slots:
    void onEditPaste();
    void onInputFromFile();
    void onInputFromClipboard();
    void onOutputDataToFile();

private:
    bool isBusy() const;
    // The local files behind urls, folders walked; a document among them is opened instead,
    // which sets *opened to the result.
    QStringList localFiles(const QList<QUrl> &urls, bool *documentFound, bool *opened);
    // Leaves out the files whose extension is blocked, and names them to the user.
    QStringList withoutBlocked(const QStringList &files);
    // One input for each sheet the user takes from a book, and for every other file; false
    // when nothing is left to add.
    bool addInputs(const QStringList &files, const QPointF &scenePos);
    // Whether the user goes on with an output on a file that source also reads.
    bool confirmOutputOverInput(FlowItem *source, const QString &path);

    MainWindow *m_window;
};
