// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers to text, held against snprintf, and reals from text, held against strtod.

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "json/JSONSerialize.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/NumericModes.h"
#include "tests/support/Random.h"
#include "text/ReadReal.h"

namespace {

// Powers of two and ten with their neighbours, and random numbers of every length, all of them
// positive and negative.
std::vector<std::uint64_t> Magnitudes() {
  std::vector<std::uint64_t> v;
  const auto add = [&v](std::uint64_t n) {
    for (const std::uint64_t m : {n - 1, n, n + 1}) {
      v.push_back(m);
      v.push_back(0 - m);
    }
  };
  for (int i = 0; i < 64; ++i)
    add(std::uint64_t{1} << i);
  for (std::uint64_t n = 1; n <= UINT64_MAX / 10; n *= 10)
    add(n);
  Support::Random random(1);
  for (int i = 0; i < 4000; i += Support::kStride) {
    const std::uint64_t n = std::uint64_t{random.Below(UINT_MAX)} << 32 | random.Below(UINT_MAX);
    add(n >> random.Below(64));
  }
  return v;
}

// `szFormat` is snprintf's for the type, and nHoldsAll the size that holds every value. What a call
// leaves behind: the text, cut where it does not fit, the address of its NUL, and a NUL as the
// buffer's last byte. Nothing is written beyond the buffer, and nothing at all without one.
template <typename Number>
void ExpectLikeSnprintf(char* (*toStr)(Number, char*, int), const char* szFormat, int nHoldsAll,
                        const std::vector<Number>& vValues) {
  Support::GuardedBuffer buffer(64);
  for (const Number value : vValues) {
    char szText[40];
    const int nLength = std::snprintf(szText, sizeof szText, szFormat, value);
    for (const int nSize : {1, nLength, nLength + 1, nHoldsAll - 1, nHoldsAll, 40}) {
      const auto nBytes = static_cast<std::size_t>(nSize);
      char* const pText = buffer.Place(std::string(nBytes, '?'));
      ASSERT_EQ(toStr(value, pText, nSize), pText + std::min(nLength, nSize - 1)) << szText;
      ASSERT_EQ(pText, std::string(szText).substr(0, nBytes - 1)) << szText;
      ASSERT_EQ(pText[nSize - 1], '\0') << szText;
    }
  }
  for (const int nSize : {0, -1, INT_MIN})
    EXPECT_TRUE(toStr(vValues.back(), buffer.Place("?"), nSize) == nullptr && buffer.view() == "?");
}

template <typename Integer>
void ExpectAll(char* (*toStr)(Integer, char*, int), const char* szFormat, int nHoldsAll) {
  std::vector<Integer> vValues;
  for (const std::uint64_t n : Magnitudes())
    vValues.push_back(static_cast<Integer>(n));
  ExpectLikeSnprintf(toStr, szFormat, nHoldsAll, vValues);
}

TEST(Numbers, IntegersEqualSnprintf) {
  ExpectAll<int>(IntToStr, "%d", 12);
  ExpectAll<long>(LongToStr, "%ld", sizeof(long) == 8 ? 21 : 12);
  ExpectAll<unsigned long>(UnsignedLongToStr, "%lu", sizeof(long) == 8 ? 21 : 11);
  ExpectAll<long long>(Long64ToStr, "%lld", 21);
  ExpectAll<unsigned long long>(UnsignedLong64ToStr, "%llu", 21);
}

double WithBits(std::uint64_t n) {
  double d = 0;
  std::memcpy(&d, &n, sizeof n);
  return d;
}

// Decimal points and rounding modes, each of which a host may have chosen.
template <typename Test>
void InEveryMode(Test test) {
  for (const std::string strPoint : {".", ",", "\xD9\xAB", "point"}) {
    const Support::DecimalPoint point(strPoint);
    for (const int nMode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
      const Support::Rounding rounding(nMode);
      if (!rounding.IsObeyed()) continue;
      SCOPED_TRACE(strPoint + " rounding " + std::to_string(nMode));
      test(strPoint);
    }
  }
}

// Each number of digits, halves of the sixth one, and powers of ten, with their neighbours.
std::vector<double> Doubles() {
  std::vector<double> vValues = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")};
  const auto add = [&vValues](double d) {
    for (const double dTo : {d, HUGE_VAL, -HUGE_VAL})
      vValues.push_back(std::nextafter(d, dTo));
  };
  for (const std::uint64_t n : Magnitudes()) {
    const auto dWhole = static_cast<double>(static_cast<std::int64_t>(n));
    for (const double d : {WithBits(n), dWhole, dWhole / 8, dWhole / 100})
      add(d);
  }
  Support::Random random(2);
  for (int nExponent = -35; nExponent < 35; ++nExponent) {
    const double dTen = std::pow(10.0, nExponent);
    const double dDigits = 100'000 + random.Below(900'000);
    for (const double d : {1.0, 999'999.5, dDigits, dDigits + 0.5, dDigits - 0.5})
      add(d * dTen);
  }
  return vValues;
}

TEST(Numbers, DoublesEqualSnprintf) {
  const std::vector<double> vAll = Doubles();
  ExpectLikeSnprintf<double>(DoubleToStr, "%g", 32, vAll);
  std::size_t nFirst = 0;
  InEveryMode([&](const std::string&) {
    std::vector<double> vSome;
    for (std::size_t i = nFirst++; i < vAll.size(); i += 13)
      vSome.push_back(vAll[i]);
    ExpectLikeSnprintf<double>(DoubleToStr, "%g", 32, vSome);
  });
}

// The longest text that a double can have, one byte behind it included, lies at the end of what can
// be read. Equal is equal in every bit: zeros have signs.
void ExpectReadsLikeStrtod(const std::string& strText) {
  static Support::GuardedBuffer buffer(1200);
  const double dExpected = std::strtod(strText.c_str(), nullptr);
  for (const char cBehind : {'\0', ']'}) {
    const double d = JSON::ReadReal(buffer.Place(strText + cBehind));
    ASSERT_TRUE(std::memcmp(&d, &dExpected, sizeof d) == 0 ||
                (std::isnan(d) && std::isnan(dExpected)))
        << strText << " reads as " << d;
  }
}

std::string Printed(const char* szFormat, int nDigits, long double value) {
  char szText[1200];
  std::snprintf(szText, sizeof szText, szFormat, nDigits, value);
  return szText;
}

// Random digits with a point and an exponent, or without.
std::string SomeNumber(Support::Random& random, const std::string& strPoint) {
  std::string strText = std::string(random.Below(3), '0');
  for (std::uint32_t n = random.Below(26); n != 0; --n)
    strText += static_cast<char>('0' + random.Below(10));
  if (!random.OneIn(4))
    strText.insert(random.Below(strText.size() + 1), random.OneIn(4) ? strPoint : ".");
  if (random.OneIn(2)) strText.insert(0, "-");
  if (random.OneIn(2)) {
    const int nExponent = static_cast<int>(random.Below(random.OneIn(8) ? 700 : 70));
    strText += random.OneIn(2) ? "e" : "E-";
    strText += std::to_string(nExponent);
  }
  return strText;
}

// Numbers halfway between two doubles, and those next to them.
void ExpectHalvesReadLikeStrtod(std::uint64_t nBits) {
  const std::uint64_t nHalf = std::uint64_t{1} << 53 | nBits >> 11 | 1;  // 54 digits of base two
  for (const std::uint64_t n : {nHalf - 1, nHalf, nHalf + 1}) {
    ExpectReadsLikeStrtod(std::to_string(n));
    ExpectReadsLikeStrtod(std::to_string(n * 25) + "e-2");
    ExpectReadsLikeStrtod("-" + std::to_string(n << 5));
  }
  const double d = std::fabs(WithBits(nBits));
  const double dNext = WithBits((nBits & ~(std::uint64_t{1} << 63)) + 1);
  ExpectReadsLikeStrtod(Printed("%.*Lg", 1100, (static_cast<long double>(d) + dNext) / 2));
}

TEST(Numbers, RealsEqualStrtod) {
  const std::vector<std::uint64_t> vMagnitudes = Magnitudes();
  EXPECT_EQ(JSON::ReadReal(nullptr), 0.0);
  InEveryMode([&](const std::string& strPoint) {
    std::istringstream tokens(
        "- +1.5 .5 5. -.e 1e 1e+ 1.5e-x 1.2.3 0x1.8p1 -0X1P-2 1x2 nan -inf infinity -0 -0e5 0e999 "
        "1e4294967297 1e-4294967297 1-2 1e5e5 1,5 1,5.5 999999999 999999999. 999999999999999999 "
        "1000000000.00000000 1234567890123456789 18446744073709551616");
    std::string strText = " 1.5";
    do {
      ExpectReadsLikeStrtod(strText);
    } while (tokens >> strText);
    Support::Random random(3);
    for (int i = 0; i < 1500; i += Support::kStride) {
      const std::uint64_t n = random.Of(vMagnitudes);
      ExpectReadsLikeStrtod(Printed("%.*Lg", 1 + static_cast<int>(random.Below(25)), WithBits(n)));
      ExpectReadsLikeStrtod(SomeNumber(random, strPoint));
      ExpectHalvesReadLikeStrtod(n);
    }
    // One in 2000 of these is so near a half that 64 bits do not tell on which side it is.
    for (int i = 0; strPoint == "." && i < 20'000; ++i) {
      const std::uint64_t n = std::uint64_t{random.Below(UINT_MAX)} * random.Below(200'000'000);
      ExpectReadsLikeStrtod(std::to_string(n) + "e-" + std::to_string(random.Below(28)));
    }
  });
}

}  // namespace
