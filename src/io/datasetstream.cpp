#include "data/dataset.h"
#include "io/delimitedtext.h"

#include <QTextStream>

// Reading a dataset straight from quoted delimited text, for callers that settle the
// delimiter themselves and need no report.
Dataset::Dataset(QTextStream &stream, QChar delimiter, int skipRows, bool trim, bool tidy,
                 bool skipEmpty)
{
    DelimitedReadOptions options;
    options.ignoredRows = skipRows;
    options.ignoreRepeatedDelimiters = false;
    options.trim = trim;
    options.simplify = tidy;
    options.ignoreEmpty = skipEmpty;
    TextReadReport report;
    readQuotedText(stream, 0, delimiter, options, *this, report, ReadProgress());
}
