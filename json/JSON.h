/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * The flat interface: parsing a JSON document and reading values out of it, for hosts that use
 * plain functions instead of the JSON classes. Any C99 or C++17 compiler reads this header.
 *
 *     JSON_HANDLE message = JSON_AllocMessage();
 *     if (JSON_ParseMessage(message, "{\"rows\":[{\"name\":\"Ada\",\"id\":7}]}")) {
 *       const char* name = JSON_GetPathAsString(message, "rows.0.name");
 *       int id = JSON_GetPathAsInt(message, "rows.0.id");
 *     }
 *     JSON_FreeMessage(message);
 *
 * Conventions, for all functions:
 *
 *  1. Handle. A JSON_HANDLE stands for one message: a document with its own copy of the parsed
 *     text. JSON_AllocMessage() makes it and JSON_FreeMessage() releases it with everything in it;
 *     nothing else needs releasing. (It is the address of a JSON::Message, json/JSONMessage.h, and
 *     a C++ host may use it as one.)
 *
 *  2. Text. All text is 8-bit, UTF-8 by convention, and NUL-terminated. Lengths are in bytes.
 *
 *  3. Finding a value. Values are looked for in the top-level object or array:
 *     - by ordinal: a 0-based position; members of an object count in document order;
 *     - by name: the whole name of a member. When several members share it, the first is found. In
 *       an array the name is read as a decimal ordinal ("2"; one that is no number means 0);
 *     - by path: names and ordinals joined by '.', such as "rows.3.name". There is no escape for
 *       '.', except that a leading '.' belongs to the first name.
 *
 *     The first lookup of a name sorts the object's names; every further one is a binary search.
 *
 *  4. Missing values. What is not found, and what has another type than the one asked for, reads as
 *     0, 0.0 or NULL. A missing value is not a JSON null: JSON_Is...Null gives 0 for it. Strings
 *     are never read as numbers, and numbers never as strings.
 *
 *  5. NULL. Only JSON_FreeMessage() takes a NULL handle. A NULL path finds nothing. A NULL name
 *     finds nothing in an array and the first member of an object. As a result, NULL means: no
 *     string there.
 *
 *  6. Strings handed out belong to the message. They are unescaped and must not be changed or
 *     freed. They stay valid until the message is parsed again or freed (or, in C++, updated).
 *
 *  7. Failures are told by the result alone. When memory runs out, std::bad_alloc leaves
 *     JSON_AllocMessage(), JSON_ParseMessage() or JSON_EscapeString(), or a lookup that sorts
 *     names; it ends a program written in C.
 *
 *  8. Threads. A handle is used by one thread at a time, reading included, because lookups may sort
 *     names. Different handles are independent.
 */

#ifndef QXRECORDSET_JSON_JSON_H
#define QXRECORDSET_JSON_JSON_H

#include <stddef.h> /* NOLINT(modernize-deprecated-headers): C reads it, too */

#include "qxrecordset_export.h"

#ifdef __cplusplus
#include <string>

