// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A record set inside a cell. The cell takes a snapshot of the text; reading it gives an
// independent record set.

#include <iostream>

#include "recordset/QXRecordSet.h"

int main() {
  CQXRecordSet capital;
  capital.SetValue("name", "Vienna");
  capital.SetValue("population", 2000000L);

  CQXRecordSet country;
  country.SetValue("name", "Austria");
  country.SetValue("capital", capital);
  capital.SetValue("name", "Wien");  // too late for the snapshot

  std::cout << country.GetString() << '\n';

  CQXRecordSet inner = country.GetValueAsRecordSet("capital");
  std::cout << inner.GetValueAsString("name") << ", " << inner.GetValueAsLong("population") << '\n';

  // In memory a nested record set keeps all its rows; the outer text carries those of one row only.
  CQXRecordSet rivers;
  rivers.SetValue("name", "Danube", 1);
  rivers.SetValue("name", "Inn", 2);
  country.SetValue("rivers", rivers);
  std::cout << country.GetValueAsRecordSet("rivers").GetRowsCount() << " rivers in memory\n"
            << country.GetString() << '\n';
}
