/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * A host written in C: it parses the text of a record set and reads it through a handle. */

#include <stdio.h>

#include "json/JSON.h"

int main(void) {
  const char* text =
      "{\"rows\":[{\"name\":\"Hydrogen\",\"number\":1,\"discovered\":1766},"
      "{\"name\":\"Gold\",\"number\":79,\"discovered\":null}]}";
  JSON_HANDLE message = JSON_AllocMessage();
  if (!JSON_ParseMessage(message, text)) {
    JSON_FreeMessage(message);
    return 1;
  }
  for (int row = 0;; ++row) {
    char path[32];
    snprintf(path, sizeof path, "rows.%d.name", row);
    const char* name = JSON_GetPathAsString(message, path);
    if (!name) {
      break; /* no such row */
    }
    printf("%s", name);
    snprintf(path, sizeof path, "rows.%d.number", row);
    printf(", number %d, ", JSON_GetPathAsInt(message, path));
    snprintf(path, sizeof path, "rows.%d.discovered", row);
    if (JSON_IsPathNull(message, path)) {
      printf("known since antiquity\n");
    } else {
      printf("discovered %d\n", JSON_GetPathAsInt(message, path));
    }
  }
  JSON_FreeMessage(message); /* releases every string handed out, too */
  return 0;
}
