// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Why a text is no document. The library's parser says where it stopped; Diagnose() looks at the
// text in front of that place and says what was expected there.

#ifndef QXRECORDSET_TOOLS_SUPPORT_DIAGNOSIS_H
#define QXRECORDSET_TOOLS_SUPPORT_DIAGNOSIS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace qxrs {

struct Diagnosis {
  std::size_t nOffset;    // the byte at fault; the text's length when it ends too soon
  std::string strReason;  // one line
};

// REQUIRES: the parser refused `strText`, read everything in front of `nStopped` and stopped there.
Diagnosis Diagnose(std::string_view strText, std::size_t nStopped);

// The line of `strText` around `nOffset` and a caret under that byte, as two lines. A long line is
// cut to the neighbourhood.
std::string Caret(std::string_view strText, std::size_t nOffset, bool bColor);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_DIAGNOSIS_H
