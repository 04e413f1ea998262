#include "transforms/transformcross.h"

#include <QVector>

const TransformDescriptor &TransformCross::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 11;
        d.typeName = QStringLiteral("Cross");
        d.displayName = QStringLiteral("Cross");
        d.category = CategoryMerge;
        d.minimumInputs = 2;
        d.maximumInputs = 0x7fffffff;
        d.flags = TransformDescriptor::Advanced;
        d.description = QStringLiteral("Create every combination of rows in each input dataset.");
        d.keywords = QStringList {QStringLiteral("cartesian"),    QStringLiteral("product"),
                                  QStringLiteral("combinations"), QStringLiteral("permutations"),
                                  QStringLiteral("every"),        QStringLiteral("join")};
        d.inputImageName = QStringLiteral("cross.png");
        d.create = createTransform<TransformCross>;
        return d;
    }();
    return descriptor;
}

Dataset &TransformCross::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    if (inputs.size() == 1) {
        output = *inputs.first().dataset;
        setResult(QStringLiteral("No changes"));
        return output;
    }
    const int count = inputs.size();
    QVector<const Dataset *> datasets;
    datasets.reserve(count);
    // Signed 32 bits on purpose: a product that overflows shows up as a negative count.
    qint32 product = 1;
    int width = 0;
    bool anyHeader = false;
    for (const TransformInput &input : inputs) {
        const Dataset *dataset = input.dataset;
        datasets.append(dataset);
        product = qint32(quint32(product) * quint32(dataset->rowCount()));
        width += dataset->columnCount();
        anyHeader = anyHeader || dataset->hasHeader();
    }
    if (product < 0) {
        const QString text = QStringLiteral("Too many rows");
        addWarning(text);
        setResult(text);
        return output;
    }

    QVector<qint32> strides(count, 1);
    for (int i = count - 2; i >= 0; --i)
        strides[i] = qint32(quint32(strides.at(i + 1)) * quint32(datasets.at(i + 1)->rowCount()));

    QStringList header;
    QList<ColumnId> ids;
    for (const Dataset *dataset : qAsConst(datasets)) {
        header.append(dataset->headers());
        ids.append(dataset->columnIds());
    }
    output.setColumnCount(width);
    if (anyHeader)
        output.setHeader(header);
    output.setColumnIds(ids);
    output.reserveRows(product);
    for (qint32 n = 0; n < product; ++n) {
        reportRow(n, product);
        QStringList row;
        row.reserve(width);
        for (int i = 0; i < count; ++i) {
            const Dataset *dataset = datasets.at(i);
            row.append(dataset->row((n / strides.at(i)) % dataset->rowCount()));
        }
        output.appendSharedRow(row);
    }
    setResult(QStringLiteral("Crossed %1 inputs").arg(count));
    return output;
}
