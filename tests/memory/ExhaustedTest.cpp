// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Memory that runs out, in every part of the library: each operation of the tables below is done on
// a new object with the first allocation failing, then with the second, and so on until it
// succeeds. After each failure the object is as its header says, the operation can be done again
// with the result of a first success, and in the end nothing is left allocated. (The
// streaming writer's test lets memory run out, too.)
//
// What it found when it was new: a parse out of memory kept objects with members but without their
// names, so that the next name set there led to another member's value; a message that could not be
// copied to its end left its memory pool behind; a scalar that could not take a member had become
// an empty object.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "json/JSON.h"
#include "params/CParamsX.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RS.h"
#include "recordset/Rows.h"
#include "tests/support/CountedMemory.h"
#include "tests/support/PlainLoad.h"
#include "tests/support/Values.h"
#include "text/TextRoom.h"

namespace {

using JSON::JSONValue;
using JSON::Message;

// What a failed operation leaves.
enum class Left {
  kSame,     // the object as it was
  kOrEmpty,  // that, or an empty one
  kOther,    // something else that can be read and destroyed
};

template <typename Object>
struct Operation {
  const char* szName;
  std::function<void(Object&)> run;
  Left left = Left::kSame;
};

// `make` gives a new object, `picture` all that can be seen of one.
template <typename Object, typename Make, typename Picture>
void ExpectSurvived(const std::vector<Operation<Object>>& operations, Make make, Picture picture) {
  const std::string strBefore = picture(*make());
  const std::string strEmpty = picture(*std::make_unique<Object>());
  for (const auto& operation : operations) {
    SCOPED_TRACE(operation.szName);
    const std::unique_ptr<Object> pDone = make();
    operation.run(*pDone);
    const std::string strAfter = picture(*pDone);
    bool bFailed = true;
    for (int nBefore = 0; bFailed; ++nBefore) {
      SCOPED_TRACE("allocation " + std::to_string(nBefore));
      const std::size_t nLive = CountedMemory::Live();
      {
        const std::unique_ptr<Object> pObject = make();
        bool bDone = true;
        CountedMemory::FailAfter(nBefore);
        try {
          operation.run(*pObject);
        } catch (const std::bad_alloc&) {
          bDone = false;
        }
        bFailed = CountedMemory::StopFailing();
        EXPECT_TRUE(bDone || bFailed);
        const std::string strLeft = picture(*pObject);
        if (operation.left != Left::kOther) {
          EXPECT_TRUE(strLeft == (bDone ? strAfter : strBefore) ||
                      (operation.left == Left::kOrEmpty && strLeft == strEmpty))
              << strLeft;
          if (!bDone) operation.run(*pObject);
          EXPECT_EQ(picture(*pObject), strAfter);
        }
      }
      EXPECT_EQ(CountedMemory::Live(), nLive) << "something leaks";
      if (testing::Test::HasFailure()) return;
      EXPECT_TRUE(bFailed || nBefore > 0) << "nothing was allocated";
    }
  }
}

// ---- Documents ----------------------------------------------------------------------------------

// Rows that share their names, texts that can be searched, and more names than are sorted in place.
std::string Text(const std::string& mark) {
  std::string strText =
      R"({"rows":[{"a":1,"b":"x","c":[]},{"a":2,"b":"y","c":[{}]},{"a":3,"b":"z","c":null}])";
  strText += R"(,"texts":["one","two","three"],"many":{"mark":")" + mark + '"';
  for (int i = 0; i < 40; ++i)
    strText += ",\"name" + std::to_string(i * 7 % 40) + "\":[" + std::to_string(i) + "]";
  return strText + "}}";
}

// A new name, and all names in an order that the next lookup has to sort anew.
void AddName(JSONValue& value) {
  value.Set("zzz", true);
  auto& names = Support::ObjectIn(value).vNameMap;
  std::reverse(names.begin(), names.end());
}

std::unique_ptr<Message> MakeDocument() {
  auto pMessage = std::make_unique<Message>();
  pMessage->Parse(Text("first").c_str());
  (*pMessage)["rows"][0].Set("new", "a text of its own");
  AddName((*pMessage)["many"]);
  pMessage->Set("built", 1);
  for (const int i : {0, 1, 2})
    (*pMessage)["built"].Set(i, "in an array made by updates");
  return pMessage;
}

