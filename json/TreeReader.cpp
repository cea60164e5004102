// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building the tree. The two sinks are what the grammar talks to. What happens for nearly every
// member or element is inline; what happens now and then is a function of its own, so that the
// loops keep their few variables in registers.

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

QXRECORDSET_HOT void AppendScalar(ArrayValue& parent, Arena* pArena, Type type, const char* pText,
                                  std::ptrdiff_t nLength) {
  Storage::Append(parent, pArena, type, pText, static_cast<int>(nLength), 0, nullptr);
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
      AppendScalar(parent, pArena_, jtString, p + 1, content.nLength);
      return content.pNext;
    }
    AppendScalar(parent, pArena_, jtInvalid, nullptr, 0);
    return nullptr;
  }
  if (BeginsNumber(c)) {
    bool bReal = false;
    char* const pNext = ScanNumber(p, text_.pEnd, bReal);
    AppendScalar(parent, pArena_, bReal ? jtDouble : jtInteger, p, pNext - p);
    return pNext;
  }
  return ReadOther(p, parent, place);
}

char* TreeReader::ReadValue(char* p, ArrayValue& parent, Place& place) {
  return ReadInline(p, parent, place);
}

QXRECORDSET_HOT char* TreeReader::ReadNested(char* p, ArrayValue& parent, Place& place) {
  return *p == '{' ? ReadContainer<ObjectValue>(p, parent, place)
                   : ReadContainer<ArrayValue>(p, parent, place);
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
      pNext = ReadLiteral(text_, p);
      break;
    case 'n':
      pNext = ReadLiteral(text_, p);
      type = jtNull;
      break;
    default:
      return text_.Fail(p);  // no value begins here, or the text ends
  }
  if (pNext == nullptr) {
    AppendScalar(parent, pArena_, jtInvalid, nullptr, 0);
    return nullptr;
  }
  AppendScalar(parent, pArena_, type, p, pNext - p);
  return pNext;
}

// The element is there before its container is filled, so that the container has an owner whatever
// happens on the way. Nothing else is added to the parent meanwhile, so the element stays in place.
template <typename Container>
char* TreeReader::ReadContainer(char* p, ArrayValue& parent, Place& place) {
  constexpr bool bObject = std::is_same_v<Container, ObjectValue>;
  UnsafeJSONValue& element = Storage::Append(parent, pArena_, jtInvalid, nullptr, 0, 0, nullptr);
  const std::uint32_t nSeen = std::min(bObject ? place.nMembers : place.nElements, kMostExpected);
  Container* const pContainer =
      Storage::Make<Container>(pArena_, pArena_ != nullptr ? nSeen : kHeapReserve);
  element.pComposite = pContainer;
  char* const pNext = Fill(p, *pContainer, place);
  element.eType = pContainer->eType;
  return pNext;
}

// ---- Shortcuts ----------------------------------------------------------------------------------
//
// Most members and elements are plain, and the text goes on far enough to be looked at in blocks.
// They are read in loops of their own that look first and change the text only when all is well;
// whatever is special in any way is left to the grammar.
//
// Positions stay within the text: where an item is due kReach bytes are left, of which a short name
// and a literal take fewer; what may be longer (another name, white space, a string, a number) is
// measured against pEnd by whoever reads it, and pLimit, kReach bytes before the end, is asked
// again before the next item.

