#pragma once

#include "io/commandline.h"

#include <QString>
#include <QStringList>

class FlowModel;

// The command-line run of a document: load it, point its inputs and outputs where the -file
// arguments say, run it once without asking anything and report in the log.

// Gives the inputs and outputs named by the aliases of the -file values their new paths;
// relative paths are taken from documentFolder. An input keeps its path when the new file
// doesn't exist. Returns the abort message for a value that isn't "<alias>=<value>".
QString applyFileArguments(FlowModel &model, const QStringList &values,
                           const QString &documentFolder);

// Loads the document of options into a flow of its own, runs all of it once without asking
// anything, reports as the options say, and returns the exit code.
// keepData leaves the document's items and their data allocated after the run, for a caller
// that ends the process at once (see runCommandLineAndExit).
int runDocument(const CommandLineOptions &options, CommandLineLog &log, bool keepData = false);

// The whole command-line mode: parse, then abort or run. Returns the process's exit code: 0
// once the run has been carried out, even when items failed, CommandLineAbortCode after an
// abort.
int runCommandLine(const QStringList &arguments);
int runCommandLine(const QStringList &arguments, CommandLineLog &log);
// The program's command-line run: like runCommandLine, then ends the process with the exit
// code without freeing the data cell by cell, which on millions of rows costs more than
// the rest of a short run. Settings are written and temporary files removed first.
[[noreturn]] void runCommandLineAndExit(const QStringList &arguments);
