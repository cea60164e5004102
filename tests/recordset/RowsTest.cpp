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
using Places = std::vector<std::pair<long, std::uint32_t>>;

Numbers Range(long lFirst, long lLast, long lStep = 1) {
  Numbers numbers;
  for (long l = lFirst; l != lLast + lStep; l += lStep)
    numbers.push_back(l);
  return numbers;
}

Places ByRows(const Numbers& rows, const Numbers& columns) {
  Places places;
  for (const long lRow : rows) {
    for (const long lColumn : columns)
      places.emplace_back(lRow, static_cast<std::uint32_t>(lColumn));
  }
  return places;
}

// Column by column: the rows by turns.
Places ByColumns(const Numbers& rows, const Numbers& columns) {
  Places places;
  for (const auto& [column, row] : ByRows(columns, rows))
    places.emplace_back(static_cast<long>(row), static_cast<std::uint32_t>(column));
  return places;
}

Places Diagonal(const Numbers& numbers) {
  Places places;
  for (const long l : numbers)
    places.emplace_back(l, static_cast<std::uint32_t>(l));
  return places;
}

Places operator+(Places a, const Places& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

constexpr long kLastColumn = Rows::kLastColumn;

// Ways of filling a table, and the most bytes a cell may cost there, whatever holds it. A cell has
// 16 bytes (12 on 32 bits), and a row's entry as many again (8).
const struct Filling {
  const char* szName;
  std::size_t nBytesPerCell;
  Places places;
} kFillings[] = {
    {"row by row", 20, ByRows(Range(1, 3000), Range(1, 10))},
    {"column by column", 40, ByColumns(Range(1, 1000), Range(1, 30))},
    {"backwards", 20, ByRows(Range(3000, 1, -1), Range(10, 1, -1))},
    {"one cell at the end after a full row", 96,
     ByRows({1}, Range(1, 10000)) + ByRows(Range(2, 10000), {10000})},
    {"a new column in every row", 104, Diagonal(Range(1, 10000))},
    {"every hundredth column", 88, ByRows(Range(1, 5), Range(100, 200000, 100))},
    {"every eighth column in two rows by turns", 96, ByColumns({1, 2}, Range(8, 40000, 8))},
    {"columns that double", 100, ByRows(Range(1, 300), {1, 2, 4, 8, 16, 32, 64, 128, 1 << 29})},
    {"rows far apart", 32, ByRows(Range(-200 * 1000003, 200 * 1000003, 1000003), Range(1, 10))},
    {"rows at some distance", 32, ByRows(Range(1, 100001, 500), Range(1, 10))},
    {"the ends of the ranges", 250,
     ByRows({LONG_MIN, LONG_MIN + 1, -1, 0, 1, 64, 65, LONG_MAX - 1, LONG_MAX},
            {1, 8, 9, 17, kLastColumn - 1, kLastColumn})},
};

// Every cell has its number, in the order of creation, for a type.
TEST(Rows, CostMemoryForCellsAndNotForGaps) {
  for (const Filling& filling : kFillings) {
    SCOPED_TRACE(filling.szName);
    const std::size_t nBefore = CountedMemory::Live();
    Rows rows;
    int nCells = 0;
    for (const auto& [row, column] : filling.places) {
      Cell& cell = rows.EnsureCell(row, column);
      ASSERT_FALSE(cell.Exists());
      cell = {"", 0, nCells++};
    }
    EXPECT_LE((CountedMemory::Live() - nBefore) / filling.places.size(), filling.nBytesPerCell);
    nCells = 0;
    for (const auto& [row, column] : filling.places) {
      const Cell* const pCell = rows.FindCell(row, column);
      ASSERT_TRUE(pCell != nullptr && pCell == &rows.EnsureCell(row, column));
      ASSERT_EQ(pCell->eType, nCells++);
    }
    EXPECT_EQ(rows.FindCell(17, 12345), nullptr);
    rows.Reset();
    EXPECT_EQ(rows.FindRow(1), nullptr);
    EXPECT_FALSE(rows.EnsureCell(LONG_MAX, 5).Exists());
  }
}

}  // namespace
