#pragma once

#include "transforms/framework/transform.h"

#include <chrono>
#include <memory>

class QJSEngine;

// Adds a column whose value for each row is what the user's script returns. The script is the
// body of one function, compiled once a run, whose parameters are the columns it names; each
// row is one call.
class TransformJavascript : public Transform
{
    Q_OBJECT

public:
    // How long one call of the script may take before it is stopped.
    static constexpr std::chrono::milliseconds DefaultTimeLimit {5000};

    TransformJavascript();
    ~TransformJavascript() override;

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

    static QStringList typeAsNames();
    static QString defaultScript();
    // The name a column is given inside the script: "col_3_var" for the third column.
    static QString columnVariableName(int c);

    std::chrono::milliseconds timeLimit() const { return m_timeLimit; }
    void setTimeLimit(std::chrono::milliseconds limit) { m_timeLimit = limit; }

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
    void copyFrom(const Transform &other) override;

private:
    QJSEngine *engine();

    // Made on first use and kept, with whatever the scripts leave in it, for the transform's
    // life.
    std::unique_ptr<QJSEngine> m_engine;
    std::chrono::milliseconds m_timeLimit = DefaultTimeLimit;
};
