#pragma once

#include "data/dataset.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QVector>

class Node;
class Parameter;

// Groups of the Left pane.
enum TransformCategory {
    CategoryAll = 0,
    CategoryMerge = 1,
    CategoryColumn = 2,
    CategoryRow = 3,
    CategoryFormat = 4,
    CategoryAnalysis = 5,
    CategoryOther = 6
};

QString transformCategoryName(int category, bool withAccelerator = false);

// Whether an option that depends on another is enabled at the moment.
struct ParameterState
{
    QString key;
    bool enabled = true;
};

// One operation that turns input datasets into one output dataset. A transform owns its
// options and the messages of its last run, nothing else: all data arrives through the
// inputs on each run. Prototypes (one per class, held by Application) serve the Left pane
// and act as the factory through clone() and createParameters().
class Transform : public QObject
{
    Q_OBJECT

public:
    Transform() = default;
    ~Transform() override;

    virtual int type() const = 0;
    virtual QSet<QString> keywords() const;
    virtual int category() const = 0;
    virtual bool isAdvanced() const = 0;
    virtual bool changesValuesOnly() const = 0;
    virtual bool keepsSourceRows() const = 0;
    virtual bool keepsIssues() const { return false; }
    virtual void createParameters(const QList<Node *> &inputs, bool useRemembered);
    virtual Transform *clone() const = 0;
    virtual QList<Parameter *> parameters() const { return m_parameters; }
    virtual Parameter *parameter(const QString &key) const;
    virtual Parameter *parameterForInput(const Node *node) const;
    virtual QList<Parameter *> parametersForInput(const Node *node) const;
    virtual QString displayName() const = 0;
    virtual QString typeName() const = 0;
    virtual Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) = 0;
    virtual bool autoConfigure(const QList<Node *> &inputs);
    virtual QString description() const = 0;
    virtual QString inputImageTag() const;
    virtual QString inputImageName() const { return QString(); }
    virtual QString inputHint() const;
    virtual int minimumInputs() const = 0;
    virtual int maximumInputs() const = 0;
    virtual void setParameters(const QList<Parameter *> &list);
    virtual void connectParameters(QList<Node *> inputs);
    virtual bool usesDateFormats() const = 0;
    virtual bool hasKeyColumns() const { return false; }
    virtual bool hasDuplicateOptions() const { return false; }
    virtual QString keyColumn1Key() const { return QString(); }
    virtual QString keyColumn2Key() const { return QString(); }
    virtual QString caseSensitiveKey() const { return QString(); }
    virtual QString duplicateColumnsKey() const { return QString(); }
    virtual QString duplicateMatchTypeKey() const { return QString(); }
    virtual QString duplicateFuzzinessKey() const { return QString(); }
    virtual QString duplicateIgnoreSpacesKey() const { return QString(); }
    virtual QString duplicateIgnorePunctuationKey() const { return QString(); }
    virtual QString duplicateModeKey() const { return QString(); }
    virtual bool omitDisabledFromDetails() const = 0;
    virtual bool reserved() const { return false; }
    virtual QList<ParameterState> parameterStates() const { return {}; }
    virtual void checkRequiredParameters();

    void addParameter(Parameter *parameter);
    void clearMessages();
    const QStringList &warnings() const { return m_warnings; }
    const QStringList &information() const { return m_information; }
    const QString &result() const { return m_result; }
    bool hasWarnings() const { return !m_warnings.isEmpty(); }
    bool hasInformation() const { return !m_information.isEmpty(); }
    void applyRememberedValue(bool useRemembered, Parameter *parameter);
    void rememberValue(const Parameter *parameter);
    int keywordMatchCount(const QStringList &words) const;
    bool isParameterEnabled(const QString &key) const;

    // Counts in user texts ("%1 changed, %2 unchanged", "%1 rows removed").
    static QString cellsChangedText(qint64 changed, qint64 unchanged);
    static QString rowsRemovedText(qint64 removed);
    static QString failureText();

    // Set by the item around a run of process(): the inputs whose rows this run may take
    // over, because the run frees data as it goes and this transform is their last reader.
    void setTakeableInputs(const QVector<bool> &takeable) { m_takeableInputs = takeable; }

signals:
    void processed(qreal fraction);

protected:
    // Clones the options of this transform into copy; used by every clone().
    template<typename T> T *cloneAs() const
    {
        auto *copy = new T;
        copy->copyParametersFrom(*this);
        return copy;
    }
    void copyParametersFrom(const Transform &other);
    // Emits progress before row r of total when r is a multiple of 1000.
    void reportRow(int r, int total, qreal base = 0.0)
    {
        if (total != 0 && r % 1000 == 0)
            emit processed(base + qreal(r) / qreal(total));
    }
    void addWarning(const QString &text) { m_warnings.append(text); }
    void addInformation(const QString &text) { m_information.append(text); }
    void setResult(const QString &text) { m_result = text; }
    // The dataset of input i to make the output from. When the input's rows may be taken
    // over, the input gives them up, so that the rows this transform changes are changed in
    // place instead of copied and those it drops are freed. The input keeps its columns,
    // against which column options are resolved; its rows must not be read afterwards.
    Dataset inputDataset(const QList<Node *> &inputs, int i);

private:
    QList<Parameter *> m_parameters;
    QStringList m_warnings;
    QStringList m_information;
    QString m_result;
    QVector<bool> m_takeableInputs;
};
