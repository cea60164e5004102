// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing rows as JSON.

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "text/Escape.h"
#include "tools/qxrs/rows/Json.h"
#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

namespace {

constexpr const char* kNotUtf8 = "bytes that are not UTF-8 became U+FFFD";
constexpr const char* kNoPlace = "there are no rows, and JSON has no place for the columns' names";

}  // namespace

bool AppendJsonText(std::string_view strText, bool bEscaped, std::string& strJson) {
  std::string strPlain;
  if (bEscaped) {
    if (!AppendUnescaped(strText, strPlain) && IsStrictContent(strText, true)) {
      // Half a pair of surrogates has no other form.
      strJson.append("\"").append(strText).append("\"");
      return true;
    }
    strText = strPlain;
  }
  const bool bUtf8 = IsUtf8(strText);
  std::string strRepaired;
  if (!bUtf8) {
    strRepaired = RepairedUtf8(strText);
    strText = strRepaired;
  }
  strJson += '"';
  while (true) {
    JSON::AppendEscaped(strJson, strText);
    const std::size_t nNul = strText.find('\0');
    if (nNul == std::string_view::npos) break;
    strJson += "\\u0000";
    strText.remove_prefix(nNul + 1);
  }
  strJson += '"';
  return bUtf8;
}

std::string StrictNumber(std::string_view strNumber) {
  std::string_view strDigits = strNumber;
  const bool bNegative = strDigits.substr(0, 1) == "-";
  strDigits.remove_prefix(bNegative || strDigits.substr(0, 1) == "+" ? 1 : 0);
  while (strDigits.size() > 1 && strDigits[0] == '0' && JSON::IsDigit(strDigits[1])) {
    strDigits.remove_prefix(1);
  }
  const std::string strStrict = (bNegative && strDigits != "0" ? "-" : "") + std::string(strDigits);
  return NumberKind(strStrict) == Kind::Text ? '"' + std::string(strNumber) + '"' : strStrict;
}

std::string JsonValueText(const Cell& cell) {
  std::string strText;
  if (cell.eKind == Kind::Text) {
    AppendJsonText(cell.strText, cell.bEscaped, strText);
  } else {
    strText = cell.eKind == Kind::Null ? "null" : cell.strText;
  }
  return strText;
}

JsonSink::JsonSink(Output& outputText, Form eWanted, Texts eAsTexts, Warnings& lossesSeen)
    : output(outputText), eForm(eWanted), eTexts(eAsTexts), warnings(lossesSeen) {}

// ---- Cells --------------------------------------------------------------------------------------

// The name of a column as it stands in front of a value.
std::string_view JsonSink::Key(std::size_t nColumn) {
  while (vKeys.size() <= nColumn) {
    std::string& strKey = vKeys.emplace_back();
    if (!AppendJsonText((*pColumns)[vKeys.size() - 1].strName, false, strKey)) {
      warnings.Add(kNotUtf8);
    }
    strKey += ':';
  }
  return vKeys[nColumn];
}

void JsonSink::WriteText(const Cell& cell) {
  // A host makes two characters of a pair of surrogates; as UTF-8 it is one.
  const std::string_view strText = cell.strText;
  char* const p = output.Room(JSON::EscapedRoom(strText.size()) + 2);
  const bool bPlain =
      cell.bEscaped ? IsStrictContent(strText, eForm != Form::RecordSet) : JSON::IsPlain(strText);
  if (bPlain && IsUtf8(strText)) {
    *p = '"';
    std::memcpy(p + 1, strText.data(), strText.size());
    p[strText.size() + 1] = '"';
    output.Use(p + strText.size() + 2);
    return;
  }
  strBuffer.clear();
  if (cell.bEscaped && IsStrictContent(strText, true) && IsUtf8(strText)) {
    strBuffer = '"' + PairsAsUtf8(strText) + '"';
  } else if (!AppendJsonText(strText, cell.bEscaped, strBuffer)) {
    warnings.Add(kNotUtf8, nWritten, (*pColumns)[cell.nColumn].strName);
  }
  output.Write(strBuffer);
}

bool JsonSink::IsLostToHosts(const Cell& cell) const {
  if (cell.eKind != Kind::Integer) {
    return cell.eKind == Kind::Real || (cell.eKind == Kind::Nested && cell.strText[0] == '[');
  }
  const auto nValue = ToInt64(cell.strText);
  return !nValue ||
         (eTexts == Texts::Host32 && (*nValue < std::numeric_limits<std::int32_t>::min() ||
                                      *nValue > std::numeric_limits<std::int32_t>::max()));
}

