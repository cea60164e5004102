/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * A host written in C that uses record sets: calls every function of recordset/RS.h and checks what
 * it gives. It is a consumer of Arrow structures without a library for them. Exits
 * with 0 when all is as expected; otherwise it names each line that is not.
 */

#include <limits.h>
#include <string.h>

#include "recordset/RS.h"
#include "tests/chost/Check.h"

static void Load(RS_HANDLE set, const char* text) {
  CHECK(RS_Load(set, text, strlen(text), NULL) == 1);
}

static void CheckCells(void) {
  RS_HANDLE set = RS_Alloc();
  RS_HANDLE inner = RS_Alloc();
  RS_HANDLE copy;
  size_t length = 9;
  char text[] = "x";
  CHECK(SameText(RS_Text(set, &length), "") && length == 0);
  CHECK(RS_SetNameAsString(set, "t", 1, text) == 1);
  text[0] = '#'; /* the record set has a copy */
  CHECK(RS_SetNameAsLong64(set, "n", 1, -5000000000LL) == 1);
  CHECK(RS_SetNameAsBool(set, "b", 1, 7) == 1);
  CHECK(RS_SetNameNull(set, "z", 2) == 1);
  CHECK(RS_SetNameAsLong64(inner, "k", 1, 3) == 1);
  CHECK(RS_SetNameAsRecordSet(set, "r", 2, inner) == 1);
  CHECK(RS_ColumnIndex(set, "z") == 4 && RS_ColumnIndex(set, "none") == -1);
  CHECK(RS_SetIndexAsString(set, 1, 3, "y") == 1 && RS_SetIndexAsLong64(set, 2, 3, 12) == 1);
  CHECK(RS_SetIndexAsBool(set, 3, 3, 0) == 1 && RS_SetIndexNull(set, 4, 3) == 1);
  CHECK(RS_SetIndexAsRecordSet(set, 5, 3, inner) == 1);

  CHECK(RS_RowsCount(set) == 3 && RS_ColumnsCount(set) == 5);
  CHECK(RS_AddColumn(set, "new") == 6 && RS_AddColumn(set, "t") == 1);
  CHECK(SameText(RS_ColumnName(set, 6), "new") && SameText(RS_SortedColumnName(set, 0), "b"));
  CHECK(SameText(RS_GetNameAsString(set, "t", 1, &length), "x") && length == 1);
  CHECK(SameText(RS_GetIndexAsString(set, 3, 1, NULL), "1"));
  CHECK(RS_GetNameAsLong64(set, "n", 1) == -5000000000LL && RS_GetIndexAsLong64(set, 2, 3) == 12);
  CHECK(RS_GetNameType(set, "n", 1) == (sizeof(long) == 8 ? RS_LONG : RS_TEXT));
  CHECK(RS_GetIndexType(set, 5, 2) == RS_RECORDSET && RS_GetIndexType(set, 4, 2) == RS_NULL);
  CHECK(RS_GetNameType(set, "z", 1) == RS_NONE && RS_GetNameType(set, "none", 1) == RS_NONE);
  CHECK(RS_GetNameAsString(set, "z", 1, &length) == NULL && length == 0);
  CHECK(RS_GetNameAsBool(set, "b", 1) == 1 && RS_GetIndexAsBool(set, 3, 3) == 0);
  CHECK(RS_Text(set, &length) != NULL && length == strlen(RS_Text(set, NULL)) && length > 50);
  copy = RS_GetNameAsRecordSet(set, "r", 2);
  CHECK(copy != NULL && RS_GetNameAsLong64(copy, "k", 1) == 3);
  RS_Free(copy);
  copy = RS_GetIndexAsRecordSet(set, 5, 3);
  CHECK(copy != NULL && SameText(RS_Text(copy, NULL), "{\"k\":3}"));
  RS_Free(copy);
  copy = RS_Copy(set);
  CHECK(copy != NULL && SameText(RS_GetNameAsString(copy, "t", 3, NULL), "y"));
  RS_Clear(set);
  CHECK(RS_ColumnsCount(set) == 0 && RS_RowsCount(set) == 0 && RS_ColumnName(set, 1) == NULL);
  CHECK(RS_SetNameAsString(set, "other", 1, "name") == 1);
  CHECK(SameText(RS_ColumnName(set, 1), "other")); /* not one that was there before */
  CHECK(RS_Merge(set, copy) == 1 && RS_RowsCount(set) == 3 && RS_ColumnIndex(set, "t") == 2);
  RS_Free(copy);
  RS_Free(inner);
  RS_Free(set);
  RS_Free(NULL);
}

