// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The parse functions for hosts that fill containers of their own: thin layers over TreeReader,
// with containers from the heap.

#include <cstring>
#include <type_traits>
#include <typeinfo>

#include "json/CutNumber.h"
#include "json/Items.h"
#include "json/JSONMessage.h"
#include "json/Storage.h"
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
void Disown(UnsafeJSONValue& value) {
  value.pComposite = nullptr;
  value.bOwnsText = false;
}

// Parses a scalar that begins with one of `szFirstBytes` into `value`, through an array of one
// element. A private text that the value had is released when there is a new one.
int ParseScalar(ParseContext& context, UnsafeJSONValue& value, const char* szFirstBytes) {
  value.eType = jtInvalid;
  if (context.pCursor == context.pEnd || *context.pCursor == '\0' ||
      std::strchr(szFirstBytes, *context.pCursor) == nullptr) {
    return kFailed;
  }
  TreeReader reader(context.pEnd, nullptr);
  ArrayValue holder(1);
  Place place;
  Advance(context, reader, reader.ReadValue(context.pCursor, holder, place));
  if (holder.vValues.empty() || holder.vValues[0].eType == jtInvalid) return kFailed;
  const UnsafeJSONValue& parsed = holder.vValues[0];
  if (value.bOwnsText) delete[] value.pText;
  value.bOwnsText = false;
  value.eType = parsed.eType;
  value.pText = parsed.pText;
  value.nLength = parsed.nLength;
  return value.eType;
}

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

void MoveElement(ArrayValue& from, std::size_t nOrdinal, CompositeValue& to) {
  UnsafeJSONValue& value = from.vValues[nOrdinal];
  to.AddValue(value);
  Disown(value);
}

void MoveContent(ArrayValue& from, ArrayValue& to) {
  for (std::size_t i = 0; i < from.vValues.size(); ++i) {
    MoveElement(from, i, to);
  }
}
void MoveContent(ObjectValue& from, ObjectValue& to) {
  to.bSorted = false;
  for (std::size_t i = 0; i < from.vNameMap.size(); ++i) {
    UnsafeJSONValue name = NameOf(from, i);
    to.AddName(name);
    if (i < from.avValues.vValues.size()) MoveElement(from.avValues, i, to);
  }
  if (from.bSorted) to.Sort();
}

// A host's own kinds of object and array are filled through what they override: the text is read
// into a container of ours, whose content is moved.
template <typename Container>
int ParseContainer(ParseContext& context, Container& container) {
  container.eType = jtInvalid;
  if (typeid(container) != typeid(Container)) {
    Container read;
    ParseContainer(context, read);
    MoveContent(read, container);
    container.eType = read.eType;
    return container.eType;
  }
  Items::HandOut(Storage::ElementsOf(container).vValues);  // nested containers come from the heap
  if constexpr (std::is_same_v<Container, ObjectValue>) Items::HandOut(container.vNameMap);
  TreeReader reader(context.pEnd, nullptr);
  Place place;
  Advance(context, reader, reader.ReadInto(context.pCursor, container, place), container);
  return container.eType;
}

}  // namespace

int Parser::ParseJSONValue(ParseContext& context, CompositeValue& parent) {
  context.pCursor = Text<char>(context.pEnd, kMaxNesting).SkipSpace(context.pCursor);
  TreeReader reader(context.pEnd, nullptr);
  ArrayValue holder(1);
  Place place;
  Advance(context, reader, reader.ReadValue(context.pCursor, holder, place), holder);
  if (holder.vValues.empty()) return kFailed;
  UnsafeJSONValue& value = holder.vValues[0];
  parent.AddValue(value);
  Disown(value);
  return value.eType;
}

int Parser::ParseObject(ParseContext& context, ObjectValue& object) {
  return ParseContainer(context, object);
}

int Parser::ParseArray(ParseContext& context, ArrayValue& array) {
  return ParseContainer(context, array);
}

int Parser::ParseString(ParseContext& context, UnsafeJSONValue& value) {
  return ParseScalar(context, value, "\"");
}

int Parser::ParseNumber(ParseContext& context, UnsafeJSONValue& value) {
  return ParseScalar(context, value, "+-0123456789");
}

int Parser::ParseBoolean(ParseContext& context, UnsafeJSONValue& value) {
  return ParseScalar(context, value, "tf");
}

int Parser::ParseNull(ParseContext& context, UnsafeJSONValue& value) {
  return ParseScalar(context, value, "n");
}

}  // namespace JSON