// Types, texts, names and what lookups find.
std::string PictureOf(const JSONValue& value) {
  std::string strPicture = std::to_string(value.eType);
  if (value.pText != nullptr) {
    strPicture += ':' + std::string(value.pText, static_cast<std::size_t>(value.nLength));
  }
  for (int i = 0; i < value.Size(); ++i) {
    const char* const pName = value.pComposite->NameAt(i);
    strPicture += i == 0 ? '(' : ',';
    if (pName != nullptr) {
      strPicture += pName + std::to_string(value.pComposite->OrdinalOf(pName, -1)) + '=';
    }
    strPicture += PictureOf(*value.GetByOrdinal(i));
  }
  return strPicture + (value.Size() > 0 ? ")" : "");
}

const std::string kOther = Text("a mark that is longer than the one before, and a new text");
const std::string kBroken = kOther.substr(0, kOther.size() - 1) + ',' + kOther.substr(1, 900);
const std::string kLong(5000, 'l');

void ParseInPlace(Message& message) {
  std::string strText = kOther;
  message.bInPlace = true;
  message.Parse(strText.data());
  message.Parse("[]");  // lets go of the text
}

// Both ways of writing.
void Write(Message& message) {
  std::string strText;
  message.Serialize(strText);
  JSON::Serialize writer(0);
  json_walk_obj(writer, &message, 0);
}

void EscapeIntoABuffer(Message& /*message*/) {
  char buffer[100];
  char* pDest = buffer;
  JSON_EscapeString(&pDest, buffer + sizeof buffer, "a text of more than 15 bytes\n");
}

JSON_HANDLE HandleOf(Message& message) { return reinterpret_cast<JSON_HANDLE>(&message); }

// The hash table of 31 names has to grow for another one, the names and values do not.
TEST(ExhaustedMemory, FindsNamesWithoutATableOfAll) {
  JSON::ObjectValue object;
  const auto nameOf = [](int i) { return "name" + std::to_string(i); };
  const auto set = [&](int nFirst, int nEnd) {
    for (int i = nFirst; i < nEnd; ++i)
      object.UpdateByName(nameOf(i).c_str(), "1", JSON::jtInteger);
  };
  const auto expect = [&](int nCount) {
    for (int i = 0; i <= nCount; ++i)
      EXPECT_EQ(object.OrdinalOf(nameOf(i).c_str(), -1), i < nCount ? i : -1);
  };
  set(0, 30);
  EXPECT_EQ(object.OrdinalOf("nothing", -1), -1);  // the place of none of those that follow
  const std::string strByHand = nameOf(30);
  JSON::UnsafeJSONValue name = Support::ValueOf(strByHand);
  object.AddName(name);
  object.AddValue(name);
  CountedMemory::FailAbove(900);
  set(30, 37);
  expect(37);
  EXPECT_TRUE(CountedMemory::StopFailing());
  set(0, 80);
  expect(80);
}

TEST(ExhaustedMemory, LeavesDocumentsWhole) {
  const Message other = *MakeDocument();
  const std::vector<Operation<Message>> operations = {
      {"parse another kind", [](Message& m) { m.Parse(("[" + kOther + "]").c_str()); },
       Left::kOrEmpty},
      {"parse what breaks off", [](Message& m) { m.Parse(kBroken.c_str()); }, Left::kOrEmpty},
      {"parse what is refused", [](Message& m) { m.Parse((kLong + kOther).c_str()); },
       Left::kOrEmpty},
      {"parse in place", ParseInPlace, Left::kOther},
      {"parse by a handle", [](Message& m) { JSON_ParseMessage(HandleOf(m), kOther.c_str()); },
       Left::kOrEmpty},
      {"assign", [&](Message& m) { m = other; }, Left::kOrEmpty},
      {"construct a copy", [](Message& m) { Message(m).Set("a", 1); }},
      {"clone", [](Message& m) { delete m.pComposite->Clone(0); }},
      {"set a new name", [](Message& m) { m.Set("another", kLong.c_str()); }},
      {"set under a shared name", [](Message& m) { m["rows"][1].Set("b", kLong.c_str()); }},
      {"set a name beside shared ones", [](Message& m) { m["rows"][2].Set("d", kLong.c_str()); }},
      {"set behind the end", [](Message& m) { m["texts"].Set(100, 2.5); }},
      {"set in a scalar", [](Message& m) { m["rows"][1]["a"].Set("n", "v"); }},
      {"set to its own text", [](Message& m) { m["many"].Set("mark", m["rows"][0]["new"].pText); }},
      {"rename", [](Message& m) { Support::ObjectIn(m["rows"][1]).vNameMap[0].UpdateName("0"); }},
      {"replace a text", [](Message& m) { m["many"]["mark"].InternalUpdateValue(kLong.c_str()); }},
      {"set a new name among many", [](Message& m) { m["many"].Set("another", 1); }},
      {"look up among many names", [](Message& m) { m.Path("many.zzz.0"); }},
      {"look up by text", [](Message& m) { m["built"].pComposite->OrdinalOf("x", -1); }},
      {"write", Write},
      {"escape into a buffer", EscapeIntoABuffer},
  };
  ExpectSurvived(operations, MakeDocument, PictureOf);
  const std::vector<Operation<Message>> firsts = {
      {"set a first name", [](Message& m) { m.Set("a", kLong.c_str()); }},
      {"set a first ordinal", [](Message& m) { m.Set(100, kLong.c_str()); }},
  };
  ExpectSurvived(
      firsts, [] { return std::make_unique<Message>(); }, PictureOf);
}

