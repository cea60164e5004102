// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interface: each function is one lookup in a message and one reader on what was found.

#include <utility>

#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "memory/KeptBlocks.h"
#include "text/ReadDecimal.h"

namespace {

using JSON::JSONValue;
using JSON::Message;

// A handle is the address of a message and nothing else; these two are the only casts between them.
Message& MessageOf(JSON_HANDLE handle) { return *reinterpret_cast<Message*>(handle); }
JSON_HANDLE HandleOf(Message* pMessage) { return reinterpret_cast<JSON_HANDLE>(pMessage); }

const JSONValue& AtOrdinal(JSON_HANDLE handle, int ordinal) {
  return std::as_const(MessageOf(handle))[ordinal];
}
const JSONValue& AtName(JSON_HANDLE handle, const char* name) {
  return std::as_const(MessageOf(handle))[name];
}
const JSONValue& AtPath(JSON_HANDLE handle, const char* path) {
  return MessageOf(handle).Path(path);
}

int IsNull(const JSONValue& value) { return value.eType == JSON::jtNull ? 1 : 0; }

const char* AsString(const JSONValue& value) {
  return value.eType == JSON::jtString ? value.pText : nullptr;
}

unsigned long long AsUnsignedLong64(const JSONValue& value) {
  switch (value.eType) {
    case JSON::jtInteger:
      return static_cast<unsigned long long>(JSON::ReadDecimal<long long>(value.pText));
    case JSON::jtDouble:
      return JSON::CutToInteger<unsigned long long>(value.AsDouble());
    case JSON::jtBoolean:
      return value.AsBoolean() ? 1 : 0;
    default:
      return 0;
  }
}

}  // namespace

// ---- The message --------------------------------------------------------------------------------

JSON_HANDLE JSON_AllocMessage(void) { return HandleOf(new Message()); }

void JSON_FreeMessage(JSON_HANDLE handle) {
  if (handle != nullptr) delete &MessageOf(handle);
}

int JSON_ParseMessage(JSON_HANDLE handle, const char* text) {
  return MessageOf(handle).Parse(text, -1) ? 1 : 0;
}

int JSON_MessageSize(JSON_HANDLE handle) { return MessageOf(handle).Size(); }

// ---- Memory -------------------------------------------------------------------------------------

void JSON_ReleaseMemory(void) { memory::KeptBlocks::Release(); }

// ---- Reading values -----------------------------------------------------------------------------

int JSON_IsOrdinalNull(JSON_HANDLE handle, int ordinal) {
  return IsNull(AtOrdinal(handle, ordinal));
}
int JSON_IsNameNull(JSON_HANDLE handle, const char* name) { return IsNull(AtName(handle, name)); }
int JSON_IsPathNull(JSON_HANDLE handle, const char* path) { return IsNull(AtPath(handle, path)); }

const char* JSON_GetOrdinalAsString(JSON_HANDLE handle, int ordinal) {
  return AsString(AtOrdinal(handle, ordinal));
}
const char* JSON_GetNameAsString(JSON_HANDLE handle, const char* name) {
  return AsString(AtName(handle, name));
}
const char* JSON_GetPathAsString(JSON_HANDLE handle, const char* path) {
  return AsString(AtPath(handle, path));
}

int JSON_GetOrdinalAsInt(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).AsInt();
}
int JSON_GetNameAsInt(JSON_HANDLE handle, const char* name) { return AtName(handle, name).AsInt(); }
int JSON_GetPathAsInt(JSON_HANDLE handle, const char* path) { return AtPath(handle, path).AsInt(); }

double JSON_GetOrdinalAsDouble(JSON_HANDLE handle, int ordinal) {
  return AtOrdinal(handle, ordinal).AsDouble();
}
double JSON_GetNameAsDouble(JSON_HANDLE handle, const char* name) {
  return AtName(handle, name).AsDouble();
}
double JSON_GetPathAsDouble(JSON_HANDLE handle, const char* path) {
  return AtPath(handle, path).AsDouble();
}

unsigned long long JSON_GetOrdinalAsUnsignedLong64(JSON_HANDLE handle, int ordinal) {
  return AsUnsignedLong64(AtOrdinal(handle, ordinal));
}
unsigned long long JSON_GetNameAsUnsignedLong64(JSON_HANDLE handle, const char* name) {
  return AsUnsignedLong64(AtName(handle, name));
}
unsigned long long JSON_GetPathAsUnsignedLong64(JSON_HANDLE handle, const char* path) {
  return AsUnsignedLong64(AtPath(handle, path));
}
