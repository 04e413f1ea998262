#include "workbench/transformitemwidget.h"
#include "shell/appearancesettings.h"

#include "flow/transformitem.h"
#include "inspection/datapage.h"
#include "inspection/datatablemodel.h"
#include "inspection/datatableview.h"
#include "io/outputwriters.h"
#include "shell/application.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterwidget.h"
#include "transforms/framework/transform.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryFile>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// Connects a signal of a parameter widget's own class, which the shared interface can't name.
void connectIfPresent(QWidget *sender, const char *signal, QObject *receiver, const char *slot)
{
    const QByteArray normalized = QMetaObject::normalizedSignature(signal + 1);
    if (sender->metaObject()->indexOfSignal(normalized.constData()) >= 0)
        QObject::connect(sender, signal, receiver, slot);
}

QToolButton *toolButton(const QString &text, const QString &toolTip, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setText(text);
    button->setToolTip(toolTip);
    return button;
}

OutputFileOptions exportOptions(const QString &path)
{
    OutputFileOptions options;
    options.fileType = outputFileTypeForPath(path, 0);
    if (QFileInfo(path).suffix().startsWith(QLatin1Char('t'), Qt::CaseInsensitive)) {
        options.delimiter = QLatin1Char('\t');
        options.quoting = OutputQuotingNever;
    }
    options.comment.clear();
    // The user agreed to replace the file: no sheet of an old workbook is kept.
    options.overwriteSheetOnly = false;
    return options;
}

} // namespace

TransformItemWidget::TransformItemWidget(TransformItem *item, QWidget *parent)
    : ItemWidget(item, parent)
{
    auto *header = new QLabel(QStringLiteral("Transform data."), optionsArea());
    header->setToolTip(QStringLiteral("Transform this data."));
    QFont bold = header->font();
    bold.setBold(true);
    header->setFont(bold);
    optionsLayout()->insertWidget(0, header);
    buildParameters();
    buildTools();
    updateParameterStates();
    applyComparison();
}

void TransformItemWidget::refreshAfterRun()
{
    // The input may have run too: its dataset is measured against afresh.
    applyComparison();
    ItemWidget::refreshAfterRun();
}

// Cells are compared by position with the first input, which is what a transform that keeps
// its rows and columns changes; the table's tool tip then tells the old and the new text.
void TransformItemWidget::applyComparison()
{
    DataTableView *view = dataPage() ? dataPage()->view() : nullptr;
    if (!view || !m_compare)
        return;
    DataTableModel *model = view->dataModel();
    const Dataset *before = nullptr;
    if (m_compare->isChecked() && item()) {
        const QList<FlowItem *> inputs = item()->upstream(true);
        if (!inputs.isEmpty())
            before = inputs.first()->dataset();
    }
    model->setDifferenceColor(m_changesColor->color());
    // Each of these resets the view, so only what changed is set.
    if (model->compareDataset() != before)
        model->setCompareDataset(before);
    model->setComparisonMode(before != nullptr);
    m_nextChange->setEnabled(before != nullptr);
    m_previousChange->setEnabled(before != nullptr);
    view->viewport()->update();
}

TransformItemWidget::~TransformItemWidget()
{
    // The widgets die with their Qt parent; only the list goes.
    m_parameterWidgets.clear();
}

TransformItem *TransformItemWidget::transformItem() const
{
    return static_cast<TransformItem *>(item());
}

void TransformItemWidget::buildParameters()
{
    TransformItem *item = transformItem();
    if (!item || !item->transform())
        return;
    const QList<Parameter *> parameters = item->transform()->parameters();
    for (Parameter *parameter : parameters) {
        ParameterWidget *parameterWidget = createParameterWidget(parameter, optionsArea());
        if (!parameterWidget)
            continue;
        QWidget *widget = parameterWidget->widget();
        m_parameterWidgets.append(parameterWidget);
        switch (parameterLayout(parameter)) {
        case ParameterLayout::Row:
            form()->addRow(QStringLiteral("%1:").arg(parameter->label()), widget);
            break;
        case ParameterLayout::Check:
        case ParameterLayout::Block:
            form()->addRow(widget);
            break;
        }
        connectIfPresent(widget, SIGNAL(processNow()), this, SLOT(onProcessNow()));
        connectIfPresent(widget, SIGNAL(parameterValueChanged(bool)), this,
                         SLOT(onParameterChange(bool)));
        connectIfPresent(widget, SIGNAL(userInteraction()), this, SLOT(onParameterInteraction()));
    }
}

