// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Numbers to text, held against snprintf.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "json/JSONSerialize.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/Random.h"

namespace {

template <typename Value>
using ToStr = char* (*)(Value, char*, int);

// What a call leaves behind: the text, cut where it does not fit, the address of its NUL, and a NUL
// as the buffer's last byte; nothing is written beyond the buffer.
template <typename Value>
void ExpectText(ToStr<Value> toStr, Value value, const std::string& strText, int nSize) {
  static Support::GuardedBuffer buffer(64);
  buffer.Place(std::string(static_cast<std::size_t>(nSize), '?'));
  char* const pEnd = toStr(value, buffer.data(), nSize);
  ASSERT_EQ(buffer.data(), strText.substr(0, static_cast<std::size_t>(nSize) - 1));
  ASSERT_EQ(pEnd, buffer.data() + std::strlen(buffer.data())) << strText << " into " << nSize;
  ASSERT_EQ(buffer.data()[nSize - 1], '\0') << strText << " into " << nSize;
}

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

// `szFormat` is snprintf's for the type. Each value goes into a buffer that just holds it, into one
// of the size that holds every value, and into a large one.
template <typename Integer>
void ExpectLikeSnprintf(ToStr<Integer> toStr, const char* szFormat, int nHoldsAll) {
  for (const std::uint64_t n : Magnitudes()) {
    const auto value = static_cast<Integer>(n);
    char szText[32];
    const int nLength = std::snprintf(szText, sizeof szText, szFormat, value);
    for (const int nSize : {nLength + 1, nHoldsAll, 40}) {
      ASSERT_NO_FATAL_FAILURE(ExpectText<Integer>(toStr, value, szText, nSize));
    }
  }
}

TEST(Numbers, IntegersEqualSnprintf) {
  ExpectLikeSnprintf<int>(IntToStr, "%d", 12);
  ExpectLikeSnprintf<long>(LongToStr, "%ld", sizeof(long) == 8 ? 21 : 12);
  ExpectLikeSnprintf<unsigned long>(UnsignedLongToStr, "%lu", sizeof(long) == 8 ? 21 : 11);
  ExpectLikeSnprintf<long long>(Long64ToStr, "%lld", 21);
  ExpectLikeSnprintf<unsigned long long>(UnsignedLong64ToStr, "%llu", 21);
}

TEST(Numbers, WithoutABufferNothingIsWritten) {
  for (const int nSize : {0, -1, INT_MIN}) {
    char c = '?';
    EXPECT_EQ(IntToStr(1, &c, nSize), nullptr);
    EXPECT_EQ(LongToStr(1, &c, nSize), nullptr);
    EXPECT_EQ(UnsignedLongToStr(1, &c, nSize), nullptr);
    EXPECT_EQ(Long64ToStr(1, &c, nSize), nullptr);
    EXPECT_EQ(UnsignedLong64ToStr(1, &c, nSize), nullptr);
    EXPECT_EQ(DoubleToStr(1, &c, nSize), nullptr);
    EXPECT_EQ(c, '?');
  }
}

TEST(Numbers, TextIsCutToItsBuffer) {
  for (int nSize = 1; nSize <= 32; ++nSize) {
    ExpectText<int>(IntToStr, -1234567890, "-1234567890", nSize);
    ExpectText<unsigned long long>(UnsignedLong64ToStr, ULLONG_MAX, "18446744073709551615", nSize);
    ExpectText<double>(DoubleToStr, -1.23456e-300, "-1.23456e-300", nSize);
    ExpectText<double>(DoubleToStr, -654321, "-654321", nSize);
  }
}

TEST(Numbers, DoublesEqualSnprintf) {
  std::vector<double> vValues = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan(""), -std::nan("")};
  const auto add = [&vValues](double value) {
    for (const double d : {value, std::nextafter(value, HUGE_VAL), std::nextafter(value, -HUGE_VAL),
                           value + 0.5, value / 8}) {
      vValues.push_back(d);
      vValues.push_back(-d);
    }
  };
  for (int i = 0; i < 1000000; i += i < 1000 ? 1 : 37)
    add(i);
  for (int i = 999000; i <= 1001000; ++i)
    add(i);
  for (int i = -310; i <= 308; ++i)
    add(std::pow(10.0, i));
  Support::Random random(2);
  for (int i = 0; i < 5000; ++i) {
    const std::uint64_t n = std::uint64_t{random.Below(UINT_MAX)} << 32 | random.Below(UINT_MAX);
    double value = 0;
    std::memcpy(&value, &n, sizeof value);
    add(value);
    add(static_cast<double>(random.Below(100000000)) / 100);
  }
  char szBuffer[32];
  for (const double value : vValues) {
    char szText[40];
    const int nLength = std::snprintf(szText, sizeof szText, "%g", value);
    ASSERT_EQ(DoubleToStr(value, szBuffer, sizeof szBuffer), szBuffer + nLength) << szText;
    ASSERT_STREQ(szBuffer, szText);
  }
}

}  // namespace
