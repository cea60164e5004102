// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A tree writes itself as compact JSON text. Scalars are written from the text they hold, numbers
// as far as their bytes can belong to one. A host's own containers write themselves.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <typeinfo>

#include "json/Items.h"
#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "json/JSONValue.h"
#include "json/Levels.h"
#include "json/ScalarText.h"
#include "json/Storage.h"
#include "text/Block.h"
#include "text/Escape.h"
#include "text/IntegerText.h"
#include "text/ShortBytes.h"
#include "text/TextRoom.h"

namespace JSON {
namespace {

// A value's text. Elements that were never handed out are as the parser left them, and so are their
// lengths; but a number that the end of the text cut off is longer than that.
std::string_view StringText(const JSONValue& value, bool bAsParsed) {
  if (bAsParsed) return {value.pText, static_cast<std::size_t>(value.nLength)};
  return ScalarText(value);
}
std::string_view NumberText(const JSONValue& value, bool bAsParsed) {
  if (bAsParsed && !IsRealByte(value.pText[value.nLength])) {
    return {value.pText, static_cast<std::size_t>(value.nLength)};
  }
  return ScalarText(value);
}

// The places in a message's text where two blocks can be read, whatever stands there.
class BlocksOfText {
 public:
  static constexpr std::size_t kBytes = std::size_t{2} * Block16::kBytes;

  BlocksOfText() = default;
  BlocksOfText(const char* pText, const char* pEnd)
      : nFirst_(Address(pText)), nPlaces_(Address(pEnd) - nFirst_) {
    nPlaces_ = nPlaces_ < kBytes ? 0 : nPlaces_ - kBytes + 1;
  }

  QXRECORDSET_HOT bool BeginAt(const char* p) const { return Address(p) - nFirst_ < nPlaces_; }

 private:
  static std::uintptr_t Address(const char* p) { return reinterpret_cast<std::uintptr_t>(p); }

  std::uintptr_t nFirst_ = 0;
  std::uintptr_t nPlaces_ = 0;
};

// Writes into room inside the string, which is cut to the text in the end. A comma follows each
// element at once; the bracket that closes a container takes the place of the last one.
//
// Each element finds room for a short name and a short value. Names and values inside the message's
// text are copied as a block, in which the end of the text shows; what is longer, lies elsewhere or
// needs escapes is left to a function that makes its own room, and leaves as much behind it.
class TreeWriter {
 public:
  TreeWriter(std::string& output, BlocksOfText blocks)
      : output_(output), blocks_(blocks), nText_(output.size()) {}
  ~TreeWriter() { Cut(); }
  TreeWriter(const TreeWriter&) = delete;
  TreeWriter& operator=(const TreeWriter&) = delete;

  // Writes a container of ours with everything below it; false when it met an empty value.
  template <typename Container>
  bool Write(const Container& container) {
    Position at{};
    char* p = Enter(Continue(), at, LevelOf(container));
    while (at.pLevel != nullptr) {
      while (at.pNext != at.pEnd) {
        const UnsafeJSONValue& value = *at.pNext++;
        p = Room(p);
        if (at.pLevel->bObject) p = Name(p, *at.pLevel, value);
        p = value.pComposite == nullptr ? Scalar(p, value, at.pLevel->bAsParsed)
                                        : Nested(p, at, value);
        if (p == nullptr) return false;
      }
      p = Leave(Room(p), at);
    }
    Note(p - 1);  // no comma follows the root
    return true;
  }

  // REQUIRES: the value has a type.
  void WriteScalar(const JSONValue& value) { Note(Scalar(Continue(), value, false) - 1); }

 private:
  // A container of which the elements before pNext are written.
  struct Level {
    const UnsafeJSONValue* pNext;
    const UnsafeJSONValue* pEnd;
    const ObjectValue::NameMap* pNames;  // the sorted names; null for an array
    std::uint32_t nNames;
    bool bObject;
    bool bNamesAsParsed;
    bool bAsParsed;

    char Open() const { return bObject ? '{' : '['; }
    char Close() const { return bObject ? '}' : ']'; }
  };

  // The innermost level, and what is left of it; around the root there is nothing.
  struct Position {
    const UnsafeJSONValue* pNext;
    const UnsafeJSONValue* pEnd;
    Level* pLevel;
  };

  // Bytes for a name and a value of a block or two each, with what stands around them.
  static constexpr std::size_t kRoom = 4 * BlocksOfText::kBytes;

