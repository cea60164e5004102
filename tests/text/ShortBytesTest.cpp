// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Short runs of bytes are compared and copied within their bounds.

#include "text/ShortBytes.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/GuardedBuffer.h"

namespace {

TEST(ShortBytes, StayWithinTheirRunAtEveryLength) {
  const std::string strBytes = "every byte differs FROM ITS 0123456789";
  Support::GuardedBuffer buffer(64);
  for (std::size_t n = 0; n <= strBytes.size(); ++n) {
    SCOPED_TRACE(n);
    char* const p = buffer.Place(std::string(n, '-'));
    JSON::MoveBytes(p, strBytes.data(), n);
    EXPECT_EQ(buffer.view(), strBytes.substr(0, n));
    EXPECT_TRUE(JSON::SameBytes(p, strBytes.data(), n));
    for (std::size_t i = 0; i < n; ++i) {
      p[i] ^= 1;
      EXPECT_FALSE(JSON::SameBytes(p, strBytes.data(), n)) << i;
      p[i] ^= 1;
    }
    for (std::size_t nShift = 1; nShift < 3 && nShift < n; ++nShift) {
      std::string strMoved = strBytes.substr(0, n);
      JSON::MoveBytes(strMoved.data(), strMoved.data() + nShift, n - nShift);
      EXPECT_EQ(strMoved.substr(0, n - nShift), strBytes.substr(nShift, n - nShift));
    }
  }
}

}  // namespace
