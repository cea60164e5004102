// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Exhausted memory on demand. FailingAllocation.cpp replaces operator new of the test program it is
// compiled into; it allocates as usual, until a test asks for a failure.

#ifndef QXRECORDSET_TESTS_SUPPORT_FAILINGALLOCATION_H
#define QXRECORDSET_TESTS_SUPPORT_FAILINGALLOCATION_H

#include <cstddef>

namespace Support {

// While it lives, one allocation throws std::bad_alloc: the one after nBefore others.
class FailingAllocation {
 public:
  explicit FailingAllocation(int nBefore);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();
};

// Number of allocations since the program began, and of those that were not released yet.
std::size_t CountAllocations();
std::size_t LiveAllocations();

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_FAILINGALLOCATION_H
