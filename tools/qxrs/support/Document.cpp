// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading documents.

#include "tools/qxrs/support/Document.h"

#include <limits>

#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/TextPosition.h"

namespace qxrs {

namespace {

// The parser counts in int.
constexpr std::size_t kMaxLength = std::numeric_limits<int>::max();

std::size_t StoppedAt(const JSON::Message& message) {
  // A text that is refused in front of its first bracket leaves no root and no useful position.
  return message.pComposite ? static_cast<std::size_t>(message.pCursor - message.pStart) : 0;
}

}  // namespace

std::optional<Diagnosis> Parse(JSON::Message& message, const std::string& strText) {
  if (strText.size() > kMaxLength) {
    return Diagnosis{kMaxLength, "a document can have 2 GiB at most"};
  }
  if (message.Parse(strText.data(), static_cast<int>(strText.size()))) {
    return std::nullopt;
  }
  return Diagnose(strText, StoppedAt(message));
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
      throw InputError(Complaint(strName, TextPosition(), kNoRecordSet));
    }
  }
  return {strText};
}

}  // namespace qxrs
