// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The record set's own job, and what general JSON libraries do for the same end.
//
//   load        text to record set; the peers parse to a tree
//   load-read   the same, then read every cell
//   read        read every cell of what is loaded
//   write       write what is loaded as text
//   cycle       load, read every cell, write
//   small       the cycle on tables of a few rows
//   growth      the cycle on tables of growing size
//
// The record set reads every cell as text, by column name and row. The peers walk rows and members
// in document order, without looking for names, and read integers as 64-bit numbers, strings as
// pointers, and booleans: the cheapest way they have. Releasing what was made is in the time of
// every work but "read" and "write", which find a loaded table. Nobody's input is spared: RapidJSON
// parses in situ, so its time includes a copy of the text; the record set takes its own copy.

#ifndef QXRECORDSET_BENCH_RECORDSET_RECORDSET_H
#define QXRECORDSET_BENCH_RECORDSET_RECORDSET_H

#include "bench/common/Suite.h"

namespace bench::recordset {

// What a job does, as a sum of these.
enum Step : unsigned { kLoad = 1, kRead = 2, kWrite = 4 };

// Adds every work from "load" to "cycle".
void AddQx(Suite& suite, const Input& input);
void AddSimdjson(Suite& suite, const Input& input);
void AddRapidJson(Suite& suite, const Input& input);
void AddNlohmann(Suite& suite, const Input& input);

// Adds the cycle alone, under the name `szWork`.
void AddQxCycle(Suite& suite, const char* szWork, const Input& input);
void AddSimdjsonCycle(Suite& suite, const char* szWork, const Input& input);
void AddRapidJsonCycle(Suite& suite, const char* szWork, const Input& input);
void AddNlohmannCycle(Suite& suite, const char* szWork, const Input& input);

}  // namespace bench::recordset

#endif  // QXRECORDSET_BENCH_RECORDSET_RECORDSET_H
