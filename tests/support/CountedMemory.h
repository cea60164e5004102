// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The heap of a test program, counted: how much is in use, and allocations that fail on request.
// CountedMemory.cpp replaces operator new of the program that it is compiled into. For one thread.

#ifndef QXRECORDSET_TESTS_SUPPORT_COUNTEDMEMORY_H
#define QXRECORDSET_TESTS_SUPPORT_COUNTEDMEMORY_H

#include <cstddef>

namespace CountedMemory {

// Bytes that were allocated with new and not released yet, as the allocator rounded them. What the
// library keeps for later is released first.
std::size_t Live();

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
