// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What concerns a whole table.

#include "recordset/Table.h"

#include <cassert>
#include <vector>

#include "memory/KeptBlocks.h"
#include "memory/KeptObjects.h"

namespace recordset {

namespace {

// The most that a table may hold for the next one: that of a thousand cells with short texts, and
// some.
constexpr std::size_t kKeptBytes = std::size_t{64} * 1024;

void Destroy(void* pTable) noexcept { delete static_cast<Table*>(pTable); }

}  // namespace

std::unique_ptr<Table> Table::Make() {
  void* const pKept = memory::KeptObjects::Take();
  if (pKept != nullptr) return std::unique_ptr<Table>(static_cast<Table*>(pKept));
  return std::make_unique<Table>();
}

// A reset table holds what it held before, and up to as much from the time before that.
void Table::Recycle(std::unique_ptr<Table> pTable, std::string& strText) noexcept {
  memory::KeptBlocks::GiveText(strText);  // a large one
  if (pTable == nullptr || pTable->Footprint() > kKeptBytes) return;
  pTable->Reset();
  pTable->strSpare.swap(strText);
  if (memory::KeptObjects::Keep(pTable.get(), Destroy)) static_cast<void>(pTable.release());
}

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
  if (!cell.Exists()) {
    bTextIsCurrent = false;
    Assign(cell, texts.Store(nullptr, 0), 0, kNullType);
  }
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
      SetCell(lRow, vColumns[nColumn - 1], cell.pText, cell.Length(), cell.eType);
    });
  });
}

void Table::Reset() noexcept {
  bTextIsCurrent = false;
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