extern "C" {
#endif

/* One message; see convention 1. */
typedef struct JSON_Message* JSON_HANDLE; /* NOLINT(modernize-use-using): C has no using */

/* What a value is: 0 when there is none, -1 when a parse failed at it. */
enum {
  JSON_TYPE_INVALID = -1,
  JSON_TYPE_NONE = 0,
  JSON_TYPE_NULL = 1,
  JSON_TYPE_BOOLEAN = 2,
  JSON_TYPE_INTEGER = 3, /* a number written without '.', 'e' and 'E' */
  JSON_TYPE_REAL = 4,    /* any other number */
  JSON_TYPE_STRING = 5,
  JSON_TYPE_ARRAY = 6,
  JSON_TYPE_OBJECT = 7
};

/* ---- The message --------------------------------------------------------------------------- */

/* A new message that holds no document. */
QXRECORDSET_EXPORT JSON_HANDLE JSON_AllocMessage(void);

/* Releases the message, its document and all strings handed out. NULL does nothing. */
QXRECORDSET_EXPORT void JSON_FreeMessage(JSON_HANDLE handle);

/* Parses a copy of `text`, in place of what the message held. 1 when the text begins with a
 * complete object or array; what follows it is ignored. 0 for a NULL text, which changes nothing,
 * and for any other: then the message holds no document, or what was read before the fault. Linear
 * in the text; nesting is limited to 1024 containers. docs/json-accepted.md lists what is accepted
 * beyond strict JSON. */
QXRECORDSET_EXPORT int JSON_ParseMessage(JSON_HANDLE handle, const char* text);

/* Why the last JSON_ParseMessage() gave 0: one line of English, a constant; NULL when it gave 1,
 * and before the first one. Where that was, in bytes from 0 and by line and column from 1, is
 * written to what is not NULL of `offset`, `line` and `column`. */
QXRECORDSET_EXPORT const char* JSON_ParseError(JSON_HANDLE handle, size_t* offset, size_t* line,
                                               size_t* column);

/* Number of members or elements at the top level; 0 when nothing has been parsed. */
QXRECORDSET_EXPORT int JSON_MessageSize(JSON_HANDLE handle);

/* ---- Memory -------------------------------------------------------------------------------- */

/* Gives the memory that the library keeps back to the C library. Of what documents and record sets
 * release, blocks of 32 kB and more are kept for the next ones: 32 MB at most, 16 MB in 32-bit
 * programs. For a host that is done with large texts; never needed. May be called at any time, from
 * any thread; while another thread takes or releases such a block, it may do nothing. */
QXRECORDSET_EXPORT void JSON_ReleaseMemory(void);

/* ---- Reading values ------------------------------------------------------------------------ */

/* 1 when there is a value and it is a JSON null, else 0. */
QXRECORDSET_EXPORT int JSON_IsOrdinalNull(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT int JSON_IsNameNull(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT int JSON_IsPathNull(JSON_HANDLE handle, const char* path);

/* What a value is: one of the JSON_TYPE_ numbers, which tell a missing value from a null. */
QXRECORDSET_EXPORT int JSON_GetOrdinalType(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT int JSON_GetNameType(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT int JSON_GetPathType(JSON_HANDLE handle, const char* path);

/* Number of members or elements of an object or array; 0 for everything else. */
QXRECORDSET_EXPORT int JSON_GetOrdinalSize(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT int JSON_GetNameSize(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT int JSON_GetPathSize(JSON_HANDLE handle, const char* path);

/* The text of a string; NULL for every other type. A string that holds a NUL character is read up
 * to there. */
QXRECORDSET_EXPORT const char* JSON_GetOrdinalAsString(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT const char* JSON_GetNameAsString(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT const char* JSON_GetPathAsString(JSON_HANDLE handle, const char* path);

/* A number as a 32-bit integer: beyond the range the nearest bound, a real number cut towards zero.
 * true gives 1; everything else 0. */
QXRECORDSET_EXPORT int JSON_GetOrdinalAsInt(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT int JSON_GetNameAsInt(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT int JSON_GetPathAsInt(JSON_HANDLE handle, const char* path);

/* The same with 64 bits. */
QXRECORDSET_EXPORT long long JSON_GetOrdinalAsLong64(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT long long JSON_GetNameAsLong64(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT long long JSON_GetPathAsLong64(JSON_HANDLE handle, const char* path);

/* A number as the nearest double. true gives 1.0; everything else 0.0. */
QXRECORDSET_EXPORT double JSON_GetOrdinalAsReal(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT double JSON_GetNameAsReal(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT double JSON_GetPathAsReal(JSON_HANDLE handle, const char* path);

/* 1 for true, for a number that is not zero and for a string that is not empty, whatever it says;
 * 0 for everything else. A number written without '.', 'e' and 'E' is read as a 32-bit integer. */
QXRECORDSET_EXPORT int JSON_GetOrdinalAsBool(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT int JSON_GetNameAsBool(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT int JSON_GetPathAsBool(JSON_HANDLE handle, const char* path);

/* The same, but a number written without '.', 'e' and 'E' is read as a 32-bit integer
 * first, as above. true gives 1.0; everything else 0.0. */
QXRECORDSET_EXPORT double JSON_GetOrdinalAsDouble(JSON_HANDLE handle, int ordinal);
QXRECORDSET_EXPORT double JSON_GetNameAsDouble(JSON_HANDLE handle, const char* name);
QXRECORDSET_EXPORT double JSON_GetPathAsDouble(JSON_HANDLE handle, const char* path);

/* A number as an unsigned 64-bit integer. A number written without '.', 'e' and 'E' is read as a
 * signed 64-bit integer (beyond that range the nearest bound) and its bits are returned: -1 gives
 * 18446744073709551615. A real number is cut towards zero; beyond the unsigned range the nearest
 * bound, so below zero 0. true gives 1; everything else 0. */
QXRECORDSET_EXPORT unsigned long long JSON_GetOrdinalAsUnsignedLong64(JSON_HANDLE handle,
                                                                      int ordinal);
QXRECORDSET_EXPORT unsigned long long JSON_GetNameAsUnsignedLong64(JSON_HANDLE handle,
                                                                   const char* name);
QXRECORDSET_EXPORT unsigned long long JSON_GetPathAsUnsignedLong64(JSON_HANDLE handle,
                                                                   const char* path);

/* ---- Writing strings ----------------------------------------------------------------------- */

/* Writes `pszText` (not NULL) as the inside of a JSON string, without quotes, and a NUL to the
 * buffer that begins at *ppDest and ends in front of pDestEnd. 1 when it was written; 0, with the
 * buffer untouched, when it does not fit: one byte more is needed than the escaped text and its NUL
 * occupy. *ppDest is not moved. */
QXRECORDSET_EXPORT int JSON_EscapeString(char** ppDest, char* pDestEnd, const char* pszText);

#ifdef __cplusplus
} /* extern "C" */

/* ---- Pretty printing (C++) ----------------------------------------------------------------- */

/* Breaks JSON text into lines indented by tabs, for people to read, and returns `output`, whose
 * content the result replaces. Every bracket begins a line of its own, and so does each member of
 * an object; the elements of an array stay on one line. `text` (not null, NUL-terminated) may lie
 * in `output`.
 *
 * The text is neither parsed nor checked: every byte is copied, in order, white space too, and
 * brackets and commas inside strings break lines like any other. Any text will do, also one whose
 * brackets do not match. One pass; the result grows with the depth of nesting, one tab per level
 * and line. When memory runs out (std::bad_alloc), `output` is unchanged. */
QXRECORDSET_EXPORT std::string& JSON_PrettyPrint(char const* text, std::string& output);
#endif

#endif /* QXRECORDSET_JSON_JSON_H */
