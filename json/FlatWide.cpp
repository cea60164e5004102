// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interface beyond 32 bits: 64-bit integers, reals, types, sizes, and why a parse failed.

#include <utility>

#include "json/JSON.h"
#include "json/JSONMessage.h"

namespace {

using JSON::JSONValue;
using JSON::Message;

Message& MessageOf(JSON_HANDLE handle) { return *reinterpret_cast<Message*>(handle); }

const JSONValue& AtOrdinal(JSON_HANDLE handle, int ordinal) {
  return std::as_const(MessageOf(handle))[ordinal];
}
const JSONValue& AtName(JSON_HANDLE handle, const char* name) {
  return std::as_const(MessageOf(handle))[name];
}
const JSONValue& AtPath(JSON_HANDLE handle, const char* path) {
  return MessageOf(handle).Path(path);
}

}  // namespace

long long JSON_GetOrdinalAsLong64(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).AsLong64();
}
long long JSON_GetNameAsLong64(JSON_HANDLE handle, const char* name) {
  return AtName(handle, name).AsLong64();
}
long long JSON_GetPathAsLong64(JSON_HANDLE handle, const char* path) {
  return AtPath(handle, path).AsLong64();
}

double JSON_GetOrdinalAsReal(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).AsReal();
}
double JSON_GetNameAsReal(JSON_HANDLE handle, const char* name) {
  return AtName(handle, name).AsReal();
}
double JSON_GetPathAsReal(JSON_HANDLE handle, const char* path) {
  return AtPath(handle, path).AsReal();
}

int JSON_GetOrdinalAsBool(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).AsBoolean() ? 1 : 0;
}
int JSON_GetNameAsBool(JSON_HANDLE handle, const char* name) {
  return AtName(handle, name).AsBoolean() ? 1 : 0;
}
int JSON_GetPathAsBool(JSON_HANDLE handle, const char* path) {
  return AtPath(handle, path).AsBoolean() ? 1 : 0;
}

int JSON_GetOrdinalType(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).eType;
}
int JSON_GetNameType(JSON_HANDLE handle, const char* name) { return AtName(handle, name).eType; }
int JSON_GetPathType(JSON_HANDLE handle, const char* path) { return AtPath(handle, path).eType; }

int JSON_GetOrdinalSize(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).Size();
}
int JSON_GetNameSize(JSON_HANDLE handle, const char* name) { return AtName(handle, name).Size(); }
int JSON_GetPathSize(JSON_HANDLE handle, const char* path) { return AtPath(handle, path).Size(); }

const char* JSON_ParseError(JSON_HANDLE handle, size_t* offset, size_t* line, size_t* column) {
  const JSON::ParseError& error = MessageOf(handle).Error();
  if (offset != nullptr) *offset = error.nOffset;
  if (line != nullptr) *line = error.nLine;
  if (column != nullptr) *column = error.nColumn;
  return error.szReason;
}
