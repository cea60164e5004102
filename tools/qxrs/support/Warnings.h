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

  // Counts a loss, or several, of which the first is in row `nRow`, from 1; 0 is none, and so is an
  // empty column. Throws InputError when losses are errors.
  void Add(std::string_view strReason, unsigned long long nRow = 0, std::string_view strColumn = {},
           unsigned long long nCount = 1);

  // Writes the lines.
  void Report() const;

 private:
  struct Loss {
    std::string strReason;
    std::string strFirst;  // the first place
    unsigned long long nCount;
  };

  const bool bStrict;
  std::vector<Loss> vLosses;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_WARNINGS_H
