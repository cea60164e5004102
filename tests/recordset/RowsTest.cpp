// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows and cells: whatever the order of writing, the memory follows the cells that exist and not
// the gaps between them, and every cell is found again. What the cells hold is the business of
// tests/lives.

#include "recordset/Rows.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <utility>
#include <vector>

#include "tests/support/CountedMemory.h"

namespace {

using recordset::Cell;
using recordset::Rows;
using Numbers = std::vector<long>;

Numbers Range(long lFirst, long lLast, long lStep = 1) {
  Numbers numbers;
  for (long l = lFirst; l != lLast + lStep; l += lStep)
    numbers.push_back(l);
  return numbers;
}

constexpr long kLast = Rows::kLastColumn;
constexpr long kFar = 1000003;

// Ways of filling a table, and the most bytes a cell may cost there, whatever holds it. A cell has
// 16 bytes (12 on 32 bits), and a row's entry as many again (8).
const struct Filling {
  const char* szName;
  std::size_t nBytesPerCell;
  Numbers rows;
  Numbers columns;
  enum { kByRows, kByColumns, kDiagonal } order = kByRows;
} kFillings[] = {
    {"row by row", 20, Range(1, 3000), Range(1, 10)},
    {"column by column", 40, Range(1, 1000), Range(1, 30), Filling::kByColumns},
    {"backwards", 20, Range(3000, 1, -1), Range(10, 1, -1)},
    {"far to the right and alone", 96, Range(1, 10000), {10000}},
    {"a new column in every row", 104, Range(1, 10000), {0}, Filling::kDiagonal},
    {"every hundredth column", 88, Range(1, 5), Range(100, 200000, 100)},
    {"every eighth column by turns", 96, {1, 2}, Range(8, 40000, 8), Filling::kByColumns},
    {"columns that double", 100, Range(1, 300), {1, 2, 4, 8, 16, 32, 64, 128, 1 << 29}},
    {"rows far apart", 32, Range(-200 * kFar, 200 * kFar, kFar), Range(1, 10)},
    {"rows at some distance", 32, Range(1, 100001, 500), Range(1, 10)},
    {"the ends of the ranges",
     250,
     {LONG_MIN, LONG_MIN + 1, -1, 0, 1, 64, 65, LONG_MAX - 1, LONG_MAX},
     {1, 8, 9, 17, kLast - 1, kLast}},
};

std::vector<std::pair<long, std::uint32_t>> PlacesOf(const Filling& filling) {
  std::vector<std::pair<long, std::uint32_t>> places;
  const bool bByColumns = filling.order == Filling::kByColumns;
  for (const long lOuter : bByColumns ? filling.columns : filling.rows) {
    for (const long lInner : bByColumns ? filling.rows : filling.columns) {
      const long lRow = bByColumns ? lInner : lOuter;
      const long lColumn = filling.order == Filling::kByRows ? lInner : lOuter;
      places.emplace_back(lRow, static_cast<std::uint32_t>(lColumn));
    }
  }
  return places;
}

// Every cell has its number, in the order of creation, for a type.
TEST(Rows, CostMemoryForCellsAndNotForGaps) {
  for (const Filling& filling : kFillings) {
    SCOPED_TRACE(filling.szName);
    const auto places = PlacesOf(filling);
    const std::size_t nBefore = CountedMemory::Live();
    Rows rows;
    int nCells = 0;
    for (const auto& [row, column] : places) {
      Cell& cell = rows.EnsureCell(row, column);
      ASSERT_FALSE(cell.Exists());
      cell = {"", 0, nCells++};
    }
    EXPECT_LE((CountedMemory::Live() - nBefore) / places.size(), filling.nBytesPerCell);
    nCells = 0;
    for (const auto& [row, column] : places) {
      const Cell* const pCell = rows.FindCell(row, column);
      ASSERT_TRUE(pCell != nullptr && pCell == &rows.EnsureCell(row, column));
      ASSERT_EQ(pCell->eType, nCells++);
    }
    EXPECT_EQ(rows.FindCell(17, 12345), nullptr);
    rows.Reset();
    EXPECT_TRUE(rows.FindRow(1) == nullptr && !rows.EnsureCell(LONG_MAX, 5).Exists());
  }
}

}  // namespace
