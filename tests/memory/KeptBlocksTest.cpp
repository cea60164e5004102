// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Which blocks are kept, how many, and when they go.

#include "memory/KeptBlocks.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "recordset/QXRecordSet.h"
#include "tests/support/CountedMemory.h"

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

// Under the address sanitizer nothing is kept, so that it sees what is used after its release.
#ifndef __SANITIZE_ADDRESS__

TEST(KeptBlocks, AreHandedOutAgainForTheirSizeUpToABound) {
  KeptBlocks::Release();
  for (std::size_t nBytes = kSmallest; nBytes <= kLargest; nBytes *= 2) {
    void* const pBlock = KeptBlocks::Take(nBytes);
    KeptBlocks::Give(pBlock, nBytes);
    const std::size_t nBefore = CountedMemory::Allocations();
    void* const pOther = KeptBlocks::Take(nBytes == kSmallest ? 2 * nBytes : nBytes / 2);
    EXPECT_EQ(CountedMemory::Allocations(), nBefore + 1) << "another size";
    EXPECT_EQ(KeptBlocks::Take(nBytes), pBlock);
    ::operator delete(pOther);
    ::operator delete(pBlock);
  }
  std::vector<void*> vBlocks(KeptBlocks::kMostBytes / kLargest + 2);
  const std::size_t nLive = CountedMemory::Live();
  for (void*& pBlock : vBlocks)
    pBlock = KeptBlocks::Take(kLargest);
  for (void* const pBlock : vBlocks)
    KeptBlocks::Give(pBlock, kLargest);
  const std::size_t nBefore = CountedMemory::Allocations();
  for (void*& pBlock : vBlocks)
    pBlock = KeptBlocks::Take(kLargest);
  EXPECT_EQ(CountedMemory::Allocations(), nBefore + 2) << "two were too many";
  for (void* const pBlock : vBlocks)
    KeptBlocks::Give(pBlock, kLargest);
  EXPECT_EQ(CountedMemory::Live(), nLive) << "Live() releases all that is kept";
}

TEST(KeptBlocks, GoWhenMemoryRunsOut) {
  KeptBlocks::Give(KeptBlocks::Take(kLargest), kLargest);
  CountedMemory::FailAfter(0);
  EXPECT_THROW(KeptBlocks::Take(kSmallest), std::bad_alloc);
  CountedMemory::StopFailing();
  const std::size_t nBefore = CountedMemory::Allocations();
  ::operator delete(KeptBlocks::Take(kLargest));
  EXPECT_EQ(CountedMemory::Allocations(), nBefore + 1) << "it was still there";
}

TEST(KeptBlocks, MakeTheNextObjectCheap) {
  std::string text = "{\"rows\":[{}";
  for (int i = 0; i < 20000; ++i)
    text += ",{\"a\":" + std::to_string(i) + ",\"b\":\"some text\"}";
  text += "]}";
  KeptBlocks::Release();
  std::size_t anAllocations[2] = {};
  for (std::size_t& nAllocations : anAllocations) {
    nAllocations = CountedMemory::Allocations();
    const CQXRecordSet set(text);
    nAllocations = CountedMemory::Allocations() - nAllocations;
  }
  EXPECT_LT(anAllocations[1] + 5, anAllocations[0]);
}

#endif

}  // namespace
