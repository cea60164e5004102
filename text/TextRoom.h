// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A text that grows at its end, byte by byte and token by token, inside a std::string: the string
// is longer than the text, and the room behind the text is filled through a pointer, without a call
// per piece. The caller makes room before it writes, and cuts the string to the text in the end.

#ifndef QXRECORDSET_TEXT_TEXTROOM_H
#define QXRECORDSET_TEXT_TEXTROOM_H

#include <cstddef>
#include <string>
#include <string_view>

namespace JSON {

// Makes the string's capacity at least nBytes larger than the text, which is its first nText bytes
// and stays. It grows geometrically. Throws std::bad_alloc, also for a text longer than a string
// can be, and nothing has changed then.
void MakeCapacity(std::string& buffer, std::size_t nText, std::size_t nBytes);

// Makes the string itself at least nBytes longer than the text. What lies behind the text may
// change. Fails like MakeCapacity().
void MakeRoom(std::string& buffer, std::size_t nText, std::size_t nBytes);

// Writes `text`, up to its first NUL, with escapes to the string, from its byte nAt on. The result
// is the place behind it, where there is room for nSpare bytes more.
std::size_t WriteEscaped(std::string& buffer, std::size_t nAt, std::string_view text,
                         std::size_t nSpare);

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_TEXTROOM_H
