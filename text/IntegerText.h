// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Integers as text: cells and JSON members keep integers as decimal digits, which are converted
// only when they have to be. Nearly all of them are canonical, which is how the library writes
// integers itself: a '-' for negatives, no leading zeros, nothing else. Such a text is copied as it
// stands.

#ifndef QXRECORDSET_TEXT_INTEGERTEXT_H
#define QXRECORDSET_TEXT_INTEGERTEXT_H

#include <cstdint>
#include <limits>

#include "text/Block.h"

namespace JSON {

// Bytes of the canonical integer at p; 0 when there is none, or one of more digits than fit a block
// with a byte behind them, or than every `long` can have. REQUIRES: a block at p.
QXRECORDSET_HOT unsigned CanonicalLength(const char* p) {
  constexpr unsigned kMostDigits = std::numeric_limits<long>::digits10;
  const unsigned nSign = *p == '-' ? 1 : 0;
  const std::uint32_t nOther = Block16::Load(p).NonDigits() & ~nSign;
  if (nOther == 0) return 0;
  const unsigned nLength = LowestBit(nOther);
  if (p[nSign] == '0') return nLength == 1 ? 1 : 0;
  return nLength - nSign - 1 < kMostDigits ? nLength : 0;
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_INTEGERTEXT_H
