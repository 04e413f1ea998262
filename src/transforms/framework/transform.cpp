#include "transforms/framework/transform.h"

#include "data/valueinterpretation.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"

#include <QHash>
#include <QLocale>

#include <memory>

QString transformCategoryName(int category, bool withAccelerator)
{
    switch (category) {
    case CategoryAll:
        return withAccelerator ? QStringLiteral("&All") : QStringLiteral("All");
    case CategoryMerge:
        return withAccelerator ? QStringLiteral("&Merge") : QStringLiteral("Merge");
    case CategoryColumn:
        return withAccelerator ? QStringLiteral("&Column") : QStringLiteral("Column");
    case CategoryRow:
        return withAccelerator ? QStringLiteral("&Row") : QStringLiteral("Row");
    case CategoryFormat:
        return withAccelerator ? QStringLiteral("&Format") : QStringLiteral("Format");
    case CategoryAnalysis:
        return withAccelerator ? QStringLiteral("Anal&ysis") : QStringLiteral("Analysis");
    }
    return withAccelerator ? QStringLiteral("&Other") : QStringLiteral("Other");
}

Transform::~Transform()
{
    qDeleteAll(m_parameters);
}

QSet<QString> Transform::keywords() const
{
    QSet<QString> words;
    for (const QString &word : descriptor().keywords)
        words.insert(word);
    const QStringList nameWords = displayName().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : nameWords)
        words.insert(word);
    switch (category()) {
    case CategoryAnalysis:
        words << QStringLiteral("analyse") << QStringLiteral("analyze")
              << QStringLiteral("analysis");
        break;
    case CategoryFormat:
        words << QStringLiteral("formatting") << QStringLiteral("formats");
        break;
    case CategoryRow:
        words << QStringLiteral("rows");
        break;
    case CategoryColumn:
        words << QStringLiteral("columns");
        break;
    case CategoryMerge:
        words << QStringLiteral("blends") << QStringLiteral("merges");
        break;
    default:
        break;
    }
    return words;
}

Transform *Transform::clone() const
{
    Transform *copy = descriptor().create();
    copy->copyFrom(*this);
    return copy;
}

void Transform::createParameters(const ColumnSources &, bool)
{
    qDeleteAll(m_parameters);
    m_parameters.clear();
}

Parameter *Transform::parameter(const QString &key) const
{
    for (Parameter *parameter : m_parameters) {
        if (parameter->key() == key)
            return parameter;
    }
    return nullptr;
}

Parameter *Transform::parameterForInput(const ColumnSource *source) const
{
    for (Parameter *parameter : m_parameters) {
        if (parameter->sourceNode() == source)
            return parameter;
    }
    return nullptr;
}

QList<Parameter *> Transform::parametersForInput(const ColumnSource *source) const
{
    QList<Parameter *> result;
    for (Parameter *parameter : m_parameters) {
        if (parameter->sourceNode() == source)
            result.append(parameter);
    }
    return result;
}

bool Transform::autoConfigure(const ColumnSources &)
{
    return false;
}

QString Transform::inputImageTag() const
{
    return QStringLiteral("<img src=':/images/%1'>").arg(descriptor().inputImageName);
}

QString Transform::inputHint() const
{
    const int minimum = minimumInputs();
    const int maximum = maximumInputs();
    QString items;
    if (minimum == maximum)
        items = minimum == 1 ? QStringLiteral("1 input/transform item")
                             : QStringLiteral("%1 input/transform items").arg(minimum);
    else if (maximum == 0x7fffffff)
        items = QStringLiteral("%1 or more input/transform items").arg(minimum);
    else
        items = QStringLiteral("%1 to %2 input/transform items").arg(minimum).arg(maximum);
    return QStringLiteral(
               "Select %1 in the Center pane\nand then click this button to perform this "
               "transform.")
        .arg(items);
}

void Transform::connectParameters(ColumnSources inputs)
{
    const bool bindInTurn = maximumInputs() >= 2;
    for (Parameter *parameter : qAsConst(m_parameters)) {
        if (!parameter->isColumnRelated())
            continue;
        if (inputs.isEmpty()) {
            parameter->setSourceNode(nullptr);
            continue;
        }
        parameter->setSourceNode(inputs.first());
        if (bindInTurn)
            inputs.removeFirst();
    }
}

bool Transform::isParameterEnabled(const QString &key) const
{
    const QList<ParameterState> states = parameterStates();
    for (const ParameterState &state : states) {
        if (state.key == key)
            return state.enabled;
    }
    return true;
}

void Transform::checkRequiredParameters()
{
    const QList<ParameterState> states = parameterStates();
    QStringList unset;
    for (const Parameter *parameter : qAsConst(m_parameters)) {
        if (!parameter->isUnset())
            continue;
        const bool disabled = std::any_of(states.cbegin(), states.cend(), [&](const auto &s) {
            return s.key == parameter->key() && !s.enabled;
        });
        if (!disabled)
            unset.append(QStringLiteral("'%1'").arg(parameter->label()));
    }
    if (unset.isEmpty())
        return;
    addWarning(QStringLiteral("%1 %2 not set (%3)")
                   .arg(unset.size())
                   .arg(unset.size() == 1 ? QStringLiteral("option") : QStringLiteral("options"),
                        unset.join(QLatin1Char(','))));
}

