// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading a record set without changing it.

#include <algorithm>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"
#include "text/Bytes.h"

using recordset::Cell;
using recordset::Column;

namespace {

std::string_view TextOf(const Cell* pCell) {
  return pCell != nullptr ? std::string_view(pCell->pText, pCell->Length()) : std::string_view();
}

CQXRecordSet::QX_TYPE TypeOf(const Cell* pCell) {
  return pCell != nullptr ? static_cast<CQXRecordSet::QX_TYPE>(pCell->eType)
                          : CQXRecordSet::QX_NULL;
}

}  // namespace

long CQXRecordSet::GetColumnIndex(std::string_view name) const {
  const Column* const pColumn =
      pTable != nullptr ? pTable->columns.Find(JSON::UpToNul(name)) : nullptr;
  return pColumn != nullptr ? static_cast<long>(pColumn->Index()) : -1;
}

long CQXRecordSet::GetColumnIndex(const char* name) const {
  return name != nullptr ? GetColumnIndex(std::string_view(name)) : -1;
}

// The cell, or null when there is none.
const Cell* CQXRecordSet::FindCell(long column, long row) const {
  if (pTable == nullptr || column < 1 || column > static_cast<long>(pTable->columns.Count())) {
    return nullptr;
  }
  return std::as_const(pTable->rows).FindCell(row, static_cast<std::uint32_t>(column));
}

bool CQXRecordSet::HasCell(long column, long row) const { return FindCell(column, row) != nullptr; }
bool CQXRecordSet::HasCell(const char* name, long row) const {
  return HasCell(GetColumnIndex(name), row);
}
bool CQXRecordSet::HasCell(std::string_view name, long row) const {
  return HasCell(GetColumnIndex(name), row);
}

CQXRecordSet::QX_TYPE CQXRecordSet::GetType(long column, long row) const {
  return TypeOf(FindCell(column, row));
}
CQXRecordSet::QX_TYPE CQXRecordSet::GetType(const char* name, long row) const {
  return GetType(GetColumnIndex(name), row);
}
CQXRecordSet::QX_TYPE CQXRecordSet::GetType(std::string_view name, long row) const {
  return GetType(GetColumnIndex(name), row);
}

std::string_view CQXRecordSet::GetView(long column, long row) const {
  return TextOf(FindCell(column, row));
}
std::string_view CQXRecordSet::GetView(const char* name, long row) const {
  return GetView(GetColumnIndex(name), row);
}
std::string_view CQXRecordSet::GetView(std::string_view name, long row) const {
  return GetView(GetColumnIndex(name), row);
}

// ---- Rows ---------------------------------------------------------------------------------------

CQXRows CQXRecordSet::Rows() const { return CQXRows(*this); }

CQXRows::CQXRows(const CQXRecordSet& set) : pSet_(&set), lCount_(set.lRowsCount) {
  if (set.pTable == nullptr) return;
  vNames_.reserve(set.pTable->columns.Count());
  const Column* pColumn = set.pTable->columns.First();
  while (vNames_.size() < set.pTable->columns.Count()) {
    vNames_.push_back(pColumn->Name());
    pColumn = pColumn->pBehind;
  }
}

CQXCell CQXRows::FindCell(long lRow, long lColumn) const {
  CQXCell found;
  found.lColumn = static_cast<long>(vNames_.size()) + 1;
  const recordset::Rows* const pRows = pSet_->pTable != nullptr ? &pSet_->pTable->rows : nullptr;
  const recordset::Row* const pRow = pRows != nullptr ? pRows->FindRow(lRow) : nullptr;
  if (pRow == nullptr) return found;
  const long lLast = pRow->bHasFar ? found.lColumn - 1
                                   : std::min(found.lColumn - 1, static_cast<long>(pRow->nSpan));
  for (long i = lColumn; i <= lLast; ++i) {
    const Cell* const pCell = pRows->FindCell(lRow, *pRow, static_cast<std::uint32_t>(i));
    if (pCell == nullptr) continue;
    const std::string_view name = vNames_[static_cast<std::size_t>(i - 1)];
    return {name, TextOf(pCell), i, TypeOf(pCell)};
  }
  return found;
}

// ---- Merging ------------------------------------------------------------------------------------

void CQXRecordSet::Merge(const CQXRecordSet& other) {
  if (&other != this && other.pTable != nullptr) {
    EnsureTable().Merge(*other.pTable);
    lRowsCount = std::max(lRowsCount, other.lRowsCount);
  }
  bModified = true;
}
