// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Sentences for refused texts.

#include "text/Fault.h"

#include <algorithm>
#include <climits>

#include "text/Bytes.h"

namespace JSON {
namespace {

bool IsNumberByte(char c) { return kNumberBytes[c] != NumberByte::kNone; }

// The last byte of `text` that is no white space; a NUL when there is none.
char LastMark(std::string_view text) {
  while (!text.empty() && IsSpace(text.back())) {
    text.remove_suffix(1);
  }
  return text.empty() ? '\0' : text.back();
}

// Whether nStop is the last byte of a number that the end of the text cuts off: a reader leaves
// that byte.
bool IsCutNumber(std::string_view text, std::size_t nStop) {
  if (nStop + 1 != text.size()) return false;
  std::size_t nBegin = text.size();
  while (nBegin != 0 && IsNumberByte(text[nBegin - 1])) {
    --nBegin;
  }
  if (nBegin == text.size() || kNumberBytes[text[nBegin]] != NumberByte::kInteger) return false;
  const char cBefore = LastMark(text.substr(0, nBegin));
  return cBefore == ':' || cBefore == ',' || cBefore == '[';
}

const char* MissingEnd(std::string_view text, Fault fault) {
  switch (fault) {
    case Fault::kUnknown:
      return "the text ends too soon";
    case Fault::kNoText:
    case Fault::kDocument:
    case Fault::kObject:
      return "there is no document: expected '{' or '['";
    case Fault::kInArray:
      return "the text ends inside an array";
    case Fault::kValue:
      if (LastMark(text) != ':') return "the text ends inside an array";
      break;
    default:
      break;
  }
  return "the text ends inside an object";
}

const char* BadValue(char c) {
  switch (c) {
    case '\'':
      return "expected a value; texts stand in double quotes";
    case '.':
      return "expected a value; a number begins with a digit or a sign";
    case 't':
    case 'f':
    case 'n':
      return "expected a value; the words are true, false and null";
    default:
      return "expected a value";
  }
}

const char* BadName(char cBefore, char c) {
  if (cBefore != ',') return "expected a name in double quotes or '}'";
  return c == '}' ? "a member has to follow the comma" : "expected a name in double quotes";
}

const char* BadDocument(std::string_view rest) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  return rest.substr(0, kByteOrderMark.size()) == kByteOrderMark
             ? "a byte order mark stands in front of the document"
             : "expected '{' or '['";
}

// What is wrong with the byte at nStop.
const char* Unexpected(std::string_view text, std::size_t nStop, Fault fault) {
  const char c = text[nStop];
  if (c == '\0') return "a NUL byte ends the text here";
  switch (fault) {
    case Fault::kDocument:
      return BadDocument(text.substr(nStop));
    case Fault::kObject:
      return "expected '{': an array is no record set";
    case Fault::kName:
      return BadName(LastMark(text.substr(0, nStop)), c);
    case Fault::kColon:
      return "expected ':' behind the name";
    case Fault::kValue:
      return BadValue(c);
    case Fault::kInObject:
      return "expected ',' or '}'";
    case Fault::kInArray:
      return "expected ',' or ']'";
    case Fault::kDepth:
      return "nested more than 1024 levels deep";
    default:
      return "the text goes wrong here";
  }
}

}  // namespace

Explanation Explain(std::string_view text, std::size_t nStop, Fault fault) {
  if (fault == Fault::kNoText) return {0, "there is no text"};
  if (fault == Fault::kTooLong) return {INT_MAX, "a text can have 2 GB at most"};
  if (fault == Fault::kString) return {nStop - 1, "the string that begins here has no end"};
  nStop = std::min(nStop, text.size());
  if (nStop == text.size() || IsCutNumber(text, nStop)) {
    return {text.size(), MissingEnd(text.substr(0, nStop), fault)};
  }
  return {nStop, Unexpected(text, nStop, fault)};
}

LineAndColumn Locate(std::string_view text, std::size_t nOffset) {
  text = text.substr(0, nOffset);
  const auto nBreaks = std::count(text.begin(), text.end(), '\n');
  const std::size_t nLineBegin = text.rfind('\n') + 1;  // npos + 1 is 0
  return {static_cast<std::size_t>(nBreaks) + 1, text.size() - nLineBegin + 1};
}

}  // namespace JSON
