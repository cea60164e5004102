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
#include "text/Escape.h"
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

// Writes into room inside the string, which is cut to the text in the end. A comma follows each
// element at once; the bracket that closes a container takes the place of the last one.
class TreeWriter {
 public:
  explicit TreeWriter(std::string& output) : output_(output) { Continue(); }
  ~TreeWriter() { Cut(); }
  TreeWriter(const TreeWriter&) = delete;
  TreeWriter& operator=(const TreeWriter&) = delete;

  // Writes a container of ours with everything below it; false when it met an empty value.
  template <typename Container>
  bool Write(const Container& container) {
    Open(container);
    while (WriteElements()) {
      if (levels_.IsEmpty()) return true;
    }
    return false;
  }

  void WriteScalar(const JSONValue& value) { pNext_ = Scalar(pNext_, value, false); }

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
  };

  // Bytes for what stands between two texts: quotes, a colon, a comma, a literal.
  static constexpr std::size_t kPunctuation = 16;

  void Open(const ArrayValue& array) { Open(array, nullptr, '['); }
  void Open(const ObjectValue& object) {
    if (!object.bSorted) object.Sort();  // every member's nNameIndex leads to its name
    Open(object.avValues, &object, '{');
  }
  void Open(const ArrayValue& elements, const ObjectValue* pObject, char cBracket) {
    const UnsafeJSONValue* const pFirst = Items::Data(elements.vValues);
    Level level{pFirst, pFirst + Items::Count(elements.vValues), nullptr, 0, pObject != nullptr,
                false,  !Items::AreHandedOut(elements.vValues)};
    if (pObject != nullptr) {
      level.pNames = Items::Data(pObject->vNameMap);
      level.nNames = Items::Count(pObject->vNameMap);
      level.bNamesAsParsed = !Items::AreHandedOut(pObject->vNameMap);
    }
    pNext_ = Room(pNext_, 1);
    *pNext_++ = cBracket;
    levels_.Push(level);
  }

  void Close() {
    const Level& level = levels_.Innermost();
    const char cBracket = level.bObject ? '}' : ']';
    levels_.Pop();
    pNext_ = Room(pNext_, 2);
    if (pNext_[-1] == ',') --pNext_;  // there is no other way for a comma to stand here
    *pNext_++ = cBracket;
    if (!levels_.IsEmpty()) *pNext_++ = ',';
  }

  // Writes elements up to the end of the innermost level, or up to a container, which is then the
  // innermost. False when it met an empty value.
  bool WriteElements() {
    Level& level = levels_.Innermost();
    const UnsafeJSONValue* pValue = level.pNext;
    const UnsafeJSONValue* const pEnd = level.pEnd;
    const bool bObject = level.bObject;
    const bool bAsParsed = level.bAsParsed;
    char* p = pNext_;
    for (; pValue != pEnd; ++pValue) {
      if (bObject) p = Name(p, level, *pValue);
      if (pValue->eType == jtNone || pValue->pComposite != nullptr) {
        pNext_ = p;
        level.pNext = pValue + 1;
        return pValue->eType != jtNone && WriteContainer(*pValue->pComposite);
      }
      p = Scalar(p, *pValue, bAsParsed);
      *p++ = ',';
    }
    pNext_ = p;
    Close();
    return true;
  }

  bool WriteContainer(const CompositeValue& container) {
    switch (Storage::KindOf(container)) {
      case Storage::Kind::kArray:
        Open(static_cast<const ArrayValue&>(container));
        return true;
      case Storage::Kind::kObject:
        Open(static_cast<const ObjectValue&>(container));
        return true;
      default:
        return WriteForeign(container);
    }
  }

  bool WriteForeign(const CompositeValue& container) {
    Cut();
    const bool bWritten = container.Serialize(output_);
    Continue();
    if (bWritten) {
      pNext_ = Room(pNext_, 1);
      *pNext_++ = ',';
    }
    return bWritten;
  }

  char* Name(char* p, const Level& level, const JSONValue& value) {
    const auto nName = static_cast<std::uint32_t>(value.nNameIndex);
    std::string_view name;
    if (nName < level.nNames && level.pNames[nName].pName != nullptr) {
      const ObjectValue::NameMap& entry = level.pNames[nName];
      name = level.bNamesAsParsed
                 ? std::string_view(entry.pName, static_cast<std::size_t>(entry.nLength))
                 : std::string_view(entry.pName);
    }
    p = Quoted(p, name);
    *p++ = ':';
    return p;
  }

  // What follows each of these writers, up to kPunctuation bytes, needs no further look for room.
  char* Scalar(char* p, const JSONValue& value, bool bAsParsed) {
    switch (value.eType) {
      case jtString:
        return Quoted(p, StringText(value, bAsParsed));
      case jtInteger:
      case jtDouble: {
        const std::string_view text = NumberText(value, bAsParsed);
        p = Room(p, text.size() + kPunctuation);
        CopyPlain(text, p);  // no byte of a number needs an escape
        return p + text.size();
      }
      case jtBoolean:
        return Literal(p, value.pText != nullptr && *value.pText == 't' ? "true" : "false");
      default:
        return Literal(p, "null");
    }
  }

  char* Literal(char* p, std::string_view literal) {
    p = Room(p, literal.size() + kPunctuation);
    std::memcpy(p, literal.data(), literal.size());
    return p + literal.size();
  }

  char* Quoted(char* p, std::string_view text) {
    p = Room(p, text.size() + kPunctuation);
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
    const std::size_t nAt = static_cast<std::size_t>(p - output_.data());
    const std::size_t nEnd = WriteEscaped(output_, nAt, text, kPunctuation);
    pLimit_ = output_.data() + output_.size();
    return output_.data() + nEnd;
  }

  // A place for nBytes more behind the text that ends at p.
  char* Room(char* p, std::size_t nBytes) {
    return static_cast<std::size_t>(pLimit_ - p) >= nBytes ? p : MoreRoom(p, nBytes);
  }
  [[gnu::noinline]] char* MoreRoom(char* p, std::size_t nBytes) {
    const std::size_t nText = static_cast<std::size_t>(p - output_.data());
    pNext_ = p;  // where the text is cut when memory runs out
    MakeRoom(output_, nText, nBytes);
    pLimit_ = output_.data() + output_.size();
    return pNext_ = output_.data() + nText;
  }

  // Between the text in the room and the string as others see it.
  void Cut() { output_.resize(static_cast<std::size_t>(pNext_ - output_.data())); }
  void Continue() {
    pNext_ = output_.data() + output_.size();
    pLimit_ = pNext_;
  }

  std::string& output_;
  char* pNext_ = nullptr;   // where the next byte is written
  char* pLimit_ = nullptr;  // the end of the room
  Levels<Level> levels_;
};

// What a message's text may become longer by, so that its room need not grow for it.
constexpr std::size_t kMayGrow = 256;

}  // namespace

// The text of a document is about as long as the text it was read from.
bool JSONValue::Serialize(std::string& output) const {
  if (eType == jtNone) {
    return false;
  }
  if (pComposite == nullptr) {
    TreeWriter(output).WriteScalar(*this);
    return true;
  }
  if (typeid(*this) == typeid(Message)) {
    const Message& message = static_cast<const Message&>(*this);
    MakeCapacity(output, output.size(),
                 static_cast<std::size_t>(message.pEnd - message.pStart) + kMayGrow);
  }
  return pComposite->Serialize(output);
}

bool ArrayValue::Serialize(std::string& output) const { return TreeWriter(output).Write(*this); }
bool ObjectValue::Serialize(std::string& output) const { return TreeWriter(output).Write(*this); }

}  // namespace JSON
