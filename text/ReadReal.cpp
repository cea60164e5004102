// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Three ways to a real number, the cheapest first; each of them leaves what it is not made for to
// the next one.
//
//   1. Up to 18 digits and a power of ten up to 27, which nearly all numbers are. Digits and power
//      are exact, so the result of one multiplication or division is the correctly rounded one.
//   2. std::from_chars: any plain number, where the rounding mode is the usual one and the standard
//      library has it for double (libc++ had not for long).
//   3. strtod: signs, spaces, hexadecimal digits, "nan", what is too large or too small.
//
// The first two know a point only, so a locale with another one goes to strtod at once.

#include "text/ReadReal.h"

#include <cfloat>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <system_error>

#include "text/Block.h"
#include "text/Bytes.h"
#include "text/Radix.h"

namespace JSON {
namespace {

// ---- A short decimal number ---------------------------------------------------------------------

struct Decimal {
  bool bNegative;
  std::uint64_t nDigits;  // below 10^18
  int nExponent;          // of ten
};

// Digits come in pieces that 32 bits hold, which is what a 32-bit machine is fast with.
constexpr unsigned kPieceDigits = 9;
constexpr std::uint32_t kPieceTens[] = {1,       10,        100,        1'000,       10'000,
                                        100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

class DecimalScan {
 public:
  explicit DecimalScan(const char* p) : p_(p) {}

  // False when the text does not begin with a number of at most two pieces of digits.
  QXRECORDSET_HOT bool Read(Decimal& decimal) {
    decimal.bNegative = *p_ == '-';
    if (decimal.bNegative) ++p_;
    std::uint32_t nHigh = 0;
    const unsigned nFirst = ReadPiece(nHigh);
    if (nFirst == 0) return false;
    decimal.nDigits = nHigh;
    if (nFirst == kPieceDigits) {
      std::uint32_t nLow = 0;
      const unsigned nSecond = ReadPiece(nLow);
      if (nSecond == kPieceDigits && IsDigit(*p_)) return false;
      decimal.nDigits = std::uint64_t{nHigh} * kPieceTens[nSecond] + nLow;
    }
    decimal.nExponent = pPoint_ != nullptr ? static_cast<int>(pPoint_ + 1 - p_) : 0;
    if ((*p_ | kLowerCase) == 'e') decimal.nExponent += ReadExponent(p_ + 1);
    return (*p_ | kLowerCase) != 'x';
  }

 private:
  static constexpr char kLowerCase = 0x20;
  static constexpr int kLargeExponent = 1000;

  // Digits, with the point among or behind them; their number, up to kPieceDigits.
  QXRECORDSET_HOT unsigned ReadPiece(std::uint32_t& nValue) {
    for (unsigned nCount = 0;; ++p_) {
      if (IsDigit(*p_)) {
        if (nCount == kPieceDigits) return nCount;
        nValue = nValue * 10 + static_cast<std::uint32_t>(*p_ - '0');
        ++nCount;
      } else if (*p_ == '.' && pPoint_ == nullptr) {
        pPoint_ = p_;
      } else {
        return nCount;
      }
    }
  }

  // Behind the 'e'. Without digits it is none, and says nothing.
  static int ReadExponent(const char* p) {
    const bool bNegative = *p == '-';
    if (bNegative || *p == '+') ++p;
    int nExponent = 0;
    for (; IsDigit(*p); ++p) {
      if (nExponent < kLargeExponent) nExponent = nExponent * 10 + (*p - '0');
    }
    return bNegative ? -nExponent : nExponent;
  }

  const char* p_;
  const char* pPoint_ = nullptr;
};

// Powers of ten that a double holds, and those that 64 bits of mantissa hold.
constexpr double kTens[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                            1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr long double kLongTens[] = {1e0L,  1e1L,  1e2L,  1e3L,  1e4L,  1e5L,  1e6L,
                                     1e7L,  1e8L,  1e9L,  1e10L, 1e11L, 1e12L, 1e13L,
                                     1e14L, 1e15L, 1e16L, 1e17L, 1e18L, 1e19L, 1e20L,
                                     1e21L, 1e22L, 1e23L, 1e24L, 1e25L, 1e26L, 1e27L};

// The number in one operation. The sign comes first: it decides which way is up.
template <typename Real>
QXRECORDSET_HOT Real Scaled(const Decimal& decimal, const Real* pTens) {
  const auto nDigits = static_cast<Real>(static_cast<std::int64_t>(decimal.nDigits));
  const Real signedDigits = decimal.bNegative ? -nDigits : nDigits;
  return decimal.nExponent < 0 ? signedDigits / pTens[-decimal.nExponent]
                               : signedDigits * pTens[decimal.nExponent];
}

// Where a double holds digits and power, the operation rounds as it has to.
QXRECORDSET_HOT bool ConvertInDouble(const Decimal& decimal, double& value) {
  constexpr int kMost = static_cast<int>(std::size(kTens)) - 1;
  constexpr std::uint64_t kMostDigits = std::uint64_t{1} << std::numeric_limits<double>::digits;
  if (FLT_EVAL_METHOD != 0 || decimal.nDigits > kMostDigits || decimal.nExponent < -kMost ||
      decimal.nExponent > kMost) {
    return false;
  }
  value = Scaled(decimal, kTens);
  return true;
}

// Where a mantissa of 64 bits holds them, the operation rounds to 64 bits and the conversion rounds
// again, to 53. The two are one correct rounding unless the eleven bits that go are exactly half of
// what stays: then the result before the first rounding may have been on either side. All of them
// zero is more likely the sign of a processor, or of valgrind, that was told to compute with less
// than 64 bits.
QXRECORDSET_HOT bool ConvertInLongDouble(const Decimal& decimal, double& value) {
  using Long = std::numeric_limits<long double>;
  constexpr int kMost = static_cast<int>(std::size(kLongTens)) - 1;
  constexpr int kMantissa = 64;  // bits
  if (Long::digits != kMantissa || decimal.nExponent < -kMost || decimal.nExponent > kMost) {
    return false;
  }
  const long double result = Scaled(decimal, kLongTens);
  constexpr std::uint64_t kHalf = std::uint64_t{1}
                                  << (kMantissa - std::numeric_limits<double>::digits - 1);
  std::uint64_t nMantissa = 0;
  std::memcpy(&nMantissa, &result, sizeof nMantissa);
  if ((nMantissa & (kHalf - 1)) == 0) return false;
  value = static_cast<double>(result);
  return true;
}

QXRECORDSET_HOT bool ReadShort(const char* pText, double& value) {
  Decimal decimal{};
  return DecimalScan(pText).Read(decimal) &&
         (ConvertInDouble(decimal, value) || ConvertInLongDouble(decimal, value));
}

// ---- Any number ---------------------------------------------------------------------------------

// A number that is out of range, or has an 'x' behind its first digit, is left to strtod.
#ifdef __cpp_lib_to_chars
bool ReadPlain(const char* pText, double& value) {
  const char* pEnd = pText;
  while (IsRealByte(*pEnd)) {
    ++pEnd;
  }
  return *pEnd != 'x' && *pEnd != 'X' && RoundsToNearest() &&
         std::from_chars(pText, pEnd, value).ec == std::errc{};
}
#else
bool ReadPlain(const char* /*pText*/, double& /*value*/) { return false; }
#endif

}  // namespace

double ReadReal(const char* pText) {
  if (pText == nullptr) return 0.0;
  double value = 0.0;
  if (Radix() == "." && (ReadShort(pText, value) || ReadPlain(pText, value))) return value;
  return std::strtod(pText, nullptr);
}

}  // namespace JSON
