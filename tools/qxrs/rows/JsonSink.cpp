// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing rows as JSON.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "json/JSONSerialize.h"
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
  const bool bPairs = !bEscaped || AppendUnescaped(strText, strPlain);
  if (!bPairs && IsStrictContent(strText, true)) {
    // Half a pair of surrogates has no other form.
    strJson.append("\"").append(strText).append("\"");
    return true;
  }
  if (!bEscaped) strPlain = strText;
  const bool bUtf8 = IsUtf8(strPlain);
  if (!bUtf8) strPlain = RepairedUtf8(strPlain);
  strJson += '"';
  JSON::EscapeString(strJson, strPlain.c_str());
  for (std::size_t n = 0; (n = strPlain.find('\0', n)) != std::string::npos;) {
    strJson += "\\u0000";
    JSON::EscapeString(strJson, strPlain.c_str() + ++n);
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

class JsonSink : public RowSink {
 public:
  JsonSink(Output& outputText, JsonForm eWanted, HostTexts eAsTexts, Warnings& lossesSeen)
      : output(outputText), eForm(eWanted), eTexts(eAsTexts), warnings(lossesSeen) {}

  void Begin(const Columns& columns, bool bAllColumns) override {
    pColumns = &columns;
    if (eForm == JsonForm::RecordSet && bAllColumns &&
        std::any_of(columns.begin(), columns.end(), TellsMore)) {
      WriteHead();
    }
  }

  void Write(const Row& row) override {
    ++nRows;
    if (eForm == JsonForm::Lines) {
      WriteObject(row);
      output.Write("\n");
    } else if (eForm == JsonForm::Array) {
      output.Write(nRows == 1 ? "[" : ",\n ");
      WriteObject(row);
    } else if (nRows == 1 && !bHead && StandsAlone(row)) {
      PackRow(row, strFirst);
    } else {
      WriteFirst(false);
      if (!bHead) WriteHead();
      output.Write(nRows == 1 ? "" : ",");
      WriteObject(row);
    }
  }

  void Flush() override {
    WriteFirst(false);
    output.Flush();
  }

  void End() override {
    if (eForm != JsonForm::RecordSet) {
      if (nRows == 0 && pColumns->Count() != 0) warnings.Add(kNoPlace);
      output.Write(eForm == JsonForm::Lines ? "" : nRows == 0 ? "[]\n" : "]\n");
    } else if (!strFirst.empty()) {
      WriteFirst(true);
      output.Write("\n");
    } else if (nRows == 0 && !bHead && pColumns->Count() == 0) {
      output.Write("{}\n");
    } else {
      if (!bHead) WriteHead();
      output.Write("]}\n");
    }
  }

 private:
  // ---- Cells ----

  // The name of a column as it stands in front of a value.
  std::string_view Key(std::size_t nColumn) {
    while (vKeys.size() <= nColumn) {
      std::string& strKey = vKeys.emplace_back();
      if (!AppendJsonText((*pColumns)[vKeys.size() - 1].strName, false, strKey)) {
        warnings.Add(kNotUtf8);
      }
      strKey += ':';
    }
    return vKeys[nColumn];
  }

  void WriteText(const Cell& cell) {
    // A host makes two characters of a pair of surrogates; as UTF-8 it is one.
    const std::string_view strText = cell.strText;
    const bool bPlain = cell.bEscaped ? IsStrictContent(strText, eForm != JsonForm::RecordSet)
                                      : JSON::IsPlain(strText);
    if (bPlain && IsUtf8(strText)) {
      char* const p = output.Room(strText.size() + 2);
      *p = '"';
      std::memcpy(p + 1, strText.data(), strText.size());
      p[strText.size() + 1] = '"';
      output.Use(p + strText.size() + 2);
      return;
    }
    strBuffer.clear();
    if (cell.bEscaped && IsStrictContent(strText, true) && IsUtf8(strText)) {
      strBuffer = '"';
      AppendUnescaped(strText, strBuffer, true);
      strBuffer += '"';
    } else if (!AppendJsonText(strText, cell.bEscaped, strBuffer)) {
      warnings.Add(kNotUtf8, nWritten, (*pColumns)[cell.nColumn].strName);
    }
    output.Write(strBuffer);
  }

  bool IsLostToHosts(const Cell& cell) const {
    if (cell.eKind != Kind::Integer) {
      return cell.eKind == Kind::Real || (cell.eKind == Kind::Nested && cell.strText[0] == '[');
    }
    const auto nValue = ToInt64(cell.strText);
    return !nValue ||
           (eTexts == HostTexts::Host32 && *nValue != static_cast<std::int32_t>(*nValue));
  }

  void WriteObject(const Row& row) {
    ++nWritten;
    char chSeparator = '{';
    for (const Cell& cell : row) {
      const std::string_view strKey = Key(cell.nColumn);
      char* const p = output.Room(strKey.size() + 1);
      *p = chSeparator;
      std::memcpy(p + 1, strKey.data(), strKey.size());
      output.Use(p + strKey.size() + 1);
      if (cell.eKind == Kind::Text || (eTexts != HostTexts::None && IsLostToHosts(cell))) {
        WriteText(cell);
      } else {
        output.Write(cell.eKind == Kind::Null ? "null" : cell.strText);
      }
      chSeparator = ',';
    }
    output.Write(row.empty() ? "{}" : "}");
  }

  // ---- What stands around the rows of a record set ----

  // The beginning of a record set of several rows, with the columns when rows cannot tell them.
  void WriteHead() {
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

  // Whether the only row can be the whole text: without cells it would be no row, and a column
  // "rows" could read like the rows.
  bool StandsAlone(const Row& row) const {
    return !row.empty() && std::none_of(row.begin(), row.end(), [&](const Cell& cell) {
      return cell.eKind == Kind::Nested && (*pColumns)[cell.nColumn].strName == "rows";
    });
  }

  // The row that was held back, if there is one.
  void WriteFirst(bool bAlone) {
    if (strFirst.empty()) return;
    if (!bAlone) WriteHead();
    Row row;
    UnpackRow(strFirst, row);
    WriteObject(row);
    strFirst.clear();
  }

  Output& output;
  const JsonForm eForm;
  const HostTexts eTexts;
  Warnings& warnings;
  const Columns* pColumns = nullptr;
  std::vector<std::string> vKeys;  // for each column, its name as a JSON string, and a colon
  std::string strFirst;            // the packed first row of a record set, held back: alone it is
                                   // the whole text
  std::string strBuffer;
  bool bHead = false;               // what stands in front of the rows is written
  unsigned long long nRows = 0;     // that were taken,
  unsigned long long nWritten = 0;  // and that were written
};

}  // namespace

std::unique_ptr<RowSink> OpenJsonSink(Output& output, JsonForm eForm, HostTexts eTexts,
                                      Warnings& warnings) {
  return std::make_unique<JsonSink>(output, eForm, eTexts, warnings);
}

}  // namespace qxrs
