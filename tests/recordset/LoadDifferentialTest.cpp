// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The loader reads text without a tree. Here it is compared with the plain way: parse the text with
// JSON::Message, walk the tree, set every cell with SetValue().

#include <gtest/gtest.h>

#include <string>

#include "recordset/QXRecordSet.h"
#include "tests/support/Author.h"
#include "tests/support/PlainLoad.h"

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

}  // namespace