// ---- Texts and parameter strings ----------------------------------------------------------------

TEST(ExhaustedMemory, LeavesTextsAlone) {
  using Set = CQXRecordSet;
  const std::string strControls(500, '\x01');
  const std::vector<Operation<std::string>> operations = {
      {"print", [](std::string& s) { JSON_PrettyPrint(kOther.c_str(), s); }},
      {"print over itself", [](std::string& s) { JSON_PrettyPrint(s.c_str(), s); }},
      {"escape", [&](std::string& s) { JSON::EscapeString(s, strControls.c_str()); }, Left::kOther},
      {"to wide text", [](std::string& s) { Set::UTF8ToWide(s); }},
      {"from wide text", [](std::string&) { Set::WideToUTF8(std::wstring(300, L'\xE9')); }},
      {"refuse wide text", [](std::string&) { Set::UTF8ToWide(std::string(300, '\xFF')); }},
  };
  ExpectSurvived(
      operations, [] { return std::make_unique<std::string>("{\"a\":[1,2,{\"b\":null}]}"); },
      [](const std::string& s) { return s; });
}

TEST(ExhaustedMemory, LeavesParameterStringsWhole) {
  const std::string strHeader(400, 'H');
  const std::string strSegments = "     1;x;   300;" + std::string(300, 'y') + ";     1;z";
  const std::vector<Operation<CParamsRS>> operations = {
      {"construct", [&](CParamsRS&) { CParamsRS params(strHeader + ';' + strSegments); }},
      {"assign", [](CParamsRS& p) { p = CParamsRS(p); }},
      {"header", [&](CParamsRS& p) { p.addHeader(strHeader); }},
      {"own text as header", [](CParamsRS& p) { p.addHeader(p.paramListRef()); }},
      {"text", [&](CParamsRS& p) { p.addParam(strHeader); }},
      {"result", [](CParamsRS& p) { p.addResult(7); }},
      {"take in", [&](CParamsRS& p) { p.SetParams(strHeader + ';' + strSegments); }, Left::kOther},
      {"append", [&](CParamsRS& p) { p.append(strSegments); }, Left::kOther},
      {"read", [](CParamsRS& p) { (p.getHeader() + p.getStringParamAt(1)).append(p.paramList()); }},
  };
  const auto make = [] {
    auto pParams = std::make_unique<CParamsRS>(20L);
    pParams->addHeader("a header of more than 15 bytes");
    pParams->addParam("a text of more than 15 bytes");
    return pParams;
  };
  const auto picture = [](const CParamsRS& p) {
    std::string strPicture = p.paramList() + '|' + p.getHeader();
    for (int i = 0; i < p.count(); ++i)
      strPicture += '|' + p.getStringParamAt(i);
    return strPicture;
  };
  ExpectSurvived(operations, make, picture);
}

// ---- Record sets --------------------------------------------------------------------------------

using Record = CBeforeAfterRecord;

void SetMany(Record& record) {
  for (long i = 0; i < 40; ++i)
    record.SetValue(std::to_string(i).c_str(), kLong.c_str(), 80 - 2 * i);
}

