// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Values to test with, and what a value writes.

#ifndef QXRECORDSET_TESTS_SUPPORT_VALUES_H
#define QXRECORDSET_TESTS_SUPPORT_VALUES_H

#include <string>
#include <string_view>

#include "json/JSONMessage.h"

namespace Support {

inline std::string Written(const JSON::JSONValue& value) {
  std::string strWritten;
  return value.Serialize(strWritten) ? strWritten : strWritten + " (refused)";
}

// A value that refers to the text and does not own it.
inline JSON::UnsafeJSONValue ValueOf(std::string_view text, JSON::Type eType = JSON::jtString) {
  JSON::UnsafeJSONValue value(eType);
  value.pText = text.data();
  value.nLength = static_cast<int>(text.size());
  return value;
}

// All of a text that can be written to, for the functions that parse a part of a message.
inline JSON::ParseContext Context(char* pText, std::size_t nLength) {
  return {pText, pText + nLength, pText};
}

inline JSON::ObjectValue& ObjectIn(const JSON::JSONValue& value) {
  return dynamic_cast<JSON::ObjectValue&>(*value.pComposite);
}
inline JSON::ArrayValue& ArrayIn(const JSON::JSONValue& value) {
  return dynamic_cast<JSON::ArrayValue&>(*value.pComposite);
}

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_VALUES_H
