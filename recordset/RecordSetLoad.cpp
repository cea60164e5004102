// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Loading JSON text: SetString() and its relatives. The text is parsed into a tree on a private copy,
// and the tree is walked into a table of its own, so that a record set takes over a complete load.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "recordset/IntegerText.h"
#include "recordset/QXRecordSet.h"
#include "recordset/Table.h"

using recordset::Table;

namespace {

constexpr int kWriterBytes = 1024;  // reserved for the text of a nested object
constexpr int kLongBytes = 21;      // the digits of a long, its sign and a NUL

class Loader {
 public:
  explicit Loader(Table& table) : table_(table) {}

  // The top-level object: its array "rows", if it has one, or else its members as row 1.
  void LoadDocument(JSON::Message& message) {
    const JSON::JSONValue& rows = message["rows"];
    if (rows.eType == JSON::jtArray) {
      LoadRows(rows);
    } else {
      LoadRow(1, message);
    }
  }

  // The number of the last row that received a cell.
  long LastRow() const { return lLastRow_; }

 private:
  // A null ends the rows. What is no object loads nothing and uses up its row number.
  void LoadRows(const JSON::JSONValue& rows) {
    for (int i = 0; i < rows.Size(); ++i) {
      const JSON::JSONValue& row = rows[i];
      if (row.eType == JSON::jtNull) return;
      if (row.eType == JSON::jtObject) LoadRow(i + 1L, row);
    }
  }

  void LoadRow(long lRow, const JSON::JSONValue& object) {
    for (int i = 0; i < object.Size(); ++i) {
      const std::uint32_t nColumn = table_.columns.FindOrAdd(object.pComposite->NameAt(i));
      LoadCell(lRow, nColumn, *object.GetByOrdinal(i));
      lLastRow_ = lRow;
    }
  }

  void LoadCell(long lRow, std::uint32_t nColumn, const JSON::JSONValue& value) {
    const auto set = [=](std::string_view text, CQXRecordSet::QX_TYPE eType) {
      table_.SetCell(lRow, nColumn, text.data(), text.size(), eType);
    };
    const std::string_view text(value.pText, static_cast<std::size_t>(value.nLength));
    switch (value.eType) {
      case JSON::jtObject:
        return set(ObjectText(value), CQXRecordSet::QX_RECORDSET);
      case JSON::jtBoolean:
        return set(text.front() == 't' ? "1" : "0", CQXRecordSet::QX_BOOL);
      case JSON::jtInteger:
        return set(IntegerText(text), CQXRecordSet::QX_LONG);
      case JSON::jtString:
        return set(text.substr(0, text.find('\0')), CQXRecordSet::QX_TEXT);
      case JSON::jtNull:
        return set("", CQXRecordSet::QX_NULL);
      default:
        return set("", CQXRecordSet::QX_TEXT);
    }
  }

  // The text of a nested object; valid until the next one.
  std::string_view ObjectText(const JSON::JSONValue& object) {
    JSON::Serialize writer(kWriterBytes);
    json_walk_obj(writer, &object, 0);
    strObject_ = writer.String();
    return strObject_;
  }

  // The canonical text of an integer; valid until the next one.
  std::string_view IntegerText(std::string_view text) {
    if (recordset::IsCanonicalInteger(text)) return text;
    const char* const pEnd = LongToStr(recordset::ReadLong(text), aDigits_, kLongBytes);
    return {aDigits_, static_cast<std::size_t>(pEnd - aDigits_)};
  }

  Table& table_;
  long lLastRow_ = 0;
  std::string strObject_;
  char aDigits_[kLongBytes] = {};
};

}  // namespace

bool CQXRecordSet::SetString(const std::string& text) {
  std::string strCopy(text);  // parsed in place
  JSON::Message message(true);
  const bool bParsed =
      strCopy.size() <= INT_MAX && message.Parse(strCopy.data(), static_cast<int>(strCopy.size()));
  if (bParsed && message.eType == JSON::jtObject) {
    auto pLoaded = std::make_unique<Table>();
    Loader loader(*pLoaded);
    loader.LoadDocument(message);
    Adopt(std::move(pLoaded), loader.LastRow());
  }
  bModified = true;
  return true;
}

bool CQXRecordSet::SetString(const char* text) {
  return SetString(std::string(text != nullptr ? text : ""));
}

bool CQXRecordSet::SetUTF8String(const std::string& text) { return SetString(text); }

// Takes a whole table as the contents, or adds its cells to those that are there.
void CQXRecordSet::Adopt(std::unique_ptr<Table> pLoaded, long lLastRow) {
  if (GetColumnCount() == 0) {
    pTable.swap(pLoaded);
  } else {
    pTable->Merge(*pLoaded);
  }
  lRowsCount = std::max(lRowsCount, lLastRow);
}
