// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings; there is nothing to compare them with.
//
//   params-build   header, result code and parameters (texts and integers in turn) to text
//   params-read    text to an indexed object, then every parameter as a text or an integer

#ifndef QXRECORDSET_BENCH_PARAMS_PARAMS_H
#define QXRECORDSET_BENCH_PARAMS_PARAMS_H

#include "bench/common/Suite.h"

namespace bench::params {

void AddQx(Suite& suite);

}  // namespace bench::params

#endif  // QXRECORDSET_BENCH_PARAMS_PARAMS_H
