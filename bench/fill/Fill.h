// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Filling from a host's own data.
//
//   fill     a table is filled cell by cell, then written as text: the record set by SetValue()
//   with
//            column name and row, the peers by building a document and writing it. Texts are copied
//            in by everybody, names only by those that always do; releasing is in the time.
//   stream   the same rows written straight to text with the streaming writers; nothing is kept.

#ifndef QXRECORDSET_BENCH_FILL_FILL_H
#define QXRECORDSET_BENCH_FILL_FILL_H

#include "bench/common/Suite.h"

namespace bench::fill {

void AddQx(Suite& suite, const Input& input);
void AddRapidJson(Suite& suite, const Input& input);
void AddNlohmann(Suite& suite, const Input& input);

}  // namespace bench::fill

#endif  // QXRECORDSET_BENCH_FILL_FILL_H
