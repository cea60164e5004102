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

TEST(RecordSetLoad, AgreesWithTheTree) {
  CQXRecordSet loaded;
  CQXRecordSet walked;
  for (int i = 0; i < 60000; i += Support::kStride) {
    Support::Author author(static_cast<unsigned>(i));
    Support::Random& random = author.random;
    if (random.OneIn(3)) {
      loaded.Clear();
      walked.Clear();
    }
    static constexpr Support::Kind kKinds[] = {Support::Kind::kRows, Support::Kind::kPrettyRows,
                                               Support::Kind::kMixed};
    std::string text = author.Document(random.Of(kKinds));
    if (text[0] == '[' && !random.OneIn(20)) {
      static const char* const kOpenings[] = {"{\"rows\":",
                                              "{\"rows\":",
                                              "{ \"before\":[1], \"rows\":",
                                              "{\"r\\u006fws\":",
                                              "{\"rows\":5,\"rows\":",
                                              "{\"rows\\u0000\":1,\"b\":2,\"rows\":"};
      static const char* const kEndings[] = {"}", "}", ",\"behind\":{}}", ",\"rows\":5}"};
      text = random.Of(kOpenings) + text + random.Of(kEndings);
    }
    for (std::uint32_t n = random.OneIn(3) ? random.Below(4) : 0; n != 0; --n)
      author.Damage(text);
    const std::string strBefore = text;
    loaded.SetString(text);
    Plain::Load(walked, text);
    if (walked.GetString().empty()) walked.SetString("");  // written, whatever the text was
    ASSERT_EQ(Plain::Picture(loaded), Plain::Picture(walked)) << "text " << i << ": " << text;
    ASSERT_EQ(text, strBefore);
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
    for (const std::string& name : vNames) {
      ASSERT_EQ(reused.GetColumnIndex(name.c_str()), fresh.GetColumnIndex(name.c_str())) << text;
    }
    if (random.OneIn(4)) {
      reused.Clear();
      reused.SetValue(asked.c_str(), 1L);
      ASSERT_EQ(reused.GetColumnIndex(asked.c_str()), 1) << asked;
      ASSERT_EQ(reused.GetColumnCount(), 1) << asked;
    }
  }
}

}  // namespace
