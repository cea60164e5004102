/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * Record sets for hosts that use plain functions instead of the class: tables that are filled and
 * read cell by cell or by whole columns, and exchanged as JSON text. Any C99 or C++17 compiler
 * reads this header.
 *
 *     RS_HANDLE people = RS_Alloc();
 *     RS_SetNameAsString(people, "name", 1, "Ada");
 *     RS_SetNameAsLong64(people, "born", 1, 1815);
 *     puts(RS_Text(people, NULL));                  prints {"born":1815,"name":"Ada"}
 *     RS_Free(people);
 *
 * Conventions, for all functions:
 *
 *  1. Handle. An RS_HANDLE stands for one record set. RS_Alloc() makes it, and so does every other
 *     function that returns one; RS_Free() releases it with everything in it. Nothing else needs
 *     releasing, but Arrow structures, which carry their own release. Only RS_Free() takes NULL.
 *
 *  2. Text. All text is 8-bit, UTF-8 by convention, and ends at its first NUL. Lengths are in
 *     bytes, without the NUL.
 *
 *  3. Cells. Rows are numbers from 1, columns are names, or indices from 1 in the order in which
 *     they were added; the second is faster in loops. What a cell is, how rows are counted and what
 *     the text looks like is said in recordset/QXRecordSet.h and docs/record-set-text.md.
 *
 *  4. Reading makes nothing: a cell that does not exist reads as NULL, 0 or RS_NONE, and so does
 *     one of an unknown column or a NULL name.
 *
 *  5. Failures are told by the result alone: 0, -1 or NULL where a function says that it may fail.
 *     RS_Error() then says why. Exhausted memory is a failure like any other; the record set is
 *     then as each function of the class leaves it. No C++ exception leaves these functions.
 *
 *  6. Texts handed out belong to the record set. That of a cell stays until the cell is written or
 *     the record set is cleared or freed; every other one until the next call of the same function,
 *     or of one that clears or frees. Each may be an argument of the next call.
 *
 *  7. Threads. A handle is used by one thread at a time. Different handles are independent.
 */

#ifndef QXRECORDSET_RECORDSET_RS_H
#define QXRECORDSET_RECORDSET_RS_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C reads it, too */
#include <stdint.h> /* NOLINT(modernize-deprecated-headers) */

#include "qxrecordset_export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One record set; see convention 1. */
typedef struct RS_RecordSet* RS_HANDLE; /* NOLINT(modernize-use-using): C has no using */

/* What a cell holds: the numbers of CQXRecordSet::QX_TYPE, and one for no cell. */
enum {
  RS_NONE = -1,
  RS_NULL = 0,
  RS_LONG = 1, /* an integer that `long` holds */
  RS_BOOL = 2,
  RS_TEXT = 3,
  RS_RECORDSET = 5 /* a nested record set, as its JSON text */
};

/* ---- Making, copying, clearing -------------------------------------------------------------- */

/* An empty record set; NULL when memory is exhausted. */
QXRECORDSET_EXPORT RS_HANDLE RS_Alloc(void);

/* Releases a record set. NULL does nothing. */
QXRECORDSET_EXPORT void RS_Free(RS_HANDLE handle);

/* An independent copy; NULL when memory is exhausted. */
QXRECORDSET_EXPORT RS_HANDLE RS_Copy(RS_HANDLE handle);

/* Removes all rows and columns. */
QXRECORDSET_EXPORT void RS_Clear(RS_HANDLE handle);

/* Adds all cells of `other`: each goes to the row and column of the same number and name, where it
 * replaces what is there. 1, or 0 when memory is exhausted. */
QXRECORDSET_EXPORT int RS_Merge(RS_HANDLE handle, RS_HANDLE other);

/* Why the last failure of a function of this handle was one; "" before the first. Never NULL. */
QXRECORDSET_EXPORT const char* RS_Error(RS_HANDLE handle);

/* ---- JSON text ------------------------------------------------------------------------------ */

/* What RS_Load() tells. More fields may be added: `size` is set by the caller. */
struct RS_LoadResult {
  size_t size; /* sizeof(struct RS_LoadResult) */

  /* Where and why the text was refused; reason is NULL when it was loaded. Bytes from 0, line and
   * column from 1. The reason is a constant. */
  size_t offset;
  size_t line;
  size_t column;
  const char* reason;

  /* Cells that hold less than the text said; the first of them; and what they lost, by value. */
  size_t lossy_cells;
  long first_row;
  long first_column; /* its index */
  size_t reals;      /* real numbers: "" */
  size_t arrays;     /* arrays: "" */
  size_t cut;        /* texts with a NUL: end there */
  size_t limited;    /* integers beyond long: the nearest bound */
};

/* Adds the rows of a JSON text, which need not end in a NUL. 1 when it was loaded; 0 when it is
 * refused, or memory is exhausted (the reason is then NULL), or `text` is NULL; nothing is added
 * then. `result` may be NULL. */
