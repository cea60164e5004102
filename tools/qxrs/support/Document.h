// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading a whole JSON document, with a reason when it is refused.

#ifndef QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H
#define QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H

#include <optional>
#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"
#include "tools/qxrs/support/Diagnosis.h"

namespace qxrs {

// Some programs put it in front of UTF-8 text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The bytes of an escape behind its backslash, which `c` begins: \u takes any four more.
constexpr std::size_t EscapeLength(char c) { return c == 'u' ? 5 : 1; }

// What the library's parser takes for white space.
constexpr std::string_view kWhiteSpace = " \t\n\r\f";

// What is said about a document that is an array.
constexpr const char* kNoRecordSet =
    "an array is no record set; qxrs from-json reads arrays of objects";

// Parses `strText` into `message`, a copying one; nothing when it is accepted.
std::optional<Diagnosis> Parse(JSON::Message& message, const std::string& strText);

// The same, but a refusal is an InputError. `strName` names the text in it.
void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName);

// The record set that a host has after loading `strText`; a text that holds none is an InputError.
CQXRecordSet LoadRecordSet(const std::string& strText, const std::string& strName);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H
