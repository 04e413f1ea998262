#include "transforms/registry.h"

#include "transforms/transformcase.h"
#include "transforms/transformchop.h"
#include "transforms/transformclone.h"
#include "transforms/transformconcat.h"
#include "transforms/transformconcatrows.h"
#include "transforms/transformcopy.h"
#include "transforms/transformextract.h"
#include "transforms/transformfilldown.h"
#include "transforms/transformheader.h"
#include "transforms/transforminsert.h"
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
#include "transforms/transformsequence.h"
#include "transforms/transformslide.h"
#include "transforms/transformsplit.h"
#include "transforms/transformsplitrows.h"
#include "transforms/transformstamp.h"
#include "transforms/transformsubstitute.h"
#include "transforms/transformtranspose.h"
#include "transforms/transformunfill.h"
#include "transforms/transformwhitespace.h"

QList<Transform *> createTransformPrototypes()
{
    return {
        new TransformCase,
        new TransformChop,
        new TransformClone,
        new TransformConcat,
        new TransformConcatRows,
        new TransformCopy,
        new TransformExtract,
        new TransformFillDown,
        new TransformHeader,
        new TransformInsert,
        new TransformNewCol,
        new TransformNewRows,
        new TransformOffset,
        new TransformPad,
        new TransformRemoveCols,
        new TransformRenameCols,
        new TransformReorder,
        new TransformReplaceMulti,
        new TransformReshape,
        new TransformRowNum,
        new TransformSequence,
        new TransformSlide,
        new TransformSplit,
        new TransformSplitRows,
        new TransformStamp,
        new TransformSubstitute,
        new TransformTranspose,
        new TransformUnfill,
        new TransformWhitespace,
    };
}
