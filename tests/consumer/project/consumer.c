/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * A host program in C99: reads a record set's text through the flat interface. */

#include <stdio.h>

#include "json/JSON.h"

int main(void) {
  JSON_HANDLE hMessage = JSON_AllocMessage();
  if (hMessage == NULL || !JSON_ParseMessage(hMessage, "{\"born\":1815,\"name\":\"Ada\"}")) {
    return 1;
  }
  if (JSON_MessageSize(hMessage) != 2 || JSON_IsPathNull(hMessage, "born")) {
    return 2;
  }
  printf("%s was born in %d\n", JSON_GetNameAsString(hMessage, "name"),
         JSON_GetPathAsInt(hMessage, "born"));
  JSON_FreeMessage(hMessage);
  return 0;
}
