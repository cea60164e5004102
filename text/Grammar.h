// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The grammar of the accepted JSON, once for all readers of it: the tree parser, which rewrites its
// text, and the record set loader, which only reads it. A reader calls ReadObject or ReadArray with
// a sink, an object whose functions read what lies between the punctuation:
//
//   object sink:  sink.Expects(p)          whether the expected name stands at p, behind its quote,
//                                          with a quote and a colon; 32 bytes are left there
//                 p = sink.AcceptExpected(p)   reads it; the position behind the colon
//                 p = sink.Name(p)         reads any name; p on its opening quote
//                 p = sink.Value(p, c)     reads the value; c is its first byte
//                 sink.Complete()          the members are all there
//   array sink:   p = sink.Element(p, c)   reads an element; c is its first byte. At a comma or a
//                                          bracket it changes nothing
//                 sink.Missing()           a comma or bracket stands where an element should begin
//   both:         sink.Indent()            a number that TextEnd::SkipIndent keeps
//
// Value and Element may call ReadValue, which calls a function of the sink for each kind of value:
//
//                 p = sink.String(p), sink.Number(p), sink.Nested(p)
//                 p = sink.Literal(p, pNext)   a literal that ends at pNext
//                 sink.NoValue(p)              no value begins at p; null
//
// All other functions take the position to read and return the position behind what they read, or
// null for a failure; Text::pStop and Text::eFault then hold where and what it was. Where a text
// may break off, or an element be missing, is decided here and nowhere else.
//
// A position is never beyond the end of the text: it moves by one only over a byte that was read
// and is no NUL, and TextEnd::Peek gives a NUL at the end. More than one byte is read only where
// TextEnd::Reaches allows it: names, values and indentation are compared in blocks there.
//
// The loops are inline and work on copies, of the text's end and in the sinks, so that all of it
// can be kept in registers. For that a sink is a local variable, its usual functions are inline,
// and its rare functions belong to another object.

#ifndef QXRECORDSET_TEXT_GRAMMAR_H
#define QXRECORDSET_TEXT_GRAMMAR_H

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/ExpectedName.h"
#include "text/Fault.h"
#include "text/Scan.h"

namespace JSON {

// Where a text ends, and what follows from it. Of a terminated text, such as a std::string holds,
// the byte at pEnd may be read and is a NUL: that saves a comparison per byte.
template <typename CharType, bool bTerminated>
class TextEnd {
 public:
  using Char = CharType;

  Char* pEnd;  // one past the last byte

  // The byte at p, or a NUL when nothing is left. Outside of strings a NUL ends the text, too.
  char Peek(const Char* p) const { return !bTerminated && p == pEnd ? '\0' : *p; }
  bool AtEnd(const Char* p) const { return Peek(p) == '\0'; }

  // Whether more than kReach bytes are left at p: two blocks, or a block behind a quote.
  bool Reaches(const Char* p) const { return reinterpret_cast<std::uintptr_t>(p) < nLimit_; }

  // The first byte at or behind p that is no white space. Most places where white space may stand
  // have none, or a single blank: these two cases are decided here.
  Char* SkipSpace(Char* p) const { return IsSpace(Peek(p)) ? SkipGap(p) : p; }

  // The same. REQUIRES: white space at p.
  Char* SkipGap(Char* p) const {
    assert(IsSpace(Peek(p)));
    ++p;
    return IsSpace(Peek(p)) ? SkipSpaceRun(p, pEnd) : p;
  }

  // The same where a member or an element is due, for which white space may be a line break and
  // blanks, or tabs. The members of one container have the same indentation, so the number of
  // blanks is compared with that of the line before instead of counted: the next step does not
  // depend on the result of a count, which makes the parse of an indented document take a quarter
  // to a third less time. REQUIRES: a byte at p.
  QXRECORDSET_HOT Char* SkipIndent(Char* p, std::uint32_t& nBlanks) const {
    if (*p != '\n') return SkipSpace(p);
    Char* const pLine = p + 1;
    if (static_cast<std::uintptr_t>(pEnd - pLine) > kReach + nBlanks) {
      const bool bBlanks =
          Usually(*pLine != '\t') ? AreAll<' '>(pLine, nBlanks) : AreTabs(pLine, nBlanks);
      if (bBlanks && pLine[nBlanks] > ' ') return pLine + nBlanks;
    }
    Char* const pItem = SkipSpaceRun(pLine, pEnd);
    nBlanks = static_cast<std::uint32_t>(pItem - pLine) % kReach;
    return pItem;
  }

