// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sorting columns by name.

#include "recordset/ColumnOrder.h"

#include <algorithm>
#include <cassert>
#include <cstddef>

namespace recordset {

const std::vector<const Column*>& ColumnOrder::Of(const Columns& columns) {
  if (bRemoved_ && (vSorted_.size() != columns.Count() || nAdded_ != columns.Added())) {
    vSorted_.clear();
  }
  bRemoved_ = false;
  nAdded_ = columns.Added();
  const std::size_t nSorted = vSorted_.size();
  assert(nSorted <= columns.Count());
  if (nSorted == columns.Count()) return vSorted_;
  const auto less = [](const Column* a, const Column* b) { return a->Name() < b->Name(); };
  const Column* pColumn = nSorted != 0 ? pNewest_->pBehind : columns.First();
  if (nSorted + 1 == columns.Count() && !columns.Ascend()) {
    // One name is inserted with few comparisons, for a host that adds a name and lists all, again
    // and again.
    vSorted_.insert(std::upper_bound(vSorted_.begin(), vSorted_.end(), pColumn, less), pColumn);
    pNewest_ = pColumn;
    return vSorted_;
  }
  vSorted_.resize(columns.Count());
  const auto middle = vSorted_.begin() + static_cast<std::ptrdiff_t>(nSorted);
  for (auto it = middle; it != vSorted_.end(); ++it, pColumn = pColumn->pBehind) {
    *it = pNewest_ = pColumn;
  }
  if (!columns.Ascend()) {
    std::sort(middle, vSorted_.end(), less);
    std::inplace_merge(vSorted_.begin(), middle, vSorted_.end(), less);
  }
  return vSorted_;
}

}  // namespace recordset
