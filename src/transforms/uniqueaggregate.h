#pragma once

#include "data/dataset.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

// How one column of a Unique is made from the rows of each group. A column keeps, per group,
// only what its option needs: nothing for the options that take a cell of the group's first
// or last row, running figures for sums, extremes and counts, texts only for concatenation
// and the counts of distinct texts.
class UniqueAggregate
{
public:
    // The options in the order users choose them; the numbers are stored in documents.
    enum Option {
        KeepUnique = 0,
        KeepFirst,
        KeepLast,
        Sum,
        Maximum,
        Minimum,
        Average,
        Concat,
        ConcatDistinct,
        KeepFirstNonEmpty,
        KeepLastNonEmpty,
        CountDistinct,
        CountUnique,
        CountDuplicate,
        CountEmpty,
        CountNonEmpty,
        SetEmpty,
        OptionCount
    };

    struct Settings
    {
        QString delimiter;
        bool concatIgnoreEmpty = true;
        bool decimalIsPoint = true;
    };

    // dateFormat, when not empty, makes Maximum and Minimum compare dates read in it.
    UniqueAggregate(int column = 0, int option = KeepFirst, const QString &dateFormat = QString());

    int column() const { return m_column; }
    int option() const { return m_option; }
    // Whether the option reads the cells of every row, not only a group's first or last.
    bool readsEveryRow() const;
    static bool comparesExtremes(int option) { return option == Maximum || option == Minimum; }

    void addGroup();
    void add(int group, int r, const QString &cell, const Settings &settings);
    // The cell of a group whose first and last rows are given.
    QString result(int group, int first, int last, const Dataset &input,
                   const Settings &settings) const;

private:
    bool readExtreme(const QString &cell, const Settings &settings, double *value) const;

    int m_column;
    int m_option;
    QString m_dateFormat;
    QVector<double> m_numbers; // sums and extremes
    QVector<qint64> m_counts; // numbers summed; empty or non-empty cells
    QVector<int> m_rows; // the row of an extreme or of a non-empty cell, -1 for none
    QVector<QStringList> m_texts;
    QVector<QSet<QString>> m_seen;
    QVector<QHash<QString, int>> m_tallies;
};
