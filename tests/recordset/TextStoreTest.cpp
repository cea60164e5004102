// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Stored texts: none moves, and a piece that was released is the next text's of its size.

#include "recordset/TextStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <new>
#include <string>
#include <string_view>

#include "tests/support/CountedMemory.h"
#include "tests/support/Random.h"

namespace {

using recordset::TextStore;

std::string Text(std::size_t nLength, char c) { return std::string(nLength, c); }

// Random texts come and go; each stays where it is, with its NUL, until it is replaced or released.
// The lengths are those around which a text is kept in another way.
TEST(TextStore, KeepsEveryTextWhereItIs) {
  constexpr std::size_t kLengths[] = {0, 1, 2, 3, 4, 7, 8, 15, 16, 17, 254, 255, 256, 300, 5000};
  const std::size_t nLive = CountedMemory::Live();
  {
    TextStore store;
    std::map<const char*, std::string> mapTexts;  // "", "0" and "1" are shared
    const auto isStored = [](const auto& text) {
      return std::string_view(text.first, text.second.size() + 1) == text.second + '\0';
    };
    Support::Random random(1);
    for (int i = 0; i < 20000; i += Support::kStride) {
      ASSERT_TRUE(i % 50 != 0 || std::all_of(mapTexts.begin(), mapTexts.end(), isStored)) << i;
      const std::string strText =
          Text(random.Of(kLengths), static_cast<char>('0' + random.Below(70)));
      const char* pText = nullptr;
      const auto it = mapTexts.empty() ? mapTexts.end()
                                       : std::next(mapTexts.begin(), random.Below(mapTexts.size()));
      if (it == mapTexts.end() || random.OneIn(3)) {
        pText = store.Store(strText.data(), strText.size());
      } else if (random.OneIn(2)) {
        pText = store.Replace(it->first, it->second.size(), strText.data(), strText.size());
        mapTexts.erase(it);
      } else {
        store.Release(it->first, it->second.size());
        mapTexts.erase(it);
        continue;
      }
      const bool bConstant = strText.empty() || strText == "0" || strText == "1";
      ASSERT_TRUE(bConstant || mapTexts.count(pText) == 0) << "two texts in one place";
      if (!bConstant) mapTexts[pText] = strText;
      ASSERT_EQ(std::string_view(pText, strText.size() + 1), strText + '\0');
    }
    EXPECT_TRUE(std::all_of(mapTexts.begin(), mapTexts.end(), isStored));
    const std::size_t nFull = CountedMemory::Live();
    store.Allocate(100000);
    store.Reset();
    EXPECT_LE(CountedMemory::Live(), nFull) << "large texts are released at once";
    EXPECT_STREQ(store.Store("again", 5), "again");
  }
  EXPECT_EQ(CountedMemory::Live(), nLive);
}

TEST(TextStore, UsesReleasedPiecesForTextsOfTheirSize) {
  TextStore store;
  const auto stored = [&](std::size_t nLength) {
    return store.Store(Text(nLength, 'a').data(), nLength);
  };
  for (const std::size_t nLength : {2, 30, 255}) {
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
