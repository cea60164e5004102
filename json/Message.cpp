// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Message: its text, its root and its pool.

#include "json/JSONMessage.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>
#include <type_traits>

#include "json/Arena.h"
#include "json/CutNumber.h"
#include "json/Storage.h"
#include "json/TreeCopy.h"
#include "json/TreeReader.h"
#include "json/TreeRelease.h"
#include "memory/KeptBlocks.h"
#include "text/Fault.h"

namespace JSON {

using memory::KeptBlocks;

namespace {

// What a tree takes, very roughly, for each byte of text, and beside that. The pool's first block
// has a bound of its own, far below texts for which the product would be too large.
constexpr std::size_t kTreeBytesPerByte = 4;
constexpr std::size_t kTreeBytesAtLeast = 640;
constexpr std::size_t kLongText = std::size_t{1} << 24;

Arena* PoolFor(std::size_t nText) {
  return Arena::Create(kTreeBytesAtLeast + kTreeBytesPerByte * std::min(nText, kLongText));
}

// A text of this many bytes, at least, is kept room for.
constexpr std::size_t kShortText = 1024;

// Room for so many times the longer of this text and the one before is kept.
constexpr std::size_t kMostRoom = 4;

int ParseInto(ParseContext& context, ObjectValue& object) {
  return Parser::ParseObject(context, object);
}
int ParseInto(ParseContext& context, ArrayValue& array) {
  return Parser::ParseArray(context, array);
}

std::size_t LengthOf(const char* text, int length) {
  return length > 0 ? static_cast<std::size_t>(length) : std::strlen(text);
}

// The value at a path that is not empty, or null; `lookup` finds one segment of it.
template <typename Lookup>
const JSONValue* Follow(const JSONValue* pValue, const char* path, Lookup lookup) {
  const char* pSegment = path;
  // A leading '.' is content. The path has a byte, so its NUL is at path + 1 or behind it; a
  // segment ends at a '.' or at the NUL, and only behind a '.' is there another one.
  const char* pSegmentEnd = path + 1 + std::strcspn(path + 1, ".");
  for (;;) {
    pValue = lookup(*pValue, pSegment, static_cast<int>(pSegmentEnd - pSegment));
    if (pValue == nullptr || *pSegmentEnd == '\0') return pValue;
    pSegment = pSegmentEnd + 1;
    pSegmentEnd = pSegment + std::strcspn(pSegment, ".");
  }
}

}  // namespace

Message::Message(bool bParseInPlace) noexcept : bInPlace(bParseInPlace) {}

// The message exists when the other constructor ends, so its destructor runs when CopyTo() throws.
Message::Message(const Message& source) : Message(source.bInPlace) { source.CopyTo(*this); }

Message& Message::operator=(const Message& source) {
  if (this != &source) {
    source.CopyTo(*this);
    bInPlace = source.bInPlace;
  }
  return *this;
}

Message::~Message() {
  ReleaseRoot();
  if (bOwnsText) delete[] pText;
  KeptBlocks::GiveText(strText);
  if (pArena != nullptr) Arena::Destroy(pArena);
}

// ---- The root -----------------------------------------------------------------------------------

// The message is left without a root, and its pool rewound.
void Message::ReleaseRoot() noexcept {
  Release(pComposite);
  pComposite = nullptr;
  eType = jtInvalid;
  if (pArena != nullptr) pArena->Rewind();
}

// Every root that the library makes is made here.
CompositeValue& Message::MakeRoot(Type type, std::uint32_t nReserve) {
  ReleaseRoot();
  if (pArena == nullptr) pArena = PoolFor(static_cast<std::size_t>(pEnd - pStart));
  assert(pArena->IsRewound());
  if (type == jtObject) {
    pComposite = Storage::Make<ObjectValue>(pArena, nReserve);
  } else {
    pComposite = Storage::Make<ArrayValue>(pArena, nReserve);
  }
  eType = type;
  return *pComposite;
}

CompositeValue& Storage::MakeRoot(Message& message, Type type, std::uint32_t nReserve) {
  return message.MakeRoot(type, nReserve);
}
void Storage::ReleaseRoot(Message& message) noexcept { message.ReleaseRoot(); }

// ---- Parsing ------------------------------------------------------------------------------------

// Replaces the message's text by a copy of `text`, which may be that text itself.
char* Message::CopyText(const char* text, std::size_t nText) {
  const std::size_t nLonger = std::max({nText, strText.size(), kShortText});
  if (strText.capacity() / kMostRoom > nLonger) {
    std::string(text, nText).swap(strText);
  } else {
    if (strText.empty()) KeptBlocks::TakeText(strText, nText);
    strText.assign(text, nText);
  }
  return strText.data();
}

// Part of Parse(), its only caller: a call would cost an empty document more than its error does.
[[gnu::always_inline]] inline bool Message::ParseText(const char* text, int length) {
  if (text == nullptr || length == 0) {
    NoteError({}, 0, Fault::kNoText, true);
    return false;
  }
  const std::size_t nText = LengthOf(text, length);
  if (nText > INT_MAX) {
    NoteError({}, 0, Fault::kTooLong, true);
    return false;  // lengths in the tree are ints
  }
  // In place the text may be rewritten.
  char* const pBuffer = bInPlace ? const_cast<char*>(text) : CopyText(text, nText);
  char* const pBufferEnd = pBuffer + nText;
  const bool bEmpty = nText == 0 || *pBuffer == '\0';
  char* const pFirst = bEmpty ? pBuffer : Text<char>(pBufferEnd, kMaxNesting).SkipSpace(pBuffer);
  if (bEmpty || pFirst == pBufferEnd || (*pFirst != '{' && *pFirst != '[')) {
    NoteError({pBuffer, nText}, static_cast<std::size_t>(pFirst - pBuffer), Fault::kDocument, true);
    RefuseText(pBuffer, pBufferEnd, pFirst);
    return false;
  }
  pStart = pBuffer;
  pEnd = pBufferEnd;
  pCursor = pFirst;
  try {
    return *pFirst == '{' ? ReadTree<ObjectValue>() : ReadTree<ArrayValue>();
  } catch (...) {
    // An object that was not read to its end may lack its names, so nothing of the tree is kept.
    ReleaseRoot();
    pStart = pEnd = pCursor = nullptr;
    throw;
  }
}

bool Message::Parse(const char* text, int length) {
  // Looked at before: a text that is the message's own is rewritten, or released.
  const bool bOwnText =
      reinterpret_cast<std::uintptr_t>(text) - reinterpret_cast<std::uintptr_t>(strText.data()) <=
      strText.size();
  if (error.szReason != nullptr) error = ParseError();
  if (ParseText(text, length)) return true;
  if (error.nLine == 0 && !bInPlace && !bOwnText) LocateError({text, LengthOf(text, length)});
  return false;
}

// Reads the container at the cursor as the root. A container that a host made the root stays the
// root, and is filled as a host's container.
template <typename Container>
bool Message::ReadTree() {
  constexpr Type eWanted = std::is_same_v<Container, ObjectValue> ? jtObject : jtArray;
  if (pComposite != nullptr && eType == eWanted && !Storage::InPool(*pComposite)) {
    if (auto* const pHostRoot = dynamic_cast<Container*>(pComposite)) {
      pHostRoot->Clear();
      ParseContext context{pStart, pEnd, pCursor};
      const bool bRead = ParseInto(context, *pHostRoot) != jtInvalid;
      pCursor = context.pCursor;
      if (!bRead) NoteTreeError(Fault::kUnknown);
      return bRead;
    }
  }
  auto& root = static_cast<Container&>(MakeRoot(eWanted, 0));
  TreeReader reader(pEnd, pArena);
  Place place;
  char* const pNext = reader.ReadInto(pCursor, root, place);
  pCursor = pNext != nullptr ? pNext : reader.StoppedAt();
  if (pNext != nullptr) return true;
  NoteTreeError(reader.Source().eFault);
  if (bInPlace) OwnCutNumber(root, pEnd);
  return false;
}

// A text that holds no document. The tree of a copying message points into a text that is gone; the
// tree of an in-place message is as good as before, and keeps the context that belongs to it.
void Message::RefuseText(char* pBuffer, char* pBufferEnd, char* pStop) noexcept {
  if (bInPlace && pComposite != nullptr) return;
  ReleaseRoot();
  pStart = pBuffer;
  pEnd = pBufferEnd;
  pCursor = pStop;
}

// ---- Copying ------------------------------------------------------------------------------------

void Message::CopyTo(Message& target) const {
  if (&target == this) return;
  std::string strCopy;
  if (pStart != nullptr) {
    KeptBlocks::TakeText(strCopy, static_cast<std::size_t>(pEnd - pStart));
    strCopy.assign(pStart, static_cast<std::size_t>(pEnd - pStart));
  }
  target.ReleaseRoot();
  target.error = ParseError();
  target.strText.swap(strCopy);
  target.pStart = target.strText.data();
  target.pEnd = target.pStart + target.strText.size();
  if (pComposite == nullptr) {
    target.eType = eType;
    return;
  }
  try {
    target.CopyRoot(*this);
  } catch (...) {
    target.ReleaseRoot();
    throw;
  }
  target.eType = eType;
}

// REQUIRES: the message has a copy of the source's text, and the source has a root.
void Message::CopyRoot(const Message& source) {
  assert(source.pComposite != nullptr && pEnd - pStart == source.pEnd - source.pStart);
  const CompositeValue& from = *source.pComposite;
  const Storage::Kind kind = Storage::KindOf(from);
  if (kind == Storage::Kind::kForeign) {
    pComposite =
        from.Clone(static_cast<std::ptrdiff_t>(reinterpret_cast<std::uintptr_t>(pStart) -
                                               reinterpret_cast<std::uintptr_t>(source.pStart)));
    return;
  }
  const bool bObject = kind == Storage::Kind::kObject;
  CompositeValue& root = MakeRoot(bObject ? jtObject : jtArray, 0);
  TreeCopy copy(source.pStart, source.pEnd, pStart, pArena);
  if (bObject) {
    copy.Append(static_cast<const ObjectValue&>(from), static_cast<ObjectValue&>(root));
  } else {
    copy.Append(static_cast<const ArrayValue&>(from), static_cast<ArrayValue&>(root));
  }
}

// ---- Paths --------------------------------------------------------------------------------------

// A scalar is not handed out: a caller cannot change it. The path to a container is.
const JSONValue& Message::Path(const char* path) const {
  if (path == nullptr || *path == '\0') return None();
  const JSONValue* const pFound =
      Follow(this, path, [](const JSONValue& value, const char* name, int length) {
        return Storage::Look(value, name, length);
      });
  if (pFound == nullptr || pFound->pComposite == nullptr) {
    return pFound != nullptr ? *pFound : None();
  }
  return *Follow(this, path, [](const JSONValue& value, const char* name, int length) {
    return static_cast<const JSONValue*>(value.GetByName(name, length));
  });
}

}  // namespace JSON
