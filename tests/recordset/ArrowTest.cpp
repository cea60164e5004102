// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record sets through the Arrow C data interface and back: what comes back is what went out, for
// random tables and every size of batch; and integers and texts of every width come in.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "recordset/QXRecordSet.h"
#include "recordset/RS.h"
#include "tests/support/Random.h"

namespace {

// Cells by name, row and type; a cell that is not there counts as null. A column of several types
// comes back as text.
std::string Picture(RS_HANDLE set, bool bAsText) {
  std::string strPicture = std::to_string(RS_RowsCount(set)) + " rows;";
  for (long i = 1; i <= RS_ColumnsCount(set); ++i) {
    strPicture += std::string("\n") + RS_ColumnName(set, i) + ':';
    int nTypes = 0;
    for (long row = 1; row <= RS_RowsCount(set); ++row)
      if (RS_GetIndexType(set, i, row) > 0) nTypes |= 1 << RS_GetIndexType(set, i, row);
    const bool bMixed = (nTypes & (nTypes - 1)) != 0;
    for (long row = 1; row <= RS_RowsCount(set); ++row) {
      const int eType = RS_GetIndexType(set, i, row);
      const char* const szText = RS_GetIndexAsString(set, i, row, nullptr);
      strPicture +=
          eType <= 0 ? " null" : " " + std::to_string(bAsText && bMixed ? RS_TEXT : eType) + szText;
    }
  }
  return strPicture;
}

void FillAtRandom(RS_HANDLE set, Support::Random& random) {
  const std::uint32_t nColumns = 1 + random.Below(6);
  for (std::uint32_t i = 0; i < nColumns; ++i) {
    const std::string strName = "c" + std::to_string(random.Below(1000));
    const std::uint32_t nKind = random.Below(6);
    for (std::uint32_t n = random.Below(40); n != 0; --n) {
      const long lRow = 1 + static_cast<long>(random.Below(40));
      const std::uint32_t nNow = nKind == 5 ? random.Below(5) : nKind;
      const int nValue = static_cast<int>(random.Below(1000)) - 500;
      if (nNow == 0) RS_SetNameNull(set, strName.c_str(), lRow);
      if (nNow == 1) RS_SetNameAsLong64(set, strName.c_str(), lRow, nValue);
      if (nNow == 2) RS_SetNameAsBool(set, strName.c_str(), lRow, nValue % 2);
      if (nNow == 3)
        RS_SetNameAsString(set, strName.c_str(), lRow, std::string(random.Below(20), 'x').c_str());
      if (nNow == 4) {
        RS_HANDLE nested = RS_Alloc();
        RS_SetNameAsLong64(nested, "k", 1, nValue);
        RS_SetNameAsRecordSet(set, strName.c_str(), lRow, nested);
        RS_Free(nested);
      }
    }
  }
}

TEST(Arrow, BringsBackWhatWentOut) {
  for (unsigned i = 0; i < 300; ++i) {
    Support::Random random(i);
    RS_HANDLE set = RS_Alloc();
    FillAtRandom(set, random);
    ArrowArrayStream stream;
    ASSERT_EQ(RS_ExportStream(set, static_cast<long>(random.Below(12)), &stream), 1);
    const std::string strWanted = Picture(set, true);
    RS_Free(set);  // the stream has a copy
    RS_HANDLE back = RS_Alloc();
    ASSERT_EQ(RS_ImportStream(back, &stream), 1);
    // Without a row no batch names the columns.
    if (RS_RowsCount(back) != 0) {
      ASSERT_EQ(Picture(back, false), strWanted);
    }
    RS_Free(back);
  }
}

// One column of numbers in memory of exactly their size.
template <typename Integer>
std::string Imported(const char* szFormat, std::vector<Integer> values) {
  const void* aBuffers[2] = {nullptr, values.data()};
  ArrowSchema field{szFormat, "n", nullptr, 0, 0, nullptr, nullptr, nullptr, nullptr};
  ArrowSchema* pField = &field;
  const ArrowSchema schema{"+s", "", nullptr, 0, 1, &pField, nullptr, nullptr, nullptr};
  const auto nLength = static_cast<std::int64_t>(values.size());
  ArrowArray child{nLength, 0, 0, 2, 0, aBuffers, nullptr, nullptr, nullptr, nullptr};
  ArrowArray* pChild = &child;
  const ArrowArray array{nLength, 0, 0, 0, 1, nullptr, &pChild, nullptr, nullptr, nullptr};
  RS_HANDLE set = RS_Alloc();
  EXPECT_EQ(RS_ImportRows(set, 1, &schema, &array), 1);
  std::string strCells;
  for (long row = 1; row <= RS_RowsCount(set); ++row) {
    strCells += std::to_string(RS_GetIndexType(set, 1, row)) + ':' +
                RS_GetIndexAsString(set, 1, row, nullptr) + ' ';
  }
  RS_Free(set);
  return strCells;
}

template <typename Integer>
std::string ImportedBounds(const char* szFormat) {
  using Limits = std::numeric_limits<Integer>;
  return Imported<Integer>(szFormat, {Limits::min(), Limits::max()});
}

TEST(Arrow, TakesIntegersOfEveryWidth) {
  const std::string strWide = sizeof(long) == 8 ? "1:" : "3:";  // text where `long` is too short
  EXPECT_EQ(ImportedBounds<std::int8_t>("c"), "1:-128 1:127 ");
  EXPECT_EQ(ImportedBounds<std::uint8_t>("C"), "1:0 1:255 ");
  EXPECT_EQ(ImportedBounds<std::int16_t>("s"), "1:-32768 1:32767 ");
  EXPECT_EQ(ImportedBounds<std::uint16_t>("S"), "1:0 1:65535 ");
  EXPECT_EQ(ImportedBounds<std::int32_t>("i"), "1:-2147483648 1:2147483647 ");
  EXPECT_EQ(ImportedBounds<std::uint32_t>("I"), "1:0 " + strWide + "4294967295 ");
  EXPECT_EQ(ImportedBounds<std::int64_t>("l"),
            strWide + "-9223372036854775808 " + strWide + "9223372036854775807 ");
  EXPECT_EQ(ImportedBounds<std::uint64_t>("L"), "1:0 3:18446744073709551615 ");
}

template <typename Offset>
void ExpectTexts(const char* szFormat, const char* szMetadata, int eType) {
  const std::vector<Offset> vOffsets = {0, 1, 1, 4};
  const void* aBuffers[3] = {nullptr, vOffsets.data(), "ab\0c"};
  ArrowSchema field{szFormat, nullptr, szMetadata, 0, 0, nullptr, nullptr, nullptr, nullptr};
  ArrowSchema* pField = &field;
  const ArrowSchema schema{"+s", "", nullptr, 0, 1, &pField, nullptr, nullptr, nullptr};
  ArrowArray child{3, 0, 0, 3, 0, aBuffers, nullptr, nullptr, nullptr, nullptr};
  ArrowArray* pChild = &child;
  const std::uint8_t nValid = 5;  // the second struct is null
  const void* aValid[1] = {&nValid};
  const ArrowArray array{3, 1, 0, 1, 1, aValid, &pChild, nullptr, nullptr, nullptr};
  RS_HANDLE set = RS_Alloc();
  ASSERT_EQ(RS_ImportRows(set, -1, &schema, &array), 1);
  EXPECT_STREQ(RS_GetNameAsString(set, "", -1, nullptr), "a");
  EXPECT_EQ(RS_GetNameType(set, "", -1), eType);
  EXPECT_EQ(RS_GetNameType(set, "", 0), RS_NULL);
  EXPECT_STREQ(RS_GetNameAsString(set, "", 1, nullptr), "b");  // up to its NUL
  RS_Free(set);
}

TEST(Arrow, TakesTextsOfEitherWidthAndKnowsItsOwnMark) {
  ExpectTexts<std::int32_t>("u", nullptr, RS_TEXT);
  ExpectTexts<std::int64_t>("U", nullptr, RS_TEXT);
  std::string strMark;
  for (const std::string& part :
       {std::string("\2"), std::string("\1"), std::string("k"), std::string(), std::string("\x10"),
        std::string("qxrecordset.type"), std::string("\x9"), std::string("recordset")}) {
    strMark += part.size() > 1 || part == "k" ? part : part + std::string(4 - part.size(), '\0');
  }
  ExpectTexts<std::int32_t>("u", strMark.data(), RS_RECORDSET);
  strMark.back() = 'T';
  ExpectTexts<std::int32_t>("u", strMark.data(), RS_TEXT);
}

}  // namespace
