// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Changing a tree in place. An update stores a private copy of the new text in the slot it names;
// the copy is made before anything is released, because the text may come from what is replaced.

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "json/Items.h"
#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "json/JSONValue.h"
#include "json/NameFinder.h"
#include "json/ScalarText.h"
#include "json/Storage.h"
#include "json/TreeRelease.h"
#include "text/Digits.h"

namespace JSON {
namespace {

// Containers made by updates start with room for this many elements.
constexpr int kNewContainerReserve = 4;

// A private copy of a text, before it has an owner. A null text has no copy. Lengths are ints, so
// there is no memory for a longer one.
class PrivateText {
 public:
  explicit PrivateText(const char* pText)
      : PrivateText(pText != nullptr ? std::string_view(pText) : std::string_view()) {}
  explicit PrivateText(std::string_view text) : nLength_(text.size()) {
    if (nLength_ > INT_MAX) throw std::bad_alloc();
    if (text.data() != nullptr) pCopy_.reset(NewText(text));
  }

  int Length() const { return static_cast<int>(nLength_); }
  char* Give() { return pCopy_.release(); }

 private:
  std::size_t nLength_;
  std::unique_ptr<char[]> pCopy_;
};

// The value owns the copy from now on; a text that it owned before is released.
void TakeText(JSONValue& value, PrivateText& text) noexcept {
  if (value.bOwnsText) delete[] value.pText;
  value.nLength = text.Length();
  value.pText = text.Give();
  value.bOwnsText = true;
}

bool IsEmptyValue(const JSONValue* pValue) {
  return pValue == &JSONValue::None() || pValue == &JSONValue::NonConstNone();
}

// A parse that failed behind a name leaves the name without a value. No update can give it one.
void DropNamesWithoutValue(ObjectValue& object) {
  const std::uint32_t nNames = Items::Count(object.vNameMap);
  const std::uint32_t nValues = Items::Count(object.avValues.vValues);
  if (nNames <= nValues) return;
  ObjectValue::NameMap* const pNames = Items::Own(object.vNameMap);
  std::uint32_t nKept = 0;
  for (std::uint32_t i = 0; i < nNames; ++i) {
    if (static_cast<std::uint32_t>(pNames[i].nOrdinal) < nValues) {
      pNames[nKept++] = pNames[i];
    } else if (pNames[i].bOwnsName) {
      delete[] pNames[i].pName;
    }
  }
  Items::Truncate(object.vNameMap, nKept);
  object.bSorted = false;
}

template <typename Update>
JSONValue* UpdateNewRoot(Message& message, Type type, Update update) {
  const Type before = message.eType;
  try {
    return update(Storage::MakeRoot(message, type, kNewContainerReserve));
  } catch (...) {
    Storage::ReleaseRoot(message);
    message.eType = before;
    throw;
  }
}

// Updates the container of `value`. A value without one gets a new Container, which it keeps also
// when nothing can be stored in it; but when memory runs out, the value stays what it was. The
// container of a message is its root, and the message makes it.
template <typename Container, typename Update>
JSONValue* UpdateIn(JSONValue& value, Type type, Update update) {
  if (IsEmptyValue(&value)) return nullptr;
  if (value.pComposite != nullptr) return update(*value.pComposite);
  if (typeid(value) == typeid(Message)) {
    return UpdateNewRoot(static_cast<Message&>(value), type, update);
  }
  std::unique_ptr<CompositeValue> pNew(Storage::Make<Container>(nullptr, kNewContainerReserve));
  JSONValue* const pStored = update(*pNew);
  value.pComposite = pNew.release();
  value.eType = type;
  return pStored;
}

// Room for any number's text and its NUL: 20 digits with a sign, or what "%g" writes.
constexpr int kNumberRoom = 32;

const JSONValue& Put(JSONValue& value, const char* name, const char* text, Type type) {
  const JSONValue* const pStored = value.InternalUpdateByName(name, text, type);
  return pStored != nullptr ? *pStored : JSONValue::None();
}
const JSONValue& Put(JSONValue& value, int ordinal, const char* text, Type type) {
  const JSONValue* const pStored = value.InternalUpdateByOrdinal(ordinal, text, type);
  return pStored != nullptr ? *pStored : JSONValue::None();
}

template <typename Key>
const JSONValue& Put(JSONValue& value, Key key, bool bTrue) {
  return Put(value, key, bTrue ? "true" : "false", jtBoolean);
}
template <typename Key>
const JSONValue& Put(JSONValue& value, Key key, const char* text) {
  return Put(value, key, text, jtString);
}
template <typename Key, typename Number>
const JSONValue& Put(JSONValue& value, Key key, Number number) {
  constexpr bool bReal = std::is_same_v<Number, double>;
  char szNumber[kNumberRoom];
  if constexpr (bReal) {
    DoubleToStr(number, szNumber, kNumberRoom);
  } else {
    *WriteDecimal(number, szNumber) = '\0';
  }
  return Put(value, key, szNumber, bReal ? jtDouble : jtInteger);
}

}  // namespace

void JSONValue::InternalUpdateValue(const char* text) {
  if (IsEmptyValue(this)) return;
  PrivateText copy(text);
  TakeText(*this, copy);
}

void ObjectValue::NameMap::UpdateName(const char* name) {
  PrivateText copy(name);
  if (bOwnsName) delete[] pName;
  nLength = copy.Length();
  pName = copy.Give();
  bOwnsName = true;
}

// ---- Containers ---------------------------------------------------------------------------------

JSONValue* ArrayValue::UpdateByOrdinal(int ordinal, const char* text, Type type) {
  if (ordinal < 0) return nullptr;
  Items::Truncate(vOrdinalMap, 0);
  PrivateText copy(text);
  const int nSize = Size();
  if (ordinal < nSize) {
    JSONValue& element = Items::HandOut(vValues)[ordinal];
    CompositeValue* const pOld = element.pComposite;
    element.pComposite = nullptr;
    TakeText(element, copy);
    element.eType = type;
    Release(pOld);
    return &element;
  }
  Items::ReserveAhead(vValues, nullptr, static_cast<std::size_t>(ordinal) + 1);
  for (int i = nSize; i < ordinal; ++i) {
    Storage::Append(*this, nullptr, jtNull, nullptr, 0, 0, nullptr);
  }
  JSONValue& added = Storage::Append(*this, nullptr, type, nullptr, 0, 0, nullptr);
  Items::HandOut(vValues);
  TakeText(added, copy);
  return &added;
}

JSONValue* ArrayValue::UpdateByName(const char* /*name*/, const char* /*text*/, Type /*type*/) {
  return nullptr;
}

JSONValue* ObjectValue::UpdateByOrdinal(int ordinal, const char* text, Type type) {
  if (ordinal < 0 || ordinal >= Size()) return nullptr;
  DropNamesWithoutValue(*this);
  return avValues.UpdateByOrdinal(ordinal, text, type);
}

JSONValue* ObjectValue::UpdateByName(const char* name, const char* text, Type type) {
  if (name == nullptr) return nullptr;
  DropNamesWithoutValue(*this);
  const std::string_view key(name);
  const bool bOurs = Storage::KindOf(*this) == Storage::Kind::kObject;
  const int nFound = bOurs ? NameFinder::FindOrMiss(*this, name, static_cast<int>(key.size()))
                           : OrdinalOf(name, -1);
  if (nFound >= 0) return avValues.UpdateByOrdinal(nFound, text, type);
  // All memory is taken before the object changes: name and value come together or not at all.
  PrivateText copy(key);
  Items::ReserveAhead(vNameMap, nullptr, Items::Count(vNameMap) + std::size_t{1});
  JSONValue* const pAdded = avValues.UpdateByOrdinal(Size(), text, type);
  NameMap entry;
  entry.nLength = copy.Length();
  entry.pName = copy.Give();
  entry.bOwnsName = true;
  entry.nOrdinal = static_cast<int>(Items::Count(vNameMap));
  Items::Append(vNameMap, nullptr, entry);
  NameFinder::NoteAppended(*this);
  return pAdded;
}

// ---- Values -------------------------------------------------------------------------------------

JSONValue* JSONValue::InternalUpdateByName(const char* name, const char* text, Type type) {
  return UpdateIn<ObjectValue>(*this, jtObject, [=](CompositeValue& container) {
    return container.UpdateByName(name, text, type);
  });
}

JSONValue* JSONValue::InternalUpdateByOrdinal(int ordinal, const char* text, Type type) {
  return UpdateIn<ArrayValue>(*this, jtArray, [=](CompositeValue& container) {
    return container.UpdateByOrdinal(ordinal, text, type);
  });
}

const JSONValue& JSONValue::Set(const char* name, bool value) { return Put(*this, name, value); }
const JSONValue& JSONValue::Set(const char* name, const char* value) {
  return Put(*this, name, value);
}
const JSONValue& JSONValue::Set(const char* name, double value) { return Put(*this, name, value); }
const JSONValue& JSONValue::Set(const char* name, unsigned long long value) {
  return Put(*this, name, value);
}
const JSONValue& JSONValue::Set(const char* name, unsigned long value) {
  return Put(*this, name, value);
}
const JSONValue& JSONValue::Set(const char* name, long value) { return Put(*this, name, value); }
const JSONValue& JSONValue::Set(const char* name, int value) { return Put(*this, name, value); }
const JSONValue& JSONValue::SetNull(const char* name) { return Put(*this, name, nullptr, jtNull); }

const JSONValue& JSONValue::Set(int ordinal, bool value) { return Put(*this, ordinal, value); }
const JSONValue& JSONValue::Set(int ordinal, const char* value) {
  return Put(*this, ordinal, value);
}
const JSONValue& JSONValue::Set(int ordinal, double value) { return Put(*this, ordinal, value); }
const JSONValue& JSONValue::Set(int ordinal, unsigned long long value) {
  return Put(*this, ordinal, value);
}
const JSONValue& JSONValue::Set(int ordinal, unsigned long value) {
  return Put(*this, ordinal, value);
}
const JSONValue& JSONValue::Set(int ordinal, long value) { return Put(*this, ordinal, value); }
const JSONValue& JSONValue::Set(int ordinal, int value) { return Put(*this, ordinal, value); }
const JSONValue& JSONValue::SetNull(int ordinal) { return Put(*this, ordinal, nullptr, jtNull); }

}  // namespace JSON
