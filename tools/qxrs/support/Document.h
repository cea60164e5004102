// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Whole JSON documents, as the library reads them.

#ifndef QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H
#define QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H

#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"
#include "tools/qxrs/support/Warnings.h"

namespace qxrs {

// What the library's parser takes for white space.
constexpr std::string_view kWhiteSpace = " \t\n\r\f";

// The text of a string or a number.
std::string_view TextOf(const JSON::JSONValue& value);

// Parses `strText` into `message`, a copying one; a refusal is an InputError. `strName` names the
// text in it.
void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName);

// The record set that a host has after loading `strText`; a text that holds none is an InputError.
// What it does not keep of the text is counted where `pLosses` is not null.
CQXRecordSet LoadRecordSet(const std::string& strText, const std::string& strName,
                           Warnings* pLosses);

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_DOCUMENT_H