  // Moves p, where a member is due, to the quote of its name when it is one, and Reaches. Else p
  // may be moved over white space.
  QXRECORDSET_HOT bool SkipToQuote(Char*& p, std::uint32_t& nBlanks) const {
    if (!Reaches(p)) return false;
    if (Usually(*p == '"')) return true;
    p = SkipIndent(p, nBlanks);
    return Reaches(p) && *p == '"';
  }

  // Moves p, where a value ends, behind the comma that follows, or to what stands in its place.
  QXRECORDSET_HOT bool SkipComma(Char*& p) const {
    if (Peek(p) != ',') {
      p = SkipSpace(p);
      if (Peek(p) != ',') return false;
    }
    ++p;
    return true;
  }

 protected:
  explicit TextEnd(Char* p) : pEnd(p), nLimit_(LimitOf(p)) {}

 private:
  static constexpr std::uintptr_t kReach = std::uintptr_t{2} * Block16::kBytes;

  // Whether so many bytes at p are all c. REQUIRES: kReach bytes at p, and fewer are asked for.
  template <char c>
  QXRECORDSET_HOT static bool AreAll(const Char* p, std::uint32_t nBytes) {
    const std::uint32_t nFront = Block16::Load(p).Equals(c);
    const std::uint32_t nBack = Block16::Load(p + Block16::kBytes).Equals(c);
    const std::uint32_t nExpected = (std::uint32_t{1} << nBytes) - 1;
    return ((nFront | nBack << Block16::kBytes) & nExpected) == nExpected;
  }
  [[gnu::noinline]] static bool AreTabs(const Char* p, std::uint32_t nBytes) {
    return AreAll<'\t'>(p, nBytes);
  }

  // A number, because a short text may begin less than kReach bytes behind the first address.
  static std::uintptr_t LimitOf(const Char* pEnd) {
    const auto nEnd = reinterpret_cast<std::uintptr_t>(pEnd);
    return nEnd > kReach ? nEnd - kReach : 0;
  }

  std::uintptr_t nLimit_;
};

// The text that is read, and what all readers of it share.
template <typename CharType, bool bTerminated = false>
struct Text : TextEnd<CharType, bTerminated> {
  using Char = CharType;
  using End = TextEnd<CharType, bTerminated>;

  Char* pStop = nullptr;           // where the last failure was found
  int nMayOpen;                    // containers that may still be opened, one within the other
  Fault eFault = Fault::kUnknown;  // what the last failure was

  Text(Char* pTextEnd, int nMostNested) : End(pTextEnd), nMayOpen(nMostNested) {}

  const End& Limits() const { return *this; }

  // Out of line where the members' loop has no register to spare for it (the loader of cells on
  // x86; the tree's reader is better off with the few bytes inline).
  Char* Fail(Char* p, Fault fault) {
    if constexpr (bTerminated) return FailOutOfLine(p, fault);
    return Note(p, fault);
  }

