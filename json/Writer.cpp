// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// JSON::Serialize, the streaming writer: a state machine of a few bits, and a pen that writes
// tokens into the text.
//
// While a container is open, strOutput is longer than the text: the room behind its first nWritten
// bytes is filled token by token, without a call per byte or piece. When the last container closes
// the string is cut to the text, so String() has nothing left to do.

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>
#include <utility>

#include "json/JSONSerialize.h"
#include "text/Digits.h"
#include "text/Escape.h"
#include "text/ShortBytes.h"
#include "text/TextRoom.h"

namespace JSON {
namespace {

// Bytes of a token beside its text: ',' and '"' before it, '"' and ':' behind it.
constexpr std::size_t kPunctuation = 4;

// Room for DoubleToStr: "%g" takes up to 13 bytes and a NUL; a decimal point may be several bytes.
constexpr int kDoubleBytes = 32;

// Levels of nesting that the two stack words hold.
constexpr std::size_t kLevelsPerWord = 32;

}  // namespace

// Writes one token behind the text. The token becomes part of the text with Done(); without it,
// also when memory runs out, the text is as before. The caller makes the room for the token.
class Serialize::Pen {
 public:
  explicit Pen(Serialize& writer)
      : owner(writer), pNext(writer.strOutput.data() + writer.nWritten) {}

  void Byte(char c) { *pNext++ = c; }

  // Without a branch. REQUIRES: nTimes is 0 or 1.
  void ByteIf(std::uint32_t nTimes, char c) {
    *pNext = c;
    pNext += nTimes;
  }

  void Raw(std::string_view text) {
    MoveBytes(pNext, text.data(), text.size());
    pNext += text.size();
  }

  // False when `text` needs escapes; the pen stays where it is then.
  QXRECORDSET_HOT bool Plain(std::string_view text) {
    if (!CopyPlain(text, pNext)) return false;
    pNext += text.size();
    return true;
  }

  // Makes its own room, and leaves enough for the punctuation behind the text.
  void Escaped(std::string_view text) {
    std::string& output = owner.strOutput;
    const auto nAt = static_cast<std::size_t>(pNext - output.data());
    const std::size_t nEnd = WriteEscaped(output, nAt, text, kPunctuation);
    pNext = output.data() + nEnd;
  }

  template <typename Integer>
  void Decimal(Integer value) {
    pNext = WriteDecimal(value, pNext);
  }

  void Double(double value) { pNext = DoubleToStr(value, pNext, kDoubleBytes); }

  void Done() { owner.nWritten = static_cast<std::size_t>(pNext - owner.strOutput.data()); }

