#include "data/valueinterpretation.h"
#include "shell/appearancesettings.h"
#include "shell/settings.h"

#include <QApplication>
#include <QFile>
#include <QPalette>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

using Getter = std::function<QVariant(const Settings &)>;
using Setter = std::function<void(Settings &)>;
Q_DECLARE_METATYPE(Getter)
Q_DECLARE_METATYPE(Setter)

class TestSettings : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void freshStoreHasNoKeys();
    void roundTrip_data();
    void roundTrip();
    void colorSchemeFollowsSystemLook();
    void cacheFollowsWritesThroughSettings();
    void handEditedIniValues();
    void blockedExtensionSets();
    void fileExtensionMaps();
    void dateFormats();
    void rememberedValues();
    void windowMemoriesAndTips();
    void instanceFallsBackToUserStore();

private:
    void keyTable();
    std::unique_ptr<Settings> newStore(const QString &name = QStringLiteral("store.ini"));

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestSettings::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QGuiApplication::setPalette(QPalette(Qt::white));
}

std::unique_ptr<Settings> TestSettings::newStore(const QString &name)
{
    return std::make_unique<Settings>(m_dir->filePath(name));
}

namespace {

template<typename T> QVariant toVariant(const T &value)
{
    return QVariant::fromValue(value);
}

// QVariant compares lists of its own kind by value, not lists of int.
QVariant toVariant(const QList<int> &list)
{
    QVariantList variants;
    for (int number : list)
        variants.append(number);
    return variants;
}

} // namespace

// Every key with its getter, its default, a setter and a value other than the default.
#define KEY(key, getter, def, setter, other)                                                       \
    QTest::newRow(key) << QStringLiteral(key)                                                      \
                       << Getter([](const Settings &s) { return toVariant(s.getter()); })          \
                       << toVariant(def) << Setter([](Settings &s) { s.setter(other); })           \
                       << toVariant(other)
// The same for a colour, font or scheme, which AppearanceSettings reads from the same store.
#define LOOK(key, getter, def, setter, other)                                                      \
    QTest::newRow(key) << QStringLiteral(key) << Getter([](const Settings &s) {                    \
        return toVariant(AppearanceSettings(&s).getter());                                         \
    }) << toVariant(def)                                                                           \
                       << Setter([](Settings &s) { AppearanceSettings(&s).setter(other); })        \
                       << toVariant(other)

