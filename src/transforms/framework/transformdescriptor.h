#pragma once

#include <QFlags>
#include <QString>
#include <QStringList>

class Transform;

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

// What the Left pane, the run engine and the item panel need to know of a transform class
// without running it. Each class describes itself once, in its source file; the registry
// lists the classes.
struct TransformDescriptor
{
    enum Flag {
        // Shown in the Left pane only when 'show advanced' is checked.
        Advanced = 0x01,
        // Rewrites cells of chosen columns and keeps rows and columns.
        ChangesValuesOnly = 0x02,
        // Fills Dataset::sourceRows; otherwise the run engine clears them.
        KeepsSourceRows = 0x04,
        // Fills the issue tables; otherwise the run engine clears them.
        KeepsIssues = 0x08,
        // The outcome depends on the list of date formats in force.
        UsesDateFormats = 0x10,
        // Details leave out the options that parameterStates() disables.
        OmitDisabledFromDetails = 0x20,
        // The item panel offers "Explore Keys...".
        HasKeyColumns = 0x40,
        // The item panel offers "Explore Duplicates...".
        HasDuplicateOptions = 0x80
    };
    Q_DECLARE_FLAGS(Flags, Flag)

    // Numeric id, unique per class, in the alphabetical order of the names.
    int type = -1;
    // The name in documents, help and settings keys; must never change.
    QString typeName;
    // The name on buttons and items.
    QString displayName;
    int category = CategoryOther;
    int minimumInputs = 1;
    int maximumInputs = 1;
    Flags flags;
    // One line for tool tips and the Details of an item.
    QString description;
    // Search words of the Left pane beyond those of the name and the category.
    QStringList keywords;
    // Diagram in the tool tip of transforms with several inputs ("join.png").
    QString inputImageName;
    // Makes a new instance of the class; clone() and the registry use it.
    Transform *(*create)() = nullptr;

    bool has(Flag flag) const { return flags.testFlag(flag); }
};

Q_DECLARE_OPERATORS_FOR_FLAGS(TransformDescriptor::Flags)

// Makes a new instance of T, for TransformDescriptor::create.
template<typename T> Transform *createTransform()
{
    return new T;
}
