// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing JSON without a tree: JSON::Serialize is a streaming writer that produces compact JSON
// token by token, JSON::EscapeString is the one string escaping of the library, and the number
// functions give the text of every number it writes.
//
//   JSON::Serialize writer(1024);
//   writer.OO().N("a").V(1).N("b").AO().V("x").V(nullptr_text).AC().OC();
//   writer.String();                               // {"a":1,"b":["x",null]}

#ifndef QXRECORDSET_JSON_JSONSERIALIZE_H
#define QXRECORDSET_JSON_JSONSERIALIZE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qxrecordset_export.h"

// ---- Numbers to text ------------------------------------------------------------------------------
//
// Each writes the decimal text of `value` and its NUL to the start of `buffer` and returns the
// address of that NUL, so the text's length is the result minus `buffer`. `size` is the size of the
// buffer in bytes; below 1 nothing is written and the result is null. REQUIRES: room for the text
// and its NUL: 12 bytes for int, 21 for the 64-bit kinds and, where long has 64 bits, for long.

QXRECORDSET_EXPORT char* IntToStr(int value, char* buffer, int size);
QXRECORDSET_EXPORT char* LongToStr(long value, char* buffer, int size);
QXRECORDSET_EXPORT char* UnsignedLongToStr(unsigned long value, char* buffer, int size);
QXRECORDSET_EXPORT char* Long64ToStr(long long value, char* buffer, int size);
QXRECORDSET_EXPORT char* UnsignedLong64ToStr(unsigned long long value, char* buffer, int size);

// The text that the C library's "%g" gives: six significant digits, the locale's decimal point, and
// "inf", "-inf" or "nan" for what is no number. A text that does not fit is cut to size - 1 bytes,
// and the result is the address of the NUL actually written.
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
// so UTF-8 stays UTF-8. No quotes are added. REQUIRES: text is not null.
QXRECORDSET_EXPORT void EscapeString(std::string& output, const char* text);

// The streaming writer. Its calls place the commas; a call out of order (a value where a name is
// due, a bracket that closes nothing, ...) sets an error that stays: from then on nothing is written
// and String() gives the empty text. Every call but String() and AppendString() returns the writer,
// so calls can be chained. Nesting is unbounded. A writer is used once, for one text: there is no
// way back to the start. Used by one thread at a time.
class QXRECORDSET_EXPORT Serialize {
 public:
  // An empty writer with `nReserve` bytes of text reserved (none for 0 and below). The text grows
  // beyond that on its own.
  explicit Serialize(int nReserve);

  // Open and close an object or an array. A container may be opened wherever a value may stand, and
  // at the top level any number of times (the texts run together). OC is refused while a name still
  // waits for its value.
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

  // Like N and V, but with the length known: up to the end of the view, or its first NUL.
  Serialize& N(std::string_view name);
  Serialize& V(std::string_view text);

  // A number value; doubles as DoubleToStr writes them, so infinities and not-a-number give a text
  // that is not JSON.
  Serialize& V(double value);
  Serialize& V(unsigned long long value);
  Serialize& V(long long value);
  Serialize& V(unsigned long value);
  Serialize& V(long value);
  Serialize& V(int value);

  // Ready-made JSON text as a value, unchanged: up to its NUL, or exactly `length` bytes. A null or
  // empty text (for JS_N: a null one or one whose first byte is NUL) writes null. A negative length
  // writes no byte.
  Serialize& JS(const char* json);
  Serialize& JS_N(const char* json, int length);

  // Like JS, but an empty text writes nothing in the value's place. REQUIRES: text is not null.
  void AppendString(const char* text);

  // The text: complete, or the empty text while a container is open or after an error. The reference
  // stays valid until the next write.
  const std::string& String() const;

 private:
  std::string strOutput;            // the text written so far
  std::uint32_t nFirstStack = 0;    // innermost container in bit 0: it has no member or element yet
  std::uint32_t nObjectStack = 0;   // innermost container in bit 0: 1 for an object
  int nDepth = 0;                   // open containers
  bool bExpectName = false;         // a name is due
  bool bError = false;              // a call came out of order
};

}  // namespace JSON

#endif  // QXRECORDSET_JSON_JSONSERIALIZE_H
