// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What concerns a whole table.

#include "recordset/Table.h"

#include <cassert>
#include <vector>

namespace recordset {

const Column* Table::FindOtherColumn(const char* name) {
  const Column* const pColumn = columns.Find(name);
  return pColumn != nullptr ? &asked.Learn(*pColumn) : nullptr;
}

std::uint32_t Table::EnsureOtherColumn(const char* name) {
  return asked.Learn(columns.FindOrAdd(name)).Index();
}

// A cell that does not exist, or does not lie where most cells do.
const Cell& Table::ReadOtherCell(long lRow, std::uint32_t nColumn) {
  Cell& cell = rows.EnsureCell(lRow, nColumn);
  if (!cell.Exists()) Assign(cell, texts.Store(nullptr, 0), 0, kNullType);
  return cell;
}

void Table::Merge(const Table& other) {
  assert(&other != this);
  std::vector<std::uint32_t> vColumns(other.columns.Count());
  const Column* pColumn = other.columns.First();
  for (std::uint32_t& nColumn : vColumns) {
    nColumn = columns.FindOrAdd(pColumn->Name()).Index();
    pColumn = pColumn->pBehind;
  }
  other.rows.ForEachRow([&](long lRow, const Row& row) {
    other.rows.ForEachCell(lRow, row, [&](std::uint32_t nColumn, const Cell& cell) {
      SetCell(lRow, vColumns[nColumn - 1], cell.pText, cell.nLength, cell.eType);
    });
  });
}

void Table::Reset() noexcept {
  rows.Reset();
  columns.Reset();
  asked.Forget();
  order.Reset();
  texts.Reset();
}

std::size_t Table::Footprint() const {
  return rows.Footprint() + columns.Footprint() + texts.Footprint();
}

}  // namespace recordset
