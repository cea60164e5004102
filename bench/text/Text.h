// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Pieces of text.
//
//   escape    a text as a JSON string with its quotes; the output buffer is reused
//   integers  1,000 integers of all lengths as decimal text
//   reals     1,000 reals as "%g" text

#ifndef QXRECORDSET_BENCH_TEXT_TEXT_H
#define QXRECORDSET_BENCH_TEXT_TEXT_H

#include "bench/common/Suite.h"

namespace bench::text {

void AddEscape(Suite& suite);
void AddNumbers(Suite& suite);

}  // namespace bench::text

#endif  // QXRECORDSET_BENCH_TEXT_TEXT_H
