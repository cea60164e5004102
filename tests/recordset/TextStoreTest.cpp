// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Stored texts: a piece that was released is the next text's of its size. That none moves is the
// business of tests/lives.

#include "recordset/TextStore.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "tests/support/CountedMemory.h"

namespace {

using recordset::TextStore;

std::string Text(std::size_t nLength, char c) { return std::string(nLength, c); }

TEST(TextStore, ReleasesLargeTextsAtOnceWhenItIsReset) {
  const std::size_t nLive = CountedMemory::Live();
  {
    TextStore store;
    store.Store(Text(300, 'a').data(), 300);
    const std::size_t nSmall = CountedMemory::Live();
    store.Allocate(100000);
    store.Reset();
    EXPECT_LE(CountedMemory::Live(), nSmall);
    EXPECT_STREQ(store.Store("again", 5), "again");
  }
  EXPECT_EQ(CountedMemory::Live(), nLive);
}

TEST(TextStore, UsesReleasedPiecesForTextsOfTheirSize) {
  TextStore store;
  const auto stored = [&](std::size_t nLength) {
    return store.Store(Text(nLength, 'a').data(), nLength);
  };
  for (const std::size_t nLength : {2U, 30U, 255U}) {
    SCOPED_TRACE(nLength);
    const char* const pFirst = stored(nLength);
    const char* const pSecond = stored(nLength);
    store.Release(pFirst, nLength);
    EXPECT_NE(stored(nLength + 20), pFirst);
    EXPECT_EQ(stored(nLength), pFirst);
    EXPECT_EQ(store.Replace(pSecond, nLength, Text(nLength, 'e').data(), nLength), pSecond);
    for (const std::size_t nOther : {nLength + 6, nLength + 70}) {
      const char* const pOther = stored(nLength);
      EXPECT_NE(store.Replace(pOther, nLength, Text(nOther, 'g').data(), nOther), pOther) << nOther;
    }
  }
  for (const std::string strConstant : {"", "0", "1"})
    EXPECT_EQ(store.Store(strConstant.data(), strConstant.size()),
              TextStore().Store(strConstant.data(), strConstant.size()));
  EXPECT_THROW(store.Allocate(TextStore::kLongest + 1), std::bad_alloc) << "more than 32 bits";
}

}  // namespace