void GetFields(Record& record) {
  std::string strBefore;
  std::string strAfter(300, 'n');
  record.GetFieldValues("text", strBefore, strAfter);
  record.GetValueAsStringUTF8(strBefore, "nested");
}

TEST(ExhaustedMemory, LeavesRecordsWhole) {
  std::string strBefore;
  std::string strAfter(300, 'n');
  CQXRecordSet nested(R"({"rows":[{"x":1},{"x":"a text of more than 15 bytes"}]})");
  const std::vector<Operation<Record>> operations = {
      {"set a text", [&](Record& r) { r.SetFieldValues("text", strBefore, strAfter); }},
      {"get fields", GetFields},
      {"copy", [](Record& r) { Record(r).SetValue("a", 1); }},
      {"assign", [&](Record& r) { r = nested; }},
      {"construct", [](Record&) { CQXRecordSet(kOther.c_str()).GetString(); }},
      {"assign text", [](Record& r) { static_cast<CQXRecordSet&>(r) = kOther; }, Left::kOther},
      {"nest", [](Record& r) { r.SetValue("text", r); }},
      {"take out", [](Record& r) { r.GetValueAsRecordSet("nested").GetString(); }},
      {"set far away", [](Record& r) { r.SetValue("text", kLong.c_str(), 3000); }},
      {"set many", SetMany, Left::kOther},
      {"read a missing cell", [](Record& r) { r.GetValueAsString("text", -5); }},
      {"load", [](Record& r) { r.SetString(R"({"rows":[{"new":"of 15 bytes"},{"text":{}}]})"); },
       Left::kOther},
      {"add a column", [](Record& r) { r.AddColumn(kLong.c_str()); }},
      {"list the columns", [](Record& r) { r.GetColumnName(0); }},
      {"write", [](Record& r) { r.GetString(); }},
      {"dump", [](Record& r) { r.Dump(); }},
  };
  const auto make = [&] {
    auto pRecord = std::make_unique<Record>();
    pRecord->SetValue("nested", nested);
    pRecord->SetValue("text", "a text of more than 15 bytes");
    // Another column needs room, a hash table and its name.
    for (char c = 'n'; c >= 'a'; --c)
      pRecord->AddColumn(std::string(1, c).c_str());
    return pRecord;
  };
  ExpectSurvived(operations, make, Plain::Picture);
}

// ---- The flat interface of record sets ----------------------------------------------------------

struct FlatSet {
  ~FlatSet() { RS_Free(set); }
  RS_HANDLE set = RS_Alloc();
};

// A function fails by its value, without an exception, and its record set knows why. (A stream
// tells its own failures, and an object that cannot be made has none.)
Operation<FlatSet> Call(const char* szName, const std::function<bool(RS_HANDLE)>& call) {
  return {szName, [call](FlatSet& flat) {
            if (call(flat.set)) return;
            const char* const szWhy = RS_Error(flat.set);
            EXPECT_TRUE(*szWhy == '\0' || std::strcmp(szWhy, "memory is exhausted") == 0);
            throw std::bad_alloc();
          }};
}

bool Freed(RS_HANDLE made) {
  RS_Free(made);
  return made != nullptr;
}

bool Exported(RS_HANDLE set) {
  ArrowSchema schema;
  ArrowArray array;
  if (RS_ExportRows(set, 1, 2, &schema, &array) == 0) return false;
  schema.release(&schema);
  array.release(&array);
  return true;
}

bool Streamed(RS_HANDLE set) {
  ArrowArrayStream stream;
  if (RS_ExportStream(set, 1, &stream) == 0) return false;
  const FlatSet other;
  if (other.set != nullptr) return RS_ImportStream(other.set, &stream) == 1;
  stream.release(&stream);
  return false;
}

