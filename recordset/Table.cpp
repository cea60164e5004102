// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What concerns a whole table.

#include "recordset/Table.h"

#include <vector>

namespace recordset {

// A cell that does not exist, or does not lie where most cells do.
const Cell& Table::ReadOtherCell(long lRow, std::uint32_t nColumn) {
  Cell& cell = rows.EnsureCell(lRow, nColumn);
  if (!cell.Exists()) Assign(cell, texts.Store(nullptr, 0), 0, kNullType);
  return cell;
}

void Table::Merge(const Table& other) {
  std::vector<std::uint32_t> vColumns(other.columns.Count());
  for (std::uint32_t i = 0; i < vColumns.size(); ++i) {
    const std::string_view name = other.columns.NameOf(i + 1);
    vColumns[i] = columns.FindOrAdd(name.data(), name.size());
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
  texts.Reset();
}

std::size_t Table::Footprint() const {
  return rows.Footprint() + columns.Footprint() + texts.Footprint();
}

}  // namespace recordset
