// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading documents.

#include "tools/qxrs/support/Document.h"

#include <algorithm>
#include <limits>

#include "tools/qxrs/rows/JsonWalk.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/TextPosition.h"
#include "tools/qxrs/support/Window.h"

namespace qxrs {

namespace {

// The parser counts in int.
constexpr std::size_t kMaxLength = std::numeric_limits<int>::max();

Refusal Explain(const std::string& strText) {
  const std::size_t nFirst = std::min(strText.find_first_not_of(kWhiteSpace), strText.size());
  const char* const pFirst = strText.data() + nFirst;
  if (!JSON::BeginsContainer(*pFirst)) {
    if (nFirst == strText.size()) {
      return {nFirst, "there is no document: expected '{' or '['"};
    }
    if (*pFirst == '\0') {
      return {nFirst, "a NUL byte ends the text here"};
    }
    return {nFirst, strText.compare(nFirst, kByteOrderMark.size(), kByteOrderMark) == 0
                        ? "a byte order mark stands in front of the document, which a host refuses"
                        : "expected '{' or '['"};
  }
  JsonWalk walk(strText.data() + strText.size());
  walk.Read(pFirst);
  return {static_cast<std::size_t>(walk.FailedAt() - strText.data()), walk.Reason()};
}

}  // namespace

std::optional<Refusal> Parse(JSON::Message& message, const std::string& strText) {
  if (strText.size() > kMaxLength) {
    return Refusal{kMaxLength, "a document can have 2 GiB at most"};
  }
  if (message.Parse(strText.data(), static_cast<int>(strText.size()))) return std::nullopt;
  return Explain(strText);
}

void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName) {
  const auto refusal = Parse(message, strText);
  if (refusal) {
    TextPosition position;
    position.Advance(std::string_view(strText).substr(0, refusal->nOffset));
    throw InputError(Complaint(strName, position, refusal->strReason));
  }
}

CQXRecordSet LoadRecordSet(const std::string& strText, const std::string& strName) {
  // The record set never tells whether it could read a text; the empty one is that of a record set
  // that was never written to.
  if (strText.find_first_not_of(kWhiteSpace) != std::string::npos) {
    JSON::Message message;
    ParseOrThrow(message, strText, strName);
    if (message.eType != JSON::jtObject) {
      throw InputError(
          Complaint(strName, TextPosition(),
                    "an array is no record set; qxrs from-json reads arrays of objects"));
    }
  }
  return {strText};
}

}  // namespace qxrs