TEST(ExhaustedMemory, IsAnErrorValueOfTheFlatInterface) {
  static const std::string strRows =
      R"({"rows":[{"a":1,"b":")" + kLong + R"(","c":{"d":[1,{"e":2.5}]}},{"f":true}]})";
  const auto make = [] {
    auto pFlat = std::make_unique<FlatSet>();
    RS_Load(pFlat->set, strRows.data(), strRows.size(), nullptr);
    return pFlat;
  };
  const auto load = [](RS_HANDLE set) {
    RS_LoadResult result{};
    result.size = sizeof result;
    const bool bLoaded = RS_Load(set, strRows.data(), strRows.size(), &result) == 1;
    EXPECT_TRUE(result.reason == nullptr && result.lossy_cells == (bLoaded ? 1U : 0U));
    return bLoaded;
  };
  const std::vector<Operation<FlatSet>> operations = {
      Call("make", [](RS_HANDLE) { return Freed(RS_Alloc()); }),
      Call("copy", [](RS_HANDLE set) { return Freed(RS_Copy(set)); }),
      Call("load", load),
      Call("text", [](RS_HANDLE set) { return RS_Text(set, nullptr) != nullptr; }),
      Call("set text",
           [](RS_HANDLE set) { return RS_SetIndexAsString(set, 2, 2, kLong.c_str()) == 1; }),
      Call("nest", [](RS_HANDLE set) { return RS_SetIndexAsRecordSet(set, 1, 3, set) == 1; }),
      Call("take out", [](RS_HANDLE set) { return Freed(RS_GetNameAsRecordSet(set, "c", 1)); }),
      Call("export", Exported),
      Call("stream", Streamed),
  };
  const auto picture = [](const FlatSet& flat) {
    return std::to_string(RS_RowsCount(flat.set)) + RS_Text(flat.set, nullptr);
  };
  ExpectSurvived(operations, make, picture);
}

// ---- Growth -------------------------------------------------------------------------------------

// Spare room is asked for as long as there is some, and what is needed as long as there is that.
// Each step gives the bytes of the largest allocation that are in use.
TEST(ExhaustedMemory, IsUsedToItsEnd) {
  constexpr std::size_t kLimit = 300000;
  JSON::Serialize writer(0);
  std::size_t nWritten = writer.AO().String().size();
  std::string strEscaped;
  CParamsRS params;
  recordset::Rows rows;
  std::uint32_t nCells = 0;
  const std::pair<const char*, std::function<std::size_t()>> growings[] = {
      {"written text", [&] { return writer.V(kLong), nWritten += kLong.size() + 3; }},
      {"escaped text",
       [&] { return JSON::EscapeString(strEscaped, "with an escape\n"), strEscaped.size(); }},
      {"plain text", [&] { return JSON::EscapeString(strEscaped, "without"), strEscaped.size(); }},
      {"parameter string", [&] { return params.addParam(kLong), params.paramListRef().size(); }},
      {"cells of a row",
       [&] {
         rows.EnsureCell(1, ++nCells).pText = "";
         return (nCells - 1) * sizeof(recordset::Cell);
       }},
  };
  for (const auto& [szName, grow] : growings) {
    SCOPED_TRACE(szName);
    std::size_t nUsed = 0;
    CountedMemory::FailAbove(kLimit);
    EXPECT_THROW(for (;;) nUsed = grow(), std::bad_alloc);
    CountedMemory::StopFailing();
    EXPECT_GT(nUsed, kLimit - kLimit / 20);
    EXPECT_LE(nUsed, kLimit);
  }
}

// The room that is reserved for a text is an estimate.
TEST(ExhaustedMemory, SufficesForATextSmallerThanEstimated) {
  CQXRecordSet set;
  for (long i = 1; i <= 1000; ++i)
    set.SetValue("a", "", i, CQXRecordSet::QX_NULL);
  CQXRecordSet copy(set);
  const std::size_t nText = copy.GetString().size();
  CountedMemory::FailAbove(nText + 100);
  EXPECT_EQ(set.GetString().size(), nText);
  EXPECT_TRUE(CountedMemory::StopFailing()) << "the estimate is not above the text";
}

// On 32 bits these are longer than a string can be.
TEST(ExhaustedMemory, IsOutForALengthThatNothingCanHave) {
  CountedMemory::FailAbove(kLong.size());
  EXPECT_THROW(JSON::Serialize(0).AO().JS_N("1", INT_MAX), std::bad_alloc);
  EXPECT_THROW(JSON::Serialize{INT_MAX}, std::bad_alloc);
  EXPECT_THROW(CParamsRS{LONG_MAX}, std::bad_alloc);
  std::string strText = "text";
  for (const std::size_t nMore : {SIZE_MAX, SIZE_MAX - 3, strText.max_size() - 3})
    EXPECT_THROW(JSON::MakeRoom(strText, strText.size(), nMore), std::bad_alloc) << nMore;
  EXPECT_EQ(strText, "text");
  CountedMemory::StopFailing();
}

}  // namespace