 private:
  Serialize& owner;
  char* pNext;
};

Serialize::Serialize(int nReserve) {
  if (nReserve <= 0) return;
  const auto nBytes = static_cast<std::size_t>(nReserve);
  if (nBytes > strOutput.max_size()) throw std::bad_alloc();  // on 32 bits there is less than 2 GB
  strOutput.reserve(nBytes);
}

Serialize& Serialize::operator=(const Serialize& other) {
  Serialize copy(other);
  strOutput.swap(copy.strOutput);
  vOuterObjects.swap(copy.vOuterObjects);
  nFirstStack = copy.nFirstStack;
  nObjectStack = copy.nObjectStack;
  nDepth = copy.nDepth;
  bExpectName = copy.bExpectName;
  bError = copy.bError;
  nWritten = copy.nWritten;
  return *this;
}

const std::string& Serialize::String() const {
  static const std::string strEmpty;
  return bError || nDepth != 0 ? strEmpty : strOutput;
}

// ---- State --------------------------------------------------------------------------------------
//
// Calls are checked with as little as possible. A name can be due only inside an object, so
// bExpectName alone admits N and OC. An error leaves depth 0 and no name due, where everything but
// an opening bracket is out of order anyway.

Serialize& Serialize::Refuse() {
  bError = true;
  nDepth = 0;
  bExpectName = false;
  return *this;
}

// The words of the stacks hold the levels since the last multiple of kLevelsPerWord. The bits of
// the outer levels are saved in vOuterObjects, those of nFirstStack apart: a container that becomes
// the innermost again has just received an element.
Serialize& Serialize::Open(char bracket, bool bObject) {
  if (bExpectName || bError) return Refuse();
  Reserve(kPunctuation);
  Pen pen(*this);
  if (nDepth != 0) {
    if (nDepth % kLevelsPerWord == 0) vOuterObjects.push_back(nObjectStack);
    pen.ByteIf(CommaBeforeElement(), ',');
  }
  pen.Byte(bracket);
  pen.Done();
  ++nDepth;
  nFirstStack = nFirstStack << 1 | 1U;
  nObjectStack = nObjectStack << 1 | (bObject ? 1U : 0U);
  bExpectName = bObject;
  return *this;
}

Serialize& Serialize::Close(char bracket) {
  Reserve(kPunctuation);
  Pen pen(*this);
  pen.Byte(bracket);
  pen.Done();
  --nDepth;
  nFirstStack >>= 1;
  nObjectStack >>= 1;
  if (nDepth == 0) {
    bExpectName = false;
    strOutput.resize(nWritten);  // never longer, so it cannot fail
    return *this;
  }
  if (nDepth % kLevelsPerWord == 0) {
    nObjectStack = vOuterObjects.back();
    vOuterObjects.pop_back();
  }
  ValueDone();
  return *this;
}

inline void Serialize::Reserve(std::size_t nBytes) {
  if (Room() < nBytes) MakeRoom(strOutput, nWritten, nBytes);
}

inline void Serialize::ValueDone() {
  nFirstStack &= ~1U;
  bExpectName = (nObjectStack & 1) != 0;
}

inline void Serialize::TextDone(bool bName) {
  if (bName) {
    bExpectName = false;
  } else {
    ValueDone();
  }
}

// ---- Tokens -------------------------------------------------------------------------------------
//
// N and V are shortcuts for the usual case: in order, room enough, nothing to escape. Everything
// else is left to WriteText, as their last act, so that the shortcut keeps all it has in registers.

Serialize& Serialize::OO() { return Open('{', true); }

Serialize& Serialize::AO() { return Open('[', false); }

Serialize& Serialize::OC() { return bExpectName ? Close('}') : Refuse(); }

Serialize& Serialize::AC() {
  return nDepth != 0 && (nObjectStack & 1) == 0 ? Close(']') : Refuse();
}

template <bool bName>
QXRECORDSET_HOT Serialize& Serialize::WritePlain(const char* pText, std::size_t nLength) {
  if ((bName ? bExpectName : ValueIsDue()) && Room() >= nLength + kPunctuation) {
    Pen pen(*this);
    pen.ByteIf(bName ? CommaBeforeName() : CommaBeforeElement(), ',');
    pen.Byte('"');
    if (pen.Plain({pText, nLength})) {
      pen.Byte('"');
      if (bName) pen.Byte(':');
      pen.Done();
      TextDone(bName);
      return *this;
    }
  }
  return WriteText(pText, nLength, bName);
}

// A name or a string value in any state, with any text.
Serialize& Serialize::WriteText(const char* pText, std::size_t nLength, bool bName) {
  const std::string_view text(pText, nLength);
  if (bName ? !bExpectName : !ValueIsDue()) return Refuse();
  Reserve(text.size() + kPunctuation);
  Pen pen(*this);
  pen.ByteIf(bName ? CommaBeforeName() : CommaBeforeElement(), ',');
  pen.Byte('"');
  if (!pen.Plain(text)) pen.Escaped(text);
  pen.Byte('"');
  pen.ByteIf(bName ? 1 : 0, ':');
  pen.Done();
  TextDone(bName);
  return *this;
}

Serialize& Serialize::N(const char* name) {
  assert(name != nullptr);
  return WritePlain<true>(name, std::strlen(name));
}

Serialize& Serialize::N(std::string_view name) {
  return WritePlain<true>(name.data(), name.size());
}

Serialize& Serialize::V(const char* text) {
  if (text == nullptr) return WriteJson("null");
  return WritePlain<false>(text, std::strlen(text));
}

Serialize& Serialize::V(std::string_view text) {
  return WritePlain<false>(text.data(), text.size());
}

// A value that is no string: `write` writes at most nBytes bytes.
template <typename Write>
Serialize& Serialize::WriteValue(std::size_t nBytes, Write write) {
  if (!ValueIsDue()) return Refuse();
  Reserve(nBytes + kPunctuation);
  Pen pen(*this);
  pen.ByteIf(CommaBeforeElement(), ',');
  write(pen);
  pen.Done();
  ValueDone();
  return *this;
}

template <typename Integer>
Serialize& Serialize::WriteInteger(Integer value) {
  return WriteValue(kMaxDecimal<Integer>, [value](Pen& pen) { pen.Decimal(value); });
}

Serialize& Serialize::V(double value) {
  return WriteValue(kDoubleBytes, [value](Pen& pen) { pen.Double(value); });
}

Serialize& Serialize::V(unsigned long long value) { return WriteInteger(value); }

Serialize& Serialize::V(long long value) { return WriteInteger(value); }

Serialize& Serialize::V(unsigned long value) { return WriteInteger(value); }

Serialize& Serialize::V(long value) { return WriteInteger(value); }

Serialize& Serialize::V(int value) { return WriteInteger(value); }

Serialize& Serialize::WriteJson(std::string_view json) {
  return WriteValue(json.size(), [json](Pen& pen) { pen.Raw(json); });
}

Serialize& Serialize::JS(const char* json) {
  return WriteJson(json == nullptr || *json == '\0' ? "null" : json);
}

Serialize& Serialize::JS_N(const char* json, int length) {
  if (json == nullptr || *json == '\0') return WriteJson("null");
  return WriteJson({json, static_cast<std::size_t>(std::max(length, 0))});
}

void Serialize::AppendString(const char* text) {
  assert(text != nullptr);
  WriteJson(text);
}

}  // namespace JSON
