// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A value is scaled to six digits in front of the point by one exact power of ten. That is a single
// operation, which never rounds a result across a number that a double holds, and the halves
// between two whole numbers are such numbers. So the scaled value lies on the same side of a half
// as the exact product, and the six digits are the right ones, unless it is the half itself.

#include "text/WriteReal.h"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "text/Block.h"
#include "text/Radix.h"

namespace JSON {
namespace {

constexpr int kDigits = 6;
constexpr std::uint32_t kEnd = 1'000'000;  // 10^kDigits

// The powers of ten that a double holds exactly.
constexpr double kTens[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                            1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The values that these scale to six digits are those from 10^-16 to 10^27. Both ends lie in a
// larger range of powers of two, for which the powers of ten are here, as near as a double comes.
constexpr int kLeast = -17;
constexpr double kBounds[] = {1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10, 1e-9,
                              1e-8,  1e-7,  1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,  1e0,
                              1e1,   1e2,   1e3,   1e4,   1e5,   1e6,   1e7,   1e8,   1e9,
                              1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,  1e18,
                              1e19,  1e20,  1e21,  1e22,  1e23,  1e24,  1e25,  1e26,  1e27};

struct Decimal {
  std::uint32_t nDigits;  // kDigits of them, or 0 for a value that is left to printf
  int nExponent;          // of the first digit
};

// The power of ten in front of a value from 1e-16 to 1e27. Next to a power of ten that no double
// holds it may be the next one, where the six digits round to the same number in either case.
QXRECORDSET_HOT int ExponentOf(double value) {
  constexpr int kMantissaBits = std::numeric_limits<double>::digits - 1;
  constexpr int kBias = std::numeric_limits<double>::max_exponent - 1;
  std::uint64_t nBits = 0;
  std::memcpy(&nBits, &value, sizeof nBits);
  const int nBinary = static_cast<int>(nBits >> kMantissaBits) - kBias;
  // The decimal exponent of that power of two: log10(2) is 1233 / 4096, and 128 keeps it positive.
  constexpr int kShift = 12;
  constexpr int kAway = 128;
  const int nLeast = ((nBinary * 1233 + (kAway << kShift)) >> kShift) - kAway;
  return nLeast + (value >= kBounds[nLeast + 1 - kLeast] ? 1 : 0);
}

// The value rounded to six digits; none for what is left to printf, negative values among it.
QXRECORDSET_HOT Decimal SixDigits(double value) {
  if (FLT_EVAL_METHOD != 0 || !(value >= 1e-16 && value < 1e27)) return {0, 0};
  const int nExponent = ExponentOf(value);
  const int nScale = kDigits - 1 - nExponent;
  const double scaled = nScale >= 0 ? value * kTens[nScale] : value / kTens[-nScale];
  const auto nWhole = static_cast<int>(scaled);
  const double rest = scaled - nWhole;  // exact
  if (rest == 0.5) return {0, 0};
  const auto nRounded = static_cast<std::uint32_t>(nWhole + (rest > 0.5 ? 1 : 0));
  if (nRounded == kEnd) return {kEnd / 10, nExponent + 1};
  return {nRounded, nExponent};
}

// ---- The layout ---------------------------------------------------------------------------------

// The digits as text, without the zeros at their end. More than the digits may be read, and up to
// eight bytes are copied whatever their number.
class Digits {
 public:
  explicit Digits(std::uint32_t nDigits) {
    constexpr unsigned kUnused = 8 - kDigits;  // of the eight that the block gives
    const Block16 digits = Block16::DecimalDigits(nDigits);
    digits.StoreHalfFrom(kUnused, aText_);
    const std::uint32_t nOther = ~digits.Equals('0') & 0xFFU;  // the first digit is one of them
    nCount_ = 32 - static_cast<unsigned>(__builtin_clz(nOther)) - kUnused;
  }

  unsigned Count() const { return nCount_; }
  char First() const { return aText_[0]; }

  // Digits from the first or a later one to the last one; `out` moves behind them.
  char* CopyFrom(unsigned nFirst, char* out) const {
    std::memcpy(out, aText_ + nFirst, kDigits);
    return out + (nCount_ - nFirst);
  }

 private:
  char aText_[2 * kDigits + 4] = {};
  unsigned nCount_;
};

QXRECORDSET_HOT char* Copy(std::string_view text, char* out) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

// 1.23457e+20
char* WriteScientific(const Digits& digits, int nExponent, std::string_view radix, char* out) {
  char* const pRest = digits.Count() > 1 ? Copy(radix, out + 1) : out + 1;
  out[0] = digits.First();
  char* p = digits.CopyFrom(1, pRest);
  const unsigned nMagnitude = static_cast<unsigned>(nExponent < 0 ? -nExponent : nExponent);
  p[0] = 'e';
  p[1] = nExponent < 0 ? '-' : '+';
  p[2] = static_cast<char>('0' + nMagnitude / 10);
  p[3] = static_cast<char>('0' + nMagnitude % 10);
  return p + 4;
}

// 0.000123457
char* WriteFraction(const Digits& digits, int nExponent, std::string_view radix, char* out) {
  constexpr std::string_view kZeros = "000";
  out = Copy(radix, Copy("0", out));
  std::memcpy(out, kZeros.data(), kZeros.size());
  return digits.CopyFrom(0, out - nExponent - 1);
}

// 123.457
char* WriteFixed(const Digits& digits, int nExponent, std::string_view radix, char* out) {
  const unsigned nWhole = static_cast<unsigned>(nExponent) + 1;
  digits.CopyFrom(0, out);
  if (digits.Count() <= nWhole) return out + nWhole;
  return digits.CopyFrom(nWhole, Copy(radix, out + nWhole));
}

}  // namespace

char* WriteReal(double value, char* out) {
  constexpr std::size_t kLongestRadix = 4;
  constexpr int kLeastFixed = -4;
  const bool bNegative = std::signbit(value);
  if (value == 0) return Copy(bNegative ? "-0" : "0", out);
  const Decimal decimal = SixDigits(bNegative ? -value : value);
  if (decimal.nDigits == 0 || !RoundsToNearest()) return nullptr;
  const std::string_view radix = Radix();
  if (radix.size() > kLongestRadix) return nullptr;
  if (bNegative) *out++ = '-';
  const Digits digits(decimal.nDigits);
  if (decimal.nExponent < kLeastFixed || decimal.nExponent >= kDigits) {
    return WriteScientific(digits, decimal.nExponent, radix, out);
  }
  return decimal.nExponent < 0 ? WriteFraction(digits, decimal.nExponent, radix, out)
                               : WriteFixed(digits, decimal.nExponent, radix, out);
}

}  // namespace JSON
