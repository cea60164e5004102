// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Integers as text: cells and JSON members keep integers as decimal digits, which are converted
// only when they have to be. Nearly all of them are written the way the library writes integers
// itself; such a text can be copied as it stands.

#ifndef QXRECORDSET_RECORDSET_INTEGERTEXT_H
#define QXRECORDSET_RECORDSET_INTEGERTEXT_H

#include <algorithm>
#include <limits>
#include <string_view>

namespace recordset {

// Whether `text` is a `long` in canonical form: a '-' for negatives, no leading zeros, nothing
// else. The few values with more digits than every `long` can have are not recognised.
inline bool IsCanonicalInteger(std::string_view text) {
  if (text.size() > 1 && text.front() == '-') {
    text.remove_prefix(1);
    if (text.front() == '0') return false;
  }
  if (text.empty() || text.size() > std::numeric_limits<long>::digits10) return false;
  if (text.front() == '0') return text.size() == 1;
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_INTEGERTEXT_H
