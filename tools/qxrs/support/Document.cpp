// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading documents.

#include "tools/qxrs/support/Document.h"

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

using JSON::JSONValue;

// What a record set changes of a text, beside what the library counts; or null.
const char* LossOfText(std::string_view strText) {
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

void CountRow(const JSONValue& row, unsigned long long nRow, Warnings& warnings) {
  const auto& members = static_cast<const JSON::ObjectValue&>(*row.pComposite);
  std::set<std::string_view> setNames;
  for (int i = 0; i < members.Size(); ++i) {
    const char* const szName = members.NameAt(i);
    if (!setNames.insert(szName).second) {
      warnings.Add("a name occurs more than once in a row; its last value counts", nRow, szName);
    }
    const JSONValue& value = row[i];
    const char* const szLoss = value.eType == JSON::jtString ? LossOfText(TextOf(value)) : nullptr;
    if (szLoss) warnings.Add(szLoss, nRow, szName);
  }
}

// The elements of the array of rows.
void CountRows(const JSONValue& rows, Warnings& warnings) {
  for (int i = 0; i < rows.Size(); ++i) {
    const auto nRow = static_cast<unsigned long long>(i) + 1;
    if (rows[i].eType == JSON::jtObject) {
      CountRow(rows[i], nRow, warnings);
    } else if (rows[i].eType != JSON::jtNull) {
      warnings.Add("an element of the rows that is no object is ignored", nRow, {});
    } else {
      if (i + 1 == rows.Size()) return;
      return warnings.Add("a null ends the rows; what follows is ignored", nRow, {});
    }
  }
}

// What the library counted, as one loss.
void CountCells(CQXRecordSet& records, const LoadResult& result, Warnings& warnings) {
  if (result.nLossyCells == 0) return;
  const std::pair<const char*, std::size_t> aKinds[] = {
      {"real numbers", result.nReals},
      {"arrays", result.nArrays},
      {"texts behind a NUL", result.nCut},
      {"integers beyond its long", result.nLimited}};
  std::string strReason = "a record set does not keep";
  const std::size_t nPlain = strReason.size();
  for (const auto& [szWhat, nCount] : aKinds) {
    if (nCount == 0) continue;
    strReason += (strReason.size() == nPlain ? " " : ", ") + std::string(szWhat);
    strReason += " (" + std::to_string(nCount) + ")";
  }
  std::string strColumn;
  for (long i = 0; i < records.GetColumnCount() && strColumn.empty(); ++i) {
    const char* const szName = records.GetColumnName(i);
    if (records.GetColumnIndex(szName) == result.lFirstColumn) strColumn = szName;
  }
  warnings.Add(strReason, static_cast<unsigned long long>(result.lFirstRow), strColumn,
               result.nLossyCells);
}

// REQUIRES: the library loaded `strText`.
void CountLosses(const std::string& strText, Warnings& warnings) {
  JSON::Message message;
  message.Parse(strText.data(), static_cast<int>(strText.size()));
  const auto nRead = static_cast<std::size_t>(message.pCursor - message.pStart);
  if (strText.find_first_not_of(kWhiteSpace, nRead) != std::string::npos) {
    warnings.Add("the text behind the document is ignored");
  }
  const JSONValue& rows = std::as_const(message)["rows"];
  if (rows.eType != JSON::jtArray) return CountRow(message, 1, warnings);
  if (message.Size() > 1) warnings.Add("the members beside the rows are ignored");
  CountRows(rows, warnings);
}

[[noreturn]] void Refuse(const JSON::ParseError& error, const std::string& strName) {
  throw Complaint(strName, {error.nLine, error.nColumn}, error.szReason);
}

}  // namespace

std::string_view TextOf(const JSONValue& value) {
  return {value.pText ? value.pText : "", static_cast<std::size_t>(value.nLength)};
}

void ParseOrThrow(JSON::Message& message, const std::string& strText, const std::string& strName) {
  if (strText.size() > std::numeric_limits<int>::max()) {
    throw InputError(strName + ": a document can have 2 GB at most");
  }
  if (!message.Parse(strText.data(), static_cast<int>(strText.size()))) {
    Refuse(message.Error(), strName);
  }
}

CQXRecordSet LoadRecordSet(const std::string& strText, const std::string& strName,
                           Warnings* pLosses) {
  CQXRecordSet records;
  // The text of a record set that was never written to is empty.
  if (strText.find_first_not_of(kWhiteSpace) == std::string::npos) return records;
  const LoadResult result = records.Load(strText);
  if (!result.bLoaded) Refuse(result.error, strName);
  if (pLosses) {
    CountCells(records, result, *pLosses);
    CountLosses(strText, *pLosses);
  }
  return records;
}

}  // namespace qxrs
