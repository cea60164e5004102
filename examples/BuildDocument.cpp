// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A JSON document built from nothing, written, parsed and read by path.

#include <iostream>

#include "json/JSONMessage.h"

int main() {
  JSON::Message message;
  message.Set("title", "Inner planets");
  message.Set("count", 2);

  // A value becomes a container with its first update: by name an object, by ordinal an array.
  message.SetNull("planets");
  JSON::JSONValue& planets = message["planets"];
  planets.SetNull(0);
  planets[0].Set("name", "Mercury");
  planets[0].Set("moons", 0);
  planets.SetNull(1);
  planets[1].Set("name", "Venus");
  planets[1].Set("day_hours", 2802.0);

  std::string text;
  message.Serialize(text);
  std::cout << text << '\n';

  JSON::Message received;
  if (!received.Parse(text.c_str())) {
    return 1;
  }
  std::cout << received.Path("planets.1.name").pText << ' '
            << received.Path("planets.1.day_hours").AsDouble() << '\n';

  // What is not there reads as nothing; no lookup has to be checked before the next.
  const JSON::JSONValue& missing = received.Path("planets.7.name");
  std::cout << (missing.eType == JSON::jtNone ? "no such planet" : missing.pText) << '\n';
}
