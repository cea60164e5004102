// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing JSON without a tree: JSON::Serialize is a streaming writer that produces compact JSON
// token by token, JSON::EscapeString is the one string escaping of the library, and the number
// functions give the text of every number it writes.
//
//   JSON::Serialize writer(1024);
//   writer.OO().N("a").V(1).N("b").AO().V("x").V(nullptr).AC().OC();
//   writer.String();                               // {"a":1,"b":["x",null]}
//
// Nothing here throws, exhausted memory (std::bad_alloc) apart.

#ifndef QXRECORDSET_JSON_JSONSERIALIZE_H
#define QXRECORDSET_JSON_JSONSERIALIZE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qxrecordset_export.h"

// ---- Numbers to text ----------------------------------------------------------------------------
//
// Each writes the decimal text of `value` and its NUL to the start of `buffer` and returns the
// address of that NUL, so the text's length is the result minus `buffer`. `size` is the size of the
// buffer in bytes: 12 are enough for every int, 21 for the 64-bit kinds and, where long has 64
// bits, for long. What of the buffer is not text may be overwritten, and its last byte is NUL
// afterwards. A text that does not fit is cut to size - 1 bytes. Below 1, nothing is written and
// the result is null.

QXRECORDSET_EXPORT char* IntToStr(int value, char* buffer, int size);
QXRECORDSET_EXPORT char* LongToStr(long value, char* buffer, int size);
QXRECORDSET_EXPORT char* UnsignedLongToStr(unsigned long value, char* buffer, int size);
QXRECORDSET_EXPORT char* Long64ToStr(long long value, char* buffer, int size);
QXRECORDSET_EXPORT char* UnsignedLong64ToStr(unsigned long long value, char* buffer, int size);

// Like these, but the text is what the C library's "%g" gives: six significant digits, the locale's
// decimal point, and "inf", "-inf" or "nan" for what is no number. 32 bytes are enough.
QXRECORDSET_EXPORT char* DoubleToStr(double value, char* buffer, int size);

namespace JSON {

using ::DoubleToStr;
using ::IntToStr;
using ::Long64ToStr;
using ::LongToStr;
using ::UnsignedLong64ToStr;
using ::UnsignedLongToStr;

// Appends `text`, up to its NUL, to `output` with the bytes escaped that a JSON string cannot hold:
// the double quote, the backslash and the control bytes below 0x20. All other bytes pass unchanged,
// so UTF-8 stays UTF-8. No quotes are added. Text that needs no escape, the usual case, is appended
// in one piece. REQUIRES: text is not null.
QXRECORDSET_EXPORT void EscapeString(std::string& output, const char* text);

// The streaming writer. Its calls place the commas; a call out of order (a value where a name is
// due, a bracket that closes nothing, ...) sets an error that stays: from then on nothing is
// written and String() gives the empty text. Every call but String() and AppendString() returns the
// writer, so calls can be chained. Nesting is unbounded. A writer is used once, for one text: there
// is no way back to the start. Used by one thread at a time.
//
// The text lies in one string that grows geometrically; what a call costs is what it writes. A call
// that runs out of memory throws and leaves the writer as it was.
class QXRECORDSET_EXPORT Serialize {
 public:
  // An empty writer with `nReserve` bytes of text reserved (none for 0 and below). The text grows
  // beyond that on its own; for a large text a good estimate saves copying it several times.
  explicit Serialize(int nReserve);

  // A copy is independent and has the same text and state. A move copies, too.
  Serialize(const Serialize& other) = default;
  Serialize& operator=(const Serialize& other);
  ~Serialize() = default;

  // Open and close an object or an array. A container may be opened wherever a value may stand, and
  // at the top level any number of times (the texts run together). OC is refused while a name has
  // no value yet.
  Serialize& OO();
  Serialize& OC();
  Serialize& AO();
  Serialize& AC();

  // The name of the next member: escaped, up to its NUL. Allowed exactly where a name is due.
  // REQUIRES: name is not null.
  Serialize& N(const char* name);

  // A string value: escaped, up to its NUL; null for a null pointer. Like all values it needs an
  // open container, and in an object a name before it.
  Serialize& V(const char* text);

  // Like N and V, but with the length known: up to the end of the view, or its first NUL. A view
  // without text is the empty string.
  Serialize& N(std::string_view name);
  Serialize& V(std::string_view text);

  // A number value; doubles as DoubleToStr writes them, so infinities and not-a-number give a text
  // that is not JSON. A bool counts as an int: AppendString("true") writes one.
  Serialize& V(double value);
  Serialize& V(unsigned long long value);
  Serialize& V(long long value);
  Serialize& V(unsigned long value);
  Serialize& V(long value);
  Serialize& V(int value);

  // Ready-made JSON text as a value, unchanged: up to its NUL, or exactly `length` bytes. A null or
  // empty text (for JS_N: a null one or one whose first byte, which is always looked at, is NUL)
  // writes null. A length below 1 writes nothing in the value's place.
  Serialize& JS(const char* json);
  Serialize& JS_N(const char* json, int length);

  // Like JS, but an empty text writes nothing in the value's place. REQUIRES: text is not null.
  void AppendString(const char* text);

  // The text: complete, or the empty text while a container is open or after an error. The
  // reference stays valid until the next write.
  const std::string& String() const;

 private:
  class Pen;  // writes one token

  std::size_t Room() const { return strOutput.size() - nWritten; }
  std::uint32_t CommaBeforeElement() const { return ~(nFirstStack | nObjectStack) & 1U; }
  std::uint32_t CommaBeforeName() const { return ~nFirstStack & 1U; }
  bool ValueIsDue() const { return nDepth != 0 && !bExpectName; }
  void Reserve(std::size_t nBytes);
  void ValueDone();
  void TextDone(bool bName);
  template <bool bName>
  Serialize& WritePlain(const char* pText, std::size_t nLength);
  template <typename Write>
  Serialize& WriteValue(std::size_t nBytes, Write write);
  template <typename Integer>
  Serialize& WriteInteger(Integer value);
  QXRECORDSET_NO_EXPORT Serialize& WriteJson(std::string_view json);
  QXRECORDSET_NO_EXPORT Serialize& WriteText(const char* pText, std::size_t nLength, bool bName);
  QXRECORDSET_NO_EXPORT Serialize& Open(char bracket, bool bObject);
  QXRECORDSET_NO_EXPORT Serialize& Close(char bracket);
  QXRECORDSET_NO_EXPORT Serialize& Refuse();

  std::string strOutput;           // the text; while a container is open, free room behind it
  std::uint32_t nFirstStack = 0;   // innermost container in bit 0: it has no member or element yet
  std::uint32_t nObjectStack = 0;  // innermost container in bit 0: 1 for an object
  std::size_t nDepth = 0;          // open containers; 0 after an error, too
  bool bExpectName = false;        // a name is due; never after an error
  bool bError = false;             // a call came out of order
  std::size_t nWritten = 0;        // bytes of strOutput that are text
  std::vector<std::uint32_t> vOuterObjects;  // nObjectStack of the outer levels, 32 levels each
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_JSONSERIALIZE_H