void TestSettings::keyTable()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<Getter>("getter");
    QTest::addColumn<QVariant>("defaultValue");
    QTest::addColumn<Setter>("setter");
    QTest::addColumn<QVariant>("otherValue");

    KEY("auto_update_interval", autoUpdateInterval, 1, setAutoUpdateInterval, 7);
    KEY("auto_move_notes", autoMoveNotes, true, setAutoMoveNotes, false);
    KEY("batch_clear_before_append", batchClearBeforeAppend, false, setBatchClearBeforeAppend,
        true);
    KEY("beep_after_processing", beepAfterProcessing, false, setBeepAfterProcessing, true);
    KEY("show_changes", showChanges, false, setShowChanges, true);
    KEY("show_bars_in_col_frequencies", showBarsInColFrequencies, true, setShowBarsInColFrequencies,
        false);
    KEY("show_percentages_in_col_frquencies", showPercentagesInColFrquencies, true,
        setShowPercentagesInColFrquencies, false);
    KEY("show_comments", showComments, true, setShowComments, false);
    KEY("compare_data_by_index", compareDataByIndex, false, setCompareDataByIndex, true);
    KEY("compare_data_case_sensitive", compareDataCaseSensitive, true, setCompareDataCaseSensitive,
        false);
    KEY("compare_data_show_index", compareDataShowIndex, false, setCompareDataShowIndex, true);
    KEY("compare_data_sort_by_key", compareDataSortByKey, false, setCompareDataSortByKey, true);
    KEY("compare_data_sync_horiz", compareDataSyncHoriz, true, setCompareDataSyncHoriz, false);
    KEY("compare_data_sync_vert", compareDataSyncVert, true, setCompareDataSyncVert, false);
    KEY("compare_headers_by_index", compareHeadersByIndex, false, setCompareHeadersByIndex, true);
    KEY("compare_headers_show_index", compareHeadersShowIndex, false, setCompareHeadersShowIndex,
        true);
    KEY("copy_data_as", copyDataAs, 0, setCopyDataAs, 2);
    KEY("custom_connection_thickness", customConnectionThickness, 2.0, setCustomConnectionThickness,
        3.5);
    KEY("custom_gradient_effect", customGradientEffect, 0, setCustomGradientEffect, 1);
    KEY("data_font_vertical_padding", dataFontVerticalPadding, 10, setDataFontVerticalPadding, 4);
    KEY("default_export_extension", defaultExportExtension, QStringLiteral("csv"),
        setDefaultExportExtension, QStringLiteral("tsv"));
    KEY("default_output_extension", defaultOutputExtension, QStringLiteral("csv"),
        setDefaultOutputExtension, QStringLiteral("xlsx"));
    KEY("explore_keys_window_index", exploreKeysWindowIndex, 0, setExploreKeysWindowIndex, 3);
    KEY("explore_keys_show_duplicates", exploreKeysShowDuplicates, true,
        setExploreKeysShowDuplicates, false);
    KEY("find_all_any", findAllAny, 0, setFindAllAny, 1);
    KEY("find_in_col_names", findInColNames, false, setFindInColNames, true);
    KEY("find_in_comments", findInComments, false, setFindInComments, true);
    KEY("find_in_data", findInData, false, setFindInData, true);
    KEY("find_in_ids", findInIds, false, setFindInIds, true);
    KEY("find_in_options", findInOptions, false, setFindInOptions, true);
    KEY("find_in_names", findInNames, true, setFindInNames, false);
    KEY("find_of_inputs", findOfInputs, true, setFindOfInputs, false);
    KEY("find_of_notes", findOfNotes, true, setFindOfNotes, false);
    KEY("find_of_outputs", findOfOutputs, true, setFindOfOutputs, false);
    KEY("find_of_transforms", findOfTransforms, true, setFindOfTransforms, false);
    KEY("find_case_senstive", findCaseSenstive, false, setFindCaseSenstive, true);
    KEY("find_zoom_selected", findZoomSelected, false, setFindZoomSelected, true);
    KEY("find_text", findText, QString(), setFindText, QStringLiteral("a, \"b\"\nc"));
    KEY("gray_left_pane_buttons", grayLeftPaneButtons, false, setGrayLeftPaneButtons, true);
    KEY("how_do_i_clicked", howDoIClicked, false, setHowDoIClicked, true);
    KEY("intro_video_clicked", introVideoClicked, false, setIntroVideoClicked, true);
    KEY("splitter_width_1", splitterWidth1, 100, setSplitterWidth1, 150);
    KEY("splitter_width_2", splitterWidth2, 600, setSplitterWidth2, 650);
    KEY("splitter_width_3", splitterWidth3, 300, setSplitterWidth3, 350);
    KEY("max_memory_usage", maxMemoryUsage, 4.0, setMaxMemoryUsage, 12.5);
    KEY("mouse_wheel_behaviour", mouseWheelBehaviour, 0, setMouseWheelBehaviour, 3);
    KEY("total_next_exp_rows_to_notify", totalNextExpRowsToNotify, 6, setTotalNextExpRowsToNotify,
        8);
    KEY("num_col_frequences", numColFrequences, 20, setNumColFrequences, 50);
    KEY("open_auto_run", openAutoRun, 1, setOpenAutoRun, 0);
    KEY("open_recent_filter", openRecentFilter, 0, setOpenRecentFilter, 2);
    KEY("optimize_for", optimizeFor, 0, setOptimizeFor, 1);
    KEY("processing_delay", processingDelay, 2.0, setProcessingDelay, 0.25);
    KEY("show_bars_in_chars_table", showBarsInCharsTable, true, setShowBarsInCharsTable, false);
    KEY("batch_show_tips", batchShowTips, true, setBatchShowTips, false);
    KEY("show_whitespace_value_window", showWhitespaceValueWindow, false,
        setShowWhitespaceValueWindow, true);
    KEY("batch_completion_sound", batchCompletionSound, false, setBatchCompletionSound, true);
    KEY("open_previous_at_start", openPreviousAtStart, 2, setOpenPreviousAtStart, 0);
    KEY("show_center_pane_tips", showCenterPaneTips, 2, setShowCenterPaneTips, 0);
    KEY("total_rows_processed", totalRowsProcessed, qint64(0), setTotalRowsProcessed,
        qint64(12345678901LL));
    KEY("ui_theme", uiTheme, 0, setUiTheme, 2);
    KEY("use_native_file_dialogs", useNativeFileDialogs, true, setUseNativeFileDialogs, false);
    KEY("warn_on_locale_change", warnOnLocaleChange, true, setWarnOnLocaleChange, false);
    KEY("show_warnings", showWarnings, true, setShowWarnings, false);
    KEY("toolbar_icon_size", toolbarIconSize, 1, setToolbarIconSize, 2);
    KEY("sample_combo_index", sampleComboIndex, 1, setSampleComboIndex, 4);
    KEY("log_pane_shown", logPaneShown, false, setLogPaneShown, true);
    KEY("item_summary_sort_order", itemSummarySortOrder, 1, setItemSummarySortOrder, 0);
    KEY("item_summary_sort_col", itemSummarySortCol, -1, setItemSummarySortCol, 3);
    KEY("item_summary_col_order", itemSummaryColOrder, QList<int>(), setItemSummaryColOrder,
        QList<int>({2, 0, 1}));
    KEY("item_summary_col_widths", itemSummaryColWidths, QList<int>(), setItemSummaryColWidths,
        QList<int>({80}));
    KEY("filter_data_index", filterDataIndex, 0, setFilterDataIndex, 1);
    KEY("first_help_show", firstHelpShow, true, setFirstHelpShow, false);
    KEY("show_advanced_transforms", showAdvancedTransforms, false, setShowAdvancedTransforms, true);
    KEY("show_getting_started", showGettingStarted, true, setShowGettingStarted, false);
    LOOK("color_scheme", colorScheme, 1, setColorScheme, 7);
    LOOK("changed_data_color", changedDataColor, QColor(), setChangedDataColor,
         QColor(10, 20, 30, 40));
    LOOK("verify_fail_error_color", verifyFailErrorColor, QColor(), setVerifyFailErrorColor,
         QColor(Qt::red));
    LOOK("verify_fail_warning_color", verifyFailWarningColor, QColor(), setVerifyFailWarningColor,
         QColor(Qt::yellow));
    LOOK("verify_fail_info_color", verifyFailInfoColor, QColor(), setVerifyFailInfoColor,
         QColor(Qt::blue));
    QTest::newRow("custom_color_6")
        << QStringLiteral("custom_color_6") << Getter([](const Settings &s) {
               return toVariant(AppearanceSettings(&s).customColor(6));
           })
        << toVariant(QColor())
        << Setter([](Settings &s) { AppearanceSettings(&s).setCustomColor(6, Qt::green); })
        << toVariant(QColor(Qt::green));
    KEY("locale", locale, QLocale::system(), setLocale, QLocale(QLocale::German, QLocale::Austria));
    KEY("blocked_input_extensions", blockedInputExtensions, Settings::defaultBlockedExtensions(),
        setBlockedInputExtensions, QStringLiteral("exe,tmp"));
    KEY("blocked_output_extensions", blockedOutputExtensions, Settings::defaultBlockedExtensions(),
        setBlockedOutputExtensions, QString());
    KEY("previous_path", previousPath, QString(), setPreviousPath,
        QStringLiteral("docs/a.tabulon"));
    KEY("recent_docs", recentDocs, QStringList(), setRecentDocs,
        QStringList({QStringLiteral("/a/b.tabulon"), QStringLiteral("/c, d.tabulon")}));
    KEY("last_doc_dir", lastDocDir, QString(), setLastDocDir, QStringLiteral("/tmp/docs"));
    KEY("last_data_dir", lastDataDir, QString(), setLastDataDir, QStringLiteral("/tmp/data"));
    KEY("last_output_data_dir", lastOutputDataDir, QString(), setLastOutputDataDir,
        QStringLiteral("/tmp/out"));
    KEY("total_rows_processed_start_date", totalRowsProcessedStartDate, QDate(),
        setTotalRowsProcessedStartDate, QDate(2024, 2, 29));
    KEY("last_updated_check", lastUpdatedCheck, QDateTime(), setLastUpdatedCheck,
        QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5), Qt::UTC));
    LOOK("ui_font", uiFont, QGuiApplication::font(), setUiFont, QFont(QStringLiteral("Serif"), 17));
    LOOK("data_font", dataFont, QGuiApplication::font(), setDataFont,
         QFont(QStringLiteral("Monospace"), 9));
}

