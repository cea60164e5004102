// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// JSONValue: lookups, readers and the empty values. Updates are in Update.cpp, writing is in
// TreeSerialize.cpp.

#include <cmath>
#include <cstdlib>
#include <limits>

#include "json/JSONValue.h"
#include "json/Storage.h"
#include "text/ReadDecimal.h"

namespace JSON {

BaseValue::~BaseValue() = default;
JSONValue::~JSONValue() = default;
UnsafeJSONValue::~UnsafeJSONValue() = default;
CompositeValue::~CompositeValue() = default;

// A copy lies somewhere else, so it does not take the way back along.
JSONValue::JSONValue(const JSONValue& other) noexcept
    : BaseValue(other),
      nLength(other.nLength),
      pText(other.pText),
      pComposite(other.pComposite),
      nNameIndex(other.nNameIndex),
      bOwnsText(other.bOwnsText) {}

// An element that is assigned to stays where it is and keeps its way back. To
// itself it may be assigned, too. NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
JSONValue& JSONValue::operator=(const JSONValue& other) noexcept {
  BaseValue::operator=(other);
  pText = other.pText;
  nLength = other.nLength;
  bOwnsText = other.bOwnsText;
  nNameIndex = other.nNameIndex;
  pComposite = other.pComposite;
  if (bOwnsText || pComposite != nullptr) {
    Storage::NoteHeapAt(*this);
  }
  return *this;
}

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

const JSONValue& JSONValue::operator[](int ordinal) const {
  const JSONValue* const pFound = GetByOrdinal(ordinal);
  return pFound != nullptr ? *pFound : None();
}

JSONValue& JSONValue::operator[](int ordinal) {
  JSONValue* const pFound = GetByOrdinal(ordinal);
  return pFound != nullptr ? *pFound : NonConstNone();
}

const JSONValue& JSONValue::operator[](const char* name) const {
  const JSONValue* const pFound = GetByName(name, -1);
  return pFound != nullptr ? *pFound : None();
}

JSONValue& JSONValue::operator[](const char* name) {
  JSONValue* const pFound = GetByName(name, -1);
  return pFound != nullptr ? *pFound : NonConstNone();
}

// ---- Readers ------------------------------------------------------------------------------------
//
// The text of a parsed number runs on into the rest of the document, which may end right there, so
// no reader looks beyond nLength.

namespace {

bool BeginsWithT(const JSONValue& value) { return value.nLength > 0 && value.pText[0] == 't'; }

// What strtod reads. It needs a NUL behind the number, so the number is copied.
double ReadDouble(const char* pText, int nLength) {
  char szNumber[64];
  const std::size_t nBytes = static_cast<std::size_t>(nLength);
  if (nBytes >= sizeof szNumber) {
    return std::strtod(std::string(pText, nBytes).c_str(), nullptr);
  }
  std::memcpy(szNumber, pText, nBytes);
  szNumber[nBytes] = '\0';
  return std::strtod(szNumber, nullptr);
}

int ToInt(double value) {
  if (std::isnan(value)) {
    return 0;
  }
  if (value <= std::numeric_limits<int>::min()) {
    return std::numeric_limits<int>::min();
  }
  if (value >= std::numeric_limits<int>::max()) {
    return std::numeric_limits<int>::max();
  }
  return static_cast<int>(value);
}

}  // namespace

int JSONValue::AsInt() const {
  switch (eType) {
    case jtInteger:
      return ReadDecimal<int>({pText, static_cast<std::size_t>(nLength)});
    case jtDouble:
      return ToInt(AsDouble());
    case jtBoolean:
      return BeginsWithT(*this) ? 1 : 0;
    default:
      return 0;
  }
}

double JSONValue::AsDouble() const {
  switch (eType) {
    case jtDouble:
      return nLength > 0 ? ReadDouble(pText, nLength) : 0.0;
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
      return nLength > 0 && pText[0] != '\0';
    default:
      return false;
  }
}

}  // namespace JSON
