// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Where and why a text was refused: what JSON::Message::Error() and CQXRecordSet::Load() tell.
//
//   JSON::Message message;
//   if (!message.Parse(text)) {
//     const JSON::ParseError& error = message.Error();
//     std::cerr << error.nLine << ':' << error.nColumn << ": " << error.szReason << '\n';
//   }

#ifndef QXRECORDSET_JSON_PARSEERROR_H
#define QXRECORDSET_JSON_PARSEERROR_H

#include <cstddef>

namespace JSON {

struct ParseError {
  // The byte at fault, 0-based. The text's length when the text ends too soon; the opening quote of
  // a string that has no end.
  std::size_t nOffset = 0;

  // The same byte by line and column, both from 1; a column is a byte, and '\n' ends a line. Both
  // are 0 when the text was rewritten in place: count in a copy, by the offset.
  std::size_t nLine = 0;
  std::size_t nColumn = 0;

  // One line in English, a constant that lives as long as the library is loaded. Null when there is
  // nothing to tell: the text was accepted, or there was none yet.
  const char* szReason = nullptr;
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_PARSEERROR_H
