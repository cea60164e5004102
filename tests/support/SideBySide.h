// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::SideBySide parses texts with the library, copying and in place, and with the plain
// parser, and tells where they differ. Every text lies against an unreadable page. The two messages
// are used for one text after the other, so what an earlier text left in them is part of the check.

#ifndef QXRECORDSET_TESTS_SUPPORT_SIDEBYSIDE_H
#define QXRECORDSET_TESTS_SUPPORT_SIDEBYSIDE_H

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
    const int nLength = pBuffer->size();
    if (copying.Parse(pText, nLength) != document.bAccepted) return "copying: result";
    if (pBuffer->view() != text) return "copying: the text was written to";
    const std::string strDifference = CheckTree(copying, copying.strText);
    if (!strDifference.empty()) return "copying: " + strDifference;

    const JSON::CompositeValue* const pOldRoot = inPlace.pComposite;
    const char* const pOldCursor = inPlace.pCursor;
    if (inPlace.Parse(pText, nLength) != document.bAccepted) return "in place: result";
    if (document.bRoot || pOldRoot == nullptr) return CheckTree(inPlace, pBuffer->view());
    const bool bSame = inPlace.pComposite == pOldRoot && inPlace.pCursor == pOldCursor;
    return bSame && pBuffer->view() == text ? "" : "in place: refused text changed something";
  }

  Plain::Document document;     // what the plain parser read
  JSON::Message copying;        // what the library read, lookups done
  JSON::Message inPlace{true};  // unchanged since an earlier text when the last one has no root

 private:
  std::string CheckTree(const JSON::Message& message, std::string_view buffer) {
    if (buffer != document.strBuffer) return "buffer: " + Plain::Printable(buffer);
    return Plain::Difference(document, message);
  }

  std::size_t nCapacity = 1 << 14;  // bytes
  std::unique_ptr<GuardedBuffer> pBuffer = std::make_unique<GuardedBuffer>(nCapacity);
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_SIDEBYSIDE_H
