// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The record set's own job, and what general JSON libraries do for the same end.
//
//   load        text to record set; the peers parse to a tree
//   load-read   the same, then read every cell
//   load-walk
//   read        read every cell of what is loaded
//   walk
//   write       write what is loaded as text
//   cycle       load, read every cell, write
//   cycle-walk
//   small       the cycle on tables of a few rows
//   small-walk
//   growth      the cycle on tables of growing size
//
// To read is the same for all: row after row, every cell by its column's name, as text. The peers
// look for the member of that name in the row's object and format integers (std::to_chars). To walk
// is the shortest way through a tree, for a host that takes members as they come: the peers go from
// member to member without looking for names and read integers as 64-bit numbers; the record set
// has no such way and reads as before.
//
// Releasing what was made is in the time of every work but "read", "walk" and "write", which find a
// loaded table. Nobody's input is spared: RapidJSON parses in situ, so its time includes a copy of
// the text; the record set takes its own copy.

#ifndef QXRECORDSET_BENCH_RECORDSET_RECORDSET_H
#define QXRECORDSET_BENCH_RECORDSET_RECORDSET_H

#include <charconv>
#include <cstdint>

#include "bench/common/Suite.h"

namespace bench::recordset {

// What a job does, as a sum of these.
enum Step : unsigned { kLoad = 1, kRead = 2, kWrite = 4, kWalk = 8 };

// The text of an integer, until the next one.
class IntegerText {
 public:
  const char* operator()(std::int64_t nValue) {
    *std::to_chars(szDigits, szDigits + sizeof szDigits - 1, nValue).ptr = '\0';
    return szDigits;
  }

 private:
  char szDigits[24];
};

// Adds every work from "load" to "cycle".
void AddQx(Suite& suite, const Input& input);
void AddSimdjson(Suite& suite, const Input& input);
void AddRapidJson(Suite& suite, const Input& input);
void AddNlohmann(Suite& suite, const Input& input);

// Adds the cycle alone, under the name `strWork`, and with the peers walking, under that name and
// "-walk".
void AddQxCycle(Suite& suite, const std::string& strWork, const Input& input);
void AddSimdjsonCycle(Suite& suite, const std::string& strWork, const Input& input);
void AddRapidJsonCycle(Suite& suite, const std::string& strWork, const Input& input);
void AddNlohmannCycle(Suite& suite, const std::string& strWork, const Input& input);

}  // namespace bench::recordset

#endif  // QXRECORDSET_BENCH_RECORDSET_RECORDSET_H
