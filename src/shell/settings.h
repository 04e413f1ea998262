#pragma once

#include <QByteArray>
#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QLocale>
#include <QMap>
#include <QSet>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

// The single store of the user's preferences and of the small memories of the interface:
// either tabulon.ini beside the program or the per-user store of the system. Each key has a
// typed getter that applies its default at reading, so a fresh store stays empty until
// something is set, and a setter that writes through at once. Parsed values are kept in a
// cache so that the getters consulted inside row loops cost a hash lookup; every write made
// through this class keeps the cache in step.
class Settings : public QSettings
{
    Q_OBJECT

public:
    // The store in tabulon.ini format at path.
    explicit Settings(const QString &path, QObject *parent = nullptr);
    // The per-user store of the system.
    explicit Settings(QObject *parent = nullptr);
    ~Settings() override;

    bool isIniFile() const { return m_isIniFile; }
    // How messages name the per-user store.
    static QString userSettingsName();

    // The store in force for the process. Until one is installed, a per-user store owned
    // by the process is made on first use, so that code without a window works too.
    static Settings *instance();
    // Installs store as the one in force without taking ownership; null uninstalls.
    static void setInstance(Settings *store);

    // These hide the QSettings functions of the same names so that writes through a
    // Settings pointer never leave a stale parsed value behind.
    void setValue(const QString &key, const QVariant &value);
    void remove(const QString &key);
    void clear();

