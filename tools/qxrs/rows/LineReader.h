// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// An input, line by line.

#ifndef QXRECORDSET_TOOLS_ROWS_LINEREADER_H
#define QXRECORDSET_TOOLS_ROWS_LINEREADER_H

#include <string>
#include <string_view>

#include "tools/qxrs/support/Input.h"

namespace qxrs {

class LineReader {
 public:
  explicit LineReader(Input& inputText) : input(inputText) {}

  // The next line with its line feed, which the last line may lack; false at the end. It stays
  // valid until the next call. A byte order mark in front of the text is left out.
  bool Next(std::string_view& strLine);

  // The number of the line that Next() gave last, from 1.
  unsigned long long Number() const { return nLine; }

  // Throw an InputError about byte `nOffset` of that line, or about line `nWhere`.
  [[noreturn]] void Refuse(std::size_t nOffset, const std::string& strReason) const;
  [[noreturn]] void RefuseLine(unsigned long long nWhere, const std::string& strReason) const;

 private:
  bool Fill();

  Input& input;
  std::string strBuffer;  // text read; used up to nNext
  std::size_t nNext = 0;
  unsigned long long nLine = 0;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_LINEREADER_H
