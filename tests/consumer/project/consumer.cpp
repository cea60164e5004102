// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A host program in C++: a record set crosses from one object to another as text, and the document
// tree, the writer and the parameter strings are reached through their installed headers.

#include <cstdio>
#include <string>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "params/CParamsX.h"
#include "recordset/QXRecordSet.h"

// Distinct results tell in the exit status which part went wrong.
int main() {
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