    // General
    int autoUpdateInterval() const { return readInt(QStringLiteral("auto_update_interval"), 1); }
    void setAutoUpdateInterval(int days) { write(QStringLiteral("auto_update_interval"), days); }
    bool autoMoveNotes() const { return readBool(QStringLiteral("auto_move_notes"), true); }
    void setAutoMoveNotes(bool on) { write(QStringLiteral("auto_move_notes"), on); }
    bool beepAfterProcessing() const
    {
        return readBool(QStringLiteral("beep_after_processing"), false);
    }
    void setBeepAfterProcessing(bool on) { write(QStringLiteral("beep_after_processing"), on); }
    bool showChanges() const { return readBool(QStringLiteral("show_changes"), false); }
    void setShowChanges(bool on) { write(QStringLiteral("show_changes"), on); }
    bool showComments() const { return readBool(QStringLiteral("show_comments"), true); }
    void setShowComments(bool on) { write(QStringLiteral("show_comments"), on); }
    bool showWarnings() const { return readBool(QStringLiteral("show_warnings"), true); }
    void setShowWarnings(bool on) { write(QStringLiteral("show_warnings"), on); }
    int copyDataAs() const { return readInt(QStringLiteral("copy_data_as"), 0); }
    void setCopyDataAs(int index) { write(QStringLiteral("copy_data_as"), index); }
    int dataFontVerticalPadding() const
    {
        return readInt(QStringLiteral("data_font_vertical_padding"), 10);
    }
    void setDataFontVerticalPadding(int pixels)
    {
        write(QStringLiteral("data_font_vertical_padding"), pixels);
    }
    QString defaultExportExtension() const
    {
        return readText(QStringLiteral("default_export_extension"), QStringLiteral("csv"));
    }
    void setDefaultExportExtension(const QString &extension)
    {
        write(QStringLiteral("default_export_extension"), extension);
    }
    QString defaultOutputExtension() const
    {
        return readText(QStringLiteral("default_output_extension"), QStringLiteral("csv"));
    }
    void setDefaultOutputExtension(const QString &extension)
    {
        write(QStringLiteral("default_output_extension"), extension);
    }
    bool grayLeftPaneButtons() const
    {
        return readBool(QStringLiteral("gray_left_pane_buttons"), false);
    }
    void setGrayLeftPaneButtons(bool on) { write(QStringLiteral("gray_left_pane_buttons"), on); }
    double maxMemoryUsage() const { return readDouble(QStringLiteral("max_memory_usage"), 4.0); }
    void setMaxMemoryUsage(double gib) { write(QStringLiteral("max_memory_usage"), gib); }
    int mouseWheelBehaviour() const { return readInt(QStringLiteral("mouse_wheel_behaviour"), 0); }
    void setMouseWheelBehaviour(int index)
    {
        write(QStringLiteral("mouse_wheel_behaviour"), index);
    }
    int openAutoRun() const { return readInt(QStringLiteral("open_auto_run"), 1); }
    void setOpenAutoRun(int index) { write(QStringLiteral("open_auto_run"), index); }
    int openRecentFilter() const { return readInt(QStringLiteral("open_recent_filter"), 0); }
    void setOpenRecentFilter(int index) { write(QStringLiteral("open_recent_filter"), index); }
    int openPreviousAtStart() const { return readInt(QStringLiteral("open_previous_at_start"), 2); }
    void setOpenPreviousAtStart(int choice)
    {
        write(QStringLiteral("open_previous_at_start"), choice);
    }
    int optimizeFor() const { return readInt(QStringLiteral("optimize_for"), 0); }
    void setOptimizeFor(int choice) { write(QStringLiteral("optimize_for"), choice); }
    double processingDelay() const { return readDouble(QStringLiteral("processing_delay"), 2.0); }
    void setProcessingDelay(double seconds) { write(QStringLiteral("processing_delay"), seconds); }
    int uiTheme() const { return readInt(QStringLiteral("ui_theme"), 0); }
    void setUiTheme(int theme) { write(QStringLiteral("ui_theme"), theme); }
    bool useNativeFileDialogs() const
    {
        return readBool(QStringLiteral("use_native_file_dialogs"), true);
    }
    void setUseNativeFileDialogs(bool on) { write(QStringLiteral("use_native_file_dialogs"), on); }
    bool warnOnLocaleChange() const
    {
        return readBool(QStringLiteral("warn_on_locale_change"), true);
    }
    void setWarnOnLocaleChange(bool on) { write(QStringLiteral("warn_on_locale_change"), on); }
    int toolbarIconSize() const { return readInt(QStringLiteral("toolbar_icon_size"), 1); }
    void setToolbarIconSize(int size) { write(QStringLiteral("toolbar_icon_size"), size); }
    int showCenterPaneTips() const { return readInt(QStringLiteral("show_center_pane_tips"), 2); }
    void setShowCenterPaneTips(int count) { write(QStringLiteral("show_center_pane_tips"), count); }
    bool firstHelpShow() const { return readBool(QStringLiteral("first_help_show"), true); }
    void setFirstHelpShow(bool on) { write(QStringLiteral("first_help_show"), on); }
    bool howDoIClicked() const { return readBool(QStringLiteral("how_do_i_clicked"), false); }
    void setHowDoIClicked(bool on) { write(QStringLiteral("how_do_i_clicked"), on); }
    bool introVideoClicked() const
    {
        return readBool(QStringLiteral("intro_video_clicked"), false);
    }
    void setIntroVideoClicked(bool on) { write(QStringLiteral("intro_video_clicked"), on); }
    bool logPaneShown() const { return readBool(QStringLiteral("log_pane_shown"), false); }
    void setLogPaneShown(bool on) { write(QStringLiteral("log_pane_shown"), on); }
    bool showAdvancedTransforms() const
    {
        return readBool(QStringLiteral("show_advanced_transforms"), false);
    }
    void setShowAdvancedTransforms(bool on)
    {
        write(QStringLiteral("show_advanced_transforms"), on);
    }
    int splitterWidth1() const { return readInt(QStringLiteral("splitter_width_1"), 100); }
    void setSplitterWidth1(int width) { write(QStringLiteral("splitter_width_1"), width); }
    int splitterWidth2() const { return readInt(QStringLiteral("splitter_width_2"), 600); }
    void setSplitterWidth2(int width) { write(QStringLiteral("splitter_width_2"), width); }
    int splitterWidth3() const { return readInt(QStringLiteral("splitter_width_3"), 300); }
    void setSplitterWidth3(int width) { write(QStringLiteral("splitter_width_3"), width); }
    // The three widths in pane order; a list of any other length is ignored.
    QList<int> splitterWidths() const;
    void setSplitterWidths(const QList<int> &widths);