void TransformItemWidget::buildTools()
{
    TransformItem *item = transformItem();
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    addComparisonTools(row);

    const Transform *transform = item ? item->transform() : nullptr;
    if (transform && transform->typeName() == QLatin1String("Verify"))
        addVerifyColorButtons(row);
    row->addStretch(1);
    addExploreButtons(row, transform);
    optionsLayout()->addLayout(row);
    connectTools();
}

// Export, edit, and the comparison with the input: the check, the steps and the colour.
void TransformItemWidget::addComparisonTools(QHBoxLayout *row)
{
    m_export = toolButton(
        QStringLiteral("Export..."),
        QStringLiteral(
            "Export the dataset to a file.\nNot affected by filtering of the data table."),
        optionsArea());
    m_editTemp = toolButton(
        QStringLiteral("Edit..."),
        QStringLiteral(
            "Open the whole dataset as a temporary .csv file in a local editor.\nChanges "
            "made in the editor will not change the dataset in %1.\nNot affected by "
            "filtering of the data table.")
            .arg(QStringLiteral("Tabulon")),
        optionsArea());
    m_compare = new QCheckBox(QStringLiteral("compare changes"), optionsArea());
    m_compare->setToolTip(
        QStringLiteral("Highlight changes made by the transform. Click or hover over cell to see "
                       "details of the change.\nCan be slow for large datasets."));
    m_compare->setChecked(Settings::instance()->showChanges());
    m_previousChange = toolButton(
        QStringLiteral("<"),
        QStringLiteral("Previous change. Skips changes hidden by data table filtering."),
        optionsArea());
    m_nextChange
        = toolButton(QStringLiteral(">"),
                     QStringLiteral("Next change. Skips changes hidden by data table filtering."),
                     optionsArea());
    QColor changed = AppearanceSettings().changedDataColor();
    if (!changed.isValid())
        changed = QColor(0xFF, 0xD8, 0x80);
    m_changesColor = new ColorButton(changed, optionsArea());
    m_changesColor->setToolTip(QStringLiteral("The color to show differences in."));
    auto *colorLabel = new QLabel(QStringLiteral("Changes color:"), optionsArea());
    colorLabel->setToolTip(m_changesColor->toolTip());

    row->addWidget(m_export);
    row->addWidget(m_editTemp);
    row->addSpacing(8);
    row->addWidget(m_compare);
    row->addWidget(m_previousChange);
    row->addWidget(m_nextChange);
    row->addWidget(colorLabel);
    row->addWidget(m_changesColor);
}

// A Verify transform shows the colours of its failures beside the tools; a change is kept at once.
void TransformItemWidget::addVerifyColorButtons(QHBoxLayout *row)
{
    const struct
    {
        const char *label;
        QColor color;
        void (AppearanceSettings::*set)(const QColor &);
    } verify[] = {
        {"Error:", AppearanceSettings().verifyFailErrorColor(),
         &AppearanceSettings::setVerifyFailErrorColor},
        {"Warning:", AppearanceSettings().verifyFailWarningColor(),
         &AppearanceSettings::setVerifyFailWarningColor},
        {"Info:", AppearanceSettings().verifyFailInfoColor(),
         &AppearanceSettings::setVerifyFailInfoColor},
    };
    for (const auto &entry : verify) {
        row->addWidget(new QLabel(QString::fromLatin1(entry.label), optionsArea()));
        auto *button = new ColorButton(entry.color, optionsArea());
        const auto set = entry.set;
        connect(button, &ColorButton::colorChanged, this, [set](const QColor &color) {
            AppearanceSettings appearance;
            (appearance.*set)(color);
        });
        row->addWidget(button);
    }
}

