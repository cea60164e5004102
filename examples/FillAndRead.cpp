// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The main job: one side fills a record set and writes it as text, the other side turns the text
// into an equal record set and reads it.

#include <iostream>

#include "recordset/QXRecordSet.h"

int main() {
  CQXRecordSet planets;
  planets.SetValue("name", "Mars", 1);
  planets.SetValue("diameter_km", 6792L, 1);
  planets.SetValue("rings", false, 1);
  planets.SetValue("name", "Saturn", 2);
  planets.SetValue("diameter_km", 120536L, 2);
  planets.SetValue("rings", true, 2);

  const std::string text = planets.GetString();
  std::cout << text << "\n\n";

  CQXRecordSet received(text);
  for (long row = 1; row <= received.GetRowsCount(); ++row) {
    std::cout << received.GetValueAsString("name", row) << ": "
              << received.GetValueAsLong("diameter_km", row) << " km, "
              << (received.GetValueAsBool("rings", row) ? "rings" : "no rings") << '\n';
  }

  // The columns of a record set whose names the program does not know.
  for (long position = 0; position < received.GetColumnCount(); ++position) {
    std::cout << "column: " << received.GetColumnName(position) << '\n';
  }
}
