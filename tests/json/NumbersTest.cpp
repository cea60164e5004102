// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers to text, held against snprintf.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "json/JSONSerialize.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"

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
  for (int i = 0; i < 4000; ++i) {
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
    for (const int nSize : {1, nLength, nLength + 1, nHoldsAll, 40}) {
      const auto nBytes = static_cast<std::size_t>(nSize);
      char* const pText = buffer.Place(std::string(nBytes, '?'));
      ASSERT_EQ(toStr(value, pText, nSize), pText + std::min(nLength, nSize - 1)) << szText;
      ASSERT_EQ(pText, std::string(szText).substr(0, nBytes - 1)) << szText;
      ASSERT_EQ(pText[nSize - 1], '\0') << szText;
    }
  }
  for (const int nSize : {0, -1, INT_MIN}) {
    EXPECT_EQ(toStr(vValues.back(), buffer.Place("?"), nSize), nullptr);
    EXPECT_EQ(buffer.view(), "?");
  }
}

template <typename Integer>
void ExpectLikeSnprintf(char* (*toStr)(Integer, char*, int), const char* szFormat, int nHoldsAll) {
  std::vector<Integer> vValues;
  for (const std::uint64_t n : Magnitudes())
    vValues.push_back(static_cast<Integer>(n));
  ExpectLikeSnprintf(toStr, szFormat, nHoldsAll, vValues);
}

TEST(Numbers, IntegersEqualSnprintf) {
  ExpectLikeSnprintf<int>(IntToStr, "%d", 12);
  ExpectLikeSnprintf<long>(LongToStr, "%ld", sizeof(long) == 8 ? 21 : 12);
  ExpectLikeSnprintf<unsigned long>(UnsignedLongToStr, "%lu", sizeof(long) == 8 ? 21 : 11);
  ExpectLikeSnprintf<long long>(Long64ToStr, "%lld", 21);
  ExpectLikeSnprintf<unsigned long long>(UnsignedLong64ToStr, "%llu", 21);
}

TEST(Numbers, DoublesEqualSnprintf) {
  std::vector<double> vValues = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")};
  for (const std::uint64_t n : Magnitudes()) {
    double dSameBits = 0;
    std::memcpy(&dSameBits, &n, sizeof n);
    const auto dWhole = static_cast<double>(static_cast<std::int64_t>(n));
    for (const double d : {dSameBits, dWhole, dWhole / 8, dWhole / 100}) {
      for (const double dTo : {d, HUGE_VAL, -HUGE_VAL})
        vValues.push_back(std::nextafter(d, dTo));
    }
  }
  ExpectLikeSnprintf<double>(DoubleToStr, "%g", 32, vValues);
}

}  // namespace
