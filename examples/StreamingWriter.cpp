// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// JSON without a tree: the writer places commas and brackets and refuses calls out of order.

#include <iostream>

#include "json/JSONSerialize.h"

int main() {
  JSON::Serialize writer(1024);
  writer.OO();
  writer.N("element").V("Gold");
  writer.N("symbol").V("Au");
  writer.N("number").V(79);
  writer.N("mass").V(196.97);
  writer.N("isotopes").AO();
  for (const int number : {195, 197, 198}) {
    writer.V(number);
  }
  writer.AC();
  writer.N("note").V("said to be \"noble\"");
  writer.N("discovered").V(static_cast<const char*>(nullptr));  // null
  writer.OC();
  std::cout << writer.String() << '\n';

  // A value where a name is due: from here on the writer hands out the empty text.
  JSON::Serialize wrong(64);
  wrong.OO().V("value").OC();
  std::cout << '"' << wrong.String() << "\"\n";
}