    // Row statistics
    qint64 totalRowsProcessed() const
    {
        return readLongLong(QStringLiteral("total_rows_processed"), 0);
    }
    void setTotalRowsProcessed(qint64 rows) { write(QStringLiteral("total_rows_processed"), rows); }
    void addTotalRowsProcessed(qint64 rows) { setTotalRowsProcessed(totalRowsProcessed() + rows); }
    int totalNextExpRowsToNotify() const
    {
        return readInt(QStringLiteral("total_next_exp_rows_to_notify"), 6);
    }
    void setTotalNextExpRowsToNotify(int exponent)
    {
        write(QStringLiteral("total_next_exp_rows_to_notify"), exponent);
    }
    // Null when never set.
    QDate totalRowsProcessedStartDate() const;
    void setTotalRowsProcessedStartDate(const QDate &date);

    // Batch
    bool batchClearBeforeAppend() const
    {
        return readBool(QStringLiteral("batch_clear_before_append"), false);
    }
    void setBatchClearBeforeAppend(bool on)
    {
        write(QStringLiteral("batch_clear_before_append"), on);
    }
    bool batchShowTips() const { return readBool(QStringLiteral("batch_show_tips"), true); }
    void setBatchShowTips(bool on) { write(QStringLiteral("batch_show_tips"), on); }
    bool batchCompletionSound() const
    {
        return readBool(QStringLiteral("batch_completion_sound"), false);
    }
    void setBatchCompletionSound(bool on) { write(QStringLiteral("batch_completion_sound"), on); }

    // Column frequencies, characters and value windows
    int numColFrequences() const { return readInt(QStringLiteral("num_col_frequences"), 20); }
    void setNumColFrequences(int count) { write(QStringLiteral("num_col_frequences"), count); }
    bool showBarsInColFrequencies() const
    {
        return readBool(QStringLiteral("show_bars_in_col_frequencies"), true);
    }
    void setShowBarsInColFrequencies(bool on)
    {
        write(QStringLiteral("show_bars_in_col_frequencies"), on);
    }
    bool showPercentagesInColFrquencies() const
    {
        return readBool(QStringLiteral("show_percentages_in_col_frquencies"), true);
    }
    void setShowPercentagesInColFrquencies(bool on)
    {
        write(QStringLiteral("show_percentages_in_col_frquencies"), on);
    }
    bool showBarsInCharsTable() const
    {
        return readBool(QStringLiteral("show_bars_in_chars_table"), true);
    }
    void setShowBarsInCharsTable(bool on) { write(QStringLiteral("show_bars_in_chars_table"), on); }
    bool showWhitespaceValueWindow() const
    {
        return readBool(QStringLiteral("show_whitespace_value_window"), false);
    }
    void setShowWhitespaceValueWindow(bool on)
    {
        write(QStringLiteral("show_whitespace_value_window"), on);
    }
    int sampleComboIndex() const { return readInt(QStringLiteral("sample_combo_index"), 1); }
    void setSampleComboIndex(int index) { write(QStringLiteral("sample_combo_index"), index); }
    int filterDataIndex() const { return readInt(QStringLiteral("filter_data_index"), 0); }
    void setFilterDataIndex(int index) { write(QStringLiteral("filter_data_index"), index); }

