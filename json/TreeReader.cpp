// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building the tree. The sinks below are what the grammar talks to; the object sink also plays the
// guessing game with shapes (json/Shape.h).

#include "json/TreeReader.h"

#include <algorithm>

#include "json/NameOrder.h"
#include "json/Storage.h"

namespace JSON {

inline TreeReader::Content TreeReader::ReadString(char* pQuote) {
  char* const pContent = pQuote + 1;
  char* const pClosing = FindQuoteOrBackslash(pContent, text_.pEnd);
  if (pClosing == text_.pEnd || *pClosing != '"') {
    return ReadEscaped(pContent, pClosing);
  }
  *pClosing = '\0';
  return {pClosing + 1, static_cast<int>(pClosing - pContent), false};
}

namespace {

// Room that an array gets when nothing like it was seen yet, and the most it gets for what was.
constexpr std::uint32_t kFirstElements = 4;
constexpr std::uint32_t kMostExpectedElements = 64;

class ArraySink {
 public:
  ArraySink(TreeReader& reader, ArrayValue& array, Hint& hint)
      : reader_(reader), array_(array), hint_(hint) {}

  char* Element(char* p) { return reader_.ReadValue(p, array_, 0, hint_); }
  void Missing() { Storage::Append(array_, jtNull, nullptr, 0, 0, nullptr); }

 private:
  TreeReader& reader_;
  ArrayValue& array_;
  Hint& hint_;
};

class ObjectSink {
 public:
  ObjectSink(TreeReader& reader, ObjectValue& object, Hint& hint)
      : reader_(reader), object_(object), hint_(hint), pShape_(hint.pShape) {
    if (pShape_ != nullptr) {
      bAsShaped_ = object.Size() == 0 && object.vNameMap.empty();
      Storage::Reserve(object.avValues, static_cast<std::size_t>(pShape_->nCount));
    }
  }

  char* Name(char* pQuote) {
    char* const pName = pQuote + 1;
    if (pShape_ != nullptr && nNext_ < pShape_->nCount) {
      ShapeMember& expected = pShape_->Members()[nNext_];
      if (expected.Matches(pName, reader_.End())) {
        pMember_ = &expected;
        ++nNext_;
        pName[expected.nLength] = '\0';
        if (!bAsShaped_) {
          AppendName(pName, expected.nLength);
        }
        return pName + expected.nLength + 1;
      }
    }
    return UnexpectedName(pQuote);
  }

  char* Value(char* p) {
    if (bAsShaped_) {
      return reader_.ReadValue(p, object_.avValues, pMember_->nNameIndex, pMember_->value);
    }
    return reader_.ReadValue(p, object_.avValues, 0,
                             pMember_ != nullptr ? pMember_->value : others_);
  }

  void Complete() {
    if (bAsShaped_ && nNext_ == pShape_->nCount) {
      Storage::BorrowNames(object_, pShape_->pNames, static_cast<std::size_t>(nNext_));
      object_.bSorted = true;
      hint_.nMisses = 0;
      return;
    }
    LeaveShape();
    object_.Sort();
    LearnShape();
  }

  // The object failed: it keeps its names in document order, the one whose value failed included.
  void Abandon() {
    LeaveShape();
    Storage::LendNames(object_);
  }

 private:
  // The names read so far were not stored, nor were they needed: the shape has them. Now they are.
  void LeaveShape() {
    if (!bAsShaped_) {
      return;
    }
    bAsShaped_ = false;
    UnsafeJSONValue* const pValues = Storage::Values(object_.avValues);
    for (int i = 0; i < object_.Size(); ++i) {
      pValues[i].nNameIndex = 0;
    }
    for (int i = 0; i < nNext_; ++i) {
      AppendName(pShape_->Members()[i].pName, pShape_->Members()[i].nLength);
    }
  }

  char* UnexpectedName(char* pQuote) {
    LeaveShape();
    const TreeReader::Content name = reader_.ReadString(pQuote);
    if (name.pNext == nullptr) {
      return nullptr;
    }
    AppendName(pQuote + 1, name.nLength);
    bEscapedName_ = bEscapedName_ || name.bEscaped;
    pMember_ = nullptr;
    if (pShape_ != nullptr) {
      pMember_ = pShape_->Find(pQuote + 1, name.nLength, nNext_);
      if (pMember_ != nullptr) {
        nNext_ = static_cast<int>(pMember_ - pShape_->Members()) + 1;
      }
    }
    return name.pNext;
  }

  void AppendName(const char* pName, int nLength) {
    ObjectValue::NameMap entry;
    entry.pName = pName;
    entry.nLength = nLength;
    entry.nOrdinal = static_cast<int>(object_.vNameMap.size());
    Storage::AppendName(object_, entry);
  }

