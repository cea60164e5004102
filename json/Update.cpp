// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Changing a tree in place. An update stores a private copy of the new text in the slot it names;
// the copy is made before anything is released, because the text may come from what is replaced.

#include <algorithm>
#include <cstring>
#include <memory>

#include "json/JSONSerialize.h"
#include "json/JSONValue.h"
#include "json/Storage.h"

namespace JSON {
namespace {

// Containers made by updates start with room for this many elements.
constexpr int kNewContainerReserve = 4;

// A private copy of a text that nobody owns yet. A null text has no copy.
class PrivateText {
 public:
  explicit PrivateText(const char* pText)
      : nLength_(pText != nullptr ? std::strlen(pText) : 0),
        pCopy_(pText != nullptr ? Storage::CopyText(pText, nLength_) : nullptr) {}

  int Length() const { return static_cast<int>(nLength_); }
  char* Give() { return pCopy_.release(); }

 private:
  std::size_t nLength_;
  std::unique_ptr<char[]> pCopy_;
};

// The value owns the copy from now on, instead of whatever text it had.
void TakeText(JSONValue& value, PrivateText& text) noexcept {
  if (value.bOwnsText) {
    delete[] value.pText;
  }
  value.nLength = text.Length();
  value.pText = text.Give();
  value.bOwnsText = true;
  Storage::NoteHeapAt(value);
}

bool IsEmptyValue(const JSONValue* pValue) {
  return pValue == &JSONValue::None() || pValue == &JSONValue::NonConstNone();
}

}  // namespace

void JSONValue::InternalUpdateValue(const char* text) {
  if (IsEmptyValue(this)) {
    return;
  }
  PrivateText copy(text);
  TakeText(*this, copy);
}

void ObjectValue::NameMap::UpdateName(const char* name) {
  PrivateText copy(name);
  if (bOwnsName) {
    delete[] pName;
  }
  nLength = copy.Length();
  pName = copy.Give();
  bOwnsName = true;
}

// ---- Containers ---------------------------------------------------------------------------------

JSONValue* ArrayValue::UpdateByOrdinal(int ordinal, const char* text, Type type) {
  if (ordinal < 0) {
    return nullptr;
  }
  Storage::Truncate(vOrdinalMap);
  PrivateText copy(text);
  const int nSize = Size();
  if (ordinal < nSize) {
    JSONValue& element = Storage::Values(*this)[ordinal];
    CompositeValue* const pOld = element.pComposite;
    element.pComposite = nullptr;
    TakeText(element, copy);
    element.eType = type;
    Storage::Release(pOld);
    return &element;
  }
  const std::size_t nWanted = static_cast<std::size_t>(ordinal) + 1;
  if (nWanted > vValues.capacity()) {
    Storage::Reserve(*this, std::max(nWanted, vValues.size() * 2));
  }
  for (int i = nSize; i < ordinal; ++i) {
    Storage::Append(*this, jtNull, nullptr, 0, 0, nullptr);
  }
  JSONValue& added = Storage::Append(*this, type, nullptr, 0, 0, nullptr);
  TakeText(added, copy);
  return &added;
}

JSONValue* ArrayValue::UpdateByName(const char* /*name*/, const char* /*text*/, Type /*type*/) {
  return nullptr;
}

namespace {

// A parse that failed behind a name leaves the name without a value. No update can give it one.
void DropNamesWithoutValue(ObjectValue& object) {
  const std::size_t nValues = static_cast<std::size_t>(object.Size());
  if (Storage::NameCount(object) <= nValues) {
    return;
  }
  ObjectValue::NameMap* const pNames = Storage::OwnNames(object);
  std::size_t nKept = 0;
  for (std::size_t i = 0; i < Storage::NameCount(object); ++i) {
    if (static_cast<std::size_t>(pNames[i].nOrdinal) < nValues) {
      pNames[nKept++] = pNames[i];
    } else if (pNames[i].bOwnsName) {
      delete[] pNames[i].pName;
    }
  }
  Storage::CutNames(object, nKept);
  object.bSorted = false;
}

}  // namespace

JSONValue* ObjectValue::UpdateByOrdinal(int ordinal, const char* text, Type type) {
  if (ordinal < 0 || ordinal >= Size()) {
    return nullptr;
  }
  DropNamesWithoutValue(*this);
  return avValues.UpdateByOrdinal(ordinal, text, type);
}

JSONValue* ObjectValue::UpdateByName(const char* name, const char* text, Type type) {
  if (name == nullptr) {
    return nullptr;
  }
  DropNamesWithoutValue(*this);
  const int nFound = OrdinalOf(name, -1);
  if (nFound >= 0) {
    return avValues.UpdateByOrdinal(nFound, text, type);
  }
  // All memory is taken before the object changes: name and value come together or not at all.
  PrivateText copy(name);
  Storage::ReserveNameForOne(*this);
  JSONValue* const pAdded = avValues.UpdateByOrdinal(Size(), text, type);
  NameMap entry;
  entry.nLength = copy.Length();
  entry.pName = copy.Give();
  entry.bOwnsName = true;
  entry.nOrdinal = static_cast<int>(vNameMap.size());
  Storage::AppendName(*this, entry);
  bSorted = false;
  return pAdded;
}

// ---- Values -------------------------------------------------------------------------------------

namespace {

// Updates the container of `value`. A value without one gets a new Container, which it keeps also
// when nothing can be stored in it; but when memory runs out, the value stays what it was.
template <typename Container, typename Update>
JSONValue* UpdateIn(JSONValue& value, Type type, Update update) {
  if (IsEmptyValue(&value)) {
    return nullptr;
  }
  if (value.pComposite != nullptr) {
    return update(*value.pComposite);
  }
  std::unique_ptr<CompositeValue> pNew(Storage::Make<Container>(nullptr, kNewContainerReserve));
  JSONValue* const pStored = update(*pNew);
  Storage::NoteHeapAt(value);
  value.pComposite = pNew.release();
  value.eType = type;
  return pStored;
}

}  // namespace

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

namespace {

// Room for any number's text and its NUL: 20 digits with a sign, or what "%g" writes.
constexpr int kNumberRoom = 32;

const JSONValue& Stored(const JSONValue* pStored) {
  return pStored != nullptr ? *pStored : JSONValue::None();
}

JSONValue* Update(JSONValue& value, const char* name, const char* text, Type type) {
  return value.InternalUpdateByName(name, text, type);
}
JSONValue* Update(JSONValue& value, int ordinal, const char* text, Type type) {
  return value.InternalUpdateByOrdinal(ordinal, text, type);
}

template <typename Key, typename Number>
const JSONValue& SetNumber(JSONValue& value, Key key, char* (*format)(Number, char*, int),
                           Number number, Type type) {
  char szNumber[kNumberRoom];
  format(number, szNumber, kNumberRoom);
  return Stored(Update(value, key, szNumber, type));
}

const char* BoolText(bool value) { return value ? "true" : "false"; }

}  // namespace

const JSONValue& JSONValue::Set(const char* name, bool value) {
  return Stored(Update(*this, name, BoolText(value), jtBoolean));
}
const JSONValue& JSONValue::Set(const char* name, const char* value) {
  return Stored(Update(*this, name, value, jtString));
}
const JSONValue& JSONValue::Set(const char* name, double value) {
  return SetNumber(*this, name, DoubleToStr, value, jtDouble);
}
const JSONValue& JSONValue::Set(const char* name, unsigned long long value) {
  return SetNumber(*this, name, UnsignedLong64ToStr, value, jtInteger);
}
const JSONValue& JSONValue::Set(const char* name, unsigned long value) {
  return SetNumber(*this, name, UnsignedLongToStr, value, jtInteger);
}
const JSONValue& JSONValue::Set(const char* name, long value) {
  return SetNumber(*this, name, LongToStr, value, jtInteger);
}
const JSONValue& JSONValue::Set(const char* name, int value) {
  return SetNumber(*this, name, IntToStr, value, jtInteger);
}
const JSONValue& JSONValue::SetNull(const char* name) {
  return Stored(Update(*this, name, nullptr, jtNull));
}

const JSONValue& JSONValue::Set(int ordinal, bool value) {
  return Stored(Update(*this, ordinal, BoolText(value), jtBoolean));
}
const JSONValue& JSONValue::Set(int ordinal, const char* value) {
  return Stored(Update(*this, ordinal, value, jtString));
}
const JSONValue& JSONValue::Set(int ordinal, double value) {
  return SetNumber(*this, ordinal, DoubleToStr, value, jtDouble);
}
const JSONValue& JSONValue::Set(int ordinal, unsigned long long value) {
  return SetNumber(*this, ordinal, UnsignedLong64ToStr, value, jtInteger);
}
const JSONValue& JSONValue::Set(int ordinal, unsigned long value) {
  return SetNumber(*this, ordinal, UnsignedLongToStr, value, jtInteger);
}
const JSONValue& JSONValue::Set(int ordinal, long value) {
  return SetNumber(*this, ordinal, LongToStr, value, jtInteger);
}
const JSONValue& JSONValue::Set(int ordinal, int value) {
  return SetNumber(*this, ordinal, IntToStr, value, jtInteger);
}
const JSONValue& JSONValue::SetNull(int ordinal) {
  return Stored(Update(*this, ordinal, nullptr, jtNull));
}

}  // namespace JSON