    // Compare windows
    bool compareDataByIndex() const
    {
        return readBool(QStringLiteral("compare_data_by_index"), false);
    }
    void setCompareDataByIndex(bool on) { write(QStringLiteral("compare_data_by_index"), on); }
    bool compareDataCaseSensitive() const
    {
        return readBool(QStringLiteral("compare_data_case_sensitive"), true);
    }
    void setCompareDataCaseSensitive(bool on)
    {
        write(QStringLiteral("compare_data_case_sensitive"), on);
    }
    bool compareDataShowIndex() const
    {
        return readBool(QStringLiteral("compare_data_show_index"), false);
    }
    void setCompareDataShowIndex(bool on) { write(QStringLiteral("compare_data_show_index"), on); }
    bool compareDataSortByKey() const
    {
        return readBool(QStringLiteral("compare_data_sort_by_key"), false);
    }
    void setCompareDataSortByKey(bool on) { write(QStringLiteral("compare_data_sort_by_key"), on); }
    bool compareDataSyncHoriz() const
    {
        return readBool(QStringLiteral("compare_data_sync_horiz"), true);
    }
    void setCompareDataSyncHoriz(bool on) { write(QStringLiteral("compare_data_sync_horiz"), on); }
    bool compareDataSyncVert() const
    {
        return readBool(QStringLiteral("compare_data_sync_vert"), true);
    }
    void setCompareDataSyncVert(bool on) { write(QStringLiteral("compare_data_sync_vert"), on); }
    bool compareHeadersByIndex() const
    {
        return readBool(QStringLiteral("compare_headers_by_index"), false);
    }
    void setCompareHeadersByIndex(bool on)
    {
        write(QStringLiteral("compare_headers_by_index"), on);
    }
    bool compareHeadersShowIndex() const
    {
        return readBool(QStringLiteral("compare_headers_show_index"), false);
    }
    void setCompareHeadersShowIndex(bool on)
    {
        write(QStringLiteral("compare_headers_show_index"), on);
    }

    // Explore Keys window
    int exploreKeysWindowIndex() const
    {
        return readInt(QStringLiteral("explore_keys_window_index"), 0);
    }
    void setExploreKeysWindowIndex(int index)
    {
        write(QStringLiteral("explore_keys_window_index"), index);
    }
    bool exploreKeysShowDuplicates() const
    {
        return readBool(QStringLiteral("explore_keys_show_duplicates"), true);
    }
    void setExploreKeysShowDuplicates(bool on)
    {
        write(QStringLiteral("explore_keys_show_duplicates"), on);
    }

    // Find Items window
    QString findText() const { return readText(QStringLiteral("find_text"), QString()); }
    void setFindText(const QString &text) { write(QStringLiteral("find_text"), text); }
    int findAllAny() const { return readInt(QStringLiteral("find_all_any"), 0); }
    void setFindAllAny(int index) { write(QStringLiteral("find_all_any"), index); }
    bool findCaseSenstive() const { return readBool(QStringLiteral("find_case_senstive"), false); }
    void setFindCaseSenstive(bool on) { write(QStringLiteral("find_case_senstive"), on); }
    bool findZoomSelected() const { return readBool(QStringLiteral("find_zoom_selected"), false); }
    void setFindZoomSelected(bool on) { write(QStringLiteral("find_zoom_selected"), on); }
    bool findInNames() const { return readBool(QStringLiteral("find_in_names"), true); }
    void setFindInNames(bool on) { write(QStringLiteral("find_in_names"), on); }
    bool findInColNames() const { return readBool(QStringLiteral("find_in_col_names"), false); }
    void setFindInColNames(bool on) { write(QStringLiteral("find_in_col_names"), on); }
    bool findInComments() const { return readBool(QStringLiteral("find_in_comments"), false); }
    void setFindInComments(bool on) { write(QStringLiteral("find_in_comments"), on); }
    bool findInData() const { return readBool(QStringLiteral("find_in_data"), false); }
    void setFindInData(bool on) { write(QStringLiteral("find_in_data"), on); }
    bool findInIds() const { return readBool(QStringLiteral("find_in_ids"), false); }
    void setFindInIds(bool on) { write(QStringLiteral("find_in_ids"), on); }
    bool findInOptions() const { return readBool(QStringLiteral("find_in_options"), false); }
    void setFindInOptions(bool on) { write(QStringLiteral("find_in_options"), on); }
    bool findOfInputs() const { return readBool(QStringLiteral("find_of_inputs"), true); }
    void setFindOfInputs(bool on) { write(QStringLiteral("find_of_inputs"), on); }
    bool findOfNotes() const { return readBool(QStringLiteral("find_of_notes"), true); }
    void setFindOfNotes(bool on) { write(QStringLiteral("find_of_notes"), on); }
    bool findOfOutputs() const { return readBool(QStringLiteral("find_of_outputs"), true); }
    void setFindOfOutputs(bool on) { write(QStringLiteral("find_of_outputs"), on); }
    bool findOfTransforms() const { return readBool(QStringLiteral("find_of_transforms"), true); }
    void setFindOfTransforms(bool on) { write(QStringLiteral("find_of_transforms"), on); }