/* What fails says why, and changes nothing. */
static void CheckFailures(void) {
  RS_HANDLE set = RS_Alloc();
  CHECK(SameText(RS_Error(set), ""));
  CHECK(RS_SetNameAsString(set, NULL, 1, "x") == 0 &&
        SameText(RS_Error(set), "an argument is NULL"));
  CHECK(RS_SetNameAsString(set, "t", 1, NULL) == 0 && RS_ColumnsCount(set) == 0);
  CHECK(RS_SetNameAsRecordSet(set, "t", 1, NULL) == 0 && RS_ColumnsCount(set) == 0);
  CHECK(RS_SetIndexAsString(set, 1, 1, "x") == 0);
  CHECK(SameText(RS_Error(set), "there is no such column"));
  CHECK(RS_SetIndexAsLong64(set, 0, 1, 1) == 0 && RS_SetIndexAsBool(set, -1, 1, 1) == 0);
  CHECK(RS_AddColumn(set, NULL) == -1 && RS_ColumnIndex(set, NULL) == -1);
  CHECK(RS_ColumnName(set, 1) == NULL && RS_SortedColumnName(set, 0) == NULL);
  CHECK(RS_SortedColumnName(set, -1) == NULL);
  CHECK(RS_GetNameAsRecordSet(set, "r", 1) == NULL);
  CHECK(RS_SetNameAsString(set, "t", 1, "no text of a record set") == 1);
  CHECK(RS_GetNameAsRecordSet(set, "t", 1) == NULL);
  CHECK(SameText(RS_Error(set), "expected '{' or '['"));
  CHECK(RS_GetColumnAsLong64(set, 2, 1, 0, NULL, NULL) == 0);
  CHECK(RS_GetColumnAsLong64(set, 1, 2, LONG_MAX, NULL, NULL) == 0);
  CHECK(RS_ExportRows(set, 1, 2, NULL, NULL) == 0 && RS_ExportRows(set, 0, 1, NULL, NULL) == 0);
  CHECK(SameText(RS_Error(set), "there are no such rows"));
  RS_Free(set);
}

static void CheckLoading(void) {
  RS_HANDLE set = RS_Alloc();
  struct RS_LoadResult result;
  const char* text = "{\"rows\":[{\"a\":1},{\"a\":1.5,\"b\":[2]}]}###";
  memset(&result, '#', sizeof result);
  result.size = sizeof result;
  CHECK(RS_Load(set, text, strlen(text) - 3, &result) == 1);
  CHECK(result.reason == NULL && result.size == sizeof result);
  CHECK(result.lossy_cells == 2 && result.first_row == 2 && result.first_column == 1);
  CHECK(result.reals == 1 && result.arrays == 1 && result.cut == 0 && result.limited == 0);
  CHECK(RS_Load(set, "{\"a\":\n x}", 10, &result) == 0);
  CHECK(result.offset == 7 && result.line == 2 && result.column == 2);
  CHECK(SameText(result.reason, "expected a value") && SameText(RS_Error(set), result.reason));
  result.size = offsetof(struct RS_LoadResult, line); /* a caller that knows less */
  result.line = 77;
  CHECK(RS_Load(set, "{", 1, &result) == 0 && result.offset == 1 && result.line == 77);
  CHECK(RS_Load(set, NULL, 0, NULL) == 0 && RS_Load(set, "{\"c\":true}", 10, NULL) == 1);
  CHECK(SameText(RS_Text(set, NULL), "{\"rows\":[{\"a\":1,\"c\":true},{\"a\":\"\",\"b\":\"\"}]}"));
  RS_Free(set);
}

