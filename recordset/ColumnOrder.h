// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The columns in the byte-wise order of their names, which is needed for writing and listing only.
// It is made when it is asked for: the names added since the last time are sorted and merged with
// the others. As long as the columns were added in that order, nothing has to be sorted.

#ifndef QXRECORDSET_RECORDSET_COLUMNORDER_H
#define QXRECORDSET_RECORDSET_COLUMNORDER_H

#include <vector>

#include "recordset/Columns.h"

namespace recordset {

class ColumnOrder {
 public:
  // All columns by name. REQUIRES: the same columns as the last time, and those behind them.
  const std::vector<const Column*>& Of(const Columns& columns);

  // The columns were removed.
  void Reset() noexcept { vSorted_.clear(); }

 private:
  std::vector<const Column*> vSorted_;
  const Column* pNewest_ = nullptr;  // of these, the one added last
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_COLUMNORDER_H
