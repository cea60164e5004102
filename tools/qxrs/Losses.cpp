// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Looking for losses in the document's tree.

#include "tools/qxrs/Losses.h"

#include <limits>
#include <set>
#include <string_view>

#include "json/JSONMessage.h"
#include "tools/qxrs/rows/JsonWalk.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

namespace {

using JSON::JSONValue;

std::string_view TextOf(const JSONValue& value) {
  return {value.pText ? value.pText : "", static_cast<std::size_t>(value.nLength)};
}

const char* LossOfInteger(const JSONValue& value) {
  std::string_view strDigits = TextOf(value);
  strDigits.remove_prefix(strDigits.substr(0, 1) == "+" ? 1 : 0);
  const auto nValue = ToInt64(strDigits);
  const bool bFits = nValue && *nValue >= std::numeric_limits<long>::min() &&
                     *nValue <= std::numeric_limits<long>::max();
  return bFits ? nullptr : "a record set does not keep an integer beyond its long";
}

const char* LossOfText(std::string_view strText) {
  if (strText.find('\0') != std::string_view::npos) {
    return "a record set ends a text at its first NUL";
  }
  if (!IsUtf8(strText)) {
    return "a text is not UTF-8, or escapes a character as two surrogates, which a host keeps "
           "apart";
  }
  const std::size_t nFirst = strText.find_first_not_of(' ');
  const bool bLikeObject = nFirst != std::string_view::npos && strText[nFirst] == '{' &&
                           strText[strText.find_last_not_of(' ')] == '}';
  return bLikeObject ? "a record set writes a text that reads like an object as one, or not at all"
                     : nullptr;
}

// Why a record set does not keep a value, or null.
const char* LossOf(const JSONValue& value, bool bNested) {
  switch (value.eType) {
    case JSON::jtDouble:
      return "a record set does not keep real numbers";
    case JSON::jtArray:
      return "a record set does not keep arrays";
    case JSON::jtNull:
      return nullptr;
    case JSON::jtInteger:
      return LossOfInteger(value);
    case JSON::jtString:
      return bNested && TextOf(value).find('\0') == std::string_view::npos
                 ? nullptr
                 : LossOfText(TextOf(value));
    case JSON::jtObject:
      for (int i = 0; i < value.Size(); ++i) {
        if (const char* szLoss = LossOf(*value.GetByOrdinal(i), true)) return szLoss;
      }
      return nullptr;
    default:
      return nullptr;
  }
}

void CountRow(const JSONValue& row, unsigned long long nRow, Warnings& warnings) {
  const auto& members = static_cast<const JSON::ObjectValue&>(*row.pComposite);
  std::set<std::string_view> setNames;
  for (int i = 0; i < members.Size(); ++i) {
    const char* const szName = members.NameAt(i);
    if (!setNames.insert(szName).second) {
      warnings.Add("a name occurs more than once in a row; its last value counts", nRow, szName);
    }
    if (const char* szLoss = LossOf(*members.GetByOrdinal(i), false)) {
      warnings.Add(szLoss, nRow, szName);
    }
  }
}

}  // namespace

void CountLosses(const std::string& strText, Warnings& warnings) {
  JSON::Message message;
  if (!message.Parse(strText.data(), static_cast<int>(strText.size())) ||
      message.eType != JSON::jtObject) {
    return;
  }
  const auto nRead = static_cast<std::size_t>(message.pCursor - message.pStart);
  if (strText.find_first_not_of(kWhiteSpace, nRead) != std::string::npos) {
    warnings.Add("the text behind the document is ignored");
  }
  const JSON::Message& document = message;
  const JSONValue& rows = document["rows"];
  if (rows.eType != JSON::jtArray) {
    CountRow(document, 1, warnings);
    return;
  }
  if (document.Size() > 1) warnings.Add("the members beside the rows are ignored");
  for (int i = 0; i < rows.Size(); ++i) {
    const JSONValue& row = *rows.GetByOrdinal(i);
    const auto nRow = static_cast<unsigned long long>(i) + 1;
    if (row.eType == JSON::jtObject) {
      CountRow(row, nRow, warnings);
    } else if (row.eType != JSON::jtNull) {
      warnings.Add("an element of the rows that is no object is ignored", nRow, {});
    } else {
      if (i + 1 < rows.Size()) {
        warnings.Add("a null ends the rows; what follows is ignored", nRow, {});
      }
      return;
    }
  }
}

}  // namespace qxrs
