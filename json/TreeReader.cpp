// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building the tree. The two sinks are what the grammar talks to. What happens for nearly every
// member or element is inline; what happens now and then is a function of its own, so that the
// loops keep their few variables in registers.

#include "json/TreeReader.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "json/Storage.h"

namespace JSON {
namespace {

// A container gets room for as many elements as the last one at its place had, up to this many. On
// the heap, where there are no places to remember, it always gets the same.
constexpr std::uint32_t kMostExpected = 64;
constexpr std::uint32_t kHeapReserve = 4;

void AppendScalar(ArrayValue& parent, Type type, const char* pText, std::ptrdiff_t nLength) {
  Storage::Append(parent, type, pText, static_cast<int>(nLength), 0, nullptr);
}

}  // namespace

// ---- Scalars ------------------------------------------------------------------------------------

QXRECORDSET_HOT TreeReader::Content TreeReader::ReadString(char* pQuote) {
  char* const pContent = pQuote + 1;
  char* const pClosing = FindQuoteOrBackslash(pContent, text_.pEnd);
  if (pClosing == text_.pEnd || *pClosing != '"') {
    return ReadEscaped(pContent, pClosing);
  }
  *pClosing = '\0';
  return {pClosing + 1, static_cast<int>(pClosing - pContent), false};
}

TreeReader::Content TreeReader::ReadEscaped(char* pContent, char* pBackslash) {
  char* pWrite = pBackslash;
  const char* const pClosing =
      pBackslash != text_.pEnd ? Unescape(pBackslash, text_.pEnd, pWrite) : nullptr;
  if (pClosing == nullptr) {
    return {text_.Fail(pContent), 0, true};
  }
  *pWrite = '\0';
  return {pContent + (pClosing - pContent) + 1, static_cast<int>(pWrite - pContent), true};
}

QXRECORDSET_HOT char* TreeReader::ReadInline(char* p, ArrayValue& parent, Place& place) {
  const char c = text_.Peek(p);
  if (c == '"') {
    const Content content = ReadString(p);
    if (content.pNext != nullptr) {
      AppendScalar(parent, jtString, p + 1, content.nLength);
      return content.pNext;
    }
    AppendScalar(parent, jtInvalid, nullptr, 0);
    return nullptr;
  }
  if (BeginsNumber(c)) {
    bool bReal = false;
    char* const pNext = ScanNumber(p, text_.pEnd, bReal);
    AppendScalar(parent, bReal ? jtDouble : jtInteger, p, pNext - p);
    return pNext;
  }
  return ReadOther(p, parent, place);
}

char* TreeReader::ReadValue(char* p, ArrayValue& parent, Place& place) {
  return ReadInline(p, parent, place);
}

char* TreeReader::ReadOther(char* p, ArrayValue& parent, Place& place) {
  char* pNext = nullptr;
  Type type = jtBoolean;
  switch (text_.Peek(p)) {
    case '{':
      return ReadContainer<ObjectValue>(p, parent, place);
    case '[':
      return ReadContainer<ArrayValue>(p, parent, place);
    case 't':
    case 'f':
      pNext = ReadBoolean(text_, p);
      break;
    case 'n':
      pNext = ReadNull(text_, p);
      type = jtNull;
      break;
    default:
      return text_.Fail(p);  // no value begins here, or the text ends
  }
  if (pNext == nullptr) {
    AppendScalar(parent, jtInvalid, nullptr, 0);
    return nullptr;
  }
  AppendScalar(parent, type, p, pNext - p);
  return pNext;
}

// The element is there before its container is filled, so that the container has an owner whatever
// happens on the way. Nothing else is added to the parent meanwhile, so the element stays in place.
template <typename Container>
char* TreeReader::ReadContainer(char* p, ArrayValue& parent, Place& place) {
  constexpr bool bObject = std::is_same_v<Container, ObjectValue>;
  UnsafeJSONValue& element = Storage::Append(parent, jtInvalid, nullptr, 0, 0, nullptr);
  const std::uint32_t nSeen = std::min(bObject ? place.nMembers : place.nElements, kMostExpected);
  Container* const pContainer =
      Storage::Make<Container>(pArena_, pArena_ != nullptr ? nSeen : kHeapReserve);
  element.pComposite = pContainer;
  char* pNext = nullptr;
  if constexpr (bObject) {
    pNext = ReadObjectInto(p, *pContainer, place);
  } else {
    pNext = ReadArrayInto(p, *pContainer, place);
  }
  element.eType = pContainer->eType;
  return pNext;
}

// ---- Shortcuts ----------------------------------------------------------------------------------
//
// Most members and elements are plain scalars, and the text goes on far enough to be looked at in
// blocks. They are read in loops of their own that look first and change the text only when all is
// well; whatever is special in any way is left to the grammar.

namespace {

// Bytes that must be there where a name or a value is looked at: a block behind a quote, and the
// byte behind it.
constexpr std::ptrdiff_t kReach = 2 + Block16::kBytes;

// Whether the four bytes at p are those of `szWord`.
bool IsWord(const char* p, const char (&szWord)[5]) { return std::memcmp(p, szWord, 4) == 0; }

}  // namespace

// The scalar at p; the result is the position behind it, or null when it is not a plain one.
// REQUIRES: kReach bytes at p.
QXRECORDSET_HOT char* TreeReader::FindScalar(char* p, Scalar& scalar) const {
  if (*p == '"') {
    char* const pClosing = FindQuoteOrBackslash(p + 1, text_.pEnd);
    scalar = {jtString, p + 1, pClosing, pClosing};
    return pClosing != text_.pEnd && *pClosing == '"' ? pClosing + 1 : nullptr;
  }
  if (BeginsNumber(*p)) return FindNumber(p, scalar);
  if (IsWord(p, "null")) {
    scalar = {jtNull, p, p + 4, nullptr};
  } else if (IsWord(p, "true")) {
    scalar = {jtBoolean, p, p + 4, nullptr};
  } else if (IsWord(p, "fals") && p[4] == 'e') {
    scalar = {jtBoolean, p, p + 5, nullptr};
  } else {
    return nullptr;
  }
  return scalar.pEnd;
}

// A few digits, perhaps with a sign, are found in one step.
QXRECORDSET_HOT char* TreeReader::FindNumber(char* p, Scalar& scalar) const {
  const std::uint32_t nOther = Block16::Load(p).NonDigits() & ~1u;
  bool bReal = false;
  char* const pEnd = nOther != 0 && !IsNumberMark(p[LowestBit(nOther)], bReal)
                         ? p + LowestBit(nOther)
                         : ScanNumber(p, text_.pEnd, bReal);
  scalar = {bReal ? jtDouble : jtInteger, p, pEnd, nullptr};
  return pEnd;
}

QXRECORDSET_HOT void TreeReader::Take(const Scalar& scalar, ArrayValue& parent) {
  AppendScalar(parent, scalar.type, scalar.pText, scalar.pEnd - scalar.pText);
  if (scalar.pNul != nullptr) *scalar.pNul = '\0';
}

// The comma or closing bracket behind a scalar; null when there is none.
QXRECORDSET_HOT char* TreeReader::FindSeparator(char* p, char cClosing) const {
  if (p == text_.pEnd) return nullptr;
  if (*p == ',' || *p == cClosing) return p;
  p = text_.SkipSpace(p);
  return p != text_.pEnd && (*p == ',' || *p == cClosing) ? p : nullptr;
}

bool TreeReader::ReadPlainMembers(char*& p, ArrayValue& values, Shape*& pShape, Shape*& pExpected) {
  if (text_.pEnd - p <= kReach) return false;
  char* const pLimit = text_.pEnd - kReach;
  Shape* pNext = pExpected;
  char* pDue = p;
  bool bEnd = false;
  while (!bEnd && pNext != nullptr && pDue < pLimit) {
    char* const pQuote = text_.SkipSpace(pDue);
    if (pQuote >= pLimit || *pQuote != '"' || !pNext->name.MatchesMember(pQuote + 1, text_.pEnd)) {
      break;
    }
    char* const pNameEnd = pQuote + 1 + pNext->name.Length();
    char* q = text_.SkipSpace(pNameEnd + 2);
    Scalar scalar;
    if (q >= pLimit || (q = FindScalar(q, scalar)) == nullptr) break;
    if ((q = FindSeparator(q, '}')) == nullptr) break;
    Take(scalar, values);
    *pNameEnd = '\0';
    pShape = pNext;
    pNext = pNext->pLonger;
    bEnd = *q == '}';
    pDue = q + 1;
  }
  pExpected = pNext;
  p = pDue;
  return bEnd;
}

bool TreeReader::ReadPlainElements(char*& p, ArrayValue& array) {
  if (text_.pEnd - p <= kReach) return false;
  char* const pLimit = text_.pEnd - kReach;
  char* pDue = p;
  bool bEnd = false;
  while (!bEnd && pDue < pLimit) {
    char* q = text_.SkipSpace(pDue);
    Scalar scalar;
    if (q >= pLimit || (q = FindScalar(q, scalar)) == nullptr) break;
    if ((q = FindSeparator(q, ']')) == nullptr) break;
    Take(scalar, array);
    bEnd = *q == ']';
    pDue = q + 1;
  }
  p = pDue;
  return bEnd;
}

// ---- Arrays -------------------------------------------------------------------------------------

namespace {

class ArraySink {
 public:
  ArraySink(TreeReader& reader, ArrayValue& array, Place& place)
      : reader_(reader), array_(array), place_(place) {}