    // Item Summary window; the column lists are empty until set, the sort column -1.
    int itemSummarySortOrder() const
    {
        return readInt(QStringLiteral("item_summary_sort_order"), 1);
    }
    void setItemSummarySortOrder(int order)
    {
        write(QStringLiteral("item_summary_sort_order"), order);
    }
    int itemSummarySortCol() const { return readInt(QStringLiteral("item_summary_sort_col"), -1); }
    void setItemSummarySortCol(int column)
    {
        write(QStringLiteral("item_summary_sort_col"), column);
    }
    QList<int> itemSummaryColOrder() const
    {
        return readIntList(QStringLiteral("item_summary_col_order"));
    }
    void setItemSummaryColOrder(const QList<int> &order)
    {
        writeIntList(QStringLiteral("item_summary_col_order"), order);
    }
    QList<int> itemSummaryColWidths() const
    {
        return readIntList(QStringLiteral("item_summary_col_widths"));
    }
    void setItemSummaryColWidths(const QList<int> &widths)
    {
        writeIntList(QStringLiteral("item_summary_col_widths"), widths);
    }

    // Colours. The custom scheme's colours and the data colours are invalid until set;
    // whoever draws falls back on its scheme.
    int customGradientEffect() const
    {
        return readInt(QStringLiteral("custom_gradient_effect"), 0);
    }
    void setCustomGradientEffect(int effect)
    {
        write(QStringLiteral("custom_gradient_effect"), effect);
    }
    double customConnectionThickness() const
    {
        return readDouble(QStringLiteral("custom_connection_thickness"), 2.0);
    }
    void setCustomConnectionThickness(double thickness)
    {
        write(QStringLiteral("custom_connection_thickness"), thickness);
    }

    // Fonts: the application's font until one is chosen; clearing returns to that.
    void clearUiFont() { remove(QStringLiteral("ui_font")); }
    bool hasUiFont() const { return contains(QStringLiteral("ui_font")); }
    void clearDataFont() { remove(QStringLiteral("data_font")); }
    bool hasDataFont() const { return contains(QStringLiteral("data_font")); }

    // Locale and dates. The locale is the system's until one is chosen; the date formats
    // are the default list for the default locale until set, one format a line.
    QLocale locale() const;
    void setLocale(const QLocale &locale) { write(QStringLiteral("locale"), locale.name()); }
    QString dateFormats() const;
    void setDateFormats(const QString &text) { write(QStringLiteral("date_formats"), text); }
    void clearDateFormats() { remove(QStringLiteral("date_formats")); }
    // dateFormats() split at line ends, empty lines dropped.
    QStringList dateFormatList() const;
    static QString defaultDateFormatsText(const QLocale &locale);

    // Files and extensions. Blocked extensions are comma separated; the sets hold them
    // trimmed and lower-cased with empty parts dropped.
    QString blockedInputExtensions() const;
    void setBlockedInputExtensions(const QString &list);
    QSet<QString> blockedInputExtensionSet() const;
    QString blockedOutputExtensions() const;
    void setBlockedOutputExtensions(const QString &list);
    QSet<QString> blockedOutputExtensionSet() const;
    static QString defaultBlockedExtensions();
    // Lower-case extension to file type number.
    QMap<QString, int> inputFileExtensions() const;
    void setInputFileExtensions(const QMap<QString, int> &map);
    QMap<QString, int> outputFileExtensions() const;
    void setOutputFileExtensions(const QMap<QString, int> &map);
    static QMap<QString, int> defaultInputFileExtensions();
    static QMap<QString, int> defaultOutputFileExtensions();