static void CheckColumns(void) {
  RS_HANDLE set = RS_Alloc();
  long long values[4];
  signed char types[4];
  size_t length = 0;
  const char* texts;
  Load(set, "{\"rows\":[{\"n\":5},{},{\"n\":\"x7\"},{\"n\":null,\"m\":1}]}");
  CHECK(RS_GetColumnAsLong64(set, 1, 1, 4, values, types) == 1);
  CHECK(values[0] == 5 && values[1] == 0 && values[2] == 0 && values[3] == 0);
  CHECK(types[0] == RS_LONG && types[1] == RS_NONE && types[2] == RS_TEXT && types[3] == RS_NULL);
  types[0] = 99;
  texts = RS_GetColumnAsStrings(set, 1, 3, 2, types + 1, &length);
  CHECK(texts != NULL && length == 4 && memcmp(texts, "x7\0\0", 4) == 0);
  CHECK(types[0] == 99 && types[1] == RS_TEXT && types[2] == RS_NULL && types[3] == RS_NULL);
  CHECK(SameText(RS_GetColumnAsStrings(set, 1, 3, 1, NULL, NULL), "x7"));
  CHECK(RS_GetColumnAsStrings(set, 9, 1, 1, NULL, &length) == NULL);
  RS_Free(set);
}

static void CheckExport(void) {
  RS_HANDLE set = RS_Alloc();
  struct ArrowSchema schema;
  struct ArrowArray array, moved;
  const int32_t* offsets;
  Load(set,
       "{\"rows\":[{\"n\":1,\"t\":\"ab\",\"b\":true,\"z\":null},{\"n\":-2,\"b\":false},{\"t\":"
       "\"c\"}]}");
  CHECK(RS_ExportRows(set, 1, 3, &schema, &array) == 1);
  RS_Free(set); /* what was exported is independent */
  CHECK(SameText(schema.format, "+s") && schema.n_children == 4 && array.n_children == 4);
  CHECK(SameText(schema.children[0]->name, "n") && SameText(schema.children[0]->format, "l"));
  CHECK(SameText(schema.children[1]->format, "u") && SameText(schema.children[2]->format, "b"));
  CHECK(SameText(schema.children[3]->format, "n") && array.children[3]->null_count == 3);
  CHECK(array.length == 3 && array.null_count == 0 && array.n_buffers == 1);
  CHECK(((const int64_t*)array.children[0]->buffers[1])[1] == -2);
  CHECK(array.children[0]->null_count == 1);
  CHECK((((const unsigned char*)array.children[0]->buffers[0])[0] & 7) == 3);
  CHECK((((const unsigned char*)array.children[2]->buffers[1])[0] & 3) == 1);
  offsets = array.children[1]->buffers[1];
  CHECK(offsets[0] == 0 && offsets[1] == 2 && offsets[2] == 2 && offsets[3] == 3);
  CHECK(memcmp(array.children[1]->buffers[2], "abc", 3) == 0);
  moved = *array.children[1]; /* a child may be taken out */
  array.children[1]->release = NULL;
  array.release(&array);
  CHECK(array.release == NULL && memcmp(moved.buffers[2], "abc", 3) == 0);
  moved.release(&moved);
  schema.release(&schema);
}

static void CheckStreams(void) {
  RS_HANDLE set = RS_Alloc();
  RS_HANDLE other = RS_Alloc();
  struct ArrowSchema schema;
  struct ArrowArray array;
  struct ArrowArrayStream stream;
  long row;
  for (row = 1; row <= 7; ++row) {
    RS_SetNameAsLong64(set, "n", row, row);
  }
  CHECK(RS_ExportStream(set, 3, &stream) == 1);
  CHECK(stream.get_next(&stream, &array) == 0 && array.length == 3);
  array.release(&array);
  CHECK(RS_ImportStream(other, &stream) == 1 && stream.release == NULL); /* what is left of it */
  CHECK(SameText(RS_Text(other, NULL), "{\"rows\":[{\"n\":4},{\"n\":5},{\"n\":6},{\"n\":7}]}"));
  CHECK(RS_ExportRows(set, 2, 2, &schema, &array) == 1);
  CHECK(RS_ImportRows(other, 8, &schema, &array) == 1 && RS_GetNameAsLong64(other, "n", 9) == 3);
  schema.release(&schema);
  array.release(&array);
  RS_Free(set);
  RS_Free(other);
}

int main(void) {
  CheckCells();
  CheckFailures();
  CheckLoading();
  CheckColumns();
  CheckExport();
  CheckStreams();
  return nFailed;
}