  // A name with an escape looks different in the text, so it must not be expected there.
  void LearnShape() {
    Arena* const pArena = reader_.Pool();
    if (pArena != nullptr && Storage::InArena(object_) && !bEscapedName_ && hint_.WorthLearning()) {
      hint_.pShape = Shape::Learn(*pArena, object_, pShape_, others_);
    }
    ++hint_.nMisses;
    Storage::LendNames(object_);
  }

  TreeReader& reader_;
  ObjectValue& object_;
  Hint& hint_;
  Hint others_;                     // what is seen as the value of a member that no shape knows
  Shape* const pShape_;             // what the object is expected to look like, or null
  ShapeMember* pMember_ = nullptr;  // the shape's member for the last name
  int nNext_ = 0;                   // the shape's member that is expected next
  bool bAsShaped_ = false;          // all names so far were the expected ones, and none is stored
  bool bEscapedName_ = false;
};

}  // namespace

char* TreeReader::ReadObjectInto(char* p, ObjectValue& object, Hint& hint) {
  object.eType = jtInvalid;
  object.bSorted = false;
  ObjectSink sink(*this, object, hint);
  char* const pNext = ReadObject(text_, p, sink);
  if (pNext == nullptr) {
    sink.Abandon();
    return nullptr;
  }
  object.eType = jtObject;
  return pNext;
}

char* TreeReader::ReadArrayInto(char* p, ArrayValue& array, Hint& hint) {
  array.eType = jtInvalid;
  ArraySink sink(*this, array, hint);
  char* const pNext = ReadArray(text_, p, sink);
  if (pNext == nullptr) {
    return nullptr;
  }
  array.eType = jtArray;
  hint.nElements = static_cast<std::uint32_t>(array.Size());
  if (Storage::ArenaOf(array) != nullptr) {
    Storage::Trim(array);
  }
  return pNext;
}

char* TreeReader::ReadValue(char* p, ArrayValue& parent, int nNameIndex, Hint& hint) {
  if (text_.AtEnd(p)) {
    return text_.Fail(p);
  }
  const auto append = [&](Type type, const char* pText, std::ptrdiff_t nLength) {
    Storage::Append(parent, type, pText, static_cast<int>(nLength), nNameIndex, nullptr);
  };
  const char c = *p;
  if (c == '"') {
    const Content content = ReadString(p);
    if (content.pNext == nullptr) {
      append(jtInvalid, nullptr, 0);
      return nullptr;
    }
    append(jtString, p + 1, content.nLength);
    return content.pNext;
  }
  if (BeginsNumber(c)) {
    bool bReal = false;
    char* const pNext = ScanNumber(p, text_.pEnd, bReal);
    append(bReal ? jtDouble : jtInteger, p, pNext - p);
    return pNext;
  }
  if (c == '{') {
    return ReadContainer<ObjectValue>(p, parent, nNameIndex, hint);
  }
  if (c == '[') {
    return ReadContainer<ArrayValue>(p, parent, nNameIndex, hint);
  }
  if (c != 't' && c != 'f' && c != 'n') {
    return text_.Fail(p);
  }
  char* const pNext = c == 'n' ? ReadNull(text_, p) : ReadBoolean(text_, p);
  if (pNext == nullptr) {
    append(jtInvalid, nullptr, 0);
    return nullptr;
  }
  append(c == 'n' ? jtNull : jtBoolean, p, pNext - p);
  return pNext;
}

// The element is there before its container is filled, so that the container has an owner whatever
// happens on the way. Nothing else is added to the parent meanwhile, so the element stays in place.
template <typename Container>
char* TreeReader::ReadContainer(char* p, ArrayValue& parent, int nNameIndex, Hint& hint) {
  UnsafeJSONValue& element = Storage::Append(parent, jtInvalid, nullptr, 0, nNameIndex, nullptr);
  Container* const pContainer = Storage::Make<Container>(pArena_, kFirstElements);
  element.pComposite = pContainer;
  if (pArena_ == nullptr) {
    Storage::NoteHeapAt(element);
  }
  char* pNext = nullptr;
  if constexpr (std::is_same_v<Container, ObjectValue>) {
    pNext = ReadObjectInto(p, *pContainer, hint);
  } else {
    if (hint.nElements != 0) {
      Storage::Reserve(*pContainer, std::min(hint.nElements, kMostExpectedElements));
    }
    pNext = ReadArrayInto(p, *pContainer, hint);
  }
  element.eType = pContainer->eType;
  return pNext;
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

}  // namespace JSON
