// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading a whole JSON document, with a reason when it is refused.

#ifndef QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H
#define QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H

#include <optional>
#include <string>

#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"

namespace qxrs {

// Why the library refuses a text.
struct Refusal {
  std::size_t nOffset;    // the byte at fault; the text's length when it ends too soon
  std::string strReason;  // one line
};

// Parses `strText` into `message`, a copying one; nothing when it is accepted.
std::optional<Refusal> Parse(JSON::Message& message, const std::string& strText);

// The same, but a refusal is an InputError. `strName` names the text in it.
void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName);

// The record set that a host has after loading `strText`; a text that holds none is an InputError.
CQXRecordSet LoadRecordSet(const std::string& strText, const std::string& strName);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H
