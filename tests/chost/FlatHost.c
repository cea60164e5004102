/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * A host written in C: calls every function of the flat interface and checks what it gives. Exits
 * with 0 when all is as expected; otherwise it names each line that is not.
 */

#include <string.h>

#include "json/JSON.h"
#include "tests/chost/Check.h"

static void CheckReaders(JSON_HANDLE message) {
  char text[] = "{\"a\":null,\"b\":\"x\",\"d\":3.9,\"o\":{\"p\":[7,\"y\"]}}";
  CHECK(JSON_ParseMessage(message, text) == 1);
  memset(text, '#', sizeof text - 1); /* the message has a copy */
  CHECK(JSON_MessageSize(message) == 4 && JSON_IsOrdinalNull(message, 0) == 1);
  CHECK(JSON_IsNameNull(message, "a") == 1 && JSON_IsPathNull(message, "o") == 0);
  CHECK(SameText(JSON_GetOrdinalAsString(message, 1), "x"));
  CHECK(SameText(JSON_GetNameAsString(message, "b"), "x"));
  CHECK(SameText(JSON_GetPathAsString(message, "o.p.1"), "y"));
  CHECK(JSON_GetOrdinalAsInt(message, 2) == 3 && JSON_GetNameAsInt(message, "d") == 3);
  CHECK(JSON_GetPathAsInt(message, "o.p.0") == 7);
  CHECK(JSON_GetOrdinalAsDouble(message, 2) == 3.9);
  CHECK(JSON_GetNameAsDouble(message, "d") == 3.9 && JSON_GetPathAsDouble(message, "d") == 3.9);
  CHECK(JSON_GetOrdinalAsUnsignedLong64(message, 2) == 3);
  CHECK(JSON_GetNameAsUnsignedLong64(message, "d") == 3);
  CHECK(JSON_GetPathAsUnsignedLong64(message, "d") == 3);
}

static void CheckWideReaders(JSON_HANDLE message) {
  CHECK(JSON_ParseMessage(message, "{\"rows\":[{\"id\":9007199254740993,\"t\":true}]}") == 1);
  CHECK(JSON_GetPathAsLong64(message, "rows.0.id") == 9007199254740993LL);
  CHECK(JSON_GetPathAsReal(message, "rows.0.id") == 9007199254740992.0);
  CHECK(JSON_GetPathAsBool(message, "rows.0.t") == 1 && JSON_GetPathSize(message, "rows.0") == 2);
  CHECK(JSON_GetPathType(message, "rows.0.id") == JSON_TYPE_INTEGER);
  CHECK(JSON_GetPathType(message, "rows.1") == JSON_TYPE_NONE);
  CHECK(JSON_GetNameType(message, "rows") == JSON_TYPE_ARRAY);
  CHECK(JSON_GetOrdinalType(message, 0) == JSON_TYPE_ARRAY);
  CHECK(JSON_GetNameSize(message, "rows") == 1 && JSON_GetOrdinalSize(message, 0) == 1);
  CHECK(JSON_ParseMessage(message, "[5000000000,2.5]") == 1);
  CHECK(JSON_GetNameAsLong64(message, "0") == 5000000000LL);
  CHECK(JSON_GetOrdinalAsLong64(message, 1) == 2);
  CHECK(JSON_GetNameAsReal(message, "0") == 5e9 && JSON_GetOrdinalAsReal(message, 1) == 2.5);
  CHECK(JSON_GetNameAsBool(message, "1") == 1 && JSON_GetOrdinalAsBool(message, 9) == 0);
}

static void CheckParseErrors(JSON_HANDLE message) {
  size_t offset = 9, line = 9, column = 9;
  CHECK(JSON_ParseError(message, &offset, NULL, NULL) == NULL && offset == 0);
  CHECK(JSON_ParseMessage(message, "{\"a\":1,\n b}") == 0);
  CHECK(SameText(JSON_ParseError(message, &offset, &line, &column),
                 "expected a name in double quotes"));
  CHECK(offset == 9 && line == 2 && column == 2);
}

static void CheckEscaping(void) {
  char buffer[8] = "";
  char* pDest = buffer;
  CHECK(JSON_EscapeString(&pDest, buffer + sizeof buffer, "a\tb\"") == 1);
  CHECK(SameText(buffer, "a\\tb\\\""));
}

int main(void) {
  JSON_HANDLE message = JSON_AllocMessage();
  CHECK(message != NULL);
  CheckReaders(message);
  CheckWideReaders(message);
  CheckParseErrors(message);
  JSON_FreeMessage(message);
  CheckEscaping();
  return nFailed;
}
