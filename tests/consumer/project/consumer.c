/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * A host program in C99: reads a document through the flat interface, fills a record set from it,
 * and hands its columns to another one. */

#include <stdio.h>
#include <string.h>

#include "json/JSON.h"
#include "recordset/RS.h"

/* The first member of rows.0, by path, with all of its digits. */
static int ReadDocument(JSON_HANDLE document, RS_HANDLE people) {
  size_t line = 0, column = 0;
  if (JSON_ParseMessage(document, "{\"rows\":\n[}") ||
      JSON_ParseError(document, NULL, &line, &column) == NULL || line != 2 || column != 2) {
    return 2;
  }
  if (!JSON_ParseMessage(document, "{\"rows\":[{\"id\":9007199254740993,\"half\":0.5},null]}")) {
    return 3;
  }
  if (JSON_GetPathAsLong64(document, "rows.0.id") != 9007199254740993LL ||
      JSON_GetPathAsReal(document, "rows.0.half") != 0.5 ||
      JSON_GetPathType(document, "rows.1") != JSON_TYPE_NULL ||
      JSON_GetPathType(document, "rows.2") != JSON_TYPE_NONE ||
      JSON_GetPathSize(document, "rows") != 2) {
    return 4;
  }
  return RS_SetNameAsLong64(people, "id", 2, JSON_GetPathAsLong64(document, "rows.0.id")) ? 0 : 5;
}

/* Text in, with its losses and its faults; cells by index; a nested record set. */
static int FillRecordSet(RS_HANDLE people) {
  struct RS_LoadResult result;
  const char* text =
      "{\"rows\":[{\"name\":\"Ada\",\"born\":1815},{\"name\":\"Grace\",\"share\":0.5}]}";
  RS_HANDLE nested;
  result.size = sizeof result;
  if (!RS_Load(people, text, strlen(text), &result) || result.lossy_cells != 1 ||
      result.first_row != 2 || result.reals != 1) {
    return 6;
  }
  if (RS_Load(people, "{oops", 5, &result) || result.reason == NULL || result.column != 2 ||
      strcmp(RS_Error(people), result.reason) != 0) {
    return 7;
  }
  nested = RS_GetNameAsRecordSet(people, "name", 1);
  if (nested != NULL || RS_GetNameType(people, "name", 3) != RS_NONE) return 8;
  nested = RS_Copy(people);
  if (!RS_SetIndexAsRecordSet(people, RS_AddColumn(people, "all"), 1, nested)) return 9;
  RS_Free(nested);
  return RS_GetNameType(people, "all", 1) == RS_RECORDSET ? 0 : 10;
}

/* Columns leave by one stream and come in by another's hands. */
static int HandOver(RS_HANDLE people, RS_HANDLE copy) {
  struct ArrowArrayStream stream;
  if (!RS_ExportStream(people, 1, &stream) || !RS_ImportStream(copy, &stream)) return 11;
  if (stream.release != NULL || RS_ImportStream(copy, &stream)) return 12;
  if (RS_RowsCount(copy) != 2 || RS_GetNameType(copy, "all", 1) != RS_RECORDSET) return 13;
  return RS_GetNameAsLong64(copy, "born", 1) == 1815 ? 0 : 14;
}

int main(void) {
  JSON_HANDLE document = JSON_AllocMessage();
  RS_HANDLE people = RS_Alloc();
  RS_HANDLE copy = RS_Alloc();
  int wrong = document == NULL || people == NULL || copy == NULL;
  if (!wrong) wrong = ReadDocument(document, people);
  if (!wrong) wrong = FillRecordSet(people);
  if (!wrong) wrong = HandOver(people, copy);
  if (!wrong) {
    printf("%s was born in %d\n", RS_GetNameAsString(copy, "name", 1, NULL),
           (int)RS_GetNameAsLong64(copy, "born", 1));
  }
  RS_Free(copy);
  RS_Free(people);
  JSON_FreeMessage(document);
  return wrong;
}