void TransformItemWidget::addExploreButtons(QHBoxLayout *row, const Transform *transform)
{
    if (transform && transform->hasKeyColumns()) {
        m_exploreKeys = new QPushButton(QStringLiteral("Explore Keys..."), optionsArea());
        m_exploreKeys->setToolTip(QStringLiteral("Click to explore keys in the two datasets."));
        connect(m_exploreKeys, &QPushButton::clicked, this,
                &TransformItemWidget::onClickedExploreKeys);
        row->addWidget(m_exploreKeys);
    }
    if (transform && transform->hasDuplicateOptions()) {
        m_exploreDuplicates = new QPushButton(QStringLiteral("Explore Duplicates"), optionsArea());
        m_exploreDuplicates->setToolTip(
            QStringLiteral("Click to explore duplicate rows in the dataset."));
        connect(m_exploreDuplicates, &QPushButton::clicked, this,
                &TransformItemWidget::onClickedExploreDuplicates);
        row->addWidget(m_exploreDuplicates);
    }
}

void TransformItemWidget::connectTools()
{
    connect(m_export, &QToolButton::clicked, this, &TransformItemWidget::onClickedExport);
    connect(m_editTemp, &QToolButton::clicked, this, &TransformItemWidget::onClickedEditTemp);
    connect(m_compare, &QCheckBox::toggled, this, [this](bool on) {
        Settings::instance()->setShowChanges(on);
        applyComparison();
    });
    connect(m_nextChange, &QToolButton::clicked, this, [this] { moveToChange(1); });
    connect(m_previousChange, &QToolButton::clicked, this, [this] { moveToChange(-1); });
    connect(m_changesColor, &ColorButton::colorChanged, this, [this](const QColor &color) {
        AppearanceSettings().setChangedDataColor(color);
        applyComparison();
    });
}

ParameterWidget *TransformItemWidget::parameterWidget(const QString &key) const
{
    for (ParameterWidget *widget : m_parameterWidgets)
        if (widget->key() == key)
            return widget;
    return nullptr;
}

void TransformItemWidget::updateParameterStates()
{
    TransformItem *item = transformItem();
    if (!item || !item->transform())
        return;
    const QList<ParameterState> states = item->transform()->parameterStates();
    for (const ParameterState &state : states)
        if (ParameterWidget *widget = parameterWidget(state.key))
            widget->updateEnabled(state.enabled);
}

void TransformItemWidget::onProcessNow()
{
    updateParameterStates();
    requestRun(false);
}

void TransformItemWidget::onParameterChange(bool runNow)
{
    // A complete edit (a choice in a list) runs now; one of a series (typing) waits for the
    // pause.
    updateParameterStates();
    requestRun(!runNow);
}

void TransformItemWidget::onParameterInteraction()
{
    emit restartTimerIfActive();
}

void TransformItemWidget::onClickedExport()
{
    FlowItem *current = item();
    if (!current)
        return;
    const QString extension = Settings::instance()->defaultExportExtension();
    Application *application = Application::instance();
    const QString folder = application ? application->lastOutputDataFolder() : QDir::homePath();
    const QString path = DesktopHooks::saveFileName(
        this, QStringLiteral("Export"), folder,
        QStringLiteral("%1 file (*.%2);;All Files (*.*)").arg(extension.toUpper(), extension));
    if (path.isEmpty())
        return;
    if (QFileInfo::exists(path)
        && !MessageBoxes::askYesNo(
            this, QStringLiteral("Export"),
            QStringLiteral("%1 already exists.\nDo you want to replace it?").arg(path)))
        return;
    WriteReport report;
    if (!writeOutputFile(path, *current->dataset(), exportOptions(path), report, nullptr))
        MessageBoxes::warning(this, QStringLiteral("Export"), report.warnings.join('\n'));
    else if (application)
        application->setLastOutputDataFolder(path);
}