namespace {

// Bytes that are there where a value is looked at: a literal and what separates it.
constexpr std::ptrdiff_t kLiteral = 8;

// Bytes that are there where a member or an element is due: a short name as it is expected, with
// two quotes, a colon and a blank, and a literal. What is longer looks for itself.
constexpr std::ptrdiff_t kReach = std::ptrdiff_t{2} * Block16::kBytes;
static_assert(kReach > static_cast<std::ptrdiff_t>(ExpectedName::kShortName) + 4 + kLiteral);

// A scalar that was found in the text.
struct Scalar {
  Type type;
  char* pText;
  char* pEnd;
};

// Whether the four bytes at p are those of `szWord`.
bool IsWord(const char* p, const char (&szWord)[5]) { return std::memcmp(p, szWord, 4) == 0; }

// The quote that ends the content at p; null when an escape or the end of the text comes first.
QXRECORDSET_HOT char* FindClosingQuote(char* p, const char* pEnd) {
  while (pEnd - p >= Block16::kBytes) {
    const std::uint32_t found = Block16::Load(p).QuoteOrBackslash();
    if (found != 0) {
      p += LowestBit(found);
      return *p == '"' ? p : nullptr;
    }
    p += Block16::kBytes;
  }
  return nullptr;
}

// The scalar at p; the result is the position behind it, or null when there is no plain one.
// REQUIRES: kLiteral bytes at p.
QXRECORDSET_HOT char* FindScalar(char* p, char* pEnd, Scalar& scalar) {
  if (*p == '"') {
    scalar = {jtString, p + 1, FindClosingQuote(p + 1, pEnd)};
    return scalar.pEnd != nullptr ? scalar.pEnd + 1 : nullptr;
  }
  scalar.pText = p;
  if (BeginsNumber(*p)) {
    bool bReal = false;
    scalar.pEnd = ScanNumberRest(p + 1, pEnd, bReal);
    scalar.type = bReal ? jtDouble : jtInteger;
  } else if (IsWord(p, "null")) {
    scalar.type = jtNull;
    scalar.pEnd = p + 4;
  } else if (IsWord(p, "true")) {
    scalar.type = jtBoolean;
    scalar.pEnd = p + 4;
  } else if (IsWord(p, "fals") && p[4] == 'e') {
    scalar.type = jtBoolean;
    scalar.pEnd = p + 5;
  } else {
    return nullptr;
  }
  return scalar.pEnd;
}

QXRECORDSET_HOT void Take(const Scalar& scalar, ArrayValue& parent, Arena* pArena) {
  if (scalar.type == jtString) {
    *scalar.pEnd = '\0';
  }
  AppendScalar(parent, pArena, scalar.type, scalar.pText, scalar.pEnd - scalar.pText);
}

// White space at p. A single blank, the usual case, is no work for a loop. REQUIRES: 2 bytes at p.
QXRECORDSET_HOT char* SkipGap(char* p, char* pEnd) {
  if (!IsSpace(*p)) return p;
  ++p;
  return IsSpace(*p) ? SkipSpaceRun(p, pEnd) : p;
}

// White space at p where a member or an element is due, which may be a line break and blanks. What
// stands in one container is indented alike: that as many blanks follow as last time is checked
// rather than counted, so that nothing has to wait for their number. The result may be anywhere up
// to the end, but then it is not before pLimit. REQUIRES: kReach bytes at p.
QXRECORDSET_HOT char* SkipIndent(char* p, const char* pLimit, char* pEnd, std::uint32_t& nBlanks) {
  if (*p != '\n') return SkipGap(p, pEnd);
  constexpr std::uint32_t kBlock = Block16::kBytes;
  char* const pLine = p + 1;
  if (pLimit - pLine > static_cast<std::ptrdiff_t>(nBlanks)) {
    const std::uint32_t nFront = Block16::Load(pLine).Equals(' ');
    const std::uint32_t nBack = Block16::Load(pLine + kBlock).Equals(' ');
    const std::uint32_t nExpected = (std::uint32_t{1} << nBlanks) - 1;
    if (((nFront | nBack << kBlock) & nExpected) == nExpected && pLine[nBlanks] > ' ') {
      return pLine + nBlanks;
    }
  }
  char* const pToken = SkipSpaceRun(pLine, pEnd);
  nBlanks = static_cast<std::uint32_t>(pToken - pLine) % (2 * kBlock);
  return pToken;
}

// Where what follows a value stands, when it is a comma or the closing bracket and another item
// may follow; null otherwise. p is where the value ends.
QXRECORDSET_HOT char* FindSeparator(char* p, const char* pLimit, char* pEnd, char cClosing) {
  if (p >= pLimit) return nullptr;
  if (*p == ',' || *p == cClosing) return p;
  p = SkipGap(p, pEnd);
  return p < pLimit && (*p == ',' || *p == cClosing) ? p : nullptr;
}

bool BeginsContainer(char c) { return c == '{' || c == '['; }

}  // namespace

Due TreeReader::ReadPlainMembers(char*& p, ArrayValue& values, Place& place, Shape*& pShape,
                                 Shape*& pExpected) {
  char* const pEnd = text_.pEnd;
  if (pEnd - p <= kReach) return Due::kItem;
  char* const pLimit = pEnd - kReach;
  Due due = Due::kItem;
  Shape* pLast = pShape;
  Shape* pNext = pExpected;
  char* pDue = p;
  while (pNext != nullptr) {
    char* pQuote = pDue;
    if (*pDue != '"') {
      pQuote = SkipIndent(pDue, pLimit, pEnd, place.nMemberIndent);
      if (pQuote >= pLimit || *pQuote != '"') break;
    }
    if (!pNext->name.MatchesMember(pQuote + 1, pEnd)) break;
    char* const pNameEnd = pQuote + 1 + pNext->name.Length();
    char* pValue = pNameEnd + 2;
    if (IsSpace(*pValue)) {
      pValue = SkipGap(pValue, pEnd);
      if (pEnd - pValue <= kLiteral) break;
    }
    Scalar scalar;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled when it is found
    char* pBehind = FindScalar(pValue, pEnd, scalar);
    if (pBehind != nullptr) {
      pBehind = FindSeparator(pBehind, pLimit, pEnd, '}');
      if (pBehind == nullptr) break;
      Take(scalar, values, pArena_);
    } else if (!BeginsContainer(*pValue)) {
      break;
    }
    *pNameEnd = '\0';
    pLast = pNext;
    pNext = pNext->pLonger;
    if (pBehind == nullptr) {
      pDue = ReadNested(pValue, values, pLast->place);
      pBehind = pDue != nullptr ? FindSeparator(pDue, pLimit, pEnd, '}') : nullptr;
      if (pBehind == nullptr) {
        due = Due::kSeparator;
        break;
      }
    }
    pDue = pBehind + 1;
    if (*pBehind == '}') {
      due = Due::kNothing;
      break;
    }
  }
  pShape = pLast;
  pExpected = pNext;
  p = pDue;
  return due;
}

