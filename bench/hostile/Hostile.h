// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Inputs made to be slow. Each comes in three sizes, 1x, 4x and 16x: the cost of one item must stay
// about the same.
//
//   equal-length-names   an object whose names differ in nothing but their digits; one is looked up
//   equal-names          an object with one name only; it is looked up
//   long-prefix-names    names that share their first 64 bytes; one is looked up
//   growing-object       each of so many members is added by an update and looked up at once
//   string-array         an array of texts, searched by text
//   open-brackets        nothing but opening brackets: refused
//   escaped-string       one string of nothing but escapes, parsed and written
//   long-number          one number of that many digits, read as int and double
//   wide-row             a record set of one row with that many columns, loaded and written
//   odd-rows             cells in rows all over the range of long, written and read
//   deep-cells           rows whose cell is an object nested to the bound, loaded and written

#ifndef QXRECORDSET_BENCH_HOSTILE_HOSTILE_H
#define QXRECORDSET_BENCH_HOSTILE_HOSTILE_H

#include "bench/common/Suite.h"

namespace bench::hostile {

void AddQx(Suite& suite);

}  // namespace bench::hostile

#endif  // QXRECORDSET_BENCH_HOSTILE_HOSTILE_H
