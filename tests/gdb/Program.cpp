// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What gdb looks into: it stops in Look() and goes up to main(). Compiled with debugging
// information. With KNOWS_TABLE and -femit-class-debug-always that is as complete as the library's
// own.

#include <string>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "params/CParamsX.h"
#include "recordset/QXRecordSet.h"

#ifdef KNOWS_TABLE
#include "recordset/Table.h"

const recordset::Table* pTable = nullptr;
const JSON::ObjectValue* pObject = nullptr;
#endif

void Look();
void Look() {}

int main() {
  CQXRecordSet people;
  people.SetValue("name", "Ada \"L\"", 1);
  people.SetValue("born", 1815L, 1);
  people.SetValue("name", "", 2);
  people.SetValue("dead", true, 2);
  people.SetValue("note", "", 2, CQXRecordSet::QX_NULL);
  CQXRecordSet inner(R"({"k":-1})");
  people.SetValue("more", inner, 2);

  CQXRecordSet odd;
  for (const long lRow : {0L, 1000000L, -7L, 1L}) {
    odd.SetValue("row", lRow, lRow);
  }
  CQXRecordSet wide;
  for (int i = 0; i < 2000; ++i) {
    wide.SetValue(("c" + std::to_string(i)).c_str(), i, 1 + i % 7);
  }
  for (long lRow = 1; lRow <= 1200; ++lRow) {
    wide.SetValue("c3", lRow, lRow);
  }
  CQXRecordSet empty;
  CBeforeAfterRecord change;
  change.SetFieldValues("salary", 3000L, 3100L);

  JSON::Message message;
  message.Parse(R"({"zoo":[1,-2.5e3,"a\n\"b\"",null,true,[],{}],"a":{"b":{"c":7}},"":"none"})");
  (void)message["a"];  // sorts the names
  message["a"].Set("d", "set");
  JSON::Message broken;
  broken.Parse(R"({"a":1,"b":[2,oops]})");
  [[maybe_unused]] const CQXRecordSet& reference = people;
  [[maybe_unused]] const JSON::JSONValue& nothing = message["zzz"];
  CParamsRS params;
  params.addHeader("FIND");
  params.addResult(0);
  params.addParam("a;\"b\"");
  CParamsRS noParams;
  JSON::Serialize writer(100);
  writer.OO().N("a").AO().V(1);
  JSON::Serialize whole(100);
  whole.AO().AC();
  JSON::Serialize wrong(100);
  wrong.OC();
  Look();
  return 0;
}