void TestSettings::freshStoreHasNoKeys()
{
    auto store = newStore();
    QVERIFY(store->isIniFile());
    QVERIFY(store->allKeys().isEmpty());
    QCOMPARE(store->maxMemoryUsage(), 4.0);
    QCOMPARE(store->processingDelay(), 2.0);
    store->sync();
    // Reading defaults must not write them: the store stays empty on disk as well.
    QVERIFY(store->allKeys().isEmpty());
    QVERIFY(!QFile::exists(store->fileName()) || QFile(store->fileName()).size() == 0);
}

void TestSettings::roundTrip_data()
{
    keyTable();
}

void TestSettings::roundTrip()
{
    QFETCH(QString, key);
    QFETCH(Getter, getter);
    QFETCH(QVariant, defaultValue);
    QFETCH(Setter, setter);
    QFETCH(QVariant, otherValue);

    auto store = newStore();
    QCOMPARE(getter(*store), defaultValue);
    // Twice: the second answer comes from the cache. Reading the default writes nothing.
    QCOMPARE(getter(*store), defaultValue);
    QVERIFY(!store->contains(key));
    QVERIFY(store->allKeys().isEmpty());
    setter(*store);
    // The setter writes the key under its stored name at once.
    QVERIFY(store->contains(key));
    QCOMPARE(getter(*store), otherValue);
    store->sync();
    QCOMPARE(store->status(), QSettings::NoError);

    // A second store on the same file parses the text form back to the same value.
    Settings reopened(store->fileName());
    QCOMPARE(getter(reopened), otherValue);
}

