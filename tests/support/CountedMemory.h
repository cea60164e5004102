// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The heap of a test program, counted: how much is in use, and allocations that fail on request.
// CountedMemory.cpp replaces operator new of the program that it is compiled into. For one thread.
// A block that is released twice, or by the wrong form of delete, ends the program.

#ifndef QXRECORDSET_TESTS_SUPPORT_COUNTEDMEMORY_H
#define QXRECORDSET_TESTS_SUPPORT_COUNTEDMEMORY_H

#include <cstddef>

namespace CountedMemory {

// Bytes that were allocated with new and not released yet, as the allocator rounded them, without
// what was set aside. What the library keeps for later is released first.
std::size_t Live();

// What is allocated while one of these lives is set aside: the models of a test, for example.
class Aside {
 public:
  Aside();
  ~Aside();
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
};

// From now on new memory and released memory are filled with patterns, so that reads of either show
// without a sanitizer.
void FillWithPatterns();

// Number of successful allocations with new since the program began.
std::size_t Allocations();

// Lets `nMore` allocations with new succeed and every one after that fail.
void FailAfter(long nMore);

// Lets every allocation with new of more than nBytes fail.
void FailAbove(std::size_t nBytes);

// Ends both, and tells whether an allocation failed.
bool StopFailing();

}  // namespace CountedMemory

#endif  // QXRECORDSET_TESTS_SUPPORT_COUNTEDMEMORY_H
