// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Walking over JSON values.

#include "tools/qxrs/rows/JsonWalk.h"

#include <utility>

#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "text/Escape.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

JsonWalk::JsonWalk(const char* pEnd) : text(pEnd, JSON::kMaxNesting) {}

void JsonWalk::WriteTo(std::string& strText, Style eHow) {
  pOut = &strText;
  eStyle = eHow;
}

// ---- Reading ------------------------------------------------------------------------------------

const char* JsonWalk::Name(const char* p) {
  BeginItem();
  const char* const pNext = String(p);
  bName = pNext != nullptr;
  Put(eStyle == Style::Indented ? ": " : ":");
  ++nTight;
  return pNext;
}

const char* JsonWalk::Value(const char* p, char c) {
  pBegin = pBegin ? pBegin : p;
  bName = false;
  return JSON::ReadValue(text.Limits(), p, c, *this);
}

const char* JsonWalk::Element(const char* p, char c) {
  if (c == ',' || c == ']') {
    return Value(p, c);  // no value; Missing() follows
  }
  BeginItem();
  return Value(p, c);
}

// The parser takes it for a null.
void JsonWalk::Missing() {
  bStrict = false;
  BeginItem();
  Put("null");
}

const char* JsonWalk::String(const char* p) {
  const char* const pClosing = JSON::FindStringEnd(p + 1, text.pEnd);
  if (!pClosing) {
    bOpenString = true;
    return text.Fail(p, JSON::Fault::kString);
  }
  const std::string_view strContent(p + 1, static_cast<std::size_t>(pClosing - p - 1));
  const bool bPlain = JSON::IsPlain(strContent) || IsStrictContent(strContent, true);
  if (!bPlain || !IsUtf8(strContent)) {
    bStrict = false;
    if (pOut) bWhole = AppendJsonText(strContent, true, *pOut) && bWhole;
    return pClosing + 1;
  }
  return Token(p, pClosing + 1);
}

const char* JsonWalk::Number(const char* p) {
  bool bReal = false;
  const char* const pNext = JSON::ScanNumber(p, text.pEnd, bReal);
  const std::string_view strNumber(p, static_cast<std::size_t>(pNext - p));
  if (NumberKind(strNumber) == Kind::Text && strNumber != "-0") {
    bStrict = false;
    Put(StrictNumber(strNumber));
    return pNext;
  }
  return Token(p, pNext);
}

const char* JsonWalk::Literal(const char* p, const char* pNext) { return Token(p, pNext); }

const char* JsonWalk::Nested(const char* p) {
  const bool bObject = *p == '{';
  const Level outer = std::exchange(level, Level{*p, 0});
  Put(bObject ? "{" : "[");
  ++nDepth;
  const char* const pNext = bObject ? ReadObject(text, p, *this) : ReadArray(text, p, *this);
  if (!pNext) return nullptr;
  if (pNext[-1] != (bObject ? '}' : ']')) {
    return text.Fail(
        pNext, JSON::Fault::kUnknown);  // the text ends within, which the parser accepts in places
  }
  --nDepth;
  if (level.nItems != 0) BreakLine();
  Put(bObject ? "}" : "]");
  nTight += 2 + (level.nItems != 0 ? level.nItems - 1 : 0);
  level = outer;
  return pNext;
}

// ---- Writing ------------------------------------------------------------------------------------

const char* JsonWalk::Token(const char* p, const char* pNext) {
  const auto nLength = static_cast<std::size_t>(pNext - p);
  nTight += nLength;
  Put({p, nLength});
  return pNext;
}

void JsonWalk::Put(std::string_view strToken) {
  if (pOut) *pOut += strToken;
}

void JsonWalk::BeginItem() {
  if (level.nItems++ != 0) Put(",");
  BreakLine();
}

void JsonWalk::BreakLine() {
  if (pOut && eStyle == Style::Indented) {
    *pOut += '\n';
    pOut->append(2 * static_cast<std::size_t>(nDepth), ' ');
  }
}

// ---- Explaining ---------------------------------------------------------------------------------

const char* JsonWalk::FailedAt() const {
  const char* const pFault = bOpenString ? text.pStop : text.SkipSpace(text.pStop);
  // The parser leaves the last byte of a number that the end of the text cuts off.
  const bool bCutNumber = text.pEnd - pFault == 1 && !bOpenString && JSON::IsRealByte(*pFault) &&
                          (pFault == pBegin || !JSON::IsSpace(pFault[-1]));
  return bCutNumber ? text.pEnd : pFault;
}

bool JsonWalk::MayGoOn() const {
  return bOpenString || text.pEnd - text.pStop < JSON::kLongestLiteral || FailedAt() == text.pEnd;
}

namespace {

std::string BadValue(char c) {
  switch (c) {
    case '{':
    case '[':
      return "nested more than " + std::to_string(JSON::kMaxNesting) + " levels deep";
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

}  // namespace

std::string JsonWalk::Reason() const {
  if (bOpenString) return "the string that begins here has no end";
  const char* const p = FailedAt();
  if (p == text.pEnd) {
    return level.cOpen == 0     ? "the text ends where a value is due"
           : level.cOpen == '{' ? "the text ends inside an object"
                                : "the text ends inside an array";
  }
  if (*p == '\0') return "a NUL byte ends the text here";
  // What stands in front tells what was due.
  const char* pBefore = p;
  while (pBefore > pBegin && JSON::IsSpace(pBefore[-1])) {
    --pBefore;
  }
  const char cBefore = pBefore > pBegin ? pBefore[-1] : '\0';
  if (cBefore == '\0' || cBefore == ':' || (cBefore == '[' && level.cOpen == '[') ||
      (cBefore == ',' && level.cOpen == '[')) {
    return BadValue(*p);
  }
  if (level.cOpen == '[') return "expected ',' or ']'";
  if (bName) return "expected ':' behind the name";
  if (cBefore == ',') {
    return *p == '}' ? "a member has to follow the comma" : "expected a name in double quotes";
  }
  return cBefore == '{' && level.nItems == 0 ? "expected a name in double quotes or '}'"
                                             : "expected ',' or '}'";
}

}  // namespace qxrs
