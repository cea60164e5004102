// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The columns in the byte-wise order of their names, which is needed for writing and listing only.
// It is made when it is asked for: the names added since the last time are sorted and merged with
// the others. As long as the columns were added in that order, nothing has to be sorted; when the
// same columns are there again after they were removed, nothing has to be done.

#ifndef QXRECORDSET_RECORDSET_COLUMNORDER_H
#define QXRECORDSET_RECORDSET_COLUMNORDER_H

#include <cstdint>
#include <vector>

#include "recordset/Columns.h"

namespace recordset {

class ColumnOrder {
 public:
  // All columns by name. REQUIRES: the same columns as the last time, and those behind them, unless
  // they were removed.
  const std::vector<const Column*>& Of(const Columns& columns);

  // The columns were removed.
  void Reset() noexcept { bRemoved_ = true; }

 private:
  std::vector<const Column*> vSorted_;
  const Column* pNewest_ = nullptr;  // of these, the one added last
  std::uint64_t nAdded_ = 0;         // columns ever added when these were sorted
  bool bRemoved_ = false;            // since then
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_COLUMNORDER_H