 private:
  [[gnu::noinline, gnu::cold]] Char* FailOutOfLine(Char* p, Fault fault) { return Note(p, fault); }
  Char* Note(Char* p, Fault fault) {
    pStop = p;
    eFault = fault;
    return nullptr;
  }
};

// Counts one open container for as long as it lives.
template <typename Text>
class Nesting {
 public:
  explicit Nesting(Text& text) : text_(text) { --text_.nMayOpen; }
  ~Nesting() { ++text_.nMayOpen; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

  bool TooDeep() const { return text_.nMayOpen < 0; }

 private:
  Text& text_;
};

// Whether a container begins with this byte.
inline bool BeginsContainer(char c) { return c == '{' || c == '['; }

// A literal, matched as a prefix: what follows is judged by the caller. Null for no match.
template <typename End>
[[gnu::noinline]] typename End::Char* FindLastLiteral(End end, typename End::Char* p) {
  char aLast[kLongestLiteral] = {};
  const std::ptrdiff_t nLeft = end.pEnd - p;
  std::memcpy(aLast, p, std::min(static_cast<std::size_t>(nLeft), sizeof aLast));
  const unsigned nLength = LiteralLength(aLast);
  return nLength != 0 ? p + nLength : nullptr;
}
template <typename End>
QXRECORDSET_HOT typename End::Char* FindLiteral(End end, typename End::Char* p) {
  if (!end.Reaches(p)) return FindLastLiteral(end, p);
  const unsigned nLength = LiteralLength(p);
  return nLength != 0 ? p + nLength : nullptr;
}

// A value, by its kind. Its first byte, at p, is c: a NUL where the text ends.
template <typename End, typename Sink>
QXRECORDSET_HOT typename End::Char* ReadValue(End end, typename End::Char* p, char c, Sink& sink) {
  if (c == '"') return sink.String(p);
  if (Usually(IsDigit(c)) || IsIntegerByte(c)) return sink.Number(p);
  if (BeginsContainer(c)) return sink.Nested(p);
  typename End::Char* const pNext = FindLiteral(end, p);
  return pNext != nullptr ? sink.Literal(p, pNext) : sink.NoValue(p);
}

// The name of a member that is not the expected one, and its colon. Its first byte is at p.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadOtherName(Text& text, typename Text::Char* p, Sink& sink) {
  if (*p != '"') return text.Fail(p, Fault::kName);
  p = sink.Name(p);
  if (p == nullptr) return nullptr;
  p = text.SkipSpace(p);
  return text.Peek(p) == ':' ? p + 1 : text.Fail(p, Fault::kColon);
}

// Members up to the closing brace. p stands where the first of them is due.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadMembers(Text& text, typename Text::Char* p, Sink& sink) {
  const typename Text::End end = text.Limits();
  do {
    char c = '\0';
    if (Usually(end.SkipToQuote(p, sink.Indent()) && sink.Expects(p + 1))) {
      p = sink.AcceptExpected(p + 1);
      c = *p;
    } else {
      p = end.SkipSpace(p);
      if (end.AtEnd(p)) {
        sink.Complete();
        return p;
      }
      p = ReadOtherName(text, p, sink);
      if (p == nullptr) return nullptr;
      c = end.Peek(p);
    }
    if (!Usually(!IsSpace(c))) {
      p = end.SkipGap(p);
      c = end.Peek(p);
    }
    p = sink.Value(p, c);
    if (p == nullptr) return nullptr;
  } while (end.SkipComma(p));
  if (end.Peek(p) != '}') return text.Fail(p, Fault::kInObject);
  sink.Complete();
  return p + 1;
}

// Elements up to the closing bracket. p stands where the first of them is due.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadElements(Text& text, typename Text::Char* p, Sink& sink) {
  const typename Text::End end = text.Limits();
  do {
    char c = *p;
    if (!Usually(!IsSpace(c))) {
      p = end.SkipIndent(p, sink.Indent());
      c = end.Peek(p);
    }
    typename Text::Char* const pNext = sink.Element(p, c);
    if (pNext != nullptr) {
      p = pNext;
    } else {
      if (end.Peek(p) != ',' && end.Peek(p) != ']') return nullptr;
      sink.Missing();
    }
    if (!end.SkipComma(p)) return end.Peek(p) == ']' ? p + 1 : text.Fail(p, Fault::kInArray);
  } while (!end.AtEnd(p));
  return p;
}

// An object. REQUIRES: '{' at p.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadObject(Text& text, typename Text::Char* p, Sink& sink) {
  assert(*p == '{');
  const Nesting<Text> nesting(text);
  if (nesting.TooDeep()) return text.Fail(p, Fault::kDepth);
  if (text.AtEnd(p + 1)) return text.Fail(p + 1, Fault::kInObject);
  p = text.SkipIndent(p + 1, sink.Indent());
  return text.Peek(p) == '}' ? p + 1 : ReadMembers(text, p, sink);
}

// An array. REQUIRES: '[' at p.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadArray(Text& text, typename Text::Char* p, Sink& sink) {
  assert(*p == '[');
  const Nesting<Text> nesting(text);
  if (nesting.TooDeep()) return text.Fail(p, Fault::kDepth);
  if (text.AtEnd(p + 1)) return text.Fail(p + 1, Fault::kInArray);
  p = text.SkipIndent(p + 1, sink.Indent());
  if (text.AtEnd(p)) return p;
  return *p == ']' ? p + 1 : ReadElements(text, p, sink);
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_GRAMMAR_H
