#pragma once

#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformverify.h"
#include "transforms/verifyrules.h"

#include <QScopedPointer>

// A Verify over a literal table, shared by the test programs of Verify.

// A Verify over one input, its rules set through the rule set as the editor would.
class Verifier
{
public:
    explicit Verifier(const Dataset &input)
        : m_node(makeDataSource(input))
    {
        m_verify.createParameters({m_node.data()}, false);
    }

    ColumnId id(int c) const { return m_node->dataset()->columnId(c); }
    void columnRule(int c, int type, int number, const QVariant &value = QVariant(),
                    int severity = VerifyRules::Warning)
    {
        rules.setColumnType(id(c), type);
        VerifyRule &rule = rules.columnRule(id(c), number);
        rule.value = VerifyRules::valueOfKind(VerifyRules::columnRuleKind(number), value);
        rule.severity = severity;
        rule.active = true;
    }
    void datasetRule(int number, const QVariant &value = QVariant(),
                     int severity = VerifyRules::Warning)
    {
        VerifyRule &rule = rules.datasetRule(number);
        rule.value = VerifyRules::valueOfKind(VerifyRules::datasetRuleKind(number), value);
        rule.severity = severity;
        rule.active = true;
    }
    void set(const char *key, const QVariant &value) { m_verify.parameter(key)->setValue(value); }
    Dataset run()
    {
        m_verify.parameter("Rules")->setValue(rules.toVariant());
        return runTransform(m_verify, {m_node.data()}, &failed);
    }
    const TransformVerify &transform() const { return m_verify; }

    VerifyRuleSet rules;
    bool failed = false;

private:
    QScopedPointer<DataSource> m_node;
    TransformVerify m_verify;
};
