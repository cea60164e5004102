// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What is kept, how much of it, and when it goes.

#include "memory/KeptBlocks.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <functional>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "memory/Checkers.h"
#include "memory/HugePages.h"
#include "recordset/QXRecordSet.h"
#include "tests/support/CountedMemory.h"
#include "text/TextRoom.h"

namespace {

using memory::KeptBlocks;

constexpr std::size_t kSmallest = KeptBlocks::kSmallest;
constexpr std::size_t kLargest = KeptBlocks::kLargest;

TEST(KeptBlocks, HaveStandardSizes) {
  const struct {
    std::size_t nBytes, nFor, nWithin;
  } sizes[] = {{1, 1, 1},
               {kSmallest / 2, kSmallest / 2, kSmallest / 2},
               {kSmallest / 2 + 1, kSmallest, kSmallest / 2 + 1},
               {kSmallest, kSmallest, kSmallest},
               {kSmallest + 1, 2 * kSmallest, kSmallest},
               {2 * kSmallest - 1, 2 * kSmallest, kSmallest},
               {kLargest, kLargest, kLargest},
               {kLargest + 1, kLargest + 1, kLargest + 1},
               {SIZE_MAX, SIZE_MAX, SIZE_MAX}};
  for (const auto& size : sizes) {
    EXPECT_EQ(KeptBlocks::SizeFor(size.nBytes), size.nFor) << size.nBytes;
    EXPECT_EQ(KeptBlocks::SizeWithin(size.nBytes), size.nWithin) << size.nBytes;
  }
}

class Kept : public testing::Test {
  void SetUp() override {
    if (memory::kSanitized || memory::UnderMemcheck()) GTEST_SKIP() << "nothing is kept";
    KeptBlocks::Release();
  }
};

// What the allocations of `use` are.
template <typename Use>
std::size_t CountIn(Use use) {
  const std::size_t nBefore = CountedMemory::Allocations();
  use();
  return CountedMemory::Allocations() - nBefore;
}

TEST_F(Kept, BlocksAreHandedOutAgainForTheirSizeUpToABound) {
  for (std::size_t nBytes = kSmallest; nBytes <= kLargest; nBytes *= 2) {
    void* const pBlock = KeptBlocks::Take(nBytes);
    KeptBlocks::Give(pBlock, nBytes);
    const std::size_t nOther = nBytes == kSmallest ? 2 * nBytes : nBytes / 2;
    EXPECT_EQ(CountIn([&] { ::operator delete(KeptBlocks::Take(nOther)); }), 1u) << "another size";
    EXPECT_EQ(KeptBlocks::Take(nBytes), pBlock);
    ::operator delete(pBlock);
  }
  std::vector<void*> vBlocks(KeptBlocks::kMostBytes / kLargest + 2);
  const auto take = [&] {
    for (void*& pBlock : vBlocks)
      pBlock = KeptBlocks::Take(kLargest);
  };
  const auto give = [&] {
    for (void* const pBlock : vBlocks)
      KeptBlocks::Give(pBlock, kLargest);
  };
  const std::size_t nLive = CountedMemory::Live();
  take();
  give();
  EXPECT_EQ(CountIn(take), 2u) << "two were too many";
  give();
  EXPECT_EQ(CountedMemory::Live(), nLive) << "Live() releases all that is kept";
}

TEST_F(Kept, BlocksGoWhenMemoryRunsOut) {
  KeptBlocks::Give(KeptBlocks::Take(kLargest), kLargest);
  CountedMemory::FailAfter(0);
  EXPECT_THROW(KeptBlocks::Take(kSmallest), std::bad_alloc);
  CountedMemory::StopFailing();
  EXPECT_EQ(CountIn([] { ::operator delete(KeptBlocks::Take(kLargest)); }), 1u);
}

TEST_F(Kept, TextIsGivenOnToOneThatIsNotMuchShorter) {
  const struct {
    std::size_t nRoom, nAsked;
    bool bUsed;
  } cases[] = {{kSmallest - 1, kSmallest - 1, false},
               {kSmallest, kSmallest, true},
               {5 * kSmallest, kSmallest, false},
               {kSmallest, kSmallest + 16, false},  // libc++ rounds up
               {KeptBlocks::kMostBytes + 1, KeptBlocks::kMostBytes, false}};
  const std::size_t nLive = CountedMemory::Live();
  for (const auto& test : cases) {
    std::string given, taken;
    given.reserve(test.nRoom);
    const char* const pBuffer = given.data();
    KeptBlocks::GiveText(given);
    KeptBlocks::TakeText(taken, test.nAsked);
    EXPECT_EQ(taken.data() == pBuffer, test.bUsed) << test.nRoom << ' ' << test.nAsked;
  }
  std::string first(kSmallest, 'x'), second(2 * kSmallest, 'x');
  KeptBlocks::GiveText(first);
  KeptBlocks::GiveText(second);
  EXPECT_EQ(CountedMemory::Live(), nLive) << "Live() releases all that is kept";
}

// Whether the memory map says "hg", of the piece of memory that holds p.
bool AsksForHugePages(const void* p) {
  std::ifstream map("/proc/self/smaps");
  const auto nAddress = reinterpret_cast<std::uintptr_t>(p);
  bool bInside = false;
  for (std::string line; std::getline(map, line);) {
    std::uintptr_t nFirst = 0, nEnd = 0;
    char cDash = 0;
    std::istringstream numbers(line);
    if (numbers >> std::hex >> nFirst >> cDash >> nEnd && cDash == '-') {
      bInside = nAddress >= nFirst && nAddress < nEnd;
    }
    if (bInside && line.rfind("VmFlags:", 0) == 0) return line.find(" hg") != std::string::npos;
  }
  return false;
}

TEST(HugePages, AreAskedForByLargeTexts) {
  constexpr std::size_t kHuge = memory::kFewestHugeBytes;
  void* const pOwn =
      mmap(nullptr, kHuge, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  madvise(pOwn, kHuge, MADV_HUGEPAGE);
  const bool bSeen = AsksForHugePages(pOwn);
  munmap(pOwn, kHuge);
  if (!bSeen) GTEST_SKIP() << "no huge pages, or an emulator between the system and the test";
  std::string taken, grown, small(kHuge / 2, 'x');
  KeptBlocks::Release();
  errno = EDOM;
  KeptBlocks::TakeText(taken, kHuge);
  JSON::MakeCapacity(grown, 0, kHuge);
  memory::PreferHugePages(small);
  EXPECT_EQ(errno, EDOM);
  for (const std::string& text : {std::cref(taken), std::cref(grown)}) {
    ASSERT_GE(text.capacity(), kHuge);
    EXPECT_TRUE(AsksForHugePages(text.data() + kHuge / 2));
  }
  EXPECT_FALSE(AsksForHugePages(small.data() + kHuge / 4));
}

TEST_F(Kept, TablesMakeSmallRecordSetsWithoutAnAllocation) {
  const std::string text = "{\"id\":1,\"name\":\"Ada\",\"note\":null}";
  const auto use = [&text] {
    CQXRecordSet set(text);
    EXPECT_STREQ(set.GetValueAsString("name"), "Ada");
    EXPECT_EQ(set.GetString(), text);
    const CQXRecordSet other;
    EXPECT_EQ(other.GetStringRef(), "");
  };
  const std::size_t nLive = CountedMemory::Live();
  use();
  use();
  EXPECT_EQ(CountIn(use), 0u);
  { const CQXRecordSet large("{\"a\":\"" + std::string(100000, 'x') + "\"}"); }
  EXPECT_EQ(CountedMemory::Live(), nLive);
}

TEST_F(Kept, BlocksMakeTheNextObjectCheap) {
  std::string text = "{\"rows\":[{}";
  for (int i = 0; i < 20000; ++i)
    text += ",{\"a\":" + std::to_string(i) + ",\"b\":\"some text\"}";
  const auto use = [strText = text + "]}"] { const CQXRecordSet set(strText); };
  const std::size_t nFirst = CountIn(use);
  EXPECT_LT(CountIn(use) + 5, nFirst);
}

}  // namespace
