// Reads one delimited file into a Dataset as an input item would, and prints the wall time
// and the peak resident memory of the process. One mode a run, so that the peak memory
// belongs to that mode alone.

#include "data/dataset.h"
#include "io/delimitedtext.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>

#include <sys/resource.h>

#include <cstdio>
#include <cstring>

namespace {

double maxResidentMiB()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

int usage()
{
    std::fprintf(stderr, "usage: read_bench FILE speed|memory|decode\n");
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return usage();
    const char *mode = argv[2];
    const bool decodeOnly = std::strcmp(mode, "decode") == 0;
    if (!decodeOnly && std::strcmp(mode, "speed") != 0 && std::strcmp(mode, "memory") != 0)
        return usage();

    QFile file(QString::fromLocal8Bit(argv[1]));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot open %s\n", argv[1]);
        return 1;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    const qint64 length = file.size();

    QElapsedTimer timer;
    timer.start();
    qint64 characters = 0;
    int rows = 0;
    int columns = 0;
    int progressCalls = 0;
    if (decodeOnly) {
        // The floor: decoding the file in the tokeniser's blocks, no cells made.
        for (QString block = stream.read(2048); !block.isEmpty(); block = stream.read(2048))
            characters += block.size();
    } else {
        Dataset::setOptimizeFor(std::strcmp(mode, "speed") == 0 ? Dataset::MaximumSpeed
                                                                : Dataset::MinimumMemory);
        Dataset dataset;
        TextReadReport report;
        readDelimitedText(stream, length, DelimitedReadOptions(), dataset, report,
                          [&progressCalls](double) { ++progressCalls; });
        dataset.clearStringPools();
        rows = dataset.rowCount();
        columns = dataset.columnCount();
        const double seconds = double(timer.nsecsElapsed()) / 1e9;
        std::printf("%-7s %6.2f s  %7.0f MiB max RSS  %d rows x %d columns, %d progress calls\n",
                    mode, seconds, maxResidentMiB(), rows, columns, progressCalls);
        // Tearing the table down is not part of reading; leave it to the system, so that
        // profiles of this program show the read alone.
        std::fflush(stdout);
        std::_Exit(0);
    }
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    std::printf("%-7s %6.2f s  %7.0f MiB max RSS  %lld characters\n", mode, seconds,
                maxResidentMiB(), characters);
    return 0;
}