void Transform::addParameter(Parameter *parameter)
{
    m_parameters.append(parameter);
}

void Transform::clearMessages()
{
    m_warnings.clear();
    m_information.clear();
    m_result.clear();
}

void Transform::addNewNameParameters(bool useRemembered)
{
    auto *autoName = new Parameter(ParameterType::Bool, QStringLiteral("Auto_New_Name"),
                                   QStringLiteral("automatic new column name"), true);
    autoName->setToolTip(QStringLiteral("Uncheck to manually set the new column name."));
    applyRememberedValue(useRemembered, autoName);
    addParameter(autoName);

    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), displayName());
    newName->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, newName);
    addParameter(newName);
}

ParameterState Transform::newNameState() const
{
    const Parameter *autoName = parameter(QStringLiteral("Auto_New_Name"));
    return {QStringLiteral("New_Name"), !autoName || !autoName->toBool()};
}

QString Transform::newColumnName(const QString &automatic) const
{
    return option(QStringLiteral("Auto_New_Name")).toBool()
        ? automatic
        : option(QStringLiteral("New_Name")).toString();
}

void Transform::applyRememberedValue(bool useRemembered, Parameter *parameter)
{
    parameter->setRemembered(true);
    if (!useRemembered)
        return;
    const Settings *settings = Settings::instance();
    if (settings->hasTransformDefault(typeName(), parameter->key()))
        parameter->setValue(settings->transformDefault(typeName(), parameter->key()));
}

void Transform::rememberValue(const Parameter *parameter)
{
    if (parameter->remembered())
        Settings::instance()->setTransformDefault(typeName(), parameter->key(), parameter->value());
}

int Transform::keywordMatchCount(const QStringList &words) const
{
    QStringList lowered;
    const QSet<QString> all = keywords();
    lowered.reserve(all.size());
    for (const QString &keyword : all)
        lowered.append(keyword.toLower());
    int count = 0;
    QSet<QString> counted;
    for (const QString &word : words) {
        const QString typed = word.toLower();
        if (typed.isEmpty() || counted.contains(typed))
            continue;
        const bool found = std::any_of(lowered.cbegin(), lowered.cend(),
                                       [&](const QString &k) { return k.startsWith(typed); });
        if (found) {
            counted.insert(typed);
            ++count;
        }
    }
    return count;
}

QString Transform::cellsChangedText(qint64 changed, qint64 unchanged)
{
    if (changed == 0)
        return QStringLiteral("No changes");
    return QStringLiteral("%1 changed, %2 unchanged")
        .arg(formatCount(changed, true), formatCount(unchanged, true));
}

QString Transform::rowsRemovedText(qint64 removed)
{
    if (removed == 0)
        return QStringLiteral("No changes");
    return QStringLiteral("%1 %2 removed")
        .arg(formatCount(removed, true),
             removed == 1 ? QStringLiteral("row") : QStringLiteral("rows"));
}

QString Transform::failureText()
{
    return QStringLiteral("Failed: an option of this transform is missing");
}

Dataset Transform::inputDataset(const TransformInputs &inputs, int i)
{
    Dataset *source = inputs.at(i).dataset;
    Dataset copy = *source;
    if (inputs.at(i).takeable)
        source->takeRows();
    return copy;
}

void Transform::copyFrom(const Transform &other)
{
    qDeleteAll(m_parameters);
    m_parameters.clear();
    for (const Parameter *parameter : other.m_parameters)
        m_parameters.append(parameter->clone());
}

void Transform::migrateParameters(int, QList<StoredParameter> *) const { }

bool Transform::hasAllOptions() const
{
    // The keys a class defines are learnt once from a fresh instance without inputs, which
    // every class supports since new items and documents start that way. Classes are told
    // apart by their factory: two classes may share a typeName (a test's stand-in for one).
    static QHash<quintptr, QStringList> keysByClass;
    const auto classKey = reinterpret_cast<quintptr>(descriptor().create);
    auto found = keysByClass.constFind(classKey);
    if (found == keysByClass.constEnd()) {
        std::unique_ptr<Transform> fresh(descriptor().create());
        fresh->createParameters({}, false);
        QStringList keys;
        for (const Parameter *parameter : qAsConst(fresh->m_parameters))
            keys.append(parameter->key());
        found = keysByClass.insert(classKey, keys);
    }
    return std::all_of(found->cbegin(), found->cend(),
                       [this](const QString &key) { return parameter(key) != nullptr; });
}

Dataset Transform::execute(const TransformInputs &inputs, const RunContext &context, bool *failed)
{
    clearMessages();
    bool failedFlag = false;
    Dataset output;
    if (!inputs.isEmpty() && inputs.size() <= maximumInputs()) {
        if (hasAllOptions()) {
            Dataset &result = process(output, inputs, context, failedFlag);
            if (&result != &output)
                output = std::move(result);
        } else {
            setResult(failureText());
        }
    }
    if (failed)
        *failed = failedFlag;
    return output;
}
