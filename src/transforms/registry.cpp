#include "transforms/registry.h"

#include "transforms/transformcase.h"
#include "transforms/transformchop.h"
#include "transforms/transformclone.h"
#include "transforms/transformconcat.h"
#include "transforms/transformconcatrows.h"
#include "transforms/transformcopy.h"
#include "transforms/transformcross.h"
#include "transforms/transformdedupe.h"
#include "transforms/transformextract.h"
#include "transforms/transformfilldown.h"
#include "transforms/transformfilter.h"
#include "transforms/transformheader.h"
#include "transforms/transformif.h"
#include "transforms/transforminsert.h"
#include "transforms/transformintersect.h"
#include "transforms/transformjoin.h"
#include "transforms/transformlookup.h"
#include "transforms/transformnewcol.h"
#include "transforms/transformnewrows.h"
#include "transforms/transformoffset.h"
#include "transforms/transformpad.h"
#include "transforms/transformremovecols.h"
#include "transforms/transformrenamecols.h"
#include "transforms/transformreorder.h"
#include "transforms/transformreplacemulti.h"
#include "transforms/transformreshape.h"
#include "transforms/transformrownum.h"
#include "transforms/transformsample.h"
#include "transforms/transformsequence.h"
#include "transforms/transformslice.h"
#include "transforms/transformslide.h"
#include "transforms/transformsort.h"
#include "transforms/transformsplit.h"
#include "transforms/transformsplitrows.h"
#include "transforms/transformstack.h"
#include "transforms/transformstamp.h"
#include "transforms/transformsubstitute.h"
#include "transforms/transformsubtract.h"
#include "transforms/transformtranspose.h"
#include "transforms/transformunfill.h"
#include "transforms/transformwhitespace.h"

QList<Transform *> createTransformPrototypes()
{
    return {
        new TransformCase,         new TransformChop,       new TransformClone,
        new TransformConcat,       new TransformConcatRows, new TransformCopy,
        new TransformCross,        new TransformDedupe,     new TransformExtract,
        new TransformFillDown,     new TransformFilter,     new TransformHeader,
        new TransformIf,           new TransformInsert,     new TransformIntersect,
        new TransformJoin,         new TransformLookup,     new TransformNewCol,
        new TransformNewRows,      new TransformOffset,     new TransformPad,
        new TransformRemoveCols,   new TransformRenameCols, new TransformReorder,
        new TransformReplaceMulti, new TransformReshape,    new TransformRowNum,
        new TransformSample,       new TransformSequence,   new TransformSlice,
        new TransformSlide,        new TransformSort,       new TransformSplit,
        new TransformSplitRows,    new TransformStack,      new TransformStamp,
        new TransformSubstitute,   new TransformSubtract,   new TransformTranspose,
        new TransformUnfill,       new TransformWhitespace,
    };
}
