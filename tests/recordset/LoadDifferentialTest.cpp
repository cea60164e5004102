// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The loader reads text without a tree. Here it is compared with the plain way: parse the text with
// JSON::Message, walk the tree, set every cell with SetValue().

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recordset/QXRecordSet.h"
#include "tests/support/PlainLoad.h"
#include "tests/support/Random.h"

namespace {

using Support::Random;

// Texts of rows as hosts write them, with every oddity that the grammar knows thrown in.
class Texts {
 public:
  explicit Texts(Random& random) : random_(random) {}

  std::string Next() {
    std::string text =
        random_.OneIn(4) ? Object(3) : "{" + Before() + "\"rows\":" + Rows() + After() + "}";
    for (std::uint32_t n = random_.OneIn(3) ? random_.Below(4) : 0; n != 0; --n) {
      Spoil(text);
    }
    return text;
  }

 private:
  std::string Before() { return random_.OneIn(6) ? Member(2) + "," : ""; }
  std::string After() { return random_.OneIn(6) ? "," + Member(2) : ""; }

  std::string Rows() {
    std::string rows = "[";
    const std::uint32_t nRows = random_.Below(6);
    for (std::uint32_t i = 0; i < nRows; ++i) {
      rows += (i != 0 ? "," : "") + (random_.OneIn(12) ? Value(2) : Object(3));
    }
    return rows + (random_.OneIn(20) ? ",]" : "]");
  }

  std::string Object(int nDepth) {
    std::string object = "{";
    const std::uint32_t nMembers = random_.Below(7);
    for (std::uint32_t i = 0; i < nMembers; ++i) {
      object += (i != 0 ? "," : "") +
                (random_.OneIn(15) ? Member(nDepth) : "\"" + Usual(i) + "\":" + Value(nDepth));
    }
    return object + "}";
  }

  static std::string Usual(std::uint32_t i) {
    static const char* const kNames[] = {
        "id", "name", "a", "a name of sixteen", "fifteen letters", "rows", "z"};
    return kNames[i % 7];
  }

  std::string Member(int nDepth) {
    static const char* const kNames[] = {"rows",
                                         "r\\u006fws",
                                         "",
                                         "q\\\"uote",
                                         "back\\\\slash",
                                         "nul\\u0000tail",
                                         "name",
                                         "id",
                                         "a very long name of more than thirty bytes"};
    return "\"" + std::string(random_.Of(kNames)) + "\":" + Value(nDepth);
  }

  std::string Value(int nDepth) {
    static const char* const kValues[] = {"1",
                                          "0",
                                          "-7",
                                          "007",
                                          "-0",
                                          "+5",
                                          "123456789",
                                          "2147483648",
                                          "-2147483649",
                                          "99999999999999999999",
                                          "1-2",
                                          "-",
                                          "1.5",
                                          "2e3",
                                          "true",
                                          "false",
                                          "null",
                                          "\"\"",
                                          "\"x\"",
                                          "\"0\"",
                                          "\"1\"",
                                          "[1,{\"a\":2}]",
                                          "[]",
                                          "\"fifteen bytes..\"",
                                          "\"sixteen bytes...\"",
                                          "\"seventeen bytes..\"",
                                          "\"line\\nbreak \\u00e9 \\\\\"",
                                          "\"nul\\u0000tail\"",
                                          "\"{\\\"k\\\":1}\"",
                                          "{\"o\":{\"p\":[1],\"q\":\"w\"},\"n\":null,\"b\":true}",
                                          "{}"};
    if (nDepth > 0 && random_.OneIn(25)) return Object(nDepth - 1);
    return std::string(random_.OneIn(10) ? " " : "") + random_.Of(kValues) +
           (random_.OneIn(10) ? "\n\t" : "");
  }

  // A byte is changed, taken out or put in, or the text breaks off.
  void Spoil(std::string& text) {
    static const char kBytes[] = "\"\\{}[],:0-.tn \t\v";
    if (text.empty()) return;
    const std::size_t nAt = random_.Below(text.size());
    const char cByte = kBytes[random_.Below(sizeof kBytes)];  // the NUL included
    switch (random_.Below(4)) {
      case 0:
        text[nAt] = cByte;
        break;
      case 1:
        text.erase(nAt, 1);
        break;
      case 2:
        text.insert(nAt, 1, cByte);
        break;
      default:
        text.resize(nAt);
    }
  }

  Random& random_;
};

TEST(RecordSetLoad, AgreesWithTheTree) {
  Random random(20261);
  Texts texts(random);
  CQXRecordSet loaded;
  CQXRecordSet walked;
  for (int i = 0; i < 60000 / Support::kStride; ++i) {
    if (random.OneIn(3)) {
      loaded.Clear();
      walked.Clear();
    }
    const std::string text = texts.Next();
    const std::string strBefore = text;
    loaded.SetString(text);
    Plain::Load(walked, text);
    if (walked.GetString().empty()) walked.SetString("");  // written, whatever the text was
    ASSERT_EQ(Plain::Picture(loaded), Plain::Picture(walked)) << "text " << i << ": " << text;
    ASSERT_EQ(text, strBefore);
  }
}

}  // namespace
