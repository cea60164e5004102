// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The rows of a table and their cells, by row number and column index. Usual tables are dense grids
// and are stored like one; what does not fit a grid costs memory for the cells that exist and
// never for the gaps between them.
//
//   Rows 1 to N lie in pages, a Row each: the address of its cells and how many columns they span.
//   A row's cells are one array by column index, taken from memory::BumpBlocks.
//   Rows with other numbers (0, negative, far ahead of the others) are in an ordered map, until the
//   pages reach them.
//   Cells far to the right of the others in their row are in an ordered map, too, until the row's
//   array reaches them.
//
// A new row is given room for as many cells as the row before it has, the first one for as many as
// the last row of the contents before. The room that it does not use is released when the next row
// begins.
//
// Rows only finds cells and makes room for them: their texts belong to the TextStore.

#ifndef QXRECORDSET_RECORDSET_ROWS_H
#define QXRECORDSET_RECORDSET_ROWS_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

#include "memory/BumpBlocks.h"

namespace recordset {

// One cell. A row's array has a place for every column it spans; a place whose cell does not exist
// has no text, while an existing cell has at least the empty one.
struct Cell {
  const char* pText = nullptr;
  std::uint32_t nLengthAndPlain = 0;  // twice the bytes of text, without the NUL, and 1 if plain
  std::int32_t eType = 0;

  bool Exists() const { return pText != nullptr; }
  std::size_t Length() const { return nLengthAndPlain / 2; }

  // Whether the text is written as it stands: the digits of an integer as the library writes them,
  // or a text in which nothing has to be escaped; shorter than a block. False also where that is
  // not known.
  bool IsPlain() const { return nLengthAndPlain % 2 != 0; }

  static std::uint32_t Pack(std::size_t nLength, bool bPlain) {
    return static_cast<std::uint32_t>(2 * nLength + (bPlain ? 1 : 0));
  }
};

// One row: the cells of columns 1 to nSpan, and whether there are cells further right.
struct Row {
  Cell* pCells = nullptr;
  std::uint32_t nSpan : 31;
  std::uint32_t bHasFar : 1;

  Row() : nSpan(0), bHasFar(0) {}

  // No cell was ever put in this row.
  bool IsUnused() const { return pCells == nullptr && !bHasFar; }
};

class Rows {
 public:
  // aOwn_ is room for pieces, not content. NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  Rows() noexcept : blocks_(aOwn_, kOwnBytes) {}
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows() = default;

  // The place of a cell, which is made, without a text, when it is new. The reference stays
  // valid until the next call of EnsureCell(). When memory runs out, all cells are as before.
  // REQUIRES: nColumn is from 1 to kLastColumn.
  Cell& EnsureCell(long lRow, std::uint32_t nColumn) {
    assert(nColumn >= 1 && nColumn <= kLastColumn);
    Cell* const pCell = FindInGrid(lRow, nColumn);
    return pCell != nullptr ? *pCell : MakeCell(lRow, nColumn);
  }

  // The place of a cell when it is one of the usual ones, in the array of a row in the pages; else
  // null. The cell need not exist.
  Cell* FindInGrid(long lRow, std::uint32_t nColumn) {
    const unsigned long nIndex = IndexOf(lRow);
    if (nIndex >= nSlots_) return nullptr;
    const Row& row = Slot(nIndex);
    return nColumn <= row.nSpan ? row.pCells + nColumn - 1 : nullptr;  // nSpan cells are there
  }

  // The cells of a row's array, those that do not exist included. Valid until the next call of
  // EnsureCell() that makes a cell.
  struct Cells {
    Cell* pFirst;
    std::uint32_t nCount;
  };
  Cells CellsOf(long lRow) {
    const Row* const pRow = FindRow(lRow);
    return pRow != nullptr ? Cells{pRow->pCells, pRow->nSpan} : Cells{nullptr, 0};
  }

  // The same for a row that will have cells: if it is new, it may get its array at once.
  Cells CellsToFill(long lRow) {
    const unsigned long nIndex = IndexOf(lRow);
    if (nIndex < nSlots_ && mapOutside_.empty() && Slot(nIndex).IsUnused()) {
      BeginRow(lRow, Slot(nIndex));
      nGridRows_ += Slot(nIndex).IsUnused() ? 0 : 1;
    }
    return CellsOf(lRow);
  }

  // The cell, or null when it does not exist.
  const Cell* FindCell(long lRow, std::uint32_t nColumn) const {
    const Row* const pRow = FindRow(lRow);
    return pRow != nullptr ? FindCell(lRow, *pRow, nColumn) : nullptr;
  }
  const Cell* FindCell(long lRow, const Row& row, std::uint32_t nColumn) const {
    const Cell* const pCell = nColumn <= row.nSpan ? row.pCells + nColumn - 1
                              : row.bHasFar        ? FindFar(lRow, nColumn)
                                                   : nullptr;
    return pCell != nullptr && pCell->Exists() ? pCell : nullptr;
  }