  char* Element(char* p) { return reader_.ReadInline(p, array_, place_); }
  bool Shortcut(char*& p) {
    const bool bContainer = p != reader_.End() && (*p == '[' || *p == '{');
    return !bContainer && reader_.ReadPlainElements(p, array_);
  }
  void Missing() { AppendScalar(array_, jtNull, nullptr, 0); }

 private:
  TreeReader& reader_;
  ArrayValue& array_;
  Place& place_;
};

}  // namespace

char* TreeReader::ReadArrayInto(char* p, ArrayValue& array, Place& place) {
  array.eType = jtInvalid;
  ArraySink sink(*this, array, place);
  char* const pNext = ReadArray(text_, p, sink);
  if (pNext == nullptr) {
    return nullptr;
  }
  array.eType = jtArray;
  place.nElements = static_cast<std::uint32_t>(array.Size());
  Storage::Trim(array);
  return pNext;
}

// ---- Objects ------------------------------------------------------------------------------------

namespace {

class ObjectSink {
 public:
  ObjectSink(TreeReader& reader, ObjectValue& object, Place& place)
      : reader_(reader),
        object_(object),
        place_(place),
        pExpected_(place.pShapes),
        bShaped_(reader.Pool() != nullptr) {}

  char* Name(char* pQuote) {
    if (pExpected_ != nullptr && pExpected_->name.Matches(pQuote + 1, reader_.End())) {
      pShape_ = pExpected_;
      pExpected_ = pShape_->pLonger;
      char* const pClosing = pQuote + 1 + pShape_->name.Length();
      *pClosing = '\0';
      return pClosing + 1;
    }
    if (!bShaped_) {
      return reader_.ReadOwnName(pQuote, object_);
    }
    const TreeReader::Step step = reader_.ReadName(pQuote, object_, pShape_, place_);
    pShape_ = step.pShape;
    bShaped_ = pShape_ != nullptr;
    pExpected_ = bShaped_ ? pShape_->pLonger : nullptr;
    return step.pNext;
  }