QString TransformItemWidget::writeTemporaryCsv(QString *error) const
{
    FlowItem *current = item();
    QTemporaryFile file(QDir::temp().filePath(QStringLiteral("tabulon_XXXXXX.csv")));
    file.setAutoRemove(false);
    if (!current || !file.open()) {
        if (error)
            *error = QStringLiteral("Unable to write to '%1'.").arg(file.fileTemplate());
        return QString();
    }
    const QString path = file.fileName();
    file.close();
    if (Application *application = Application::instance())
        application->addTemporaryFile(path);
    OutputFileOptions options;
    options.comment.clear();
    WriteReport report;
    if (!writeOutputFile(path, *current->dataset(), options, report, nullptr)) {
        if (error)
            *error = QStringLiteral("Unable to write to '%1'.").arg(path);
        return QString();
    }
    return path;
}

void TransformItemWidget::onClickedEditTemp()
{
    QString error;
    const QString path = writeTemporaryCsv(&error);
    if (path.isEmpty()) {
        MessageBoxes::warning(this, QStringLiteral("Edit"), error);
        return;
    }
    if (!DesktopHooks::openUrl(QUrl::fromLocalFile(path)))
        MessageBoxes::warning(this, QStringLiteral("Edit"),
                              QStringLiteral("Unable to open '%1'. Make sure there is an editor "
                                             "associated with this file type.")
                                  .arg(path));
}

QString TransformItemWidget::exploreKeysProblem() const
{
    const FlowItem *current = item();
    if (!current || current->upstream().size() < 2)
        return QStringLiteral("2 inputs are required to explore keys.");
    return QString();
}

QString TransformItemWidget::exploreDuplicatesProblem() const
{
    const FlowItem *current = item();
    const QList<FlowItem *> inputs = current ? current->upstream(true) : QList<FlowItem *>();
    if (inputs.isEmpty())
        return QStringLiteral("An input is required to explore duplicates.");
    const Dataset *input = inputs.first()->dataset();
    if (input->columnCount() == 0)
        return QStringLiteral("Input dataset is empty.");
    if (input->rowCount() == 0)
        return QStringLiteral("Input dataset has no rows.");
    return QString();
}

void TransformItemWidget::onClickedExploreKeys()
{
    const QString problem = exploreKeysProblem();
    MessageBoxes::information(
        this, QStringLiteral("Explore Keys"),
        problem.isEmpty() ? QStringLiteral("Explore Keys is not yet available.") : problem);
}

void TransformItemWidget::onClickedExploreDuplicates()
{
    const QString problem = exploreDuplicatesProblem();
    MessageBoxes::information(
        this, QStringLiteral("Explore Duplicates"),
        problem.isEmpty() ? QStringLiteral("Explore Duplicates is not yet available.") : problem);
}

void TransformItemWidget::moveToChange(int direction)
{
    // Walks the table as shown, so rows and columns that a filter hides are skipped.
    FlowItem *shown = item();
    const QList<FlowItem *> inputs = shown ? shown->upstream(true) : QList<FlowItem *>();
    DataTableView *view = dataPage()->view();
    if (inputs.isEmpty() || !view)
        return;
    const Dataset &after = *shown->dataset();
    const Dataset &before = *inputs.first()->dataset();
    const DataTableModel *model = view->dataModel();
    const int rows = model->rowCount();
    const int columns = model->columnCount();
    if (rows == 0 || columns == 0)
        return;
    const QModelIndex current = view->currentIndex();
    const qint64 total = qint64(rows) * columns;
    qint64 position = current.isValid() ? qint64(current.row()) * columns + current.column()
                                        : (direction > 0 ? -1 : total);
    for (position += direction; position >= 0 && position < total; position += direction) {
        const int r = model->datasetRow(int(position / columns));
        const int c = model->datasetColumn(int(position % columns));
        if (r < 0 || c < 0 || r >= before.rowCount() || c >= before.columnCount())
            continue;
        if (after.cell(r, c) != before.cell(r, c)) {
            const QModelIndex index
                = model->index(int(position / columns), int(position % columns));
            view->setCurrentIndex(index);
            view->scrollTo(index);
            return;
        }
    }
}
