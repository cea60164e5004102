// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The parse functions for hosts that fill containers of their own: thin layers over TreeReader,
// with containers from the heap.

#include <algorithm>
#include <typeinfo>

#include "json/CutNumber.h"
#include "json/Items.h"
#include "json/JSONMessage.h"
#include "json/TreeReader.h"

namespace JSON {
namespace {

// What a parse function gives for a failure.
constexpr int kFailed = jtInvalid;

// Puts the cursor where a reader ended.
void Advance(ParseContext& context, const TreeReader& reader, char* pNext) {
  context.pCursor = pNext != nullptr ? pNext : reader.StoppedAt();
}

// The same for a reader that filled a container, which outlives what is known of the text's end.
void Advance(ParseContext& context, const TreeReader& reader, char* pNext, CompositeValue& filled) {
  Advance(context, reader, pNext);
  if (pNext == nullptr) OwnCutNumber(filled, context.pEnd);
}

// The value was added to a container, which now owns what the fields refer to.
void GiveUp(UnsafeJSONValue& value) {
  value.pComposite = nullptr;
  value.bOwnsText = false;
}

// Parses one scalar of the given kind into `value` by way of an array of one element. A private
// text that the value had is released.
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
      if (value.bOwnsText) delete[] value.pText;
      value.bOwnsText = false;
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
  context.pCursor = Text<char>(context.pEnd, kMaxNesting).SkipSpace(context.pCursor);
  TreeReader reader(context.pEnd, nullptr);
  ArrayValue holder(1);
  Place place;
  Advance(context, reader, reader.ReadValue(context.pCursor, holder, place), holder);
  if (holder.vValues.empty()) {
    return kFailed;
  }
  UnsafeJSONValue& value = holder.vValues[0];
  parent.AddValue(value);
  GiveUp(value);
  return value.eType;
}

namespace {

// The name of the member at `nOrdinal`; names that are not sorted are in the members' order.
UnsafeJSONValue NameOf(const ObjectValue& object, std::size_t nOrdinal) {
  const std::size_t nAt =
      object.bSorted
          ? static_cast<std::size_t>(Items::Data(object.avValues.vValues)[nOrdinal].nNameIndex)
          : nOrdinal;
  const ObjectValue::NameMap& entry = Items::Data(object.vNameMap)[nAt];
  UnsafeJSONValue name(jtString);
  name.pText = entry.pName;
  name.nLength = entry.nLength;
  return name;
}

void HandOver(ArrayValue& from, std::size_t nOrdinal, CompositeValue& to) {
  UnsafeJSONValue& value = from.vValues[nOrdinal];
  to.AddValue(value);
  GiveUp(value);
}

// A host's own kinds of object and array are filled through what they override: the text is read
// into containers of ours, and handed over.
int ParseOwnKind(ParseContext& context, ObjectValue& object) {
  ObjectValue read;
  object.eType = jtInvalid;
  object.bSorted = false;
  const int nResult = Parser::ParseObject(context, read);
  for (std::size_t i = 0; i < read.vNameMap.size(); ++i) {
    UnsafeJSONValue name = NameOf(read, i);
    object.AddName(name);
    if (i < read.avValues.vValues.size()) HandOver(read.avValues, i, object);
  }
  if (read.bSorted) object.Sort();
  object.eType = read.eType;
  return nResult;
}

int ParseOwnKind(ParseContext& context, ArrayValue& array) {
  ArrayValue read;
  array.eType = jtInvalid;
  const int nResult = Parser::ParseArray(context, read);
  for (std::size_t i = 0; i < read.vValues.size(); ++i) {
    HandOver(read, i, array);
  }
  array.eType = read.eType;
  return nResult;
}

}  // namespace

int Parser::ParseObject(ParseContext& context, ObjectValue& object) {
  if (typeid(object) != typeid(ObjectValue)) {
    return ParseOwnKind(context, object);
  }
  Items::HandOut(object.avValues.vValues);  // nested containers come from the heap
  Items::HandOut(object.vNameMap);
  TreeReader reader(context.pEnd, nullptr);
  Place place;
  Advance(context, reader, reader.ReadObjectInto(context.pCursor, object, place), object);
  return object.eType;
}

int Parser::ParseArray(ParseContext& context, ArrayValue& array) {
  if (typeid(array) != typeid(ArrayValue)) {
    return ParseOwnKind(context, array);
  }
  Items::HandOut(array.vValues);
  TreeReader reader(context.pEnd, nullptr);
  Place place;
  Advance(context, reader, reader.ReadArrayInto(context.pCursor, array, place), array);
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
