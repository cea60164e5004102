// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record sets through the Arrow C data interface and back: what comes back is what went out, for
// random tables and every size of batch; integers and texts of every width come in, and what fails
// says why.

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "recordset/FlatHandle.h"
#include "tests/support/Random.h"

namespace {

using Set = CQXRecordSet;

// The names by index, and the cells that are not null. A column of several types comes back as
// text.
std::string Picture(Set& set, bool bAsText = false) {
  const CQXRows rows = std::as_const(set).Rows();
  std::string strPicture = std::to_string(set.GetRowsCount()) + " rows of";
  for (const std::string_view name : rows.Names())
    strPicture.append(" ").append(name);
  std::map<std::string_view, unsigned> mapTypes;
  for (const CQXRow& row : rows) {
    for (const CQXCell& cell : row)
      mapTypes[cell.name] |= cell.eType != Set::QX_NULL ? 1U << cell.eType : 0;
  }
  for (const CQXRow& row : rows) {
    for (const CQXCell& cell : row) {
      const unsigned nTypes = mapTypes[cell.name];
      const bool bMixed = (nTypes & (nTypes - 1)) != 0;
      if (cell.eType == Set::QX_NULL) continue;
      strPicture += '\n' + std::to_string(row.Number()) + ' ' + std::string(cell.name) + ' ' +
                    std::to_string(bAsText && bMixed ? RS_TEXT : int{cell.eType}) + ' ' +
                    std::string(cell.text);
    }
  }
  return strPicture;
}

// Columns of one type each, or of several, with gaps and nulls.
void FillAtRandom(Set& set, Support::Random& random) {
  for (std::uint32_t i = 1 + random.Below(6); i != 0; --i) {
    const std::string strName = "c" + std::to_string(random.Below(1000));
    const std::uint32_t nKind = random.Below(6);
    for (std::uint32_t n = random.Below(40); n != 0; --n) {
      const long lRow = 1 + static_cast<long>(random.Below(40));
      const int nValue = static_cast<int>(random.Below(1000)) - 500;
      const std::uint32_t nNow = nKind == 5 ? random.Below(5) : nKind;
      Set nested("{\"k\":" + std::to_string(nValue) + "}");
      if (nNow == 0) set.SetValue(strName, "", lRow, Set::QX_NULL);
      if (nNow == 1) set.SetValue(strName, nValue, lRow);
      if (nNow == 2) set.SetValue(strName, nValue % 2 != 0, lRow);
      if (nNow == 3) set.SetValue(strName, std::string(random.Below(20), 'x'), lRow);
      if (nNow == 4) set.SetValue(strName, nested, lRow);
    }
  }
}

TEST(Arrow, BringsBackWhatWentOut) {
  for (unsigned i = 0; i < 300; ++i) {
    Support::Random random(i);
    RS_RecordSet out;
    RS_RecordSet back;
    FillAtRandom(out.set, random);
    ArrowArrayStream stream;
    ASSERT_EQ(RS_ExportStream(&out, static_cast<long>(random.Below(12)), &stream), 1);
    const std::string strWanted = Picture(out.set, true);
    out.set.Clear();  // the stream has a copy
    ASSERT_EQ(RS_ImportStream(&back, &stream), 1);
    EXPECT_EQ(stream.release, nullptr);
    // Without a row no batch names the columns.
    if (back.set.GetRowsCount() != 0) {
      ASSERT_EQ(Picture(back.set), strWanted);
    }
  }
}

// A struct of one field, in memory of exactly its size.
struct Struct {
  Struct(const char* szFormat, std::int64_t nLength, std::vector<const void*> buffers,
         const char* szMetadata = nullptr)
      : vBuffers(std::move(buffers)) {
    field.format = szFormat;
    field.metadata = szMetadata;
    schema.format = "+s";
    schema.n_children = array.n_children = 1;
    schema.children = &pField;
    array.children = &pChild;
    array.length = child.length = nLength;
    child.n_buffers = static_cast<std::int64_t>(vBuffers.size());
    child.buffers = vBuffers.data();
  }
  Struct(const Struct&) = delete;
  Struct& operator=(const Struct&) = delete;

