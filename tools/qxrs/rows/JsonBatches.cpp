// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Cutting and parsing long arrays.

#include "tools/qxrs/rows/JsonBatches.h"

#include <algorithm>
#include <vector>

#include "tools/qxrs/support/Document.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Large enough that what is done once for a batch does not count, small enough to stay in the
// processor's cache.
constexpr std::size_t kBatchBytes = 262144;

std::string_view Head(JsonBatches::Form eForm) {
  return eForm == JsonBatches::Form::RecordSet ? "{\"rows\":[" : "[";
}

std::string_view Tail(JsonBatches::Form eForm) {
  return eForm == JsonBatches::Form::RecordSet ? "]}" : "]";
}

// An empty place between commas is a null, but between brackets it would be nothing.
bool IsMissingElement(std::string_view strElements) {
  const std::size_t nFirst = strElements.find_first_not_of(kWhiteSpace);
  return nFirst == std::string_view::npos || strElements[nFirst] == ']';
}

}  // namespace

JsonBatches::JsonBatches(Input& inputText, Form eExpected) : input(inputText), eForm(eExpected) {}

bool JsonBatches::Next() {
  while (!bEnd) {
    if (nCut != 0 && strPending.size() >= kBatchBytes) {
      ParseBatch(nCut, false);
      return true;
    }
    if (!input.Read(strPending)) {
      if (!bInside && IsEmptyRecordSet()) {
        return false;
      }
      ParseBatch(strPending.size(), true);
      return true;
    }
    if (eForm == Form::Array && !bBegun &&
        strPending.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
      strPending.erase(0, kByteOrderMark.size());
    }
    bBegun = true;
    Scan();
  }
  return false;
}

// The text of a record set in the cleared state is the empty text.
bool JsonBatches::IsEmptyRecordSet() const {
  return eForm == Form::RecordSet && strPending.find_first_not_of(kWhiteSpace) == std::string::npos;
}

// Steps over the beginning of the array, token by token; false when the text has another form.
bool JsonBatches::FindFirstElement() {
  const std::string_view strText = strPending;
  std::size_t nAt = 0;
  for (const std::string_view strToken :
       eForm == Form::RecordSet ? std::vector<std::string_view>{"{", "\"rows\"", ":", "["}
                                : std::vector<std::string_view>{"["}) {
    nAt = strText.find_first_not_of(kWhiteSpace, nAt);
    if (nAt == std::string_view::npos || strText.compare(nAt, strToken.size(), strToken) != 0) {
      return false;
    }
    nAt += strToken.size();
  }
  nScanned = nAt;
  return true;
}

void JsonBatches::Scan() {
  if (bCuttable && !bInside && nScanned == 0) {
    // Wait for enough text to tell; a short document needs no cut.
    if (strPending.size() < kBatchBytes) {
      return;
    }
    bCuttable = FindFirstElement();
  }
  while (bCuttable && nScanned < strPending.size()) {
    const char c = strPending[nScanned++];
    if (bInString) {
      if (c == '\\') {
        if (nScanned == strPending.size()) {
          --nScanned;  // which escape it is, the next piece tells
          return;
        }
        nScanned += EscapeLength(strPending[nScanned]);
      } else if (c == '"') {
        bInString = false;
      }
      continue;
    }
    switch (c) {
      case '"':
        bInString = true;
        break;
      case '{':
      case '[':
        ++nDepth;
        break;
      case '}':
      case ']':
        // The end of the array, or a text that the parser will refuse.
        bCuttable = nDepth-- != 0;
        break;
      case ',':
        if (nDepth == 0) {
          nCut = nScanned - 1;
        }
        break;
      default:
        break;
    }
  }
}

void JsonBatches::ParseBatch(std::size_t nLength, bool bLast) {
  const std::string_view strPiece = std::string_view(strPending).substr(0, nLength);
  std::string strText;
  if (bInside) {
    strText += Head(eForm);
    strText += IsMissingElement(strPiece) ? "null" : "";
  }
  const std::size_t nHead = strText.size();
  strText += strPiece;
  strText += bLast ? "" : Tail(eForm);

  if (const auto refusal = Parse(message, strText)) {
    position.Advance(strPiece.substr(0, refusal->nOffset - std::min(nHead, refusal->nOffset)));
    throw InputError(Complaint(input.Name(), position, refusal->strReason));
  }
  const std::size_t nTaken = bLast ? nLength : nLength + 1;
  position.Advance(std::string_view(strPending).substr(0, nTaken));
  strPending.erase(0, nTaken);
  nScanned -= std::min(nTaken, nScanned);
  nCut = 0;
  bInside = true;
  bEnd = bLast;
}

void JsonBatches::Refuse(const std::string& strReason) const {
  throw InputError(Complaint(input.Name(), TextPosition(), strReason));
}

}  // namespace qxrs