void TestSettings::colorSchemeFollowsSystemLook()
{
    auto store = newStore();
    QGuiApplication::setPalette(QPalette(QColor(30, 30, 30)));
    QVERIFY(AppearanceSettings::isSystemDark());
    QCOMPARE(AppearanceSettings(store.get()).colorScheme(), 7);
    QGuiApplication::setPalette(QPalette(QColor(240, 240, 240)));
    QVERIFY(!AppearanceSettings::isSystemDark());
    QCOMPARE(AppearanceSettings(store.get()).colorScheme(), 1);
    AppearanceSettings(store.get()).setColorScheme(4);
    QGuiApplication::setPalette(QPalette(QColor(30, 30, 30)));
    QCOMPARE(AppearanceSettings(store.get()).colorScheme(), 4);
    store->remove(QStringLiteral("color_scheme"));
    QCOMPARE(AppearanceSettings(store.get()).colorScheme(), 7);
}

void TestSettings::cacheFollowsWritesThroughSettings()
{
    auto store = newStore();
    QCOMPARE(store->maxMemoryUsage(), 4.0);
    QCOMPARE(store->showWarnings(), true);
    QCOMPARE(store->optimizeFor(), 0);

    store->setValue(QStringLiteral("max_memory_usage"), 9.5);
    store->setValue(QStringLiteral("show_warnings"), false);
    store->setValue(QStringLiteral("optimize_for"), QStringLiteral("1"));
    QCOMPARE(store->maxMemoryUsage(), 9.5);
    QCOMPARE(store->showWarnings(), false);
    QCOMPARE(store->optimizeFor(), 1);

    store->remove(QStringLiteral("max_memory_usage"));
    QCOMPARE(store->maxMemoryUsage(), 4.0);

    store->setTipShown(QStringLiteral("tip_restart_auto_run"));
    QVERIFY(store->tipShown(QStringLiteral("tip_restart_auto_run")));
    store->clear();
    QCOMPARE(store->showWarnings(), true);
    QCOMPARE(store->optimizeFor(), 0);
    QVERIFY(!store->tipShown(QStringLiteral("tip_restart_auto_run")));

    // Writes inside a group land under another key; nothing cached may survive them.
    QCOMPARE(store->processingDelay(), 2.0);
    store->beginGroup(QString());
    store->endGroup();
    store->beginGroup(QStringLiteral("g"));
    store->setValue(QStringLiteral("x"), 1);
    store->endGroup();
    QCOMPARE(store->processingDelay(), 2.0);
}

