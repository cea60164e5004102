// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the package calls beside the functions of RS.h: whole columns in, which would otherwise be a call
// for each cell, and documents. No C++ exception may leave a function here: JavaScript could not put
// the stack back. Exhausted memory is a result.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "json/JSON.h"
#include "recordset/RS.h"

namespace {

constexpr int kNoMemory = -2;

// What f() gives, or kNoMemory.
template <typename F>
int Guarded(F f) noexcept {
  try {
    return f();
  } catch (...) {
    return kNoMemory;
  }
}

// A value of a document, for JavaScript: its layout is known there.
struct Value {
  double real;
  std::int64_t integer;
  const char* text;
  std::int32_t size;
};

// Where a text was refused.
struct Fault {
  std::size_t offset;
  std::size_t line;
  std::size_t column;
  const char* reason;
};

}  // namespace

extern "C" {

// ---- Columns ------------------------------------------------------------------------------------

// Writes the rows from 1 on of a column. `valid`, unless it is null, has a byte for each row, 0 for a
// null. 1, or 0 when memory is exhausted.
int QX_SetIntegers(RS_HANDLE handle, long index, const std::int32_t* values, const char* valid,
                   long rows, int bBool) {
  for (long i = 0; i < rows; ++i) {
    const bool bNull = valid != nullptr && valid[i] == 0;
    const int nWritten = bNull        ? RS_SetIndexNull(handle, index, i + 1)
                         : bBool != 0 ? RS_SetIndexAsBool(handle, index, i + 1, values[i])
                                      : RS_SetIndexAsLong64(handle, index, i + 1, values[i]);
    if (nWritten == 0) return 0;
  }
  return 1;
}

// The same with texts, one behind the other with a NUL behind each, `length` bytes in all. -1 when
// there are not as many texts as rows: one of them holds a NUL.
int QX_SetTexts(RS_HANDLE handle, long index, const char* texts, std::size_t length,
                const char* valid, long rows) {
  if (std::count(texts, texts + length, '\0') != rows) return -1;
  for (long i = 0; i < rows; ++i, texts += std::strlen(texts) + 1) {
    const bool bNull = valid != nullptr && valid[i] == 0;
    const int nWritten = bNull ? RS_SetIndexNull(handle, index, i + 1)
                               : RS_SetIndexAsString(handle, index, i + 1, texts);
    if (nWritten == 0) return 0;
  }
  return 1;
}

// ---- Documents ----------------------------------------------------------------------------------

// Null when memory is exhausted.
JSON_HANDLE QX_OpenDocument() {
  JSON_HANDLE handle = nullptr;
  Guarded([&] {
    handle = JSON_AllocMessage();
    return 0;
  });
  return handle;
}

void QX_FreeDocument(JSON_HANDLE handle) { JSON_FreeMessage(handle); }

// 1; 0 with *fault when the text is refused; or kNoMemory.
int QX_ParseDocument(JSON_HANDLE handle, const char* text, Fault* fault) {
  return Guarded([&] {
    if (JSON_ParseMessage(handle, text) != 0) return 1;
    fault->reason = JSON_ParseError(handle, &fault->offset, &fault->line, &fault->column);
    return 0;
  });
}

// The type of the value in that path, a number of JSON.h, with what the type has in *value; or
// kNoMemory.
int QX_ReadPath(JSON_HANDLE handle, const char* path, Value* value) {
  return Guarded([&] {
    const int nType = JSON_GetPathType(handle, path);
    switch (nType) {
      case JSON_TYPE_BOOLEAN:
      case JSON_TYPE_INTEGER:
      case JSON_TYPE_REAL:
        value->real = JSON_GetPathAsReal(handle, path);
        value->integer = JSON_GetPathAsLong64(handle, path);
        break;
      case JSON_TYPE_STRING:
        value->text = JSON_GetPathAsString(handle, path);
        break;
      case JSON_TYPE_ARRAY:
      case JSON_TYPE_OBJECT:
        value->size = JSON_GetPathSize(handle, path);
        break;
      default:
        break;
    }
    return nType;
  });
}

}  // extern "C"