    // Documents and folders; empty until set.
    QString previousPath() const { return readText(QStringLiteral("previous_path"), QString()); }
    void setPreviousPath(const QString &path) { write(QStringLiteral("previous_path"), path); }
    QStringList recentDocs() const;
    void setRecentDocs(const QStringList &paths);
    QString lastDocDir() const { return readText(QStringLiteral("last_doc_dir"), QString()); }
    void setLastDocDir(const QString &folder) { write(QStringLiteral("last_doc_dir"), folder); }
    QString lastDataDir() const { return readText(QStringLiteral("last_data_dir"), QString()); }
    void setLastDataDir(const QString &folder) { write(QStringLiteral("last_data_dir"), folder); }
    QString lastOutputDataDir() const
    {
        return readText(QStringLiteral("last_output_data_dir"), QString());
    }
    void setLastOutputDataDir(const QString &folder)
    {
        write(QStringLiteral("last_output_data_dir"), folder);
    }

    // Update check; invalid when never checked.
    QDateTime lastUpdatedCheck() const;
    void setLastUpdatedCheck(const QDateTime &time);

    // Window memories: the main window's own two, and the others by their key, such as
    // "batch_window_geometry". Empty when nothing is stored.
    QByteArray geometry() const { return value(QStringLiteral("geometry")).toByteArray(); }
    void setGeometry(const QByteArray &geometry) { setValue(QStringLiteral("geometry"), geometry); }
    QByteArray windowState() const { return value(QStringLiteral("window_state")).toByteArray(); }
    void setWindowState(const QByteArray &state)
    {
        setValue(QStringLiteral("window_state"), state);
    }
    QByteArray windowGeometry(const QString &key) const { return value(key).toByteArray(); }
    void setWindowGeometry(const QString &key, const QByteArray &geometry)
    {
        setValue(key, geometry);
    }

    // First-use flags.
    bool showGettingStarted() const
    {
        return readBool(QStringLiteral("show_getting_started"), true);
    }
    void setShowGettingStarted(bool on) { write(QStringLiteral("show_getting_started"), on); }
    // Tips are keyed by names such as "tip_restart_auto_run"; none is shown at first.
    bool tipShown(const QString &key) const { return readBool(key, false); }
    void setTipShown(const QString &key, bool shown = true) { write(key, shown); }

    // Remembered option values of a transform, by its typeName and the option's key.
    QVariant transformDefault(const QString &typeName, const QString &key) const;
    bool hasTransformDefault(const QString &typeName, const QString &key) const;
    void setTransformDefault(const QString &typeName, const QString &key, const QVariant &value);
    // Remembered settings of inputs and outputs: kind of item, file type, group and key.
    QVariant ioDefault(const QString &kind, const QString &fileType, const QString &group,
                       const QString &key) const;
    bool hasIoDefault(const QString &kind, const QString &fileType, const QString &group,
                      const QString &key) const;
    void setIoDefault(const QString &kind, const QString &fileType, const QString &group,
                      const QString &key, const QVariant &value);

private:
    // Colours and fonts are read and written through the same cache.
    friend class AppearanceSettings;

    bool readBool(const QString &key, bool defaultValue) const;
    int readInt(const QString &key, int defaultValue) const;
    qint64 readLongLong(const QString &key, qint64 defaultValue) const;
    double readDouble(const QString &key, double defaultValue) const;
    QString readText(const QString &key, const QString &defaultValue) const;
    QList<int> readIntList(const QString &key) const;
    QMap<QString, int> readExtensionMap(const QString &key,
                                        const QMap<QString, int> &defaultValue) const;
    // Writes through and replaces the parsed value in the cache.
    void write(const QString &key, const QVariant &value);
    void writeIntList(const QString &key, const QList<int> &list);
    const QVariant *cached(const QString &key) const;
    void remember(const QString &key, const QVariant &value) const;
    static QSet<QString> extensionSet(const QString &list);

    bool m_isIniFile = false;
    // Parsed values by key; absent means not read since the last write of that key.
    mutable QHash<QString, QVariant> m_cache;
};
