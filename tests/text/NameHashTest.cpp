// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The hash of names: no family of names may collide, and no two objects hash alike.

#include "text/NameHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

using JSON::NameHash;

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
  EXPECT_NE(NameHash(1)("abc", 3), NameHash(1)("abc", 3, 4));
}

}  // namespace
