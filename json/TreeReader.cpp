// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The tree is built by two sinks of the grammar, for arrays and for objects. The usual cases are
// inline functions of a sink; the rare ones are functions of the reader, so that the loops keep
// their variables in registers.

#include "json/TreeReader.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "json/Items.h"
#include "json/Storage.h"

namespace JSON {
namespace {

// A container gets room for as many elements as the last one at its place had, up to this many. On
// the heap, where there are no places to remember, it always gets the same.
constexpr std::uint32_t kMostExpected = 64;
constexpr std::uint32_t kHeapReserve = 4;

// What the two kinds of containers have in common: values that are appended.
class ValueSink {
 public:
  ValueSink(TreeReader& reader, ArrayValue& values)
      : reader_(reader), end_(reader.Source().Limits()), pArena_(reader.Pool()), values_(values) {}

  QXRECORDSET_HOT char* String(char* pQuote) {
    MakeRoom();
    char* p = pQuote + 1;
    char* const pClosing =
        FindInWholeBlocks(p, end_.pEnd, [](Block16 block) { return block.QuoteOrBackslash(); });
    if (pClosing == nullptr || *pClosing != '"') return reader_.ReadOtherString(pQuote, values_);
    *pClosing = '\0';
    Append(jtString, pQuote + 1, pClosing - pQuote - 1);
    return pClosing + 1;
  }

  QXRECORDSET_HOT char* Number(char* p) {
    MakeRoom();
    bool bReal = false;
    char* const pNext = ScanNumber(p, end_.pEnd, bReal);
    Append(bReal ? jtDouble : jtInteger, p, pNext - p);
    return pNext;
  }

  QXRECORDSET_HOT char* Literal(char* p, char* pNext) {
    MakeRoom();
    Append(*p == 'n' ? jtNull : jtBoolean, p, pNext - p);
    return pNext;
  }

  QXRECORDSET_HOT char* NoValue(char* p) { return reader_.ReadNoValue(p, values_); }

 protected:
  // Room for a value is made before it is looked at, when least has to be kept meanwhile.
  QXRECORDSET_HOT void MakeRoom() {
    Items::ReserveAhead(values_.vValues, pArena_, Items::Count(values_.vValues) + std::size_t{1});
  }
  QXRECORDSET_HOT void Append(Type type, const char* pText, std::ptrdiff_t nLength) {
    Items::AppendInRoom(values_.vValues, type, pText, static_cast<int>(nLength), 0, nullptr);
  }

  TreeReader& reader_;
  const Text<char>::End end_;
  Arena* const pArena_;
  ArrayValue& values_;
};

class ArraySink : public ValueSink {
 public:
  ArraySink(TreeReader& reader, ArrayValue& array, Place& place)
      : ValueSink(reader, array), place_(place) {}

  std::uint32_t& Indent() { return place_.nElementIndent; }
  QXRECORDSET_HOT char* Element(char* p, char c) { return ReadValue(end_, p, c, *this); }
  QXRECORDSET_HOT char* Nested(char* p) { return reader_.ReadNested(p, values_, place_); }
  void Missing() {
    MakeRoom();
    Append(jtNull, nullptr, 0);
  }

 private:
  Place& place_;
};

class ObjectSink : public ValueSink {
 public:
  ObjectSink(TreeReader& reader, ObjectValue& object, Place& place, Place& others)
      : ValueSink(reader, object.avValues),
        object_(object),
        place_(place),
        others_(others),
        pExpected_(place.pShapes),
        bShaped_(reader.Pool() != nullptr) {}

  std::uint32_t& Indent() { return place_.nMemberIndent; }
  QXRECORDSET_HOT bool Expects(const char* pName) const {
    return pExpected_ != nullptr && pExpected_->name.MatchesMember(pName, end_.pEnd);
  }
  QXRECORDSET_HOT char* AcceptExpected(char* pName) {
    char* const pClosing = pName + pExpected_->name.Length();
    *pClosing = '\0';
    pShape_ = pExpected_;
    pExpected_ = pShape_->pLonger;
    return pClosing + 2;
  }

  QXRECORDSET_HOT char* Name(char* pQuote) {
    if (pExpected_ != nullptr && pExpected_->name.Matches(pQuote + 1, end_.pEnd)) {
      return AcceptExpected(pQuote + 1) - 1;
    }
    if (!bShaped_) return reader_.ReadOwnName(pQuote, object_);
    const TreeReader::Step step = reader_.ReadName(pQuote, object_, pShape_, place_);
    pShape_ = step.pShape;
    bShaped_ = pShape_ != nullptr;
    pExpected_ = bShaped_ ? pShape_->pLonger : nullptr;
    return step.pNext;
  }

  QXRECORDSET_HOT char* Value(char* p, char c) { return ReadValue(end_, p, c, *this); }
  QXRECORDSET_HOT char* Nested(char* p) {
    return reader_.ReadNested(p, values_, pShape_ != nullptr ? pShape_->place : others_);
  }

  QXRECORDSET_HOT void Complete() {
    if (pShape_ != nullptr) {
      pShape_->GiveNames(*reader_.Pool(), object_);
      return;
    }
    object_.Sort();
  }

  // The object failed: it keeps its names in document order, the one whose value failed included.
  void Abandon() {
    if (pShape_ != nullptr) pShape_->CopyNames(*reader_.Pool(), object_);
  }

