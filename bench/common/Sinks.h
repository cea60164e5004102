// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Where a job puts what it reads and writes. The same job runs with a TimingSink, which does the
// least that keeps the compiler from dropping the work, and before that, once, with a CheckSink,
// which folds everything into an Outcome to be compared between libraries.

#ifndef QXRECORDSET_BENCH_COMMON_SINKS_H
#define QXRECORDSET_BENCH_COMMON_SINKS_H

#include <benchmark/benchmark.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/common/Outcome.h"

namespace bench {

class CheckSink;

// Takes one byte of every text and the value of every number.
class TimingSink {
 public:
  template <typename Name>
  void Text(long /*lRow*/, const Name& /*name*/, const char* szText) {
    nSum += static_cast<unsigned char>(*szText);
  }
  template <typename Name>
  void Integer(long /*lRow*/, const Name& /*name*/, std::int64_t nValue) {
    nSum += static_cast<std::uint64_t>(nValue);
  }
  template <typename Name>
  void Boolean(long /*lRow*/, const Name& /*name*/, bool bValue) {
    nSum += bValue ? 1 : 0;
  }
  template <typename Name>
  void Null(long /*lRow*/, const Name& /*name*/) {}
  void Real(double fValue) { benchmark::DoNotOptimize(fValue); }

  void Output(std::string_view text) {
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
    nSum += text.size();
  }

  // A look at what was built is not part of the work.
  template <typename Look>
  void Inspect(Look&& /*look*/) {
    benchmark::ClobberMemory();
  }

  void Require(bool bHolds, const char* /*szWhat*/) { nSum += bHolds ? 1 : 0; }

  std::uint64_t Sum() const { return nSum; }

 private:
  std::uint64_t nSum = 0;
};

// Takes everything. Cells may come in any order; an integer counts as its decimal text, true and
// false as "1" and "0", null as the empty text: what a record set gives for them.
class CheckSink {
 public:
  void Text(long lRow, std::string_view name, std::string_view text) {
    ++outcome.nValues;
    outcome.nHash += Mix(Mix(static_cast<std::uint64_t>(lRow), HashBytes(name)), HashBytes(text));
  }
  void Integer(long lRow, std::string_view name, std::int64_t nValue) {
    Text(lRow, name, std::to_string(nValue));
  }
  void Boolean(long lRow, std::string_view name, bool bValue) {
    Text(lRow, name, bValue ? "1" : "0");
  }
  void Null(long lRow, std::string_view name) { Text(lRow, name, ""); }
  void Real(double fValue) {
    ++outcome.nValues;
    outcome.fReals += fValue;
  }

  // A JSON text: read back by a foreign parser, so that only its meaning counts.
  void Output(std::string_view text);

  template <typename Look>
  void Inspect(Look&& look) {
    look(*this);
  }

  // A whole document tree.
  void Tree(const Outcome& tree) {
    outcome.nValues += tree.nValues;
    outcome.nHash += tree.nHash;
    outcome.fReals += tree.fReals;
  }

  void Require(bool bHolds, const char* szWhat) {
    if (!bHolds) {
      throw std::runtime_error(szWhat);
    }
  }

  const Outcome& Result() const { return outcome; }

 private:
  Outcome outcome;
};

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_SINKS_H
