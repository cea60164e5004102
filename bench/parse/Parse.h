// Part of libQXRecordSet. MIT licence, see LICENSE.
//
//   parse  text to document tree, releasing the tree included
//   sum    the same, and the sum of all numbers in the tree
//
// In place: the input must survive, so the time includes copying it. Copying: the library copies
// it. simdjson's parser never rewrites its input but wants padding behind it, so it has one variant
// more: "padded-reused" gets a padded input for nothing, which is its best case.

#ifndef QXRECORDSET_BENCH_PARSE_PARSE_H
#define QXRECORDSET_BENCH_PARSE_PARSE_H

#include "bench/common/Suite.h"

namespace bench::parse {

constexpr const char* kWork = "parse";
constexpr const char* kSum = "sum";

void AddQx(Suite& suite, const Input& input);
void AddSimdjson(Suite& suite, const Input& input);
void AddRapidJson(Suite& suite, const Input& input);
void AddNlohmann(Suite& suite, const Input& input);

void AddQxSum(Suite& suite, const Input& input);
void AddSimdjsonSum(Suite& suite, const Input& input);
void AddRapidJsonSum(Suite& suite, const Input& input);
void AddNlohmannSum(Suite& suite, const Input& input);

}  // namespace bench::parse

#endif  // QXRECORDSET_BENCH_PARSE_PARSE_H
