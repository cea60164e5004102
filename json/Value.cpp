// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// JSONValue: lookups, readers and the empty values. Updates are in Update.cpp, writing is in
// TreeSerialize.cpp.

#include <typeinfo>

#include "json/Items.h"
#include "json/JSONMessage.h"
#include "json/JSONValue.h"
#include "json/Storage.h"
#include "text/ReadDecimal.h"
#include "text/ReadReal.h"

namespace JSON {

BaseValue::~BaseValue() = default;
JSONValue::~JSONValue() = default;
UnsafeJSONValue::~UnsafeJSONValue() = default;
CompositeValue::~CompositeValue() = default;

JSONValue::JSONValue(const JSONValue& other) noexcept = default;
JSONValue& JSONValue::operator=(const JSONValue& other) noexcept = default;

const JSONValue& JSONValue::None() {
  static const JSONValue jvNone(jtNone);
  return jvNone;
}

JSONValue& JSONValue::NonConstNone() {
  static JSONValue jvNonConstNone(jtNone);
  return jvNonConstNone;
}

int JSONValue::Size() const { return pComposite != nullptr ? pComposite->Size() : 0; }

JSONValue* JSONValue::GetByOrdinal(int ordinal) const {
  return pComposite != nullptr ? pComposite->GetByOrdinal(ordinal) : nullptr;
}

JSONValue* JSONValue::GetByName(const char* name, int length) const {
  return pComposite != nullptr ? pComposite->GetByName(name, length) : nullptr;
}

// ---- Const lookups ------------------------------------------------------------------------------
//
// A scalar that a const lookup finds is not handed out: the caller cannot change it. A container
// that it finds is, because what is in it can be changed. Only elements in a pool are told apart
// like this, and only where nothing is a host's own kind; otherwise the virtual lookups answer.

namespace {

// The pool's elements below the value, or null. That value and class are ours is seen by address: a
// class that is taken for a host's own is only slower.
const ArrayValue* ElementsInPool(const JSONValue& value) {
  const std::type_info* const pClass = &typeid(value);
  const bool bOurs = pClass == &typeid(UnsafeJSONValue) || pClass == &typeid(Message);
  return bOurs && value.pComposite != nullptr && Storage::InPool(*value.pComposite)
             ? &Storage::ElementsOf(*value.pComposite)
             : nullptr;
}

const JSONValue* At(const ArrayValue& elements, int ordinal) {
  return static_cast<unsigned>(ordinal) < Items::Count(elements.vValues)
             ? Items::Data(elements.vValues) + ordinal
             : nullptr;
}

const JSONValue* At(const JSONValue& value, const ArrayValue& elements, const char* name,
                    int length) {
  const bool bObject = Storage::KindOf(*value.pComposite) == Storage::Kind::kObject;
  return At(
      elements,
      bObject
          ? static_cast<const ObjectValue&>(*value.pComposite).ObjectValue::OrdinalOf(name, length)
          : Storage::OrdinalIn(elements, name));
}

const JSONValue& OrNone(const JSONValue* pFound) {
  return pFound != nullptr ? *pFound : JSONValue::None();
}
JSONValue& OrNone(JSONValue* pFound) {
  return pFound != nullptr ? *pFound : JSONValue::NonConstNone();
}

const JSONValue& HandOut(const ArrayValue& elements, const JSONValue* pFound) {
  if (pFound != nullptr && pFound->pComposite != nullptr) Items::HandOut(elements.vValues);
  return OrNone(pFound);
}

bool BeginsWithT(const JSONValue& value) { return value.pText != nullptr && *value.pText == 't'; }

}  // namespace

const JSONValue* Storage::Look(const JSONValue& value, const char* name, int length) {
  const ArrayValue* const pElements = ElementsInPool(value);
  return pElements != nullptr ? At(value, *pElements, name, length) : value.GetByName(name, length);
}

const JSONValue& JSONValue::operator[](int ordinal) const {
  if (const ArrayValue* const pElements = ElementsInPool(*this)) {
    return HandOut(*pElements, At(*pElements, ordinal));
  }
  const JSONValue* const pFound = GetByOrdinal(ordinal);
  return OrNone(pFound);
}

const JSONValue& JSONValue::operator[](const char* name) const {
  if (const ArrayValue* const pElements = ElementsInPool(*this)) {
    return HandOut(*pElements, At(*this, *pElements, name, -1));
  }
  const JSONValue* const pFound = GetByName(name, -1);
  return OrNone(pFound);
}

// ---- Lookups of what can be changed -------------------------------------------------------------

JSONValue& JSONValue::operator[](int ordinal) { return OrNone(GetByOrdinal(ordinal)); }
JSONValue& JSONValue::operator[](const char* name) { return OrNone(GetByName(name, -1)); }

// ---- Readers ------------------------------------------------------------------------------------
//
// A text is read as the C library reads it, up to the first byte that does not belong to the number
// or literal, and not by its length. Behind a parsed number there is such a byte: the separator or
// bracket, or for a number that the end of the text cuts off, a NUL.

int JSONValue::AsInt() const {
  switch (eType) {
    case jtInteger:
      return ReadDecimal<int>(pText);
    case jtDouble:
      return CutToInteger<int>(AsDouble());
    case jtBoolean:
      return BeginsWithT(*this) ? 1 : 0;
    default:
      return 0;
  }
}

double JSONValue::AsDouble() const {
  switch (eType) {
    case jtDouble:
      return ReadReal(pText);
    case jtInteger:
      return AsInt();
    case jtBoolean:
      return BeginsWithT(*this) ? 1.0 : 0.0;
    default:
      return 0.0;
  }
}

bool JSONValue::AsBoolean() const {
  switch (eType) {
    case jtBoolean:
      return BeginsWithT(*this);
    case jtInteger:
      return AsInt() != 0;
    case jtDouble:
      return AsDouble() != 0.0;
    case jtString:
      return pText != nullptr && *pText != '\0';
    default:
      return false;
  }
}

}  // namespace JSON
