#include "testdata.h"

#include "transforms/framework/transform.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

Dataset makeDataset(const QList<QStringList> &rows, bool withHeader)
{
    Dataset dataset;
    for (int r = 0; r < rows.size(); ++r) {
        if (r == 0 && withHeader) {
            dataset.setColumnCount(rows.first().size());
            dataset.setHeader(rows.first());
            continue;
        }
        dataset.addInputRow(rows.at(r), false, false, false);
    }
    return dataset;
}

DataSource::DataSource(const Dataset &dataset)
    : m_dataset(dataset)
{
    // Far above the ids of items, so that a test mixing both never sees two columns alike.
    static int counter = 100000;
    m_dataset.assignColumnIds(counter++);
}

DataSource *makeDataSource(const Dataset &dataset)
{
    return new DataSource(dataset);
}

namespace {

Dataset runInContext(Transform &transform, const ColumnSources &inputs, const RunContext &context,
                     bool *failed)
{
    TransformInputs runInputs;
    for (ColumnSource *source : inputs) {
        // Not takeable, so the transform only reads the table.
        runInputs.append({source, const_cast<Dataset *>(source->columnDataset()), false});
    }
    Dataset result = transform.execute(runInputs, context, failed);
    transform.checkRequiredParameters();
    return result;
}

} // namespace

Dataset runTransform(Transform &transform, const ColumnSources &inputs, bool *failed)
{
    return runInContext(transform, inputs, RunContext(), failed);
}

Dataset runTransform(Transform &transform, const ColumnSources &inputs, const RunContext &context)
{
    return runInContext(transform, inputs, context, nullptr);
}

namespace {

// Runs before main in every test program: the helpers are linked as objects, so this is
// never left out.
struct TestEnvironment
{
    TestEnvironment()
    {
        QStandardPaths::setTestModeEnabled(true);
        // Recovery files and temporary copies go to the temporary folder; a private one keeps
        // a test from leaving a recovery file that a real window would later offer to restore.
        if (folder.isValid())
            qputenv("TMPDIR", QFile::encodeName(folder.path()));
    }
    QTemporaryDir folder;
};

const TestEnvironment environment;

} // namespace