  bool Shortcut(char*& p) {
    return pExpected_ != nullptr &&
           reader_.ReadPlainMembers(p, object_.avValues, pShape_, pExpected_);
  }

  char* Value(char* p) {
    return reader_.ReadInline(p, object_.avValues, pShape_ != nullptr ? *pShape_->pPlace : others_);
  }

  void Complete() {
    if (pShape_ != nullptr) {
      pShape_->GiveNames(*reader_.Pool(), object_);
      return;
    }
    object_.Sort();
    Storage::LendNames(object_);
  }

  // The object failed: it keeps its names in document order, the one whose value failed included.
  void Abandon() {
    if (pShape_ != nullptr) {
      pShape_->CopyNames(object_);
    }
    Storage::LendNames(object_);
  }

 private:
  TreeReader& reader_;
  ObjectValue& object_;
  Place& place_;
  Place others_;             // the values of an object without shapes
  Shape* pShape_ = nullptr;  // the names so far; null before the first one, and without shapes
  Shape* pExpected_;         // the names with the next one, if all goes as usual
  bool bShaped_;
};

}  // namespace

char* TreeReader::ReadObjectInto(char* p, ObjectValue& object, Place& place) {
  object.eType = jtInvalid;
  object.bSorted = false;
  ObjectSink sink(*this, object, place);
  char* const pNext = ReadObject(text_, p, sink);
  if (pNext == nullptr) {
    sink.Abandon();
    return nullptr;
  }
  object.eType = jtObject;
  place.nMembers = static_cast<std::uint32_t>(object.Size());
  Storage::Trim(object.avValues);
  return pNext;
}

// The name may only follow names of the object's own.
char* TreeReader::ReadOwnName(char* pQuote, ObjectValue& object) {
  const Content name = ReadString(pQuote);
  if (name.pNext != nullptr) {
    ObjectValue::NameMap entry;
    entry.pName = pQuote + 1;
    entry.nLength = name.nLength;
    entry.nOrdinal = static_cast<int>(object.vNameMap.size());
    Storage::AppendName(object, entry);
  }
  return name.pNext;
}

// A name that was never seen here becomes a new shape, unless this is a place of many names. A name
// with an escape looks different in the text, so it cannot be expected there.
TreeReader::Step TreeReader::ReadName(char* pQuote, ObjectValue& object, Shape* pShape,
                                      Place& place) {
  Shape** const ppLonger = pShape != nullptr ? &pShape->pLonger : &place.pShapes;
  char* const pName = pQuote + 1;
  int nAlternatives = 0;
  if (Shape* const pFound = Shape::Find(ppLonger, pName, text_.pEnd, nAlternatives)) {
    pName[pFound->name.Length()] = '\0';
    return {pName + pFound->name.Length() + 1, pFound};
  }
  const char* const pClosing = FindQuoteOrBackslash(pName, text_.pEnd);
  const bool bPlain = pClosing != text_.pEnd && *pClosing == '"';
  const bool bFew = nAlternatives < Shape::kMostAlternatives &&
                    (pShape == nullptr || pShape->nCount < Shape::kMostNames);
  if (bPlain && bFew) {
    const Content name = ReadString(pQuote);
    return {name.pNext, Shape::Add(*pArena_, pShape, ppLonger, pName, name.nLength)};
  }
  if (pShape != nullptr) {
    pShape->CopyNames(object);
  }
  return {ReadOwnName(pQuote, object), nullptr};
}

}  // namespace JSON
