#include "transforms/registry.h"

#include "transforms/transformcalculate.h"
#include "transforms/transformcase.h"
#include "transforms/transformchop.h"
#include "transforms/transformclone.h"
#include "transforms/transformcluster.h"
#include "transforms/transformcompare.h"
#include "transforms/transformconcat.h"
#include "transforms/transformconcatrows.h"
#include "transforms/transformcopy.h"
#include "transforms/transformcorrelate.h"
#include "transforms/transformcount.h"
#include "transforms/transformcross.h"
#include "transforms/transformdateformat.h"
#include "transforms/transformdecode.h"
#include "transforms/transformdedupe.h"
#include "transforms/transformdiff.h"
#include "transforms/transformextract.h"
#include "transforms/transformfilldown.h"
#include "transforms/transformfilter.h"
#include "transforms/transformgather.h"
#include "transforms/transformhash.h"
#include "transforms/transformheader.h"
#include "transforms/transformif.h"
#include "transforms/transformimpute.h"
#include "transforms/transforminsert.h"
#include "transforms/transforminterpolate.h"
#include "transforms/transformintersect.h"
#include "transforms/transformjavascript.h"
#include "transforms/transformjoin.h"
#include "transforms/transformlookup.h"
#include "transforms/transformmoving.h"
#include "transforms/transformnewcol.h"
#include "transforms/transformnewrows.h"
#include "transforms/transformngram.h"
#include "transforms/transformnumbase.h"
#include "transforms/transformnumberformat.h"
#include "transforms/transformoffset.h"
#include "transforms/transformoutliers.h"
#include "transforms/transformpad.h"
#include "transforms/transformpivot.h"
#include "transforms/transformpseudonym.h"
#include "transforms/transformrandom.h"
#include "transforms/transformremovecols.h"
#include "transforms/transformrenamecols.h"
#include "transforms/transformreorder.h"
#include "transforms/transformreplacemulti.h"
#include "transforms/transformreshape.h"
#include "transforms/transformrownum.h"
#include "transforms/transformsample.h"
#include "transforms/transformscale.h"
#include "transforms/transformsequence.h"
#include "transforms/transformslice.h"
#include "transforms/transformslide.h"
#include "transforms/transformsort.h"
#include "transforms/transformsplit.h"
#include "transforms/transformsplitname.h"
#include "transforms/transformsplitrows.h"
#include "transforms/transformspread.h"
#include "transforms/transformstack.h"
#include "transforms/transformstamp.h"
#include "transforms/transformstats.h"
#include "transforms/transformsubstitute.h"
#include "transforms/transformsubtract.h"
#include "transforms/transformsummary.h"
#include "transforms/transformtotal.h"
#include "transforms/transformtranspose.h"
#include "transforms/transformunfill.h"
#include "transforms/transformunique.h"
#include "transforms/transformunits.h"
#include "transforms/transformuuid.h"
#include "transforms/transformverify.h"
#include "transforms/transformwhitespace.h"

#include "transforms/framework/transform.h"

#include <QHash>

#include <algorithm>

namespace {

// Keep this list in the alphabetical order of the class names, regardless of case.
QList<Transform *> allTransforms()
{
    return {
        new TransformCalculate,    new TransformCase,        new TransformChop,
        new TransformClone,        new TransformCluster,     new TransformCompare,
        new TransformConcat,       new TransformConcatRows,  new TransformCopy,
        new TransformCorrelate,    new TransformCount,       new TransformCross,
        new TransformDateFormat,   new TransformDecode,      new TransformDedupe,
        new TransformDiff,         new TransformExtract,     new TransformFillDown,
        new TransformFilter,       new TransformGather,      new TransformHash,
        new TransformHeader,       new TransformIf,          new TransformImpute,
        new TransformInsert,       new TransformInterpolate, new TransformIntersect,
        new TransformJavascript,   new TransformJoin,        new TransformLookup,
        new TransformMoving,       new TransformNewCol,      new TransformNewRows,
        new TransformNgram,        new TransformNumBase,     new TransformNumberFormat,
        new TransformOffset,       new TransformOutliers,    new TransformPad,
        new TransformPivot,        new TransformPseudonym,   new TransformRandom,
        new TransformRemoveCols,   new TransformRenameCols,  new TransformReorder,
        new TransformReplaceMulti, new TransformReshape,     new TransformRowNum,
        new TransformSample,       new TransformScale,       new TransformSequence,
        new TransformSlice,        new TransformSlide,       new TransformSort,
        new TransformSplit,        new TransformSplitName,   new TransformSplitRows,
        new TransformSpread,       new TransformStack,       new TransformStamp,
        new TransformStats,        new TransformSubstitute,  new TransformSubtract,
        new TransformSummary,      new TransformTotal,       new TransformTranspose,
        new TransformUnfill,       new TransformUnique,      new TransformUnits,
        new TransformUUID,         new TransformVerify,      new TransformWhitespace,
    };
}

struct Prototypes
{
    Prototypes()
        : sorted(allTransforms())
    {
        std::stable_sort(sorted.begin(), sorted.end(), [](const Transform *a, const Transform *b) {
            return a->displayName().compare(b->displayName(), Qt::CaseInsensitive) < 0;
        });
        for (Transform *prototype : qAsConst(sorted))
            byTypeName.insert(prototype->typeName(), prototype);
    }
    ~Prototypes()
    {
        qDeleteAll(sorted);
        qDeleteAll(added);
    }
    QList<Transform *> sorted;
    QHash<QString, Transform *> byTypeName;
    QList<Transform *> added;
};

Prototypes &instance()
{
    static Prototypes prototypes;
    return prototypes;
}

} // namespace

namespace TransformRegistry {

const QList<Transform *> &prototypes()
{
    return instance().sorted;
}

Transform *prototype(const QString &typeName)
{
    for (Transform *added : qAsConst(instance().added)) {
        if (added->typeName() == typeName)
            return added;
    }
    return instance().byTypeName.value(typeName);
}

Transform *create(const QString &typeName)
{
    const Transform *found = prototype(typeName);
    return found ? found->clone() : nullptr;
}

void addPrototype(Transform *prototype)
{
    instance().added.prepend(prototype);
}

} // namespace TransformRegistry

QList<Transform *> createTransformPrototypes()
{
    return allTransforms();
}
