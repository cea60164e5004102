// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Decimal digits of an integer, eight at a time: one division splits the value into pieces below
// 10^8, and the digits of a piece are computed side by side (Block16::DecimalDigits). Neither a
// division nor a branch is spent on a single digit, so numbers of changing lengths cost the same as
// numbers of one length; and 64-bit divisions, slow library calls on 32-bit machines, are needed
// for values above 2^32 only.

#ifndef QXRECORDSET_TEXT_DIGITS_H
#define QXRECORDSET_TEXT_DIGITS_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

#include "text/Block.h"

namespace JSON {

constexpr std::uint32_t kPiece = 100000000;  // pieces have eight digits: they are below 10^8
constexpr int kPieceDigits = 8;

// Longest decimal text of an integer type, in bytes, without a NUL: "-2147483648" has 11,
// "-9223372036854775808" and "18446744073709551615" have 20.
template <typename Integer>
constexpr std::size_t kMaxDecimal = std::size_t{std::numeric_limits<Integer>::digits10} + 1 +
                                    (std::is_signed_v<Integer> ? 1 : 0);

// Writes the digits of a piece to `out` and returns their end: all eight, or from the first digit
// that is not zero (0 has one digit). Eight bytes at `out` are overwritten in any case.
inline char* WritePiece(std::uint32_t piece, char* out, bool bLeadingZeros) {
  const Block16 digits = Block16::DecimalDigits(piece);
  constexpr std::uint32_t kLastDigit = 1U << (kPieceDigits - 1);
  const unsigned nSkip = bLeadingZeros ? 0 : LowestBit(~digits.Equals('0') | kLastDigit);
  digits.StoreHalfFrom(nSkip, out);
  return out + (kPieceDigits - nSkip);
}

inline char* WriteDigits(std::uint32_t value, char* out) {
  if (value < kPiece) return WritePiece(value, out, false);
  out = WritePiece(value / kPiece, out, false);
  return WritePiece(value % kPiece, out, true);
}

inline char* WriteDigits(std::uint64_t value, char* out) {
  if (value <= UINT32_MAX) return WriteDigits(static_cast<std::uint32_t>(value), out);
  const std::uint64_t high = value / kPiece;
  out = WriteDigits(high, out);
  return WritePiece(static_cast<std::uint32_t>(value - high * kPiece), out, true);
}

// Writes `value` as decimal text, without a NUL, and returns the end of the text. REQUIRES: room
// for kMaxDecimal<Integer> bytes, also for a short value; bytes behind the text are overwritten.
template <typename Integer>
char* WriteDecimal(Integer value, char* out) {
  using Magnitude = std::conditional_t<(sizeof(Integer) > 4), std::uint64_t, std::uint32_t>;
  auto magnitude = static_cast<Magnitude>(value);
  if constexpr (std::is_signed_v<Integer>) {
    if (value < 0) {
      *out++ = '-';
      magnitude = 0 - magnitude;  // exact for the most negative value, too
    }
  }
  if (magnitude < kPiece) return WritePiece(static_cast<std::uint32_t>(magnitude), out, false);
  return WriteDigits(magnitude, out);
}

// The decimal text of an integer.
template <typename Integer>
class DecimalText {
 public:
  // Only what View() shows is written.
  // cppcheck-suppress uninitMemberVar
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  explicit DecimalText(Integer value)
      : nLength_(static_cast<std::size_t>(WriteDecimal(value, aText_) - aText_)) {}

  std::string_view View() const { return {aText_, nLength_}; }

 private:
  char aText_[kMaxDecimal<Integer>];
  std::size_t nLength_;
};

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_DIGITS_H
