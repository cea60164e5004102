// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::SideBySide parses texts with the library, copying and in place, and with the plain
// parser, and tells where they differ. Every text lies against an unreadable page. The two messages
// are used for one text after the other, so what an earlier text left in them is part of the check.

#ifndef QXRECORDSET_TESTS_SUPPORT_SIDEBYSIDE_H
#define QXRECORDSET_TESTS_SUPPORT_SIDEBYSIDE_H

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/PlainParser.h"

namespace Support {

class SideBySide {
 public:
  // The first difference, or "" when all three agree.
  std::string Check(std::string_view text) {
    if (text.size() > nCapacity) {
      nCapacity = 2 * text.size();
      pBuffer = std::make_unique<GuardedBuffer>(nCapacity);
    }
    document = Plain::Parse(text);
    const char* pText = pBuffer->Place(text);
    const std::string strCopying = CheckCopying(pText, text);
    if (!strCopying.empty()) return "copying: " + strCopying;
    const std::string strInPlace = CheckInPlace(pText, text);
    return strInPlace.empty() ? "" : "in place: " + strInPlace;
  }

  Plain::Document document;     // what the plain parser read
  JSON::Message copying;        // what the library read, lookups done
  JSON::Message inPlace{true};  // unchanged since an earlier text when the last one has no root

 private:
  std::string CheckCopying(const char* pText, std::string_view text) {
    if (copying.Parse(pText, static_cast<int>(text.size())) != document.bAccepted) return "result";
    if (pBuffer->view() != text) return "the text was written to";
    return CheckTree(copying, copying.strText);
  }

  std::string CheckInPlace(const char* pText, std::string_view text) {
    const JSON::CompositeValue* pOldRoot = inPlace.pComposite;
    const bool bKept = pOldRoot != nullptr || text.empty();
    const char* pCursor = bKept ? inPlace.pCursor : pText + document.nCursor;
    if (inPlace.Parse(pText, static_cast<int>(text.size())) != document.bAccepted) return "result";
    if (document.bRoot) return CheckTree(inPlace, pBuffer->view());
    const bool bSame = inPlace.pComposite == pOldRoot && inPlace.pCursor == pCursor;
    return bSame && pBuffer->view() == text ? "" : "refused text changed something";
  }

  std::string CheckTree(const JSON::Message& message, std::string_view buffer) {
    std::string strDifference = Plain::Difference(document, message);
    const auto differing = std::mismatch(buffer.begin(), buffer.end(), document.strBuffer.begin(),
                                         document.strBuffer.end());
    if (strDifference.empty() && differing.first != buffer.end()) {
      return "buffer at byte " + std::to_string(differing.first - buffer.begin());
    }
    return strDifference.empty() ? Plain::LookupDifference(document, message) : strDifference;
  }

  std::size_t nCapacity = 1 << 14;  // bytes
  std::unique_ptr<GuardedBuffer> pBuffer = std::make_unique<GuardedBuffer>(nCapacity);
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_SIDEBYSIDE_H
