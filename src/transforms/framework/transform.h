#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"
#include "transforms/framework/transformdescriptor.h"
#include "transforms/framework/transforminput.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>

class Parameter;

// Whether an option that depends on another is enabled at the moment.
struct ParameterState
{
    QString key;
    bool enabled = true;
};

// An option as a document stores it: key, kind and text form. Documents of older versions
// are brought up to date in this form, before the text is given to the option.
struct StoredParameter
{
    QString key;
    int type = -1;
    QString text;
};

// One operation that turns input datasets into one output dataset. A transform owns its
// options and the messages of its last run, nothing else: all data arrives through the
// inputs on each run, as datasets, never as items of the flow. Prototypes (one per class,
// held by the registry) serve the Left pane and act as the factory through clone() and
// createParameters().
class Transform : public QObject
{
    Q_OBJECT

public:
    Transform() = default;
    ~Transform() override;

    // What the class is; each class defines it once in its source file.
    virtual const TransformDescriptor &descriptor() const = 0;

    int type() const { return descriptor().type; }
    QString typeName() const { return descriptor().typeName; }
    QString displayName() const { return descriptor().displayName; }
    int category() const { return descriptor().category; }
    QString description() const { return descriptor().description; }
    int minimumInputs() const { return descriptor().minimumInputs; }
    int maximumInputs() const { return descriptor().maximumInputs; }
    bool isAdvanced() const { return has(TransformDescriptor::Advanced); }
    bool changesValuesOnly() const { return has(TransformDescriptor::ChangesValuesOnly); }
    bool keepsSourceRows() const { return has(TransformDescriptor::KeepsSourceRows); }
    bool keepsIssues() const { return has(TransformDescriptor::KeepsIssues); }
    bool omitDisabledFromDetails() const
    {
        return has(TransformDescriptor::OmitDisabledFromDetails);
    }
    bool hasKeyColumns() const { return has(TransformDescriptor::HasKeyColumns); }
    bool hasDuplicateOptions() const { return has(TransformDescriptor::HasDuplicateOptions); }
    // Some transforms depend on the date formats only with some of their options.
    virtual bool usesDateFormats() const { return has(TransformDescriptor::UsesDateFormats); }
    // The words of the name, of the category and the class's own search words.
    QSet<QString> keywords() const;
    int keywordMatchCount(const QStringList &words) const;
    QString inputImageTag() const;
    QString inputHint() const;

    // A new instance of the same class with clones of the options; messages aren't copied.
    Transform *clone() const;

    // Builds the options for the given inputs, after deleting any there are.
    virtual void createParameters(const ColumnSources &inputs, bool useRemembered);
    // Binds column options to the inputs when connections change.
    virtual void connectParameters(ColumnSources inputs);
    // Lets the transform fill options from the data of newly connected inputs; true if
    // anything was set.
    virtual bool autoConfigure(const ColumnSources &inputs);
    // For each option that depends on another, its key and whether it is enabled now.
    virtual QList<ParameterState> parameterStates() const { return {}; }
    // Adds the warning about unset options; the run engine calls it after every run.
    virtual void checkRequiredParameters();
    // Rewrites the stored options of a document of an older version into the form of the
    // current one: renamed options, changed meanings, renamed choices.
    virtual void migrateParameters(int version, QList<StoredParameter> *parameters) const;

    const QList<Parameter *> &parameters() const { return m_parameters; }
    Parameter *parameter(const QString &key) const;
    Parameter *parameterForInput(const ColumnSource *source) const;
    QList<Parameter *> parametersForInput(const ColumnSource *source) const;
    void addParameter(Parameter *parameter);
    bool isParameterEnabled(const QString &key) const;

    // Clears the messages, runs the transform over inputs (in canvas order) and returns its
    // table. The framework checks what every transform needs: at least one input and no more
    // than the class takes (else the table is empty), and every option the class defines
    // (else the result is failureText()). failed, when given, tells whether the run failed
    // as a whole.
    Dataset execute(const TransformInputs &inputs, const RunContext &context,
                    bool *failed = nullptr);

    void clearMessages();
    const QStringList &warnings() const { return m_warnings; }
    const QStringList &information() const { return m_information; }
    const QString &result() const { return m_result; }
    bool hasWarnings() const { return !m_warnings.isEmpty(); }
    bool hasInformation() const { return !m_information.isEmpty(); }
    void applyRememberedValue(bool useRemembered, Parameter *parameter);
    void rememberValue(const Parameter *parameter);

    // Counts in user texts ("%1 changed, %2 unchanged", "%1 rows removed").
    static QString cellsChangedText(qint64 changed, qint64 unchanged);
    static QString rowsRemovedText(qint64 removed);
    static QString failureText();

signals:
    void processed(qreal fraction);

protected:
    // The operation itself. inputs holds between one and maximumInputs() entries and every
    // option of the class exists, so option() never fails here. output starts empty; failed
    // starts false and is set to say that the run failed as a whole.
    virtual Dataset &process(Dataset &output, const TransformInputs &inputs,
                             const RunContext &context, bool &failed)
        = 0;

    // An option that the framework has checked exists; only for use inside process().
    const Parameter &option(const QString &key) const { return *parameter(key); }
    // The two options of a transform that adds one column: Auto_New_Name, and New_Name with the
    // transform's display name as default, which the Right pane shows only while the first is
    // off (newNameState()).
    void addNewNameParameters(bool useRemembered);
    ParameterState newNameState() const;
    // The new column's name: automatic while Auto_New_Name is on, else New_Name. Only for use
    // inside process().
    QString newColumnName(const QString &automatic) const;
    // Makes this a copy of other, which is of the same class: its options, and the state of
    // the few classes that keep some beyond them.
    virtual void copyFrom(const Transform &other);
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
    static Dataset inputDataset(const TransformInputs &inputs, int i);

private:
    bool has(TransformDescriptor::Flag flag) const { return descriptor().has(flag); }
    // Whether every option that a fresh instance of the class makes exists here.
    bool hasAllOptions() const;

    QList<Parameter *> m_parameters;
    QStringList m_warnings;
    QStringList m_information;
    QString m_result;
};
