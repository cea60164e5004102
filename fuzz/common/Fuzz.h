// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a fuzz target is made of. A target is one file that defines Fuzz::Run: it gives the input to
// the library and holds what comes out against an oracle. Main.cpp hands it the inputs.

#ifndef QXRECORDSET_FUZZ_COMMON_FUZZ_H
#define QXRECORDSET_FUZZ_COMMON_FUZZ_H

#include <string>
#include <string_view>

namespace Fuzz {

// The target. `input` may be empty; it lies in memory of exactly its size, without a NUL behind it.
void Run(std::string_view input);

// Ends the program, with a line that says what is wrong, unless `bHolds`.
void Expect(bool bHolds, const char* what);

// The same for a difference; "" means none.
void ExpectNone(const std::string& difference);

// The same for two texts that have to be equal.
void ExpectEqual(std::string_view got, std::string_view wanted, const char* what);

}  // namespace Fuzz

#endif  // QXRECORDSET_FUZZ_COMMON_FUZZ_H
