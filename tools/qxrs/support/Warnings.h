// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What a target cannot hold, or would change. Each kind of loss is one line on standard error in
// the end, with a count and the first place; with --strict the first one is an error.

#ifndef QXRECORDSET_TOOLS_SUPPORT_WARNINGS_H
#define QXRECORDSET_TOOLS_SUPPORT_WARNINGS_H

#include <string>
#include <string_view>
#include <vector>

namespace qxrs {

class Warnings {
 public:
  explicit Warnings(bool bStrictly) : bStrict(bStrictly) {}

  // Counts a loss in row `nRow`, from 1. `szReason` is a constant text; an empty column is none.
  // Throws InputError when losses are errors.
  void Add(const char* szReason, unsigned long long nRow, std::string_view strColumn);

  // A loss that has no row.
  void Add(const char* szReason) { Add(szReason, 0, {}); }

  // Writes the lines.
  void Report() const;

 private:
  struct Loss {
    const char* szReason;
    std::string strFirst;  // the first place
    unsigned long long nCount;
  };

  const bool bStrict;
  std::vector<Loss> vLosses;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_WARNINGS_H