  // What comes in from row `lRow` on: the type and text of each cell, or the reason.
  std::string Imported(long lRow) {
    RS_RecordSet set;
    if (RS_ImportRows(&set, lRow, &schema, &array) != 1) return RS_Error(&set);
    std::string strCells;
    for (long i = lRow; i < lRow + array.length; ++i)
      strCells += std::to_string(RS_GetIndexType(&set, 1, i)) + ':' +
                  RS_GetIndexAsString(&set, 1, i, nullptr) + ' ';
    return strCells;
  }

  std::vector<const void*> vBuffers;
  ArrowSchema field{};
  ArrowSchema schema{};
  ArrowArray child{};
  ArrowArray array{};
  ArrowSchema* pField = &field;
  ArrowArray* pChild = &child;
};

template <typename Integer>
std::string ImportedBounds(const char* szFormat) {
  using Limits = std::numeric_limits<Integer>;
  const std::vector<Integer> values = {Limits::min(), Limits::max()};
  return Struct(szFormat, 2, {nullptr, values.data()}).Imported(1);
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

// Offsets of struct and child add up; nulls of either are nulls; texts end at their NUL.
TEST(Arrow, TakesWhatAHostDescribes) {
  const std::int16_t aNumbers[] = {90, 91, 92, 93, -7, 8};
  const unsigned char nValid = 0x2F;  // all but the fifth
  Struct numbers("s", 2, {&nValid, aNumbers});
  numbers.array.offset = 3;
  numbers.child.offset = 1;
  EXPECT_EQ(numbers.Imported(10), "0: 1:8 ");
  EXPECT_EQ(numbers.Imported(LONG_MAX), "there are more rows than row numbers");
  numbers.field.format = "g";
  EXPECT_EQ(numbers.Imported(1), "a field is neither null, boolean, integer nor text");
  numbers.schema.format = "l";
  EXPECT_EQ(numbers.Imported(1), "the data is no struct");

  const auto count = [](std::int32_t n) {  // in the byte order of the processor
    return std::string(reinterpret_cast<const char*>(&n), sizeof n);
  };
  const std::string strMark = count(2) + count(1) + "k" + count(0) + count(16) +
                              "qxrecordset.type" + count(9) + "recordset";
  std::string strOther = strMark;
  strOther.back() = 'T';
  const std::vector<std::int32_t> vShort = {0, 1, 1, 4};
  const std::vector<std::int64_t> vLong = {0, 1, 1, 4};
  const unsigned char nStructs = 5;  // the second struct is null
  const void* aValid[1] = {&nStructs};
  const struct {
    const char* szFormat;
    const void* pOffsets;
    const char* szMetadata;
    char cType;
  } kCases[] = {{"u", vShort.data(), nullptr, '3'},
                {"U", vLong.data(), nullptr, '3'},
                {"u", vShort.data(), strMark.data(), '5'},
                {"u", vShort.data(), strOther.data(), '3'}};
  for (const auto& test : kCases) {
    Struct texts(test.szFormat, 3, {nullptr, test.pOffsets, "ab\0c"}, test.szMetadata);
    texts.array.n_buffers = 1;
    texts.array.buffers = aValid;
    const std::string strType(1, test.cType);
    EXPECT_EQ(texts.Imported(-1), strType + ":a 0: " + strType + ":b ");
  }
}

TEST(Arrow, SaysWhyAStreamFails) {
  RS_RecordSet set;
  std::string strWhy = "the disk is gone";
  ArrowArrayStream stream{
      [](ArrowArrayStream*, ArrowSchema*) { return 5; }, nullptr,
      [](ArrowArrayStream* p) { return static_cast<const char*>(p->private_data); },
      [](ArrowArrayStream* p) { p->release = nullptr; }, strWhy.data()};
  EXPECT_EQ(RS_ImportStream(&set, &stream), 0);
  EXPECT_EQ(stream.release, nullptr);
  strWhy[0] = '#';
  EXPECT_STREQ(RS_Error(&set), "the disk is gone");
}

}  // namespace
