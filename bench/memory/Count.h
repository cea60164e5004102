// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Counts what the program allocates. bench_memory replaces the C library's allocation functions by
// ones that count and pass on; operator new and the shared libraries end there too.

#ifndef QXRECORDSET_BENCH_MEMORY_COUNT_H
#define QXRECORDSET_BENCH_MEMORY_COUNT_H

#include <cstddef>

namespace bench::memory {

struct Count {
  std::size_t nHeld = 0;   // bytes of all live blocks, with what the allocator adds to each
  std::size_t nPeak = 0;   // the largest nHeld since the last ResetPeak()
  std::size_t nCalls = 0;  // allocations so far
};

const Count& Current();

// Starts a new peak at what is held now.
void ResetPeak();

}  // namespace bench::memory

#endif  // QXRECORDSET_BENCH_MEMORY_COUNT_H