  static Level LevelOf(const ArrayValue& elements) {
    const UnsafeJSONValue* const pFirst = Items::Data(elements.vValues);
    return {pFirst, pFirst + Items::Count(elements.vValues), nullptr, 0, false,
            false,  !Items::AreHandedOut(elements.vValues)};
  }
  static Level LevelOf(const ObjectValue& object) {
    if (!object.bSorted) object.Sort();  // every member's nNameIndex leads to its name
    Level level = LevelOf(object.avValues);
    level.pNames = Items::Data(object.vNameMap);
    level.nNames = Items::Count(object.vNameMap);
    level.bObject = true;
    level.bNamesAsParsed = !Items::AreHandedOut(object.vNameMap);
    return level;
  }

  // All functions that write at p return the place behind, or null when they met an empty value.
  QXRECORDSET_HOT char* Nested(char* p, Position& at, const JSONValue& value) {
    const CompositeValue& container = *value.pComposite;
    if (value.eType == jtNone) return Stop(p);
    switch (Storage::KindOf(container)) {
      case Storage::Kind::kArray:
        return Enter(p, at, LevelOf(static_cast<const ArrayValue&>(container)));
      case Storage::Kind::kObject:
        return Enter(p, at, LevelOf(static_cast<const ObjectValue&>(container)));
      default:
        return Foreign(p, container);
    }
  }

  // The container becomes the innermost level; without elements it is written at once.
  QXRECORDSET_HOT char* Enter(char* p, Position& at, const Level& level) {
    *p++ = level.Open();
    if (level.pNext == level.pEnd) {
      *p++ = level.Close();
      *p++ = ',';
      return p;
    }
    if (at.pLevel != nullptr) at.pLevel->pNext = at.pNext;
    levels_.Push(level);
    Resume(at);
    return p;
  }
  QXRECORDSET_HOT char* Leave(char* p, Position& at) {
    p[-1] = at.pLevel->Close();
    *p++ = ',';
    levels_.Pop();
    if (levels_.IsEmpty()) {
      at.pLevel = nullptr;
    } else {
      Resume(at);
    }
    return p;
  }
  QXRECORDSET_HOT void Resume(Position& at) {
    at.pLevel = &levels_.Innermost();
    at.pNext = at.pLevel->pNext;
    at.pEnd = at.pLevel->pEnd;
  }

  [[gnu::noinline]] char* Foreign(char* p, const CompositeValue& container) {
    Note(p);
    Cut();
    const bool bWritten = container.Serialize(output_);
    nText_ = output_.size();
    if (!bWritten) return nullptr;
    p = Continue();
    *p++ = ',';
    return p;
  }

  char* Stop(const char* p) {
    Note(p);
    return nullptr;
  }

  QXRECORDSET_HOT char* Name(char* p, const Level& level, const JSONValue& value) {
    const auto nName = static_cast<std::uint32_t>(value.nNameIndex);
    const ObjectValue::NameMap* pName = nName < level.nNames ? level.pNames + nName : nullptr;
    char* pBehind = Usually(pName != nullptr) ? Block(p, pName->pName) : nullptr;
    if (!Usually(pBehind != nullptr)) pBehind = OtherName(p, pName, level.bNamesAsParsed);
    *pBehind = ':';
    return pBehind + 1;
  }
  [[gnu::noinline]] char* OtherName(char* p, const ObjectValue::NameMap* pName, bool bAsParsed) {
    if (pName == nullptr || pName->pName == nullptr) return Quoted(p, {});
    if (!bAsParsed) return Quoted(p, pName->pName);
    return Quoted(p, {pName->pName, static_cast<std::size_t>(pName->nLength)});
  }

  QXRECORDSET_HOT char* Scalar(char* p, const JSONValue& value, bool bAsParsed) {
    switch (value.eType) {
      case jtString: {
        char* const pBehind = Block(p, value.pText);
        p = pBehind != nullptr ? pBehind : OtherString(p, value, bAsParsed);
        break;
      }
      case jtInteger:
      case jtDouble:
        p = Number(p, value, bAsParsed);
        break;
      case jtBoolean:
        p = Boolean(p, value.pText != nullptr && *value.pText == 't');
        break;
      case jtNone:
        return Stop(p);
      default:
        WriteWord(p, ReadWord<std::uint32_t>("null"));
        p += 4;
        break;
    }
    *p = ',';
    return p + 1;
  }

  // A text of less than a block that needs no escape, in quotes; null when it is another one. Up to
  // its NUL it is the string, whatever length the value has.
  QXRECORDSET_HOT char* Block(char* p, const char* pText) {
    if (!blocks_.BeginAt(pText)) return nullptr;
    const Block16 block = Block16::Load(pText);
    block.Store(p + 1);
    const std::uint32_t nStops = block.NeedsEscape();
    if (nStops == 0) return nullptr;
    const unsigned nText = LowestBit(nStops);
    if (pText[nText] != '\0') return nullptr;
    *p = '"';
    p += nText + 1;
    *p = '"';
    return p + 1;
  }
  [[gnu::noinline]] char* OtherString(char* p, const JSONValue& value, bool bAsParsed) {
    return Quoted(p, StringText(value, bAsParsed));
  }

