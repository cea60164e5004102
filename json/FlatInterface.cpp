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

int IsNull(const JSONValue& value) { return value.eType == JSON::jtNull ? 1 : 0; }
int TypeOf(const JSONValue& value) { return value.eType; }
int SizeOf(const JSONValue& value) { return value.Size(); }
int AsInt(const JSONValue& value) { return value.AsInt(); }
int AsBool(const JSONValue& value) { return value.AsBoolean() ? 1 : 0; }
long long AsLong64(const JSONValue& value) { return value.AsLong64(); }
double AsDouble(const JSONValue& value) { return value.AsDouble(); }
double AsReal(const JSONValue& value) { return value.AsReal(); }

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

const char* JSON_ParseError(JSON_HANDLE handle, size_t* offset, size_t* line, size_t* column) {
  const JSON::ParseError& error = MessageOf(handle).Error();
  if (offset != nullptr) *offset = error.nOffset;
  if (line != nullptr) *line = error.nLine;
  if (column != nullptr) *column = error.nColumn;
  return error.szReason;
}

int JSON_MessageSize(JSON_HANDLE handle) { return MessageOf(handle).Size(); }

// ---- Memory -------------------------------------------------------------------------------------

void JSON_ReleaseMemory(void) { memory::KeptBlocks::Release(); }

// ---- Reading values -----------------------------------------------------------------------------

// The three forms of a reader, which gets the value that an ordinal, a name or a path leads to.
#define QXRECORDSET_READERS(Result, BEFORE, BEHIND, Read)                    \
  Result JSON_##BEFORE##Ordinal##BEHIND(JSON_HANDLE handle, int ordinal) {   \
    return Read(std::as_const(MessageOf(handle))[ordinal]);                  \
  }                                                                          \
  Result JSON_##BEFORE##Name##BEHIND(JSON_HANDLE handle, const char* name) { \
    return Read(std::as_const(MessageOf(handle))[name]);                     \
  }                                                                          \
  Result JSON_##BEFORE##Path##BEHIND(JSON_HANDLE handle, const char* path) { \
    return Read(MessageOf(handle).Path(path));                               \
  }

QXRECORDSET_READERS(int, Is, Null, IsNull)
QXRECORDSET_READERS(int, Get, Type, TypeOf)
QXRECORDSET_READERS(int, Get, Size, SizeOf)
QXRECORDSET_READERS(const char*, Get, AsString, AsString)
QXRECORDSET_READERS(int, Get, AsInt, AsInt)
QXRECORDSET_READERS(int, Get, AsBool, AsBool)
QXRECORDSET_READERS(long long, Get, AsLong64, AsLong64)
QXRECORDSET_READERS(unsigned long long, Get, AsUnsignedLong64, AsUnsignedLong64)
QXRECORDSET_READERS(double, Get, AsDouble, AsDouble)
QXRECORDSET_READERS(double, Get, AsReal, AsReal)
