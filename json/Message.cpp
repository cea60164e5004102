// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Message: its text, its root and its pool.

#include "json/JSONMessage.h"

#include <climits>
#include <cstring>

#include "json/Storage.h"
#include "json/TreeCopy.h"
#include "json/TreeReader.h"

namespace JSON {
namespace {

// What a tree takes, very roughly, for each byte of text, and beside that.
constexpr std::size_t kTreeBytesPerByte = 4;
constexpr std::size_t kTreeBytesAtLeast = 512;

Arena* PoolFor(std::size_t nText) {
  return Arena::Create(kTreeBytesAtLeast + kTreeBytesPerByte * nText);
}

template <typename Container>
Container& As(CompositeValue* pComposite) {
  return *static_cast<Container*>(pComposite);
}

}  // namespace

Message::Message(bool bParseInPlace) noexcept : bInPlace(bParseInPlace) {}

// From the end of the other constructor on there is a message, which releases what it has when the
// copy cannot be completed.
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
  if (pArena != nullptr) {
    Arena::Destroy(pArena);
  }
}

// The message is left without a root, and its pool rewound.
void Message::ReleaseRoot() noexcept {
  Storage::Release(pComposite);
  pComposite = nullptr;
  eType = jtInvalid;
  if (pArena != nullptr) {
    pArena->Rewind(0);
  }
}

// ---- Parsing ------------------------------------------------------------------------------------

namespace {

// An empty root in the pool, whose storage went with the rewound pool.
template <typename Container>
void EmptyInPool(Container& root, Arena& arena) {
  Storage::Forget(root);
  arena.Rewind(sizeof(Container));  // a root is the first thing taken from its pool
}

}  // namespace

// A root of the same kind is used again, at the same address.
template <typename Container>
Container& Message::PrepareRoot(Type type) {
  if (pArena == nullptr) {
    pArena = PoolFor(static_cast<std::size_t>(pEnd - pStart));
  }
  if (pComposite != nullptr && eType == type) {
    pComposite->Clear();
    Container& root = As<Container>(pComposite);
    if (Storage::InArena(root)) {
      EmptyInPool(root, *pArena);
    } else {
      pArena->Rewind(0);
    }
    return root;
  }
  ReleaseRoot();
  Container* const pRoot = Storage::Make<Container>(pArena, 0);
  pComposite = pRoot;
  eType = type;
  return *pRoot;
}

bool Message::Parse(const char* text, int length) {
  if (text == nullptr || length == 0) {
    return false;
  }
  const std::size_t nText = length > 0 ? static_cast<std::size_t>(length) : std::strlen(text);
  if (nText > INT_MAX) {
    return false;  // lengths in the tree are ints
  }
  char* pBuffer = const_cast<char*>(text);  // in place the caller gives up the text to us
  if (!bInPlace) {
    strText.assign(text, nText);
    pBuffer = strText.data();
  }
  char* const pBufferEnd = pBuffer + nText;
  const bool bEmpty = nText == 0 || *pBuffer == '\0';
  char* const pFirst = bEmpty ? pBuffer : Text<char>(pBufferEnd, kMaxNesting).SkipSpace(pBuffer);
  if (bEmpty || pFirst == pBufferEnd || (*pFirst != '{' && *pFirst != '[')) {
    RefuseText(pBuffer, pBufferEnd, pFirst);
    return false;
  }
  pStart = pBuffer;
  pEnd = pBufferEnd;
  pCursor = pFirst;
  try {
    return ReadTree();
  } catch (...) {
    // An object that was not read to its end may lack its names, so nothing of the tree is kept.
    ReleaseRoot();
    pStart = pEnd = pCursor = nullptr;
    throw;
  }
}

// Reads the container at the cursor as the root.
bool Message::ReadTree() {
  Place place;
  char* pNext = nullptr;
  if (*pCursor == '{') {
    ObjectValue& root = PrepareRoot<ObjectValue>(jtObject);
    TreeReader reader(pEnd, pArena);
    pNext = reader.ReadObjectInto(pCursor, root, place);
    pCursor = pNext != nullptr ? pNext : reader.StoppedAt();
  } else {
    ArrayValue& root = PrepareRoot<ArrayValue>(jtArray);
    TreeReader reader(pEnd, pArena);
    pNext = reader.ReadArrayInto(pCursor, root, place);
    pCursor = pNext != nullptr ? pNext : reader.StoppedAt();
  }
  return pNext != nullptr;
}

// A text that holds no document. The tree of a copying message points into a text that is gone; the
// tree of an in-place message is as good as before, and keeps the context that belongs to it.
void Message::RefuseText(char* pBuffer, char* pBufferEnd, char* pStop) noexcept {
  if (bInPlace && pComposite != nullptr) {
    return;
  }
  ReleaseRoot();
  pStart = pBuffer;
  pEnd = pBufferEnd;
  pCursor = pStop;
}

// ---- Copying ------------------------------------------------------------------------------------

void Message::CopyTo(Message& target) const {
  if (&target == this) {
    return;
  }
  std::string strCopy;
  if (pStart != nullptr) {
    strCopy.assign(pStart, static_cast<std::size_t>(pEnd - pStart));
  }
  target.ReleaseRoot();
  target.strText.swap(strCopy);
  target.pStart = target.strText.data();
  target.pEnd = target.pStart + target.strText.size();
  if (pComposite == nullptr) {
    target.eType = eType;
    return;
  }
  if (target.pArena == nullptr) {
    target.pArena = PoolFor(target.strText.size());
  }
  // The two buffers are unrelated, so their distance is one of addresses.
  const std::ptrdiff_t nDelta = static_cast<std::ptrdiff_t>(
      reinterpret_cast<std::uintptr_t>(target.pStart) - reinterpret_cast<std::uintptr_t>(pStart));
  target.pComposite = TreeCopy(nDelta, target.pArena).Clone(*pComposite);
  target.eType = eType;
}

// ---- Paths --------------------------------------------------------------------------------------

const JSONValue& Message::Path(const char* path) const {
  if (path == nullptr || *path == '\0') {
    return None();
  }
  const JSONValue* pValue = this;
  const char* pSegment = path;
  // A leading '.' is content. The path has a byte, so its NUL is at path + 1 or behind it; a
  // segment ends at a '.' or at the NUL, and only behind a '.' is there another one.
  const char* pSegmentEnd = path + 1 + std::strcspn(path + 1, ".");
  for (;;) {
    pValue = pValue->GetByName(pSegment, static_cast<int>(pSegmentEnd - pSegment));
    if (pValue == nullptr) {
      return None();
    }
    if (*pSegmentEnd == '\0') {
      return *pValue;
    }
    pSegment = pSegmentEnd + 1;
    pSegmentEnd = pSegment + std::strcspn(pSegment, ".");
  }
}

}  // namespace JSON