void TestSettings::handEditedIniValues()
{
    const QString path = m_dir->filePath(QStringLiteral("edited.ini"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[General]\n"
               "max_memory_usage=lots\n"
               "processing_delay=0.5\n"
               "show_warnings=false\n"
               "auto_move_notes=maybe\n"
               "toolbar_icon_size=2\n"
               "splitter_width_1=1.5\n"
               "blocked_input_extensions=exe, BAT ,,zip\n"
               "item_summary_col_widths=10, x, 30\n"
               "changed_data_color=#ff0000\n");
    file.close();

    Settings store(path);
    QCOMPARE(store.maxMemoryUsage(), 4.0);
    QCOMPARE(store.processingDelay(), 0.5);
    QCOMPARE(store.showWarnings(), false);
    QCOMPARE(store.autoMoveNotes(), true);
    QCOMPARE(store.toolbarIconSize(), 2);
    QCOMPARE(store.splitterWidth1(), 100);
    QCOMPARE(store.blockedInputExtensionSet(),
             QSet<QString>({QStringLiteral("exe"), QStringLiteral("bat"), QStringLiteral("zip")}));
    QCOMPARE(store.itemSummaryColWidths(), QList<int>());
    QCOMPARE(AppearanceSettings(&store).changedDataColor(), QColor(Qt::red));
}

void TestSettings::blockedExtensionSets()
{
    auto store = newStore();
    const QSet<QString> defaults = store->blockedInputExtensionSet();
    QCOMPARE(defaults.size(), 27);
    for (const char *extension : {"exe", "bat", "py", "js", "docx", "7z", "jpeg", "hlp"})
        QVERIFY2(defaults.contains(QLatin1String(extension)), extension);
    QVERIFY(!defaults.contains(QStringLiteral("csv")));
    QCOMPARE(store->blockedOutputExtensionSet(), defaults);

    store->setBlockedOutputExtensions(QStringLiteral(" CSV , ,Tsv,"));
    QCOMPARE(store->blockedOutputExtensionSet(),
             QSet<QString>({QStringLiteral("csv"), QStringLiteral("tsv")}));
    QCOMPARE(store->blockedInputExtensionSet(), defaults);
    store->setBlockedInputExtensions(QString());
    QVERIFY(store->blockedInputExtensionSet().isEmpty());
}

void TestSettings::fileExtensionMaps()
{
    auto store = newStore();
    const QMap<QString, int> input = store->inputFileExtensions();
    QCOMPARE(input.value(QStringLiteral("csv"), -1), 0);
    QCOMPARE(input.value(QStringLiteral("txt"), -1), 3);
    QCOMPARE(input.value(QStringLiteral("geojson"), -1), 4);
    QCOMPARE(input.value(QStringLiteral("log"), -1), 10);
    QVERIFY(!input.contains(QStringLiteral("yaml")));
    const QMap<QString, int> output = store->outputFileExtensions();
    QCOMPARE(output.value(QStringLiteral("txt"), -1), 10);
    QCOMPARE(output.value(QStringLiteral("md"), -1), 9);
    QCOMPARE(output.value(QStringLiteral("yaml"), -1), 7);
    QCOMPARE(output.value(QStringLiteral("html"), -1), 8);
    QVERIFY(store->allKeys().isEmpty());

    QMap<QString, int> changed = input;
    changed.insert(QStringLiteral("DAT"), 3);
    changed.insert(QStringLiteral("txt"), 11);
    store->setInputFileExtensions(changed);
    store->sync();
    Settings reopened(store->fileName());
    const QMap<QString, int> read = reopened.inputFileExtensions();
    QCOMPARE(read.value(QStringLiteral("dat"), -1), 3);
    QCOMPARE(read.value(QStringLiteral("txt"), -1), 11);
    QCOMPARE(read.size(), input.size() + 1);
    QCOMPARE(reopened.outputFileExtensions(), output);
}

void TestSettings::dateFormats()
{
    auto store = newStore();
    const QLocale saved;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const QString us = store->dateFormats();
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    const QString uk = store->dateFormats();
    QLocale::setDefault(saved);

    QCOMPARE(us, defaultDateFormats(true).join(QLatin1Char('\n')));
    QCOMPARE(uk, defaultDateFormats(false).join(QLatin1Char('\n')));
    QVERIFY(us != uk);
    QVERIFY(store->allKeys().isEmpty());

    store->setDateFormats(QStringLiteral("d.M.yyyy\n\nyyyy-MM-dd\n"));
    QCOMPARE(store->dateFormatList(),
             QStringList({QStringLiteral("d.M.yyyy"), QStringLiteral("yyyy-MM-dd")}));
    store->clearDateFormats();
    QCOMPARE(store->dateFormatList(), defaultDateFormats(isMonthFirstLocale(QLocale())));
}

void TestSettings::rememberedValues()
{
    auto store = newStore();
    QVERIFY(!store->hasTransformDefault(QStringLiteral("Case"), QStringLiteral("Case_Type")));
    store->setTransformDefault(QStringLiteral("Case"), QStringLiteral("Case_Type"), 3);
    QVERIFY(store->contains(QStringLiteral("defaults/transforms/Case/Case_Type")));
    QVERIFY(store->hasTransformDefault(QStringLiteral("Case"), QStringLiteral("Case_Type")));
    QVERIFY(!store->hasTransformDefault(QStringLiteral("Clone"), QStringLiteral("Case_Type")));
    QCOMPARE(store->transformDefault(QStringLiteral("Case"), QStringLiteral("Case_Type")).toInt(),
             3);

    store->setIoDefault(QStringLiteral("input"), QStringLiteral("0"), QStringLiteral("options"),
                        QStringLiteral("delimiter"), QStringLiteral(";"));
    QCOMPARE(store->value(QStringLiteral("defaults/input/0/options/delimiter")).toString(),
             QStringLiteral(";"));
    QVERIFY(store->hasIoDefault(QStringLiteral("input"), QStringLiteral("0"),
                                QStringLiteral("options"), QStringLiteral("delimiter")));
    QVERIFY(!store->hasIoDefault(QStringLiteral("output"), QStringLiteral("0"),
                                 QStringLiteral("options"), QStringLiteral("delimiter")));
    QCOMPARE(store
                 ->ioDefault(QStringLiteral("input"), QStringLiteral("0"),
                             QStringLiteral("options"), QStringLiteral("delimiter"))
                 .toString(),
             QStringLiteral(";"));
}

void TestSettings::windowMemoriesAndTips()
{
    auto store = newStore();
    const QByteArray geometry("\x01\x02\x00\xff", 4);
    QVERIFY(store->windowGeometry(QStringLiteral("batch_window_geometry")).isEmpty());
    store->setWindowGeometry(QStringLiteral("batch_window_geometry"), geometry);
    store->setGeometry(geometry + geometry);
    store->setWindowState(QByteArray("state"));
    QVERIFY(!store->tipShown(QStringLiteral("tip_auto_output")));
    store->setTipShown(QStringLiteral("tip_auto_output"));
    store->sync();

    Settings reopened(store->fileName());
    QCOMPARE(reopened.windowGeometry(QStringLiteral("batch_window_geometry")), geometry);
    QCOMPARE(reopened.geometry(), geometry + geometry);
    QCOMPARE(reopened.windowState(), QByteArray("state"));
    QVERIFY(reopened.tipShown(QStringLiteral("tip_auto_output")));
    QVERIFY(!reopened.tipShown(QStringLiteral("tip_input_button")));
    QCOMPARE(reopened.splitterWidths(), QList<int>({100, 600, 300}));
    reopened.setSplitterWidths({1, 2});
    QCOMPARE(reopened.splitterWidths(), QList<int>({100, 600, 300}));
    reopened.setSplitterWidths({1, 2, 3});
    QCOMPARE(reopened.splitterWidths(), QList<int>({1, 2, 3}));
}

void TestSettings::instanceFallsBackToUserStore()
{
    Settings *fallback = Settings::instance();
    QVERIFY(fallback);
    QVERIFY(!fallback->isIniFile());
    // Test mode keeps the user store away from the user's real files.
    QVERIFY(fallback->fileName().contains(QStringLiteral(".qttest")));
    QVERIFY(fallback->fileName().endsWith(QStringLiteral("Velmora/Tabulon.conf")));
    QCOMPARE(Settings::instance(), fallback);
    {
        auto store = newStore();
        Settings::setInstance(store.get());
        QCOMPARE(Settings::instance(), store.get());
    }
    // A store that goes away uninstalls itself.
    QCOMPARE(Settings::instance(), fallback);
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);
    TestSettings test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settings.moc"
