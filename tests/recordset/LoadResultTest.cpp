// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What Load() and JSON::Message::Error() tell: where and why a text is refused, by examples; that
// both agree with what is loaded and with each other, and that losses are those of a plain walk
// over the tree, on random documents.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

#include "recordset/QXRecordSet.h"
#include "tests/support/Author.h"
#include "tests/support/PlainLoad.h"

namespace {

struct Refused {
  std::string_view text;
  std::size_t nOffset;
  const char* szReason;
};

using namespace std::string_view_literals;

const std::string kDeep = "{\"a\":" + std::string(1024, '[');

const Refused kRefused[] = {
    {"", 0, "there is no text"},
    {" \n ", 3, "there is no document: expected '{' or '['"},
    {"\n x", 2, "expected '{' or '['"},
    {"\xEF\xBB\xBF{}", 0, "a byte order mark stands in front of the document"},
    {"\0{}"sv, 0, "a NUL byte ends the text here"},
    {"{", 1, "the text ends inside an object"},
    {"{\"a\":1", 6, "the text ends inside an object"},
    {"{\"a\":-12.5e", 11, "the text ends inside an object"},
    {"{\"a\":[1, ", 9, "the text ends inside an array"},
    {"{\"a\":[", 6, "the text ends inside an array"},
    {"{\"a\":\"x\"1", 8, "expected ',' or '}'"},
    {"{\"a\":true1", 9, "expected ',' or '}'"},
    {"{\"a\":[1 2]}", 8, "expected ',' or ']'"},
    {"{\"a\":[1}", 7, "expected ',' or ']'"},
    {"{,}", 1, "expected a name in double quotes or '}'"},
    {"{\"a\":1,\n  b:2}", 10, "expected a name in double quotes"},
    {"{\"a\":1,}", 7, "a member has to follow the comma"},
    {"{\"a\" 1}", 5, "expected ':' behind the name"},
    {"{\"a\"", 4, "the text ends inside an object"},
    {"{\"a", 1, "the string that begins here has no end"},
    {"{\"a\\n\":\"x\\\"}", 7, "the string that begins here has no end"},
    {"{\"a\":}", 5, "expected a value"},
    {"{\"a\":\"\\n\n\",\n\"b\":'x'}", 16, "expected a value; texts stand in double quotes"},
    {"{\"a\":.5}", 5, "expected a value; a number begins with a digit or a sign"},
    {"{\"a\":nul}", 5, "expected a value; the words are true, false and null"},
    {"{\"a\":1\0}"sv, 6, "a NUL byte ends the text here"},
    {kDeep, kDeep.size() - 1, "nested more than 1024 levels deep"},
};

void ExpectPlace(const JSON::ParseError& error, const Refused& refused) {
  ASSERT_NE(error.szReason, nullptr);
  EXPECT_STREQ(error.szReason, refused.szReason);
  EXPECT_EQ(error.nOffset, refused.nOffset);
  std::size_t nLine = 1;
  std::size_t nColumn = 1;
  for (const char c : refused.text.substr(0, refused.nOffset)) {
    nColumn = c == '\n' ? 1 : nColumn + 1;
    nLine += c == '\n' ? 1 : 0;
  }
  EXPECT_EQ(error.nLine, nLine);
  EXPECT_EQ(error.nColumn, nColumn);
}

TEST(LoadResult, SaysWhereAndWhyATextIsRefused) {
  for (const Refused& refused : kRefused) {
    SCOPED_TRACE(refused.text);
    CQXRecordSet set(R"({"kept":1})");
    const LoadResult result = set.Load(refused.text);
    EXPECT_FALSE(result.bLoaded);
    EXPECT_EQ(set.GetString(), R"({"kept":1})");
    ExpectPlace(result.error, refused);

    const int nLength = static_cast<int>(refused.text.size());
    JSON::Message message;
    EXPECT_FALSE(message.Parse(refused.text.data(), nLength));
    ExpectPlace(message.Error(), refused);
    JSON::Message target;
    target.Parse("x");
    message.CopyTo(target);
    EXPECT_EQ(target.Error().szReason, nullptr);

    // In place, the lines are gone with the text.
    std::string strText(refused.text);
    JSON::Message inPlace(true);
    EXPECT_FALSE(inPlace.Parse(strText.data(), nLength));
    EXPECT_STREQ(inPlace.Error().szReason, refused.szReason);
    EXPECT_EQ(inPlace.Error().nOffset, refused.nOffset);

    EXPECT_TRUE(message.Parse("{}"));
    EXPECT_EQ(message.Error().szReason, nullptr);
  }
}

TEST(LoadResult, TellsArraysFromRecordSets) {
  CQXRecordSet set;
  const LoadResult result = set.Load("\n [{}]");
  EXPECT_FALSE(result.bLoaded);
  ExpectPlace(result.error, {"\n [{}]", 2, "expected '{': an array is no record set"});
  EXPECT_EQ(set.GetString(), "{}");  // written, as after SetString()
}

// A message's own text is rewritten by its own parse, and may even move.
TEST(ParseError, IsToldOfAMessagesOwnTextToo) {
  JSON::Message message;
  message.Parse((std::string(20000, ' ') + R"({"a":"{\"b\":1, c}"})").c_str());
  EXPECT_FALSE(message.Parse(message["a"].pText));
  EXPECT_STREQ(message.Error().szReason, "expected a name in double quotes");
  EXPECT_EQ(message.Error().nOffset, 8U);
  EXPECT_EQ(message.Error().nLine, 0U);
}

// The values of a row or object that lose something; `set` has loaded the text.
struct PlainLosses {
  CQXRecordSet& set;
  LoadResult result{};

  std::size_t Values() const {
    return result.nReals + result.nArrays + result.nCut + result.nLimited;
  }

  void CountValue(const JSON::JSONValue& value) {
    const std::string strText(value.pText != nullptr ? value.pText : "",
                              static_cast<std::size_t>(value.nLength));
    errno = 0;
    const bool bInteger = value.eType == JSON::jtInteger && !strText.empty();
    if (bInteger) static_cast<void>(std::strtol(strText.c_str(), nullptr, 10));
    result.nLimited += bInteger && errno == ERANGE;
    result.nReals += value.eType == JSON::jtDouble;
    result.nArrays += value.eType == JSON::jtArray;
    result.nCut += value.eType == JSON::jtString && strText.find('\0') != std::string::npos;
    for (int i = 0; value.eType == JSON::jtObject && i < value.Size(); ++i)
      CountValue(value[i]);
  }

  void CountRow(const JSON::JSONValue& row, long lRow) {
    for (int i = 0; row.eType == JSON::jtObject && i < row.Size(); ++i) {
      const std::size_t nBefore = Values();
      CountValue(row[i]);
      if (Values() == nBefore || result.nLossyCells++ != 0) continue;
      result.lFirstRow = lRow;
      result.lFirstColumn = set.GetColumnIndex(row.pComposite->NameAt(i));
    }
  }

  void Count(const std::string& text) {
    JSON::Message message;
    result.bLoaded = message.Parse(text.data(), static_cast<int>(text.size())) &&
                     message.eType == JSON::jtObject;
    if (!result.bLoaded) return;
    const JSON::JSONValue& rows = message["rows"];
    if (rows.eType != JSON::jtArray) return CountRow(message, 1);
    for (int i = 0; i < rows.Size() && rows[i].eType != JSON::jtNull; ++i)
      CountRow(rows[i], i + 1L);
  }
};

std::string Counts(const LoadResult& result) {
  std::string strCounts = result.bLoaded ? "loaded" : "refused";
  for (const std::size_t n : {result.nLossyCells, static_cast<std::size_t>(result.lFirstRow),
                              static_cast<std::size_t>(result.lFirstColumn), result.nReals,
                              result.nArrays, result.nCut, result.nLimited})
    strCounts += ' ' + std::to_string(n);
  return strCounts;
}

TEST(LoadResult, AgreesWithSetStringAndCountsWhatThePlainWalkCounts) {
  std::size_t nLossy = 0;
  std::size_t nRefused = 0;
  for (int i = 0; i < 20000; i += Support::kStride) {
    Support::Author author(static_cast<unsigned>(i));
    Support::Random& random = author.random;
    std::string text =
        author.Document(random.OneIn(2) ? Support::Kind::kMixed : Support::Kind::kRows);
    if (random.OneIn(4))
      text = "{\"x\":[1.5],\"y\":\"a\\u0000\",\"z\":99999999999999999999,\"rows\":" + text + "}";
    if (random.OneIn(4)) author.Damage(text);
    const char* const szBefore = random.OneIn(3) ? R"({"zz":"there","a":1})" : "";
    CQXRecordSet loaded(szBefore);
    CQXRecordSet plain(szBefore);
    const LoadResult result = loaded.Load(text);
    plain.SetString(text);
    ASSERT_EQ(Plain::Picture(loaded), Plain::Picture(plain)) << text;
    PlainLosses wanted{plain};
    wanted.Count(text);
    ASSERT_EQ(Counts(result), Counts(wanted.result)) << text;
    ASSERT_EQ(result.bLoaded, result.error.szReason == nullptr);
    nLossy += result.nLossyCells;
    nRefused += result.bLoaded ? 0 : 1;
  }
  EXPECT_TRUE(nLossy > 100 && nRefused > 100) << nLossy << ' ' << nRefused;
}

}  // namespace
