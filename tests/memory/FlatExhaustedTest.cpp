// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that runs out below the flat interface of record sets: each function is called with the
// first allocation failing, then with the second, and so on until it succeeds. No exception leaves
// it, the failure is told, and nothing is left allocated.

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "recordset/RS.h"
#include "tests/support/CountedMemory.h"

namespace {

const std::string kText(5000, 't');
const std::string kRows =
    R"({"rows":[{"a":1,"b":")" + kText + R"(","c":{"d":[1,{"e":2.5}]}},{"f":true}]})";

RS_HANDLE MakeSet() {
  RS_HANDLE set = RS_Alloc();
  RS_Load(set, kRows.data(), kRows.size(), nullptr);
  return set;
}

// Each gives whether it succeeded, and releases what it made.
struct Function {
  const char* szName;
  std::function<bool(RS_HANDLE)> call;
};

bool Freed(RS_HANDLE made) {
  if (made == nullptr) return false;
  RS_Free(made);
  return true;
}

bool Exported(RS_HANDLE set) {
  ArrowSchema schema;
  ArrowArray array;
  if (RS_ExportRows(set, 1, 2, &schema, &array) == 0) return false;
  schema.release(&schema);
  array.release(&array);
  return true;
}

// A stream tells its own failures.
bool Streamed(RS_HANDLE set) {
  ArrowArrayStream stream;
  if (RS_ExportStream(set, 1, &stream) == 0) return false;
  RS_HANDLE other = RS_Alloc();
  if (other == nullptr) {
    stream.release(&stream);
    return false;
  }
  const bool bDone = RS_ImportStream(other, &stream) == 1;
  EXPECT_TRUE(bDone || std::strcmp(RS_Error(other), "memory is exhausted") == 0);
  RS_Free(other);
  return bDone;
}

const Function kFunctions[] = {
    {"alloc", [](RS_HANDLE) { return Freed(RS_Alloc()); }},
    {"copy", [](RS_HANDLE set) { return Freed(RS_Copy(set)); }},
    {"load",
     [](RS_HANDLE set) {
       RS_LoadResult result;
       result.size = sizeof result;
       const bool bLoaded = RS_Load(set, kRows.data(), kRows.size(), &result) == 1;
       EXPECT_EQ(result.reason, nullptr);
       EXPECT_EQ(result.lossy_cells, bLoaded ? 1U : 0U);
       return bLoaded;
     }},
    {"text", [](RS_HANDLE set) { return RS_Text(set, nullptr) != nullptr; }},
    {"merge",
     [](RS_HANDLE set) {
       RS_HANDLE other = RS_Alloc();
       const bool bDone = other != nullptr && RS_Merge(other, set) == 1;
       RS_Free(other);
       return bDone;
     }},
    {"add a column", [](RS_HANDLE set) { return RS_AddColumn(set, kText.c_str()) > 0; }},
    {"column name", [](RS_HANDLE set) { return RS_ColumnName(set, 1) != nullptr; }},
    {"sorted name", [](RS_HANDLE set) { return RS_SortedColumnName(set, 0) != nullptr; }},
    {"set a text",
     [](RS_HANDLE set) { return RS_SetNameAsString(set, "b", 2, kText.c_str()) == 1; }},
    {"set far away", [](RS_HANDLE set) { return RS_SetNameAsLong64(set, "new", -5, 5) == 1; }},
    {"set a record set",
     [](RS_HANDLE set) { return RS_SetNameAsRecordSet(set, "x", 3, set) == 1; }},
    {"get a record set", [](RS_HANDLE set) { return Freed(RS_GetNameAsRecordSet(set, "c", 1)); }},
    {"get a column",
     [](RS_HANDLE set) {
       std::size_t nLength = 0;
       return RS_GetColumnAsStrings(set, 2, 1, 2, nullptr, &nLength) != nullptr;
     }},
    {"export", Exported},
    {"stream", Streamed},
};

TEST(FlatExhaustedMemory, IsAnErrorValueOfEveryFunction) {
  for (const Function& function : kFunctions) {
    SCOPED_TRACE(function.szName);
    bool bDone = false;
    for (int nBefore = 0; !bDone; ++nBefore) {
      SCOPED_TRACE("allocation " + std::to_string(nBefore));
      ASSERT_LT(nBefore, 1000);
      const std::size_t nLive = CountedMemory::Live();
      RS_HANDLE set = MakeSet();
      CountedMemory::FailAfter(nBefore);
      bDone = function.call(set);
      const bool bFailed = CountedMemory::StopFailing();
      EXPECT_EQ(bDone, !bFailed);
      EXPECT_TRUE(RS_Text(set, nullptr) != nullptr);
      EXPECT_TRUE(function.call(set));  // later
      RS_Free(set);
      EXPECT_EQ(CountedMemory::Live(), nLive) << "something leaks";
      if (testing::Test::HasFailure()) return;
      EXPECT_TRUE(!bDone || nBefore > 0) << "nothing was allocated";
    }
  }
}

}  // namespace