void JsonSink::WriteCell(const Cell& cell) {
  if (cell.eKind == Kind::Text || (eTexts != Texts::None && IsLostToHosts(cell))) {
    WriteText(cell);
  } else {
    output.Write(cell.eKind == Kind::Null ? "null" : cell.strText);
  }
}

void JsonSink::WriteObject(const Row& row) {
  ++nWritten;
  char chSeparator = '{';
  for (const Cell& cell : row) {
    const std::string_view strKey = Key(cell.nColumn);
    char* const p = output.Room(strKey.size() + 1);
    *p = chSeparator;
    std::memcpy(p + 1, strKey.data(), strKey.size());
    output.Use(p + strKey.size() + 1);
    WriteCell(cell);
    chSeparator = ',';
  }
  output.Write(row.empty() ? "{}" : "}");
}

// ---- What stands around the rows ----------------------------------------------------------------

namespace {

// Whether the column's type and constraints could not be told from its values.
bool TellsMore(const Column& column) {
  constexpr std::string_view kPlain[] = {"", "INTEGER", "REAL", "TEXT", "BOOLEAN"};
  return column.bNotNull || column.nKey != 0 ||
         std::find(std::begin(kPlain), std::end(kPlain), column.strType) == std::end(kPlain);
}

std::string ColumnText(const Column& column) {
  std::string strText = "{\"name\":";
  AppendJsonText(column.strName, false, strText);
  if (!column.strType.empty()) {
    strText += ",\"type\":";
    AppendJsonText(column.strType, false, strText);
  }
  strText += column.nKey != 0 ? ",\"key\":" + std::to_string(column.nKey) : "";
  return strText + (column.bNotNull ? ",\"notNull\":true}" : "}");
}

}  // namespace

void JsonSink::Begin(const Columns& columns, bool bAllColumns) {
  pColumns = &columns;
  if (eForm == Form::RecordSet && bAllColumns &&
      std::any_of(columns.begin(), columns.end(), TellsMore)) {
    WriteHead();
  }
}

// The beginning of a record set of several rows, with the columns when rows cannot tell them.
void JsonSink::WriteHead() {
  bHead = true;
  output.Write("{");
  if (nRows == 0 && pColumns->Count() != 0) {
    std::string strText;
    for (const Column& column : *pColumns) {
      strText += (strText.empty() ? "\"columns\":[" : ",") + ColumnText(column);
    }
    output.Write(strText + "],");
  }
  output.Write("\"rows\":[");
}

// Whether the only row of a record set can be the whole text: without cells it would be no row, and
// a column "rows" could read like the rows.
bool JsonSink::StandsAlone(const Row& row) const {
  return !row.empty() && std::none_of(row.begin(), row.end(), [&](const Cell& cell) {
    return cell.eKind == Kind::Nested && (*pColumns)[cell.nColumn].strName == "rows";
  });
}

void JsonSink::Write(const Row& row) {
  ++nRows;
  switch (eForm) {
    case Form::Lines:
      WriteObject(row);
      output.Write("\n");
      return;
    case Form::Array:
      output.Write(nRows == 1 ? "[" : ",\n ");
      WriteObject(row);
      return;
    case Form::RecordSet:
      if (nRows == 1 && !bHead && StandsAlone(row)) {
        PackRow(row, strFirst);
        return;
      }
      WriteFirst(false);
      if (!bHead) WriteHead();
      output.Write(nRows == 1 ? "" : ",");
      WriteObject(row);
  }
}

// The row that was held back, if there is one.
void JsonSink::WriteFirst(bool bAlone) {
  if (strFirst.empty()) return;
  if (!bAlone) WriteHead();
  Row row;
  UnpackRow(std::string_view(strFirst).substr(sizeof(std::uint32_t)), row);
  WriteObject(row);
  strFirst.clear();
}

void JsonSink::Flush() {
  WriteFirst(false);
  output.Flush();
}

void JsonSink::End() {
  if (eForm != Form::RecordSet) {
    if (nRows == 0 && pColumns->Count() != 0) warnings.Add(kNoPlace);
    output.Write(eForm == Form::Lines ? "" : nRows == 0 ? "[]\n" : "]\n");
    return;
  }
  if (!strFirst.empty()) {
    WriteFirst(true);
    output.Write("\n");
    return;
  }
  if (nRows == 0 && !bHead && pColumns->Count() == 0) {
    output.Write("{}\n");
    return;
  }
  if (!bHead) WriteHead();
  output.Write("]}\n");
}

}  // namespace qxrs
