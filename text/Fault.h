// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Why a text was refused. A reader notes where it stopped and what it missed there; the sentence,
// the line and the column are made only for a caller who asks.

#ifndef QXRECORDSET_TEXT_FAULT_H
#define QXRECORDSET_TEXT_FAULT_H

#include <cstddef>
#include <string_view>

namespace JSON {

// What was missing where a reader stopped.
enum class Fault : unsigned char {
  kUnknown,   // the reader did not tell
  kNoText,    // any text at all
  kTooLong,   // a text of less than 2 GB
  kDocument,  // '{' or '['
  kObject,    // '{', where an array is no answer
  kName,      // a name
  kColon,     // the colon behind a name
  kValue,     // a value
  kString,    // the end of the string whose content begins there
  kInObject,  // ',' or '}'
  kInArray,   // ',' or ']'
  kDepth,     // less nesting
};

struct Explanation {
  std::size_t nOffset;   // of the byte at fault; the text's length when it ends too soon
  const char* szReason;  // one line, a constant
};

// REQUIRES: a reader of `text` stopped at nStop. The text may have been rewritten in place: only
// the bytes from nStop on and the punctuation in front of it are looked at.
Explanation Explain(std::string_view text, std::size_t nStop, Fault fault);

// Where a byte stands: lines and columns count from 1, columns in bytes.
struct LineAndColumn {
  std::size_t nLine;
  std::size_t nColumn;
};
LineAndColumn Locate(std::string_view text, std::size_t nOffset);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_FAULT_H
