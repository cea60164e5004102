// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows and cells: whatever the order of writing, the memory follows the cells that exist and not
// the gaps between them, and every row and cell is found again. What the cells hold is the business
// of ModelTest.cpp.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "recordset/Rows.h"
#include "tests/support/CountedMemory.h"

namespace {

using recordset::Cell;
using recordset::Row;
using recordset::Rows;

using CountedMemory::Live;

using Place = std::pair<long, std::uint32_t>;
using Put = std::function<void(long, std::uint32_t)>;

// Ways of filling a table, and the most bytes a cell may cost there, whatever holds it. A cell has
// 16 bytes (12 on 32 bits), and a row's entry as many again (8).
struct Filling {
  const char* szName;
  std::size_t nBytesPerCell;
  void (*fill)(const Put&);
};

const Filling kFillings[] = {
    {"row by row", 20,
     [](const Put& put) {
       for (long i = 1; i <= 3000; ++i) {
         for (std::uint32_t c = 1; c <= 10; ++c)
           put(i, c);
       }
     }},
    {"column by column", 44,
     [](const Put& put) {
       for (std::uint32_t c = 1; c <= 30; ++c) {
         for (long i = 1; i <= 1000; ++i)
           put(i, c);
       }
     }},
    {"backwards", 24,
     [](const Put& put) {
       for (long i = 3000; i >= 1; --i) {
         for (std::uint32_t c = 10; c >= 1; --c)
           put(i, c);
       }
     }},
    {"one cell at the end after a full row", 96,
     [](const Put& put) {
       for (std::uint32_t c = 1; c <= 10000; ++c)
         put(1, c);
       for (long i = 2; i <= 10000; ++i)
         put(i, 10000);
     }},
    {"a new column in every row", 104,
     [](const Put& put) {
       for (long i = 1; i <= 10000; ++i)
         put(i, static_cast<std::uint32_t>(i));
     }},
    {"every hundredth column", 88,
     [](const Put& put) {
       for (long i = 1; i <= 5; ++i) {
         for (std::uint32_t c = 100; c <= 200000; c += 100)
           put(i, c);
       }
     }},
    {"every eighth column in two rows by turns", 128,
     [](const Put& put) {
       for (std::uint32_t c = 8; c <= 40000; c += 8) {
         for (long i = 1; i <= 2; ++i)
           put(i, c);
       }
     }},
    {"columns that double", 400,
     [](const Put& put) {
       for (long i = 1; i <= 300; ++i) {
         for (std::uint32_t c = 1; c < (1U << 30); c *= 2)
           put(i, c);
       }
     }},
    {"rows far apart", 64,
     [](const Put& put) {
       for (long i = -200; i <= 200; ++i) {
         for (std::uint32_t c = 1; c <= 10; ++c)
           put(i * 1000003, c);
       }
     }},
    {"the ends of the ranges", 10000,
     [](const Put& put) {
       for (const long i :
            {LONG_MIN, LONG_MIN + 1, -1L, 0L, 1L, 64L, 65L, LONG_MAX - 1, LONG_MAX}) {
         for (const std::uint32_t c : {1U, 8U, 9U, 17U, Rows::kLastColumn - 1, Rows::kLastColumn}) {
           put(i, c);
         }
       }
     }},
};

// Every cell has its number, in the order of creation, for a type.
TEST(Rows, CostMemoryForCellsAndNotForGaps) {
  for (const Filling& filling : kFillings) {
    SCOPED_TRACE(filling.szName);
    const std::size_t nBefore = Live();
    Rows rows;
    std::map<Place, int> mapExpected;
    std::size_t nForModel = 0;
    filling.fill([&](long lRow, std::uint32_t nColumn) {
      Cell& cell = rows.EnsureCell(lRow, nColumn);
      const std::size_t nLive = Live();
      const auto [it, bNew] =
          mapExpected.try_emplace({lRow, nColumn}, static_cast<int>(mapExpected.size()));
      nForModel += Live() - nLive;
      ASSERT_EQ(cell.Exists(), !bNew);
      ASSERT_EQ(cell.eType, bNew ? 0 : it->second);
      cell.pText = "";
      cell.eType = it->second;
    });
    EXPECT_LE((Live() - nBefore - nForModel) / mapExpected.size(), filling.nBytesPerCell);

    std::map<Place, int> mapFound;
    long lPrevious = LONG_MIN;
    rows.ForEachRow([&](long lRow, const Row& row) {
      EXPECT_TRUE(lRow > lPrevious || lRow == LONG_MIN);
      lPrevious = lRow;
      EXPECT_EQ(rows.FindRow(lRow), &row);
      std::uint32_t nPrevious = 0;
      rows.ForEachCell(lRow, row, [&](std::uint32_t nColumn, const Cell& cell) {
        EXPECT_GT(nColumn, nPrevious);
        nPrevious = nColumn;
        mapFound[{lRow, nColumn}] = cell.eType;
        EXPECT_EQ(rows.FindCell(lRow, nColumn), &cell);
        EXPECT_EQ(&rows.EnsureCell(lRow, nColumn), &cell);
      });
      EXPECT_EQ(rows.HasCells(lRow, row), nPrevious != 0);
    });
    EXPECT_EQ(mapFound, mapExpected);
    EXPECT_EQ(rows.FindCell(17, 12345), nullptr);

    rows.Reset();
    EXPECT_EQ(rows.FindRow(1), nullptr);
    EXPECT_FALSE(rows.EnsureCell(1, 1).Exists());
    EXPECT_FALSE(rows.EnsureCell(LONG_MAX, 5).Exists());
  }
}

}  // namespace