QXRECORDSET_EXPORT int RS_Load(RS_HANDLE handle, const char* text, size_t length,
                               struct RS_LoadResult* result);

/* The record set as compact JSON text, and its length in what is not NULL; NULL when memory is
 * exhausted. It is built anew when something has changed. A nested record set of several rows loses
 * them there: a cell's object has no arrays. */
QXRECORDSET_EXPORT const char* RS_Text(RS_HANDLE handle, size_t* length);

/* ---- Rows and columns ----------------------------------------------------------------------- */

/* The largest row number that was written; 0 for none. */
QXRECORDSET_EXPORT long RS_RowsCount(RS_HANDLE handle);

/* Number of columns; their indices are 1 to this. */
QXRECORDSET_EXPORT long RS_ColumnsCount(RS_HANDLE handle);

/* The index of a column, or -1. */
QXRECORDSET_EXPORT long RS_ColumnIndex(RS_HANDLE handle, const char* name);

/* The same, but a new name becomes a column. -1 for a NULL name, or when memory is exhausted. */
QXRECORDSET_EXPORT long RS_AddColumn(RS_HANDLE handle, const char* name);

/* The name of the column with that index; NULL when there is none, or memory is exhausted. It lives
 * until the record set is cleared or freed. */
QXRECORDSET_EXPORT const char* RS_ColumnName(RS_HANDLE handle, long index);

/* The name at a 0-based position in the byte-wise order of all names; the same. */
QXRECORDSET_EXPORT const char* RS_SortedColumnName(RS_HANDLE handle, long position);

/* ---- Writing cells -------------------------------------------------------------------------- */

/* Each writes one cell: 1, or 0 when there is no such index, a text, name or nested record set is
 * NULL, or memory is exhausted. By name, a new name becomes a column.
 *
 * An integer that `long` does not hold becomes a text cell with its digits. A nested record set is
 * stored as its text; it stays independent. */
QXRECORDSET_EXPORT int RS_SetNameAsString(RS_HANDLE handle, const char* name, long row,
                                          const char* text);
QXRECORDSET_EXPORT int RS_SetNameAsLong64(RS_HANDLE handle, const char* name, long row,
                                          long long value);
QXRECORDSET_EXPORT int RS_SetNameAsBool(RS_HANDLE handle, const char* name, long row, int value);
QXRECORDSET_EXPORT int RS_SetNameNull(RS_HANDLE handle, const char* name, long row);
QXRECORDSET_EXPORT int RS_SetNameAsRecordSet(RS_HANDLE handle, const char* name, long row,
                                             RS_HANDLE nested);

QXRECORDSET_EXPORT int RS_SetIndexAsString(RS_HANDLE handle, long index, long row,
                                           const char* text);
QXRECORDSET_EXPORT int RS_SetIndexAsLong64(RS_HANDLE handle, long index, long row, long long value);
QXRECORDSET_EXPORT int RS_SetIndexAsBool(RS_HANDLE handle, long index, long row, int value);
QXRECORDSET_EXPORT int RS_SetIndexNull(RS_HANDLE handle, long index, long row);
QXRECORDSET_EXPORT int RS_SetIndexAsRecordSet(RS_HANDLE handle, long index, long row,
                                              RS_HANDLE nested);

/* ---- Reading cells -------------------------------------------------------------------------- */

/* The type of a cell, one of the numbers above (or another that a C++ host has set); RS_NONE when
 * there is no such cell. */
QXRECORDSET_EXPORT int RS_GetNameType(RS_HANDLE handle, const char* name, long row);
QXRECORDSET_EXPORT int RS_GetIndexType(RS_HANDLE handle, long index, long row);

/* The text of a cell, of any type, and its length in what is not NULL; NULL and 0 when there is no
 * such cell. The text of a null is "", of a boolean "1" or "0". */
QXRECORDSET_EXPORT const char* RS_GetNameAsString(RS_HANDLE handle, const char* name, long row,
                                                  size_t* length);
QXRECORDSET_EXPORT const char* RS_GetIndexAsString(RS_HANDLE handle, long index, long row,
                                                   size_t* length);

/* The integer that the text begins with, as strtoll reads it; 0 when there is none. */
QXRECORDSET_EXPORT long long RS_GetNameAsLong64(RS_HANDLE handle, const char* name, long row);
QXRECORDSET_EXPORT long long RS_GetIndexAsLong64(RS_HANDLE handle, long index, long row);

/* Whether that integer is not 0. */
QXRECORDSET_EXPORT int RS_GetNameAsBool(RS_HANDLE handle, const char* name, long row);
QXRECORDSET_EXPORT int RS_GetIndexAsBool(RS_HANDLE handle, long index, long row);

