// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The parse functions for hosts that fill containers of their own: thin layers over TreeReader,
// with containers from the heap.

#include "json/JSONMessage.h"
#include "json/Storage.h"
#include "json/TreeReader.h"

namespace JSON {
namespace {

// What a parse function gives for a failure.
constexpr int kFailed = jtInvalid;

// Puts the cursor where a reader ended.
bool Advance(ParseContext& context, const TreeReader& reader, char* pNext) {
  context.pCursor = pNext != nullptr ? pNext : reader.StoppedAt();
  return pNext != nullptr;
}

// Parses one scalar of the given kind into `value` by way of an array of one element.
int ParseScalar(ParseContext& context, UnsafeJSONValue& value) {
  TreeReader reader(context.pEnd, nullptr);
  ArrayValue holder(1);
  Place place;
  Advance(context, reader, reader.ReadValue(context.pCursor, holder, place));
  value.eType = jtInvalid;
  if (!holder.vValues.empty()) {
    const UnsafeJSONValue& parsed = holder.vValues[0];
    value.eType = parsed.eType;
    if (parsed.eType != jtInvalid) {
      value.pText = parsed.pText;
      value.nLength = parsed.nLength;
    }
  }
  return value.eType;
}

// Whether a scalar of the wanted kind can begin at the cursor.
bool CursorOn(const ParseContext& context, const char* szFirstBytes) {
  return context.pCursor != context.pEnd && *context.pCursor != '\0' &&
         std::strchr(szFirstBytes, *context.pCursor) != nullptr;
}

int Refuse(UnsafeJSONValue& value) {
  value.eType = jtInvalid;
  return kFailed;
}

}  // namespace

int Parser::ParseJSONValue(ParseContext& context, CompositeValue& parent) {
  context.pCursor = Text<char>(context.pEnd).SkipSpace(context.pCursor);
  TreeReader reader(context.pEnd, nullptr);
  ArrayValue holder(1);
  Place place;
  Advance(context, reader, reader.ReadValue(context.pCursor, holder, place));
  if (holder.vValues.empty()) {
    return kFailed;
  }
  UnsafeJSONValue& value = holder.vValues[0];
  parent.AddValue(value);
  value.pComposite = nullptr;  // the parent owns it now
  return value.eType;
}

int Parser::ParseObject(ParseContext& context, ObjectValue& object) {
  Storage::NoteHeapIn(Storage::ArenaOf(object.avValues));  // nested containers come from the heap
  TreeReader reader(context.pEnd, nullptr);
  Place place;
  Advance(context, reader, reader.ReadObjectInto(context.pCursor, object, place));
  return object.eType;
}

int Parser::ParseArray(ParseContext& context, ArrayValue& array) {
  Storage::NoteHeapIn(Storage::ArenaOf(array));
  TreeReader reader(context.pEnd, nullptr);
  Place place;
  Advance(context, reader, reader.ReadArrayInto(context.pCursor, array, place));
  return array.eType;
}

int Parser::ParseString(ParseContext& context, UnsafeJSONValue& value) {
  return CursorOn(context, "\"") ? ParseScalar(context, value) : Refuse(value);
}

int Parser::ParseNumber(ParseContext& context, UnsafeJSONValue& value) {
  return CursorOn(context, "+-0123456789") ? ParseScalar(context, value) : Refuse(value);
}

int Parser::ParseBoolean(ParseContext& context, UnsafeJSONValue& value) {
  return CursorOn(context, "tf") ? ParseScalar(context, value) : Refuse(value);
}

int Parser::ParseNull(ParseContext& context, UnsafeJSONValue& value) {
  return CursorOn(context, "n") ? ParseScalar(context, value) : Refuse(value);
}

}  // namespace JSON
