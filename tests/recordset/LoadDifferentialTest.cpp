// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The loader reads text without a tree. Here it is compared with the plain way: parse the text with
// JSON::Message, walk the tree, set every cell with SetValue().

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recordset/QXRecordSet.h"
#include "tests/support/Author.h"
#include "tests/support/PlainLoad.h"
#include "tests/support/Random.h"

namespace {

void ExpectAgreement(CQXRecordSet& loaded, CQXRecordSet& walked, const std::string& text) {
  const std::string strText = text;
  loaded.SetString(strText);
  Plain::Load(walked, text);
  ASSERT_EQ(Plain::Picture(loaded), Plain::Picture(walked)) << text;
  ASSERT_EQ(strText, text);
}

TEST(RecordSetLoad, AgreesWithTheTree) {
  using Support::Kind;
  static constexpr Kind kKinds[] = {Kind::kRows, Kind::kPrettyRows, Kind::kMixed};
  static const char* const kNoRows[] = {"5,", "null,", "[{\"a\":1},\"b\"],", "\"x\",", "{},"};
  static const char* const kNames[] = {"rows",
                                       "rows",
                                       "before\":[1], \"rows",
                                       "r\\u006fws",
                                       "rows\":5,\"rows",
                                       "rows\\u0000\":1,\"b\":2,\"rows"};
  static const char* const kEndings[] = {"}", "}", ",\"behind\":{}}", ",\"rows\":5}"};
  CQXRecordSet loaded;
  CQXRecordSet walked;
  for (int i = 0; i < 60000; i += Support::kStride) {
    Support::Author author(static_cast<unsigned>(i));
    Support::Random& random = author.random;
    if (random.OneIn(3)) {
      loaded.Clear();
      walked.Clear();
    }
    std::string text = author.Document(random.OneIn(30) ? Kind::kDeep : random.Of(kKinds));
    if (text[0] == '[' && !random.OneIn(20)) {
      const std::size_t nSecond = text.find("},{");
      if (random.OneIn(6))
        text.insert(nSecond == std::string::npos ? 1 : nSecond + 2, random.Of(kNoRows));
      text = std::string("{\"") + random.Of(kNames) + "\":" + text + random.Of(kEndings);
    }
    for (std::uint32_t n = random.OneIn(3) ? random.Below(4) : 0; n != 0; --n)
      author.Damage(text);
    ExpectAgreement(loaded, walked, text);
    if (HasFatalFailure()) return;
  }
}

// Every byte of plain rows, put right for the short road, becomes every byte that may matter.
TEST(RecordSetLoad, AgreesWithTheTreeWhateverByteChanges) {
  const std::string strRow = R"({"a":12,"bb":"x","c":false,"d":true,"e":null,"f":-7,"g":0})";
  const std::string strRows = "{\"rows\":[" + strRow + ',' + strRow + "]}   and no end of text";
  for (std::size_t i = strRow.size(); i < 2 * strRow.size() + 12; ++i) {
    for (const char c : std::string("\0{}[]\",:\\ ntfu0-.e", 18)) {
      std::string text = strRows;
      text[i] = c;
      CQXRecordSet loaded;
      CQXRecordSet walked;
      ExpectAgreement(loaded, walked, text);
    }
  }
}

// Rows over and over in one record set, of a few names that come again, mostly in the same order.
TEST(RecordSetLoad, OwesNothingToWhatWasCleared) {
  const std::vector<std::string> vNames = {"a",  "bb",    "ccc", "a name that is not short",
                                           "dd", "e\x01", "f",   "another name that is not short"};
  Support::Random random(1);
  CQXRecordSet reused;
  for (int i = 0; i < 20000; i += Support::kStride) {
    std::string text;
    std::size_t nName = random.Below(3);
    while (text.empty() || !random.OneIn(7)) {
      nName = (random.OneIn(5) ? random.Below(vNames.size()) : nName + 1) % vNames.size();
      text += (text.empty() ? "{\"" : ",\"") + vNames[nName] + "\":" + std::to_string(nName);
    }
    text += random.OneIn(2) ? "}" : ",\"last\":\"so that all before it are far from the end\"}";
    if (random.OneIn(3)) text = "{\"rows\":[" + text + ',' + text + "]}";
    reused.Clear();
    reused.SetString(text);
    CQXRecordSet fresh(text);
    const std::string& asked = random.Of(vNames);
    ASSERT_STREQ(reused.GetValueAsString(asked.c_str()), fresh.GetValueAsString(asked.c_str()));
    ASSERT_EQ(Plain::Picture(reused), Plain::Picture(fresh)) << "text " << i << ": " << text;
  }
}

}  // namespace