/* A new record set loaded from the text; NULL when there is no such cell, its text is no record
 * set, or memory is exhausted. */
QXRECORDSET_EXPORT RS_HANDLE RS_GetNameAsRecordSet(RS_HANDLE handle, const char* name, long row);
QXRECORDSET_EXPORT RS_HANDLE RS_GetIndexAsRecordSet(RS_HANDLE handle, long index, long row);

/* ---- Whole columns -------------------------------------------------------------------------- */

/* The cells of a column in `rows` rows from `row` on. Their types go to `types`, unless it is NULL,
 * which has room for as many. 1, or 0 when there is no such column or `rows` is negative. */

/* As integers, in `values`; see RS_GetIndexAsLong64. */
QXRECORDSET_EXPORT int RS_GetColumnAsLong64(RS_HANDLE handle, long index, long row, long rows,
                                            long long* values, signed char* types);

/* As texts, one behind the other with a NUL behind each; a cell that does not exist gives an empty
 * one. Their length, all NULs counted, is written to `length` unless it is NULL. NULL also when
 * memory is exhausted. The result lives until the next call, or until the record set is freed. For
 * languages that make their strings fastest from one split. */
QXRECORDSET_EXPORT const char* RS_GetColumnAsStrings(RS_HANDLE handle, long index, long row,
                                                     long rows, signed char* types, size_t* length);

/* ---- The Arrow C data interface -------------------------------------------------------------
 *
 * Tables for other libraries, without a dependency on one: https://arrow.apache.org/docs/format
 * describes the three structures, which are declared by everyone who uses them.
 *
 * A record set is a struct ("+s") with a field for each column, in the order of their indices. What
 * a field is follows from all cells of its column within the row count:
 *
 *     no cells but nulls           "n"   null
 *     integers and nulls           "l"   64-bit integer
 *     booleans and nulls           "b"   boolean
 *     nested record sets, nulls    "u"   their text; the field's metadata has the pair
 *                                        "qxrecordset.type", "recordset"
 *     everything else              "u"   text, as RS_GetIndexAsString gives it
 *
 * A cell that does not exist is a null.
 */

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  int64_t flags;
  int64_t n_children;
  struct ArrowSchema** children;
  struct ArrowSchema* dictionary;
  void (*release)(struct ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  int64_t length;
  int64_t null_count;
  int64_t offset;
  int64_t n_buffers;
  int64_t n_children;
  const void** buffers;
  struct ArrowArray** children;
  struct ArrowArray* dictionary;
  void (*release)(struct ArrowArray*);
  void* private_data;
};

#endif /* ARROW_C_DATA_INTERFACE */

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE

struct ArrowArrayStream {
  int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
  int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
  const char* (*get_last_error)(struct ArrowArrayStream*);
  void (*release)(struct ArrowArrayStream*);
  void* private_data;
};

#endif /* ARROW_C_STREAM_INTERFACE */

/* Writes the schema of the record set to *schema, and `rows` rows from `row` on, which must lie
 * within 1 and the row count, to *array; either may be NULL. Both are the caller's to release, and
 * independent of the record set. 1; or 0, with nothing written, for rows beyond the row count, for
 * a column of 2 GB of text or more in these rows, or when memory is exhausted. */
QXRECORDSET_EXPORT int RS_ExportRows(RS_HANDLE handle, long row, long rows,
                                     struct ArrowSchema* schema, struct ArrowArray* array);

/* Writes a stream of all rows to *stream, in batches of batch_rows rows (the last may have fewer; 0
 * or less means one batch of all). The stream has a copy of the record set, and is the caller's to
 * release. 1, or 0 when memory is exhausted. */
QXRECORDSET_EXPORT int RS_ExportStream(RS_HANDLE handle, long batch_rows,
                                       struct ArrowArrayStream* stream);

/* Writes the rows of *array, which *schema describes, to the rows from `row` on; columns that are
 * new are added. Fields may be null ("n"), boolean ("b"), integers of any width ("c" to "L") and
 * text ("u", "U"; what the metadata above marks becomes nested record sets). A null becomes a null
 * cell, an integer that `long` does not hold a text cell, a text ends at its first NUL. 1; or 0 for
 * any other field, with nothing written, or when memory is exhausted, when some cells may have been
 * written. Both structures stay the caller's. */
QXRECORDSET_EXPORT int RS_ImportRows(RS_HANDLE handle, long row, const struct ArrowSchema* schema,
                                     const struct ArrowArray* array);

/* Adds all rows of a stream behind those that are there, and releases the stream, whatever the
 * result. 1; or 0 as above, or when the stream fails: RS_Error() is then what it says. Batches that
 * were read before are there. 0 also for a stream that is released already. */
QXRECORDSET_EXPORT int RS_ImportStream(RS_HANDLE handle, struct ArrowArrayStream* stream);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* QXRECORDSET_RECORDSET_RS_H */
