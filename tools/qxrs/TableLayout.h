// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A table of aligned columns for people: numbers to the right, everything else to the left,
// shortened to the width there is.

#ifndef QXRECORDSET_TOOLS_TABLELAYOUT_H
#define QXRECORDSET_TOOLS_TABLELAYOUT_H

#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

// Writes all rows in lines of `nWidth` columns, or as long as they are when that is 0: texts are
// cut, and columns for which that is not enough are left out.
void WriteTable(RowSource& source, std::size_t nWidth, bool bColor, Output& output);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_TABLELAYOUT_H
