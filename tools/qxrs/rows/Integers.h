// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Integers as text. A record set hands its integers out as long, and a reader cuts what does not
// fit; so a source makes a text of every integer that could be cut.

#ifndef QXRECORDSET_TOOLS_ROWS_INTEGERS_H
#define QXRECORDSET_TOOLS_ROWS_INTEGERS_H

#include <string>
#include <string_view>

namespace qxrs {

// The readers that integers have to suit: hosts like this one, or 32-bit ones too.
enum class LongSize { Native, Bits32 };

// Whether `strText` is an integer just as it would be written (no '+', no leading zeros, no "-0")
// and a long of that size holds it.
bool IsPlainInteger(std::string_view strText, LongSize eSize);

// The number at the beginning of `strText`, read as strtol does but without a limit, as it would be
// written. "0" when there is none.
std::string PlainInteger(std::string_view strText);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_INTEGERS_H
