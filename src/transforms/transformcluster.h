#pragma once

#include "transforms/framework/transform.h"

struct ClusterOptions;
struct ClusterOutcome;

// Groups rows whose texts are alike, by terms the user gives or terms searched from the data:
// adds the term each row's text comes nearest ("Cluster") and how near ("Closeness").
class TransformCluster : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    static QStringList clusteringNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    void report(const Dataset &output, int c, const ClusterOutcome &outcome,
                const ClusterOptions &options);
};