  // The row, or null. A row may be there without any cell that exists.
  const Row* FindRow(long lRow) const {
    const unsigned long nIndex = IndexOf(lRow);
    return nIndex < nSlots_ ? &Slot(nIndex) : FindOutside(lRow);
  }

  // Whether any cell of a row exists.
  bool HasCells(long lRow, const Row& row) const;

  // Calls f(nColumn, cell) for every cell of a row that exists, by ascending column index.
  template <typename F>
  void ForEachCell(long lRow, const Row& row, F f) const {
    for (std::uint32_t i = 0; i < row.nSpan; ++i) {
      if (row.pCells[i].Exists()) f(i + 1, row.pCells[i]);
    }
    if (!row.bHasFar) return;
    for (auto it = FirstFar(lRow); it != mapFar_.end() && it->first.first == lRow; ++it) {
      if (it->second.Exists()) f(it->first.second, it->second);
    }
  }

  // Calls f(lRow, row) for every row by ascending number; some may have no cell.
  template <typename F>
  void ForEachRow(F f) const {
    auto it = mapOutside_.begin();
    for (; it != mapOutside_.end() && it->first <= 0; ++it) {
      f(it->first, it->second);
    }
    for (unsigned long i = 0; i < nSlots_; ++i) {
      f(static_cast<long>(i + 1), Slot(i));
    }
    for (; it != mapOutside_.end(); ++it) {
      f(it->first, it->second);
    }
  }

  // Removes all rows. Memory is kept; see memory/BumpBlocks.h.
  void Reset() noexcept;

  // Bytes of memory in use.
  std::size_t Footprint() const { return blocks_.Footprint(); }

  // A column index is kept in 31 bits.
  static constexpr std::uint32_t kLastColumn = 0x7FFFFFFF;

 private:
  // Rows of a page; the first page begins smaller and grows to this size.
  static constexpr unsigned long kPageRows = 64;
  static constexpr unsigned long kFirstRows = 4;

  // Enough for the first rows of a small table; the table stays a small allocation.
  static constexpr std::size_t kOwnBytes = 36 * sizeof(void*);

  using FarCells = std::map<std::pair<long, std::uint32_t>, Cell>;

  // Rows 1, 2, 3, ... have the indices 0, 1, 2, ...; numbers below 1 give very large ones.
  static unsigned long IndexOf(long lRow) { return static_cast<unsigned long>(lRow) - 1; }
  Row& Slot(unsigned long nIndex) const { return pPages_[nIndex / kPageRows][nIndex % kPageRows]; }

  Cell& MakeCell(long lRow, std::uint32_t nColumn);

  // Rows.
  Row& EnsureRow(long lRow);
  Row& OutsideRow(long lRow);
  const Row* FindOutside(long lRow) const;
  unsigned long ReachableSlots() const;
  void AddSlots();
  void MoveRowsIn(unsigned long nOldSlots) noexcept;
  void ReachForRows();

  // Cells of one row.
  void BeginRow(long lRow, Row& row);
  std::uint32_t FinishLatestRow();
  std::uint32_t FinishRow(Row& row);
  static std::uint32_t CountCells(const Row& row);
  bool Widen(long lRow, Row& row, std::uint32_t nColumn);
  bool WidenInPlace(Row& row, std::uint32_t nColumn);
  void Relocate(Row& row, std::uint32_t nSpan);
  Cell* AllocateCells(std::uint32_t nCells);

  // Far cells.
  FarCells::const_iterator FirstFar(long lRow) const { return mapFar_.lower_bound({lRow, 0}); }
  const Cell* FindFar(long lRow, std::uint32_t nColumn) const;
  void MoveFarCellsIn(long lRow, Row& row) noexcept;

  memory::BumpBlocks blocks_;    // pages and cells
  Row** pPages_ = nullptr;       // an array in the blocks
  unsigned long nPageRoom_ = 0;  // pages there is room for at pPages_
  unsigned long nSlots_ = 0;     // rows in all pages
  unsigned long nGridRows_ = 0;  // of these, rows that were begun
  bool bHasLatest_ = false;
  long lLatest_ = 0;                // the row begun last, if there is one
  std::uint32_t nFirstSpan_ = 0;    // how many cells the first row begins with
  std::map<long, Row> mapOutside_;  // rows outside the pages
  long lLastOutside_ = 0;           // the row there that was asked for last,
  Row* pLastOutside_ = nullptr;     // and where it is
  FarCells mapFar_;                 // cells beyond the span of their row, by row and column
  alignas(Cell) char aOwn_[kOwnBytes + memory::BumpBlocks::kSlack];
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_ROWS_H
