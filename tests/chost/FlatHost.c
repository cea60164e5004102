/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * A host written in C: calls every function of the flat interface and checks what it gives. Exits
 * with 0 when all is as expected; otherwise it names each line that is not.
 */

#include <stdio.h>
#include <string.h>

#include "json/JSON.h"

static int nFailed = 0;

static void Check(int bHolds, const char* szClaim, int nLine) {
  if (!bHolds) {
    fprintf(stderr, "FlatHost.c:%d: does not hold: %s\n", nLine, szClaim);
    nFailed = 1;
  }
}
#define CHECK(claim) Check((claim) ? 1 : 0, #claim, __LINE__)

static int SameText(const char* a, const char* b) { return a != NULL && strcmp(a, b) == 0; }

static void CheckReaders(JSON_HANDLE message) {
  char text[] = "{\"a\":null,\"b\":\"x\",\"d\":3.9,\"o\":{\"p\":[7,\"y\"]}}";
  CHECK(JSON_ParseMessage(message, text) == 1);
  memset(text, '#', sizeof text - 1); /* the message has a copy */
  CHECK(JSON_MessageSize(message) == 4);
  CHECK(JSON_IsOrdinalNull(message, 0) == 1);
  CHECK(JSON_IsNameNull(message, "a") == 1);
  CHECK(JSON_IsPathNull(message, "o") == 0);
  CHECK(SameText(JSON_GetOrdinalAsString(message, 1), "x"));
  CHECK(SameText(JSON_GetNameAsString(message, "b"), "x"));
  CHECK(SameText(JSON_GetPathAsString(message, "o.p.1"), "y"));
  CHECK(JSON_GetOrdinalAsInt(message, 2) == 3);
  CHECK(JSON_GetNameAsInt(message, "d") == 3);
  CHECK(JSON_GetPathAsInt(message, "o.p.0") == 7);
  CHECK(JSON_GetOrdinalAsDouble(message, 2) == 3.9);
  CHECK(JSON_GetNameAsDouble(message, "d") == 3.9);
  CHECK(JSON_GetPathAsDouble(message, "d") == 3.9);
  CHECK(JSON_GetOrdinalAsUnsignedLong64(message, 2) == 3);
  CHECK(JSON_GetNameAsUnsignedLong64(message, "d") == 3);
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
  JSON_FreeMessage(message);
  CheckEscaping();
  return nFailed;
}
