// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A host program in C++: a record set crosses from one object to another as text, is read without
// being changed, and the document tree, the writer and the parameter strings are reached through
// their installed headers. With REFUSED it holds a statement that must not compile.

#include <cstdio>
#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "params/CParamsX.h"
#include "recordset/QXRecordSet.h"

namespace {

// What a text lost, and where and why another one was refused.
int TellLosses() {
  CQXRecordSet set;
  const LoadResult lossy = set.Load(R"({"rows":[{"a":1},{"a":2.5,"b":[3]}]})");
  if (!lossy.bLoaded || lossy.nLossyCells != 2 || lossy.lFirstRow != 2 || lossy.nReals != 1) {
    return 10;
  }
  const LoadResult refused = set.Load("{\n oops}");
  if (refused.bLoaded || refused.error.nLine != 2 || refused.error.nColumn != 2) return 11;
  JSON::Message message;
  if (message.Error().szReason != nullptr || message.Parse("[1")) return 12;
  return message.Error().nOffset == 2 && message.Error().szReason != nullptr ? 0 : 13;
}

// Reading that makes no cells: by name, by column index, and by ranges.
int ReadConst(const CQXRecordSet& set) {
  if (set.HasCell("a", 2) || !set.HasCell(std::string_view("b"), 2)) return 20;
  if (set.GetType("a") != CQXRecordSet::QX_LONG || set.GetView("b", 2) != "x") return 21;
  std::string strByIndex;
  const long lColumn = set.GetColumnIndex("a");
  for (long lRow = 1; lRow <= 2; ++lRow) {
    strByIndex += set.GetView(lColumn, lRow);
  }
  std::string strByRange;
  for (const CQXRow& row : set.Rows()) {
    for (const CQXCell& cell : row) {
      strByRange.append(std::to_string(row.Number())).append(cell.name).append(cell.text);
    }
  }
  return strByIndex == "7" && strByRange == "1a72bx" ? 0 : 22;
}

// Numbers beyond 32 bits, into a record set and out of a document.
int ReadWide() {
  JSON::Message message;
  message.Parse(R"({"n":9007199254740993,"r":12345678901.5})");
  CQXRecordSet set;
  set.SetValue(std::string("n"), message.Path("n").AsLong64());
  set.SetValue("u", 4294967295U);
  if (set.GetView("n") != "9007199254740993" || set.GetView("u") != "4294967295") return 30;
  return message.Path("r").AsReal() == 12345678901.5 && message.Path("n").AsReal() > 9e15 ? 0 : 31;
}

}  // namespace

// Distinct results tell in the exit status which part went wrong.
int main() {
#ifdef REFUSED
  CQXRecordSet refusing;
  const CQXRecordSet constant;
  REFUSED;
#endif
  if (const int nWrong = TellLosses()) return nWrong;
  CQXRecordSet read;
  read.Load(R"({"rows":[{"a":7},{"b":"x"}]})");
  if (const int nWrong = ReadConst(read)) return nWrong;
  if (const int nWrong = ReadWide()) return nWrong;

  CQXRecordSet people;
  people.SetValue("name", "Ada");
  people.SetValue("born", 1815L);
  const std::string strText = people.GetString();
  if (strText != R"({"born":1815,"name":"Ada"})") return 2;

  JSON::Message message;
  if (!message.Parse(strText.c_str(), -1) || message.Path("born").AsInt() != 1815) return 3;

  JSON::Serialize writer(64);
  json_walk_obj(writer, &message, 0);
  if (writer.String() != strText) return 4;

  CParamsRS sent;
  sent.addHeader("Person");
  sent.addResult(0);
  sent.addParam(strText);
  const CParamsRS received(sent.paramListRef());
  if (received.getStringParamAt(1) != strText || PARAM_SEP != ";") return 5;

  CQXRecordSet copy(strText);
  std::printf("%s was born in %ld\n", copy.GetValueAsString("name"), copy.GetValueAsLong("born"));
  return 0;
}
