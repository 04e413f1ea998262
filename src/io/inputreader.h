#pragma once

#include "data/dataset.h"
#include "io/delimitedtext.h"
#include "io/fileformats.h"

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

// The journey of an input from its source to a dataset: which reader the file type takes,
// the codec, the header decision, the meta information and the empty columns. Works from
// plain options, so that whatever holds an input's options can read it; the caller shows
// the messages and keeps the decided header.

struct InputReadOptions
{
    enum Medium { File = 0, Clipboard = 1 };
    enum Header { NoHeader = 0, HasHeader = 1, GuessHeader = 2 };

    int medium = File;
    // A file path, possibly with a "[sheet]" part; the text imported from the clipboard.
    QString path;
    QString text;
    int fileType = FileTypeDelimited;
    QString worksheet;
    int delimiter = DelimiterAutomatic;
    QChar customDelimiter;
    bool ignoreRepeatedDelimiters = false;
    int quoting = QuotingAutomatic;
    int autoFixedWidths = 1;
    QList<int> fixedWidths;
    QString encoding = QStringLiteral("Automatic");
    int header = GuessHeader;
    int ignoredRows = 0;
    bool trim = true;
    bool simplify = true;
    bool ignoreEmptyRows = true;
    bool ignoreEmptyColumns = false;
    bool ignoreExcelHiddenRows = false;
    bool ignoreExcelHiddenColumns = false;
    int metaPlace = 0;
    QString metaText;
    QString metaColumnName = QStringLiteral("Meta Info");
    int jsonArraysAsRows = 0;
    // Columns without an origin are stamped with this item id.
    int columnOrigin = -1;
    // The `input_file_extensions` map and the `blocked_input_extensions` set in force.
    QMap<QString, int> extensionTypes;
    QSet<QString> blockedExtensions;

    DelimitedReadOptions delimitedOptions() const;
};

struct InputReadResult
{
    Dataset dataset;
    QStringList warnings;
    QStringList info;
    // False when the item is to show an error: missing file, blocked extension, a file that
    // can't be opened, a reader's failure, too little memory.
    bool ok = true;
    // The header option after the read: a guess is made once, and only on a source that was
    // read, so that a missing file doesn't use it up.
    int header = InputReadOptions::GuessHeader;
    // A file was opened for reading, so a watcher of it is to be rebuilt now.
    bool fileOpened = false;
    // The stop check said no before anything was read; nothing else is set.
    bool stopped = false;
};

struct InputReadCallbacks
{
    // Fractions from 0 to 1 at the readers' steps; may throw MaxMemoryException, which the
    // read turns into the "too big" warning.
    ReadProgress progress;
    // Asked before the source is touched.
    std::function<bool()> stopRequested;
};

// The whole read: source, header decision, meta information, column origins and empty
// columns, with every message of those steps.
InputReadResult readInput(const InputReadOptions &options, const InputReadCallbacks &callbacks);

// First row cells all text and none a number or date: the header guess on a read dataset.
bool guessHasHeader(const Dataset &dataset);

// The path of a file without the "[sheet]" part that Excel inputs append.
QString inputPathWithoutSheet(const QString &path);

// "'%1' extension is '%2' but file type is %3." when the type that the extension stands for
// differs from fileType; empty otherwise.
QString extensionMismatchWarning(const QString &path, int fileType,
                                 const QMap<QString, int> &extensionTypes);
