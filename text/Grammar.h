// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The grammar of the accepted JSON, once for every reader of it: the tree parser, which rewrites
// its text, and the record set loader, which only reads it. A reader walks the two kinds of
// containers with ReadObject and ReadArray and hands in a sink that takes what stands between the
// punctuation:
//
//   object sink:  p = sink.Name(p)      reads the name; p on its opening quote
//                 p = sink.Value(p)     reads the value; white space before it is skipped
//                 sink.Complete()       the members are all there
//   array sink:   p = sink.Element(p)   reads an element; white space before it is skipped
//                 sink.Missing()        a comma or bracket stands where an element should begin
//   both:         sink.Shortcut(p)      p where a member or an element is due: the sink may read as
//                                       many as it likes itself, commas included. It moves p to
//                                       where it stopped and tells what is due there.
//
// All other functions take the position to read and return the position behind what they read, or
// null for a failure; Text::pStop then holds the position where it was found. Where a text may
// break off, or an element be missing, is decided here and nowhere else.
//
// A position is never beyond the end of the text: it moves by one only over a byte that was looked
// at and is no NUL, and Text::Peek gives a NUL at the end.

#ifndef QXRECORDSET_TEXT_GRAMMAR_H
#define QXRECORDSET_TEXT_GRAMMAR_H

#include <cstddef>
#include <cstring>

#include "text/Scan.h"

namespace JSON {

// The text that is read, and what all readers of it share. Of a terminated text, such as a
// std::string holds, the byte at pEnd may be read and is a NUL: that saves a comparison per byte.
template <typename CharType, bool bTerminated = false>
struct Text {
  using Char = CharType;

  Char* pEnd;             // one past the last byte
  Char* pStop = nullptr;  // where the last failure was found
  int nMayOpen;           // containers that may still be opened, one within the other

  Text(Char* pTextEnd, int nMostNested) : pEnd(pTextEnd), nMayOpen(nMostNested) {}

  // The byte at p, or a NUL when nothing is left. Outside of strings a NUL ends the text, too.
  char Peek(const Char* p) const { return !bTerminated && p == pEnd ? '\0' : *p; }
  bool AtEnd(const Char* p) const { return Peek(p) == '\0'; }

  // The first byte at or behind p that is no white space. Most places where white space may stand
  // have none, or a single blank: these two cases are decided here.
  Char* SkipSpace(Char* p) const {
    if (!IsSpace(Peek(p))) return p;
    ++p;
    return IsSpace(Peek(p)) ? SkipSpaceRun(p, pEnd) : p;
  }

  Char* Fail(Char* p) {
    pStop = p;
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

// What a shortcut leaves to be read: another member or element; the comma or bracket behind one
// that was read (or nothing more, when that one failed and p is null); or nothing, since p stands
// behind the closing bracket.
enum class Due { kItem, kSeparator, kNothing };

// Members up to the closing brace. p stands where the first of them is due.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadMembers(Text& text, typename Text::Char* p, Sink& sink) {
  for (;;) {
    const Due due = sink.Shortcut(p);
    if (due == Due::kNothing) {
      sink.Complete();
      return p;
    }
    if (due == Due::kItem) {
      p = text.SkipSpace(p);
      if (text.AtEnd(p)) {
        sink.Complete();
        return p;
      }
      if (*p != '"') return text.Fail(p);
      p = sink.Name(p);
      if (p == nullptr) return nullptr;
      p = text.SkipSpace(p);
      if (text.Peek(p) != ':') return text.Fail(p);
      p = sink.Value(text.SkipSpace(p + 1));
    }
    if (p == nullptr) return nullptr;
    p = text.SkipSpace(p);
    const char cBehind = text.Peek(p);
    if (cBehind != ',') {
      if (cBehind != '}') return text.Fail(p);
      sink.Complete();
      return p + 1;
    }
    ++p;
  }
}

// An object. p stands on '{'.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadObject(Text& text, typename Text::Char* p, Sink& sink) {
  const Nesting<Text> nesting(text);
  if (nesting.TooDeep()) return text.Fail(p);
  ++p;
  if (text.AtEnd(p)) return text.Fail(p);
  p = text.SkipSpace(p);
  return text.Peek(p) == '}' ? p + 1 : ReadMembers(text, p, sink);
}

// Elements up to the closing bracket. p stands on '['.
template <typename Text, typename Sink>
QXRECORDSET_HOT typename Text::Char* ReadArray(Text& text, typename Text::Char* p, Sink& sink) {
  const Nesting<Text> nesting(text);
  if (nesting.TooDeep()) return text.Fail(p);
  ++p;
  if (text.AtEnd(p)) return text.Fail(p);
  p = text.SkipSpace(p);
  if (text.AtEnd(p)) return p;
  if (*p == ']') return p + 1;
  for (;;) {
    const typename Text::Char* const pDue = p;
    const Due due = sink.Shortcut(p);
    if (due == Due::kNothing) return p;
    if (due == Due::kItem) {
      if (p != pDue && text.AtEnd(p)) return p;
      p = text.SkipSpace(p);
      if (text.Peek(p) == ',' || text.Peek(p) == ']') {
        sink.Missing();
      } else {
        p = sink.Element(p);
      }
    }
    if (p == nullptr) return nullptr;
    p = text.SkipSpace(p);
    if (text.Peek(p) == ']') return p + 1;
    if (text.Peek(p) != ',') return text.Fail(p);
    ++p;
    if (text.AtEnd(p)) return p;
  }
}

// A literal, matched as a prefix: the caller checks what follows. Null for no match.
template <typename Text>
typename Text::Char* ReadLiteral(Text& text, typename Text::Char* p) {
  const std::ptrdiff_t nLeft = text.pEnd - p;
  char aLast[kLongestLiteral] = {};
  if (nLeft < kLongestLiteral) std::memcpy(aLast, p, static_cast<std::size_t>(nLeft));
  const unsigned nLength = LiteralLength(nLeft < kLongestLiteral ? aLast : p);
  return nLength != 0 ? p + nLength : text.Fail(p);
}

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_GRAMMAR_H
