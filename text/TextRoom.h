// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A text that grows at its end, byte by byte and token by token, inside a std::string: the string
// is longer than the text, and the room behind the text is filled through a pointer, without a call
// per piece. Whoever writes looks for room first, and cuts the string to the text in the end.

#ifndef QXRECORDSET_TEXT_TEXTROOM_H
#define QXRECORDSET_TEXT_TEXTROOM_H

#include <cstddef>
#include <string>
#include <string_view>

namespace JSON {

// Makes the string at least nBytes longer than the text, which is its first nText bytes and stays.
// What lies behind the text may change. REQUIRES: nBytes is about the size of something that is in
// memory, so that the sums do not overflow.
void MakeRoom(std::string& buffer, std::size_t nText, std::size_t nBytes);

// Writes `text`, up to its first NUL, with escapes to the string, from its byte nAt on. The result
// is the place behind it, where there is room for nSpare bytes more.
std::size_t WriteEscaped(std::string& buffer, std::size_t nAt, std::string_view text,
                         std::size_t nSpare);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_TEXTROOM_H
