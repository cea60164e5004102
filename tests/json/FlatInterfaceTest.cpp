// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interface: messages without a document, and where escaped text fits. Every reader on
// every kind of value is held against the class and the C library by fuzz/flat, over its corpus;
// that a C program can use them is tested by tests/chost.

#include <gtest/gtest.h>

#include <climits>

#include "json/JSON.h"
#include "json/JSONMessage.h"

namespace {

TEST(FlatInterface, FindsNothingBeforeAParseAndKeepsWhatAFailedOneLeft) {
  const JSON_HANDLE handle = JSON_AllocMessage();
  for (const char* szText : {"", "12"}) {
    EXPECT_EQ(JSON_ParseMessage(handle, szText), 0);
    EXPECT_EQ(JSON_MessageSize(handle), 0);
    EXPECT_TRUE(JSON_GetNameAsString(handle, "a") == nullptr && JSON_IsOrdinalNull(handle, 0) == 0);
    EXPECT_EQ(JSON_GetPathAsDouble(handle, "a"), 0.0);
    EXPECT_EQ(JSON_GetOrdinalAsUnsignedLong64(handle, 0), 0U);
  }
  EXPECT_EQ(JSON_ParseMessage(handle, R"({"a":1,"b":2,"c")"), 0);
  EXPECT_EQ(JSON_MessageSize(handle), 2);
  EXPECT_EQ(JSON_ParseMessage(handle, nullptr), 0);  // changes nothing
  EXPECT_EQ(JSON_GetPathAsInt(handle, "b"), 2);
  EXPECT_EQ(JSON_IsPathNull(handle, nullptr), 0);
  // The handle is the message of C++, which can store what no text holds.
  auto& message = *reinterpret_cast<JSON::Message*>(handle);
  message.Set("s", static_cast<const char*>(nullptr));
  message.InternalUpdateByName("n", "nan", JSON::jtDouble);
  EXPECT_EQ(JSON_GetNameAsString(handle, "s"), nullptr);
  EXPECT_EQ(JSON_GetNameAsUnsignedLong64(handle, "n"), 0U);
  message.InternalUpdateByName("n", "1.9e19", JSON::jtDouble);
  EXPECT_EQ(JSON_GetNameAsUnsignedLong64(handle, "n"), ULLONG_MAX);
  JSON_FreeMessage(handle);
  JSON_FreeMessage(nullptr);
}

TEST(FlatEscape, WritesOnlyWhatFitsWithOneByteToSpare) {
  constexpr char szExpected[] = "a\\\"\\n";  // 5 bytes
  for (int nRoom = -1; nRoom < 9; ++nRoom) {
    char buffer[] = "##########";
    char* pDest = buffer + 1;
    const int nWritten = JSON_EscapeString(&pDest, pDest + nRoom, "a\"\n");
    EXPECT_EQ(nWritten, nRoom >= 7 ? 1 : 0) << nRoom;
    EXPECT_EQ(pDest, buffer + 1);
    EXPECT_STREQ(pDest, nWritten == 1 ? szExpected : "#########") << nRoom;
    EXPECT_EQ(buffer[0], '#');
    EXPECT_STREQ(buffer + 7, "###");
  }
}

}  // namespace