  // No byte of a number needs an escape. One that is shorter than two blocks was not cut off; of
  // one that was handed out the text says how long it is.
  QXRECORDSET_HOT char* Number(char* p, const JSONValue& value, bool bAsParsed) {
    if (!blocks_.BeginAt(value.pText)) return OtherNumber(p, value, bAsParsed);
    const auto nText =
        bAsParsed ? static_cast<std::uint32_t>(value.nLength) : CanonicalLength(value.pText);
    const bool bWhole = bAsParsed || (nText != 0 && !IsRealByte(value.pText[nText]));
    if (nText >= BlocksOfText::kBytes - 1 || !bWhole) return OtherNumber(p, value, bAsParsed);
    Block16::Load(value.pText).Store(p);
    Block16::Load(value.pText + Block16::kBytes).Store(p + Block16::kBytes);
    return p + nText;
  }
  [[gnu::noinline]] char* OtherNumber(char* p, const JSONValue& value, bool bAsParsed) {
    const std::string_view text = NumberText(value, bAsParsed);
    p = Room(p, text.size() + kRoom);
    CopyPlain(text, p);
    return p + text.size();
  }

  static char* Boolean(char* p, bool bTrue) {
    WriteWord(p, ReadWord<std::uint64_t>(bTrue ? "true   " : "false  "));
    return p + (bTrue ? 4 : 5);
  }

  QXRECORDSET_HOT char* Quoted(char* p, std::string_view text) {
    p = Room(p, text.size() + kRoom);
    *p++ = '"';
    if (CopyPlain(text, p)) {
      p += text.size();
    } else {
      p = Escaped(p, text);
    }
    *p++ = '"';
    return p;
  }

  // Up to the first NUL, with escapes.
  char* Escaped(const char* p, std::string_view text) {
    const auto nAt = static_cast<std::size_t>(p - output_.data());
    const std::size_t nEnd = WriteEscaped(output_, nAt, text, kRoom);
    pLimit_ = output_.data() + output_.size();
    return output_.data() + nEnd;
  }

  // A place for nBytes more behind the text that ends at p.
  QXRECORDSET_HOT char* Room(char* p, std::size_t nBytes = kRoom) {
    return Usually(static_cast<std::size_t>(pLimit_ - p) >= nBytes) ? p : MoreRoom(p, nBytes);
  }
  [[gnu::noinline]] char* MoreRoom(const char* p, std::size_t nBytes) {
    Note(p);
    MakeRoom(output_, nText_, nBytes);
    pLimit_ = output_.data() + output_.size();
    return output_.data() + nText_;
  }

  // Between the text in the room and the string as others see it. The writing functions leave
  // nText_ behind: it is where the text is cut when memory runs out.
  void Note(const char* p) { nText_ = static_cast<std::size_t>(p - output_.data()); }
  void Cut() { output_.resize(nText_); }
  char* Continue() { return MoreRoom(output_.data() + nText_, kRoom); }

  std::string& output_;
  const BlocksOfText blocks_;
  std::size_t nText_;       // bytes of text that are certain
  char* pLimit_ = nullptr;  // the end of the room
  Levels<Level> levels_;
};

// What a message's text may become longer by, so that its room need not grow for it.
constexpr std::size_t kMayGrow = 512;

}  // namespace

bool JSONValue::Serialize(std::string& output) const {
  if (eType == jtNone) {
    return false;
  }
  if (pComposite == nullptr) {
    TreeWriter(output, {}).WriteScalar(*this);
    return true;
  }
  if (typeid(*this) != typeid(Message)) return pComposite->Serialize(output);
  // The text of a document is about as long as the text it was read from.
  const Message& message = static_cast<const Message&>(*this);
  MakeCapacity(output, output.size(),
               static_cast<std::size_t>(message.pEnd - message.pStart) + kMayGrow);
  const BlocksOfText blocks(message.pStart, message.pEnd);
  switch (Storage::KindOf(*pComposite)) {
    case Storage::Kind::kArray:
      return TreeWriter(output, blocks).Write(static_cast<const ArrayValue&>(*pComposite));
    case Storage::Kind::kObject:
      return TreeWriter(output, blocks).Write(static_cast<const ObjectValue&>(*pComposite));
    default:
      return pComposite->Serialize(output);
  }
}

bool ArrayValue::Serialize(std::string& output) const {
  return TreeWriter(output, {}).Write(*this);
}
bool ObjectValue::Serialize(std::string& output) const {
  return TreeWriter(output, {}).Write(*this);
}

}  // namespace JSON
