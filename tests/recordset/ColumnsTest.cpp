// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The columns of a table: indices, lookup with and without a right guess, many and hostile names,
// and the order by name.

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "recordset/Columns.h"
#include "recordset/NameHash.h"
#include "recordset/TextStore.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/Random.h"

namespace {

using recordset::Columns;
using recordset::NameHash;
using recordset::TextStore;

std::vector<std::string> NamesInOrder(Columns& columns) {
  std::vector<std::string> vNames;
  for (const std::uint32_t nColumn : columns.InNameOrder()) {
    vNames.emplace_back(columns.NameOf(nColumn));
  }
  return vNames;
}

// Names of every length around the word sizes, which differ in one byte only, found in any order.
TEST(Columns, AreFoundWhateverWasGuessed) {
  TextStore texts;
  Columns columns(texts);
  std::vector<std::string> vNames;
  for (std::size_t length = 1; length < 40; ++length) {
    for (std::size_t i = 0; i < length; ++i) {
      vNames.emplace_back(length, 'n');
      vNames.back()[i] = 'N';
      ASSERT_EQ(columns.FindOrAdd(vNames.back().data(), length), vNames.size());
    }
  }
  Support::Random random(1);
  std::size_t n = 0;
  for (int i = 0; i < 20000; ++i) {
    n = random.OneIn(3) ? random.Below(vNames.size()) : (n + 1) % vNames.size();
    ASSERT_EQ(columns.Find(vNames[n].c_str()), n + 1);
    ASSERT_EQ(columns.Find((vNames[n] + "x").c_str()), 0u);
    ASSERT_EQ(columns.FindOrAdd(vNames[n].data(), vNames[n].size()), n + 1);
  }
}

TEST(Columns, AreOrderedByUnsignedBytes) {
  const std::vector<std::string> vExpected = {"",   "\x01", "A",       "B",       "a",
                                              "aa", "ab",   "b\x7F_b", "b\x80_a", "\xFF"};
  Support::Random random(1);
  for (int i = 0; i < 50; ++i) {
    TextStore texts;
    Columns columns(texts);
    std::vector<std::string> vNames = vExpected;
    while (!vNames.empty()) {
      const auto it = vNames.begin() + static_cast<int>(random.Below(vNames.size()));
      columns.FindOrAdd(it->c_str());
      vNames.erase(it);
      // Ordering now and then makes tails of all lengths.
      if (random.OneIn(3)) {
        EXPECT_EQ(columns.InNameOrder().size(), columns.Count());
      }
    }
    EXPECT_EQ(NamesInOrder(columns), vExpected);
  }
}

TEST(Columns, StayQuickWithManyNamesAlike) {
  TextStore texts;
  Columns columns(texts);
  constexpr std::uint32_t kNames = 200000;
  const std::string strPrefix = "the same sixteen bytes and more ";
  for (std::uint32_t i = 0; i < kNames; ++i) {
    const std::string name = strPrefix + std::to_string(1000000 + i);
    ASSERT_EQ(columns.FindOrAdd(name.data(), name.size()), i + 1);
  }
  const std::vector<std::uint32_t>& vOrder = columns.InNameOrder();
  EXPECT_TRUE(std::is_sorted(vOrder.begin(), vOrder.end()));
}

// Every name takes an allocation of its own, so that each step of adding one fails in its turn.
TEST(Columns, AreAsBeforeWhenANameFindsNoMemory) {
  bool bRanOut = true;
  for (int nAllocations = 0; bRanOut; ++nAllocations) {
    TextStore texts;
    Columns columns(texts);
    std::vector<std::string> vNames;
    for (char c = 'A'; c < 'h'; ++c) {
      vNames.emplace_back(300, c);
    }
    CountedMemory::FailAfter(nAllocations);
    std::uint32_t nAdded = 0;
    try {
      for (const std::string& name : vNames) {
        columns.FindOrAdd(name.data(), name.size());
        ++nAdded;
      }
    } catch (const std::bad_alloc&) {
    }
    bRanOut = CountedMemory::StopFailing();
    ASSERT_EQ(columns.Count(), nAdded);
    for (std::uint32_t i = 0; i < vNames.size(); ++i) {
      ASSERT_EQ(columns.Find(vNames[i].c_str()), i < nAdded ? i + 1 : 0);
    }
    ASSERT_EQ(columns.FindOrAdd("one more"), nAdded + 1);
    ASSERT_EQ(columns.InNameOrder().size(), nAdded + 1);
  }
}

// Differences that a multiplication alone carries through, or that cancel each other, and words
// that would turn a product to 0 if a key were known.
TEST(NameHash, LeavesNoFamilyOfNamesColliding) {
  std::set<std::string> names;
  for (int i = 0; i < 64; ++i) {
    for (int j = 0; j < 64; ++j) {
      std::string name(24, '\0');
      name[static_cast<std::size_t>(i / 8)] = static_cast<char>(1 << i % 8);
      name[static_cast<std::size_t>(8 + j / 8)] = static_cast<char>(1 << j % 8);
      names.insert(name);
      names.insert(name.substr(0, 16));
      names.insert(name.substr(0, static_cast<std::size_t>(j % 16)));
    }
  }
  for (std::uint64_t nSeed = 1; nSeed < 10; ++nSeed) {
    const NameHash hash(nSeed);
    std::set<std::uint32_t> hashes;
    std::vector<int> vBuckets(1024);
    for (const std::string& name : names) {
      const std::uint32_t nHash = hash(name.data(), name.size());
      hashes.insert(nHash);
      ++vBuckets[nHash % vBuckets.size()];
    }
    EXPECT_GE(hashes.size() + 4, names.size());
    EXPECT_LT(*std::max_element(vBuckets.begin(), vBuckets.end()), 30) << "8 on average";
  }
  EXPECT_NE(NameHash(1)("abc", 3), NameHash(2)("abc", 3));
  EXPECT_NE(NameHash(1)("abc", 3), NameHash(1)("abc\0", 4));
}

}  // namespace
