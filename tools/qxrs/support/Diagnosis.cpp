// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Explaining refused documents.

#include "tools/qxrs/support/Diagnosis.h"

#include <algorithm>
#include <vector>

#include "json/JSONMessage.h"
#include "tools/qxrs/support/DisplayText.h"
#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

namespace {

constexpr std::string_view kNumberBytes = "+-0123456789.eE";
constexpr std::string_view kNumberStart = "+-0123456789";

// What may stand next.
enum class Expected { Document, FirstName, Name, Colon, Value, Element, Separator };

// Reads the part of a text that the parser has accepted, and knows at its end what was due.
class AcceptedText {
 public:
  explicit AcceptedText(std::string_view strAccepted) : strText(strAccepted) {
    while (nPosition < strText.size()) {
      Step();
    }
  }

  Expected eExpected = Expected::Document;
  bool bInString = false;   // the text ends within a string
  bool bInNumber = false;   // it ends with a number, which may go on
  std::size_t nString = 0;  // where the last string begins
  std::vector<char> vOpen;  // the open containers, '{' or '['

 private:
  void Step() {
    const char c = strText[nPosition];
    bInNumber = false;
    if (kWhiteSpace.find(c) != std::string_view::npos) {
      ++nPosition;
    } else if (c == '"') {
      PassString();
    } else if (std::string_view("{}[],:").find(c) != std::string_view::npos) {
      PassPunctuation(c);
    } else {
      const std::size_t nEnd = strText.find_first_of(" \t\n\r\f\"{}[],:", nPosition);
      bInNumber = kNumberStart.find(c) != std::string_view::npos;
      nPosition = std::min(nEnd, strText.size());
      eExpected = Expected::Separator;
    }
  }

  void PassString() {
    nString = nPosition++;
    while (nPosition < strText.size() && strText[nPosition] != '"') {
      const bool bEscape = strText[nPosition++] == '\\';
      nPosition += bEscape && nPosition < strText.size() ? EscapeLength(strText[nPosition]) : 0;
    }
    bInString = nPosition >= strText.size();
    ++nPosition;
    const bool bName = eExpected == Expected::FirstName || eExpected == Expected::Name;
    eExpected = bName ? Expected::Colon : Expected::Separator;
  }

  void PassPunctuation(char c) {
    ++nPosition;
    if (c == '{' || c == '[') {
      vOpen.push_back(c);
      eExpected = c == '{' ? Expected::FirstName : Expected::Element;
    } else if (c == ':') {
      eExpected = Expected::Value;
    } else if (c == ',') {
      eExpected = vOpen.empty() || vOpen.back() == '[' ? Expected::Element : Expected::Name;
    } else {
      if (!vOpen.empty()) {
        vOpen.pop_back();
      }
      eExpected = Expected::Separator;
    }
  }

  std::string_view strText;
  std::size_t nPosition = 0;
};

std::string MissingEnd(const AcceptedText& accepted) {
  if (accepted.vOpen.empty()) {
    return "there is no document: expected '{' or '['";
  }
  return accepted.vOpen.back() == '{' ? "the text ends inside an object"
                                      : "the text ends inside an array";
}

std::string BadValue(std::string_view strRest) {
  switch (strRest.front()) {
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

std::string Unexpected(const AcceptedText& accepted, std::string_view strRest) {
  switch (accepted.eExpected) {
    case Expected::Document:
      return strRest.substr(0, kByteOrderMark.size()) == kByteOrderMark
                 ? "a byte order mark stands in front of the document, which a host refuses"
                 : "expected '{' or '['";
    case Expected::FirstName:
      return "expected a name in double quotes or '}'";
    case Expected::Name:
      return strRest.front() == '}' ? "a member has to follow the comma"
                                    : "expected a name in double quotes";
    case Expected::Colon:
      return "expected ':' behind the name";
    case Expected::Value:
    case Expected::Element:
      return BadValue(strRest);
    case Expected::Separator:
      break;
  }
  const bool bObject = !accepted.vOpen.empty() && accepted.vOpen.back() == '{';
  return bObject ? "expected ',' or '}'" : "expected ',' or ']'";
}

// The parser leaves the last byte of a number that the end of the text cuts off, its first one
// included.
bool IsCutNumber(const AcceptedText& accepted, std::string_view strRest) {
  if (strRest.size() != 1) {
    return false;
  }
  const bool bFirst =
      accepted.eExpected == Expected::Value || accepted.eExpected == Expected::Element;
  const bool bInside = accepted.bInNumber;
  return (bFirst && kNumberStart.find(strRest.front()) != std::string_view::npos) ||
         (bInside && kNumberBytes.find(strRest.front()) != std::string_view::npos);
}

}  // namespace

Diagnosis Diagnose(std::string_view strText, std::size_t nStopped) {
  const AcceptedText accepted(strText.substr(0, nStopped));
  if (accepted.bInString) {
    return {accepted.nString, "the string that begins here has no end"};
  }
  const std::size_t nFault =
      std::min(strText.find_first_not_of(kWhiteSpace, nStopped), strText.size());
  const std::string_view strRest = strText.substr(nFault);
  if (strRest.empty() || IsCutNumber(accepted, strRest)) {
    return {strText.size(), MissingEnd(accepted)};
  }
  if (strRest.front() == '\0') {
    return {nFault, "a NUL byte ends the text here"};
  }
  return {nFault, Unexpected(accepted, strRest)};
}

std::string Caret(std::string_view strText, std::size_t nOffset, bool bColor) {
  constexpr std::size_t kReach = 35;  // bytes shown on either side
  const std::size_t nLine = nOffset == 0 ? 0 : strText.rfind('\n', nOffset - 1) + 1;
  std::size_t nBegin = nOffset - nLine > kReach ? nOffset - kReach : nLine;
  std::size_t nEnd = std::min({strText.find('\n', nOffset), nOffset + kReach, strText.size()});
  const auto IsContinuation = [&](std::size_t i) {
    return i < strText.size() && (static_cast<unsigned char>(strText[i]) & 0xC0) == 0x80;
  };
  while (nBegin < nOffset && IsContinuation(nBegin)) {
    ++nBegin;
  }
  while (nEnd > nOffset && IsContinuation(nEnd)) {
    --nEnd;
  }
  const DisplayText before = MakeDisplayText(strText.substr(nBegin, nOffset - nBegin));
  const DisplayText behind = MakeDisplayText(strText.substr(nOffset, nEnd - nOffset));
  return "  " + before.strText + behind.strText + "\n  " + std::string(before.nWidth, ' ') +
         Styled("^", Style::Red, bColor) + "\n";
}

}  // namespace qxrs
