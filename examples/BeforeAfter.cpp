// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A record of changed fields. It keeps the new values only, and every field in it counts as
// changed: so put in just the fields that are.

#include <iostream>

#include "recordset/QXRecordSet.h"

int main() {
  CBeforeAfterRecord change;
  std::cout << "changed: " << std::boolalpha << change.IsChanged() << '\n';

  std::string before = "Bombay";
  std::string after = "Mumbai";
  change.SetFieldValues("name", before, after);
  change.SetFieldValues("population", 12000000L, 12500000L);
  change.SetFieldValues("metro", false, true);

  std::cout << "changed: " << change.IsChanged() << ", fields: " << change.GetChangeCount() << '\n'
            << change.GetString() << '\n';

  // On the other side: the text is that of any record set.
  CBeforeAfterRecord received;
  received = CQXRecordSet(change.GetString());
  std::string unknown = "?";
  std::string name;
  received.GetFieldValues("name", unknown, name);
  long earlier = 0;
  long population = 0;
  received.GetFieldValues("population", earlier, population);
  std::cout << unknown << " -> " << name << ", " << population << '\n';
}
