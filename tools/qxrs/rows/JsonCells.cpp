// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading JSON values as cells.

#include "tools/qxrs/rows/JsonCells.h"

#include <cstring>

#include "tools/qxrs/rows/Columns.h"

namespace qxrs {

namespace {

// The object as a record set holds it in a cell.
std::string NestedText(const JSON::JSONValue& object) {
  JSON::Serialize writer(1024);
  json_walk_obj(writer, &object, 0);
  return writer.String();
}

std::string JsonText(const JSON::JSONValue& value) {
  std::string strText;
  value.Serialize(strText);
  return strText;
}

// Whether two members share a name: equal names are neighbours in the sorted name index.
bool HasRepeatedNames(const JSON::ObjectValue& object) {
  object.Sort();
  for (std::size_t i = 1; i < object.vNameMap.size(); ++i) {
    if (std::strcmp(object.vNameMap[i - 1].pName, object.vNameMap[i].pName) == 0) {
      return true;
    }
  }
  return false;
}

// Each column keeps its first place and takes its last cell.
void DropRepeatedColumns(Row& row) {
  ColumnIndex columns;
  Row kept;
  for (const Cell& cell : row) {
    const std::size_t nColumn = columns.FindOrAdd(cell.strColumn, kept.size());
    if (nColumn == kept.size()) {
      kept.push_back(cell);
    } else {
      kept[nColumn] = cell;
    }
  }
  row = std::move(kept);
}

}  // namespace

void JsonCells::Read(const JSON::JSONValue& object, Row& row) {
  row.clear();
  vTexts.clear();
  if (object.eType != JSON::jtObject) {
    return;
  }
  const auto& members = static_cast<const JSON::ObjectValue&>(*object.pComposite);
  for (int i = 0; i < members.Size(); ++i) {
    row.push_back(MakeCell(members.NameAt(i), *members.GetByOrdinal(i)));
  }
  if (HasRepeatedNames(members)) {
    DropRepeatedColumns(row);
  }
}

Cell JsonCells::MakeCell(std::string_view strName, const JSON::JSONValue& value) {
  const std::string_view strText(value.pText ? value.pText : "",
                                 static_cast<std::size_t>(value.nLength));
  Cell cell{strName, CQXRecordSet::QX_TEXT, ""};
  switch (value.eType) {
    case JSON::jtObject:
      cell.eType = CQXRecordSet::QX_RECORDSET;
      cell.strText = Keep(NestedText(value));
      return cell;
    case JSON::jtBoolean:
      cell.eType = CQXRecordSet::QX_BOOL;
      cell.strText = strText.front() == 't' ? "1" : "0";
      return cell;
    case JSON::jtInteger:
      return MakeInteger(cell, strText);
    case JSON::jtString:
      cell.strText = strText.substr(0, strText.find('\0'));
      return cell;
    case JSON::jtNull:
      cell.eType = CQXRecordSet::QX_NULL;
      return cell;
    default:
      if (eReading == Reading::Foreign) {
        cell.strText = value.pComposite ? Keep(JsonText(value)) : strText;
      }
      return cell;
  }
}

Cell JsonCells::MakeInteger(Cell cell, std::string_view strDigits) {
  cell.eType = CQXRecordSet::QX_LONG;
  cell.strText = strDigits;
  if (IsPlainInteger(strDigits, eLongSize)) {
    return cell;
  }
  cell.strText = Keep(PlainInteger(strDigits));
  if (eReading == Reading::Foreign && !IsPlainInteger(cell.strText, eLongSize)) {
    cell.eType = CQXRecordSet::QX_TEXT;
  }
  return cell;
}

std::string_view JsonCells::Keep(std::string strText) {
  vTexts.push_back(std::move(strText));
  return vTexts.back();
}

}  // namespace qxrs