QXRECORDSET_HOT Due TreeReader::ReadPlainElements(char*& p, ArrayValue& array, Place& place) {
  char* const pEnd = text_.pEnd;
  if (pEnd - p <= kReach) return Due::kItem;
  char* const pLimit = pEnd - kReach;
  Due due = Due::kItem;
  char* pDue = p;
  for (;;) {
    char* pValue = pDue;
    if (IsSpace(*pValue)) {
      pValue = SkipIndent(pValue, pLimit, pEnd, place.nElementIndent);
      if (pValue >= pLimit) break;
    }
    char* pBehind = nullptr;
    if (BeginsContainer(*pValue)) {
      pDue = ReadNested(pValue, array, place);
      pBehind = pDue != nullptr ? FindSeparator(pDue, pLimit, pEnd, ']') : nullptr;
      if (pBehind == nullptr) {
        due = Due::kSeparator;
        break;
      }
    } else {
      Scalar scalar;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled when it is found
      pBehind = FindScalar(pValue, pEnd, scalar);
      if (pBehind != nullptr) pBehind = FindSeparator(pBehind, pLimit, pEnd, ']');
      if (pBehind == nullptr) break;
      Take(scalar, array, pArena_);
    }
    pDue = pBehind + 1;
    if (*pBehind == ']') {
      due = Due::kNothing;
      break;
    }
  }
  p = pDue;
  return due;
}

// ---- Arrays -------------------------------------------------------------------------------------

namespace {

class ArraySink {
 public:
  ArraySink(TreeReader& reader, ArrayValue& array, Place& place)
      : reader_(reader), array_(array), place_(place) {}

  char* Element(char* p) { return reader_.ReadInline(p, array_, place_); }
  QXRECORDSET_HOT Due Shortcut(char*& p) { return reader_.ReadPlainElements(p, array_, place_); }
  void Missing() { AppendScalar(array_, reader_.Pool(), jtNull, nullptr, 0); }

 private:
  TreeReader& reader_;
  ArrayValue& array_;
  Place& place_;
};

}  // namespace

QXRECORDSET_HOT char* TreeReader::Fill(char* p, ArrayValue& array, Place& place) {
  array.eType = jtInvalid;
  ArraySink sink(*this, array, place);
  char* const pNext = ReadArray(text_, p, sink);
  if (pNext == nullptr) {
    return nullptr;
  }
  array.eType = jtArray;
  place.nElements = Items::Count(array.vValues);
  Items::Trim(array.vValues, pArena_);
  return pNext;
}

char* TreeReader::ReadArrayInto(char* p, ArrayValue& array, Place& place) {
  return Fill(p, array, place);
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

  Due Shortcut(char*& p) {
    return pExpected_ != nullptr
               ? reader_.ReadPlainMembers(p, object_.avValues, place_, pShape_, pExpected_)
               : Due::kItem;
  }

  char* Value(char* p) {
    return reader_.ReadInline(p, object_.avValues, pShape_ != nullptr ? pShape_->place : others_);
  }

  void Complete() {
    if (pShape_ != nullptr) {
      pShape_->GiveNames(*reader_.Pool(), object_);
      return;
    }
    object_.Sort();
  }

  // The object failed: it keeps its names in document order, the one whose value failed included.
  void Abandon() {
    if (pShape_ != nullptr) {
      pShape_->CopyNames(*reader_.Pool(), object_);
    }
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

QXRECORDSET_HOT char* TreeReader::Fill(char* p, ObjectValue& object, Place& place) {
  object.eType = jtInvalid;
  object.bSorted = false;
  ObjectSink sink(*this, object, place);
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

char* TreeReader::ReadObjectInto(char* p, ObjectValue& object, Place& place) {
  return Fill(p, object, place);
}

// The name may only follow names of the object's own.
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
  if (pShape != nullptr) {
    pShape->CopyNames(*pArena_, object);
  }
  return {ReadOwnName(pQuote, object), nullptr};
}

}  // namespace JSON