 private:
  ObjectValue& object_;
  Place& place_;
  Place& others_;            // the values of an object without shapes
  Shape* pShape_ = nullptr;  // the names so far; null before the first one, and without shapes
  Shape* pExpected_;         // the shape of the expected next name
  bool bShaped_;
};

}  // namespace

// ---- Values -------------------------------------------------------------------------------------

TreeReader::Content TreeReader::ReadString(char* pQuote) {
  char* const pContent = pQuote + 1;
  char* const pStop = FindQuoteOrBackslash(pContent, text_.pEnd);
  char* pWrite = pStop;
  const char* const pClosing =
      pStop == text_.pEnd || *pStop == '"' ? pStop : Unescape(pStop, text_.pEnd, pWrite);
  if (pClosing == nullptr || pClosing == text_.pEnd) {
    return {text_.Fail(pContent, Fault::kString), 0};
  }
  *pWrite = '\0';
  return {pContent + (pClosing - pContent) + 1, static_cast<int>(pWrite - pContent)};
}

// Rare kinds of values, which are functions of their own.

char* TreeReader::ReadOtherString(char* pQuote, ArrayValue& parent) {
  const Content content = ReadString(pQuote);
  const bool bRead = content.pNext != nullptr;
  Storage::Append(parent, pArena_, bRead ? jtString : jtInvalid, bRead ? pQuote + 1 : nullptr,
                  content.nLength, 0, nullptr);
  return content.pNext;
}

char* TreeReader::ReadNoValue(char* p, ArrayValue& parent) {
  const char c = text_.Peek(p);
  if (c == 't' || c == 'f' || c == 'n') {
    Storage::Append(parent, pArena_, jtInvalid, nullptr, 0, 0, nullptr);
  }
  return text_.Fail(p, Fault::kValue);
}

QXRECORDSET_HOT char* TreeReader::ReadEmptyArray(char* p, ArrayValue& parent) {
  UnsafeJSONValue& element = Storage::Append(parent, pArena_, jtInvalid, nullptr, 0, 0, nullptr);
  element.pComposite = Storage::Make<ArrayValue>(pArena_, pArena_ != nullptr ? 0 : kHeapReserve);
  element.pComposite->eType = element.eType = jtArray;
  return p + 2;
}

// The element is appended before its container is filled, so that the container has an owner when
// memory runs out. Nothing else is appended to the parent meanwhile, so the element stays in place.
template <typename Container>
char* TreeReader::ReadContainer(char* p, ArrayValue& parent, Place& place) {
  constexpr bool bObject = std::is_same_v<Container, ObjectValue>;
  if (!bObject && text_.Peek(p + 1) == ']' && text_.nMayOpen > 0) return ReadEmptyArray(p, parent);
  UnsafeJSONValue& element = Storage::Append(parent, pArena_, jtInvalid, nullptr, 0, 0, nullptr);
  const std::uint32_t nSeen = std::min(bObject ? place.nMembers : place.nElements, kMostExpected);
  Container* const pContainer =
      Storage::Make<Container>(pArena_, pArena_ != nullptr ? nSeen : kHeapReserve);
  element.pComposite = pContainer;
  char* const pNext = ReadInto(p, *pContainer, place);
  element.eType = pContainer->eType;
  return pNext;
}

char* TreeReader::ReadValue(char* p, ArrayValue& parent, Place& place) {
  return ArraySink(*this, parent, place).Element(p, text_.Peek(p));
}

QXRECORDSET_HOT char* TreeReader::ReadNested(char* p, ArrayValue& parent, Place& place) {
  return *p == '{' ? ReadContainer<ObjectValue>(p, parent, place)
                   : ReadContainer<ArrayValue>(p, parent, place);
}

char* TreeReader::ReadInto(char* p, ArrayValue& array, Place& place) {
  array.eType = jtInvalid;
  ArraySink sink(*this, array, place);
  char* const pNext = ReadArray(text_, p, sink);
  if (pNext == nullptr) return nullptr;
  array.eType = jtArray;
  place.nElements = Items::Count(array.vValues);
  Items::Trim(array.vValues, pArena_);
  return pNext;
}

char* TreeReader::ReadInto(char* p, ObjectValue& object, Place& place) {
  object.eType = jtInvalid;
  object.bSorted = false;
  Place others;
  ObjectSink sink(*this, object, place, others);
  char* const pNext = ReadObject(text_, p, sink);
  if (pNext == nullptr) {
    sink.Abandon();
    return nullptr;
  }
  object.eType = jtObject;
  place.nMembers = Items::Count(object.avValues.vValues);
  Items::Trim(object.avValues.vValues, pArena_);
  return pNext;
}

// ---- Names --------------------------------------------------------------------------------------

// REQUIRES: the names before this one, too, are the object's own.
char* TreeReader::ReadOwnName(char* pQuote, ObjectValue& object) {
  const Content name = ReadString(pQuote);
  if (name.pNext != nullptr) {
    ObjectValue::NameMap entry;
    entry.pName = pQuote + 1;
    entry.nLength = name.nLength;
    entry.nOrdinal = static_cast<int>(Items::Count(object.vNameMap));
    Items::Append(object.vNameMap, pArena_, entry);
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
  if (pShape != nullptr) pShape->CopyNames(*pArena_, object);
  return {ReadOwnName(pQuote, object), nullptr};
}

}  // namespace JSON
