// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a record set costs in memory. That it costs no more after long use is the business of
// tests/lives.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "recordset/QXRecordSet.h"
#include "tests/support/CountedMemory.h"

namespace {

using CountedMemory::Live;

// Nine texts of 7 bytes and an integer of 6 in each row.
std::string RowsText(int nRows) {
  CQXRecordSet set;
  for (long i = 1; i <= nRows; ++i) {
    const std::string n = std::to_string(100000 + i);
    for (const char c : std::string("abcdefghi"))
      set.SetValue(std::string(1, c).c_str(), n + c, i);
    set.SetValue("j", 100000 + i, i);
  }
  return set.GetString();
}

// A cell and its share of the row, the NUL behind a text, and little that lies unused.
TEST(RecordSetMemory, IsSmallBesideTheTexts) {
  constexpr double kBytesPerCell = sizeof(void*) == 8 ? 21.5 : 16;
  for (const int nRows : {1000, 3000, 20000}) {
    SCOPED_TRACE(std::to_string(nRows) + " rows");
    const int nTextBytes = nRows * (9 * 7 + 6);
    const std::string text = RowsText(nRows);
    const std::size_t nBefore = Live();
    auto pSet = std::make_unique<CQXRecordSet>(text);
    const auto nUsed = static_cast<int>(Live() - nBefore);
    EXPECT_LE((nUsed - nTextBytes) / (10.0 * nRows), kBytesPerCell);
    pSet.reset();
    EXPECT_EQ(Live(), nBefore);
  }
}

}  // namespace
