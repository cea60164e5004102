// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Making room for rows and cells. Every rule here answers the same question: may this gap be
// bridged with empty places, or does what lies behind it go to a map? It may as long as the empty
// places stay in proportion to the cells and rows that exist, so that no order of writing makes a
// table larger than its contents by more than a constant factor, or slower.

#include "recordset/Rows.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "memory/Spare.h"

namespace recordset {
namespace {

// The pages reach this many rows plus four times the rows that exist: a gap of three places between
// any two rows costs no more than an entry in a map would.
constexpr unsigned long kRowsAhead = 64;
constexpr unsigned long kPlacesPerRow = 4;

// A row's array is widened for a cell at most this many columns beyond its end.
constexpr std::uint32_t kColumnsAhead = 8;

// An array of up to this many cells may always be moved and widened; a larger one only when half of
// its cells exist, because its size is doubled then.
constexpr std::uint32_t kAlwaysWidened = 16;

// A row that is widened gets room for a few columns more; what it does not need is taken back.
constexpr std::uint32_t kSpareColumns = 4;

// Makes cells that do not exist. All of their bytes are 0, and many are made at a time.
void MakeEmpty(Cell* pCells, std::uint32_t nCells) {
  static_assert(std::is_trivially_copyable_v<Cell>);
  std::memset(static_cast<void*>(pCells), 0, nCells * sizeof(Cell));
}

}  // namespace

// The next first row is expected to be as wide as the last row was.
void Rows::Reset() noexcept {
  const Row* const pLatest = bHasLatest_ ? FindRow(lLatest_) : nullptr;
  const bool bUsual = pLatest != nullptr && pLatest->nSpan <= kAlwaysWidened;
  nFirstSpan_ = bUsual ? pLatest->nSpan : 0;
  mapFar_.clear();
  mapOutside_.clear();
  pLastOutside_ = nullptr;
  bHasLatest_ = false;
  nPageRoom_ = 0;
  nSlots_ = 0;
  nGridRows_ = 0;
  blocks_.Reset();
}

bool Rows::HasCells(long lRow, const Row& row) const {
  const auto exists = [](const Cell& cell) { return cell.Exists(); };
  if (std::any_of(row.pCells, row.pCells + row.nSpan, exists)) return true;
  if (!row.bHasFar) return false;
  for (auto it = FirstFar(lRow); it != mapFar_.end() && it->first.first == lRow; ++it) {
    if (it->second.Exists()) return true;
  }
  return false;
}

// A cell that does not lie within the span of a row in the pages.
Cell& Rows::MakeCell(long lRow, std::uint32_t nColumn) {
  Row& row = EnsureRow(lRow);
  if (row.IsUnused()) BeginRow(lRow, row);
  if (nColumn <= row.nSpan) return row.pCells[nColumn - 1];
  if (row.bHasFar) {
    const auto it = mapFar_.find({lRow, nColumn});
    if (it != mapFar_.end()) return it->second;
  }
  if (Widen(lRow, row, nColumn)) return row.pCells[nColumn - 1];
  Cell& cell = mapFar_.try_emplace(mapFar_.end(), {lRow, nColumn})->second;
  row.bHasFar = 1;
  return cell;
}

// ---- Rows ---------------------------------------------------------------------------------------

Row& Rows::EnsureRow(long lRow) {
  const unsigned long nIndex = IndexOf(lRow);
  if (nIndex >= nSlots_ && nIndex >= ReachableSlots()) return OutsideRow(lRow);
  while (nIndex >= nSlots_) {
    AddSlots();
  }
  if (Slot(nIndex).IsUnused()) {
    ++nGridRows_;
    if (!mapOutside_.empty()) ReachForRows();
  }
  return Slot(nIndex);
}

// To remember the last one saves a fifth of the instructions where such rows are filled or read
// cell by cell (eight cells each, x86-64).
Row& Rows::OutsideRow(long lRow) {
  if (pLastOutside_ == nullptr || lLastOutside_ != lRow) {
    pLastOutside_ = &mapOutside_[lRow];
    lLastOutside_ = lRow;
  }
  return *pLastOutside_;
}

const Row* Rows::FindOutside(long lRow) const {
  if (pLastOutside_ != nullptr && lLastOutside_ == lRow) return pLastOutside_;
  const auto it = mapOutside_.find(lRow);
  return it != mapOutside_.end() ? &it->second : nullptr;
}

unsigned long Rows::ReachableSlots() const { return kRowsAhead + kPlacesPerRow * nGridRows_; }

// Doubles the first page, or adds one. Everything in the blocks is a multiple of an address in
// size, so rows, cells and addresses lie aligned; the sizes here are those of at most kPageRows
// rows, or of pages that exist.
void Rows::AddSlots() {
  const unsigned long nOldSlots = nSlots_;
  const unsigned long nPage = nSlots_ / kPageRows;
  const unsigned long nKept = nSlots_ % kPageRows;
  const unsigned long nRows = nPage == 0 ? std::max(kFirstRows, 2 * nKept) : kPageRows;
  if (nPage == nPageRoom_) {
    const unsigned long nRoom = std::max(1UL, 2 * nPageRoom_);
    // The size of a pointer is meant. NOLINTNEXTLINE(bugprone-sizeof-expression)
    Row** const pPages = reinterpret_cast<Row**>(blocks_.Allocate(nRoom * sizeof(Row*)));
    std::uninitialized_copy_n(pPages_, nPage, pPages);
    pPages_ = pPages;
    nPageRoom_ = nRoom;
  }
  Row* const pPage = reinterpret_cast<Row*>(blocks_.Allocate(nRows * sizeof(Row)));
  if (nKept != 0) std::uninitialized_copy_n(pPages_[nPage], nKept, pPage);
  std::uninitialized_value_construct_n(pPage + nKept, nRows - nKept);
  pPages_[nPage] = pPage;
  nSlots_ += nRows - nKept;
  MoveRowsIn(nOldSlots);
}

// Moves the rows that new slots are for from the map to the pages.
void Rows::MoveRowsIn(unsigned long nOldSlots) noexcept {
  auto it = mapOutside_.lower_bound(static_cast<long>(nOldSlots + 1));
  while (it != mapOutside_.end() && IndexOf(it->first) < nSlots_) {
    Slot(IndexOf(it->first)) = it->second;
    ++nGridRows_;
    it = mapOutside_.erase(it);
    pLastOutside_ = nullptr;
  }
}

// Another row in the pages may have brought the next row of the map within reach, and that one the
// next.
void Rows::ReachForRows() {
  auto it = mapOutside_.lower_bound(1);
  while (it != mapOutside_.end() && IndexOf(it->first) < ReachableSlots()) {
    AddSlots();
    it = mapOutside_.lower_bound(1);
  }
}

// ---- Cells of one row ---------------------------------------------------------------------------

// Gives a row that has no cells yet room for as many as the row before it has.
void Rows::BeginRow(long lRow, Row& row) {
  const std::uint32_t nSpan = FinishLatestRow();
  lLatest_ = lRow;
  bHasLatest_ = true;
  if (nSpan != 0) Relocate(row, nSpan);
}

// Looks at the row that was begun last as at a finished one: takes back the room it did not use,
// and brings its far cells into its array when they fill it at least by half. The result is the
// span that the next row is to begin with. Of a wide row it is no more than twice the number of
// cells here, so that one wide row is not followed by wide empty ones.
std::uint32_t Rows::FinishLatestRow() {
  if (!bHasLatest_) return nFirstSpan_;
  Row& row = *const_cast<Row*>(FindRow(lLatest_));
  const std::uint32_t nSpan = row.nSpan;
  const bool bUsual = !row.bHasFar && nSpan != 0 && nSpan <= kAlwaysWidened;
  return bUsual && row.pCells[nSpan - 1].Exists() ? nSpan : FinishRow(row);
}

// The same for a row that is not short and full.
std::uint32_t Rows::FinishRow(Row& row) {
  std::uint32_t nLast = row.nSpan;
  while (nLast != 0 && !row.pCells[nLast - 1].Exists()) {
    --nLast;
  }
  std::uint32_t nCells = nLast <= kAlwaysWidened ? nLast : CountCells(row);
  if (row.bHasFar) {
    std::uint32_t nLastFar = 0;
    for (auto it = FirstFar(lLatest_); it != mapFar_.end() && it->first.first == lLatest_; ++it) {
      ++nCells;
      nLastFar = it->first.second;
    }
    if (nLastFar / 2 <= nCells) {
      Relocate(row, nLastFar);
      MoveFarCellsIn(lLatest_, row);
      nLast = nLastFar;
    }
  }
  // The end of the row's array, which has nSpan cells; of these nLast are kept.
  const char* const pEnd = reinterpret_cast<const char*>(row.pCells + row.nSpan);
  if (nLast < row.nSpan && blocks_.ShrinkLast(pEnd, (row.nSpan - nLast) * sizeof(Cell))) {
    row.nSpan = nLast & kLastColumn;
    if (nLast == 0) row.pCells = nullptr;
  }
  return std::min(nLast, nCells < kLastColumn / 2 ? 2 * nCells : kLastColumn);
}

// The cells of a row's array that exist.
std::uint32_t Rows::CountCells(const Row& row) {
  const auto exists = [](const Cell& cell) { return cell.Exists(); };
  return static_cast<std::uint32_t>(std::count_if(row.pCells, row.pCells + row.nSpan, exists));
}

// Makes a row's array reach the column; false when the cell lies too far from the others for that.
bool Rows::Widen(long lRow, Row& row, std::uint32_t nColumn) {
  const std::uint32_t nSpan = row.nSpan;
  if (nColumn - nSpan > kColumnsAhead) return false;
  if (!WidenInPlace(row, nColumn)) {
    if (nSpan > kAlwaysWidened && CountCells(row) < nSpan / 2) return false;
    const std::uint32_t nGrown = nSpan < kLastColumn / 2 ? 2 * nSpan : kLastColumn;
    memory::WithSpare(nColumn, std::max(nGrown, nColumn) - nColumn, [&](std::size_t nCells) {
      Relocate(row, static_cast<std::uint32_t>(nCells));
    });
  }
  if (row.bHasFar) MoveFarCellsIn(lRow, row);
  return true;
}

// The array of the row that is being filled is the last piece of memory that was handed out.
bool Rows::WidenInPlace(Row& row, std::uint32_t nColumn) {
  const std::uint32_t nSpan = row.nSpan;
  const char* const pEnd = reinterpret_cast<const char*>(row.pCells + nSpan);  // of the array
  const std::uint32_t nMore = nColumn - nSpan + (nColumn < kLastColumn / 2 ? kSpareColumns : 0);
  if (!blocks_.ExtendLast(pEnd, nMore * sizeof(Cell))) return false;
  MakeEmpty(row.pCells + nSpan, nMore);
  row.nSpan = (nSpan + nMore) & kLastColumn;
  return true;
}

void Rows::Relocate(Row& row, std::uint32_t nSpan) {
  Cell* const pCells = AllocateCells(nSpan);
  std::uninitialized_copy_n(row.pCells, row.nSpan, pCells);
  MakeEmpty(pCells + row.nSpan, nSpan - row.nSpan);
  row.pCells = pCells;
  row.nSpan = nSpan & kLastColumn;
}

Cell* Rows::AllocateCells(std::uint32_t nCells) {
  if (std::uint64_t{nCells} * sizeof(Cell) > SIZE_MAX) throw std::bad_alloc();
  return reinterpret_cast<Cell*>(blocks_.Allocate(nCells * sizeof(Cell)));
}

// ---- Far cells ----------------------------------------------------------------------------------

const Cell* Rows::FindFar(long lRow, std::uint32_t nColumn) const {
  const auto it = mapFar_.find({lRow, nColumn});
  return it != mapFar_.end() ? &it->second : nullptr;
}

// Moves the far cells that a row's array reaches now into it.
void Rows::MoveFarCellsIn(long lRow, Row& row) noexcept {
  auto it = mapFar_.lower_bound({lRow, 0});
  while (it != mapFar_.end() && it->first.first == lRow && it->first.second <= row.nSpan) {
    row.pCells[it->first.second - 1] = it->second;
    it = mapFar_.erase(it);
  }
  row.bHasFar = it != mapFar_.end() && it->first.first == lRow;
}

}  // namespace recordset
