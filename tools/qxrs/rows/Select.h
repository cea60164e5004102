// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Some of the columns, or some of the rows, of a source.

#ifndef QXRECORDSET_TOOLS_ROWS_SELECT_H
#define QXRECORDSET_TOOLS_ROWS_SELECT_H

#include <memory>
#include <string>
#include <vector>

#include "tools/qxrs/rows/Rows.h"

namespace qxrs {

// Some columns, in a new order. Throws InputError, from Next() at the end when not before, when one
// of them never occurred in any row.
std::unique_ptr<RowSource> SelectColumns(std::unique_ptr<RowSource> pRows,
                                         const std::vector<std::string>& vNames);

// The first rows. What follows is not read.
std::unique_ptr<RowSource> FirstRows(std::unique_ptr<RowSource> pRows, unsigned long long nRows);

// The last rows; the source is read at once.
std::unique_ptr<RowSource> LastRows(RowSource& source, unsigned long long nRows);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_SELECT_H
