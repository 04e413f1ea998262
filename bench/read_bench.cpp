// Reads one delimited file into a Dataset as an input item would, and prints the wall time,
// the processor time and the peak resident memory of the process. One mode a run, so that
// the peak memory belongs to that mode alone.

#include "data/dataset.h"
#include "io/delimitedtext.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

double maxResidentMiB()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

// User and system time together: on a shared machine a steadier figure than the wall time.
double processorSeconds()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

int usage()
{
    std::fprintf(stderr, "usage: read_bench FILE speed|memory|decode\n");
    return 2;
}

// The floor: decoding the file in the tokeniser's blocks, no cells made.
QString decodeOnly(QTextStream &stream)
{
    qint64 characters = 0;
    for (QString block = stream.read(2048); !block.isEmpty(); block = stream.read(2048))
        characters += block.size();
    return QStringLiteral("%1 characters").arg(characters);
}

QString readDataset(QTextStream &stream, qint64 length, Dataset::OptimizeFor mode)
{
    Dataset::setOptimizeFor(mode);
    // Held beyond this function: tearing the table down is not part of reading.
    static Dataset dataset;
    TextReadReport report;
    int progressCalls = 0;
    readDelimitedText(stream, length, DelimitedReadOptions(), dataset, report,
                      [&progressCalls](double) { ++progressCalls; });
    dataset.clearStringPools();
    return QStringLiteral("%1 rows x %2 columns, %3 progress calls")
        .arg(dataset.rowCount())
        .arg(dataset.columnCount())
        .arg(progressCalls);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return usage();
    const char *mode = argv[2];
    if (std::strcmp(mode, "decode") != 0 && std::strcmp(mode, "speed") != 0
        && std::strcmp(mode, "memory") != 0)
        return usage();

    QFile file(QString::fromLocal8Bit(argv[1]));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot open %s\n", argv[1]);
        return 1;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");

    const double processorStart = processorSeconds();
    QElapsedTimer timer;
    timer.start();
    QString what;
    if (std::strcmp(mode, "decode") == 0)
        what = decodeOnly(stream);
    else if (std::strcmp(mode, "speed") == 0)
        what = readDataset(stream, file.size(), Dataset::MaximumSpeed);
    else
        what = readDataset(stream, file.size(), Dataset::MinimumMemory);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    std::printf("%-7s %6.2f s wall  %6.2f s cpu  %5.0f MiB max RSS  %s\n", mode, seconds,
                processorSeconds() - processorStart, maxResidentMiB(), qPrintable(what));
    std::fflush(stdout);
    // Leaves the table to the system, so that profiles of this program show the read alone.
    std::_Exit(0);
}
