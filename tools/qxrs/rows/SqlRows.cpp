// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows of queries and of tables, whatever the database is.

#include <algorithm>
#include <deque>
#include <map>

#include "tools/qxrs/rows/Sql.h"
#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

std::string Database::Quoted(const std::string& strName) const {
  std::string strResult(1, chQuote);
  for (const char c : strName) {
    strResult.append(c == chQuote ? 2 : 1, c);
  }
  return strResult + chQuote;
}

std::string Database::Quoted(const std::vector<std::string>& vNames) const {
  std::string strList;
  for (const std::string& strName : vNames) {
    strList += (strList.empty() ? "" : ", ") + Quoted(strName);
  }
  return strList;
}

std::string Database::TypeOf(const Column& column, bool bInKey) const {
  const std::string& strType = column.strType;
  if (!strType.empty() && strType != "INTEGER" && strType != "REAL") return strType;
  const Kind eKind = strType == "INTEGER" ? Kind::Integer
                     : strType == "REAL"  ? Kind::Real
                                          : column.eKind.value_or(Kind::Text);
  return eKind == Kind::Integer   ? types.szInteger
         : eKind == Kind::Real    ? types.szReal
         : eKind == Kind::Boolean ? "BOOLEAN"
         : bInKey                 ? types.szKey
                                  : types.szText;
}

namespace {

constexpr const char* kLate = "a column that the first row does not have was left out";
constexpr const char* kRounded = "a number has more digits than the table's reals keep";
constexpr const char* kHalfPair = "half a pair of surrogates, which is no character, became U+FFFD";

class SqlSource : public RowSource {
 public:
  SqlSource(std::shared_ptr<Database> pOpened, const std::string& strSql, Progress& progressBar)
      : pDatabase(std::move(pOpened)),
        pStatement(pDatabase->Prepare(strSql)),
        progress(progressBar),
        columns(pStatement->GetColumns()) {
    if (columns.Count() == 0) throw InputError("the SQL statement gives no rows");
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override {
    if (!pStatement->Next(row)) return false;
    progress.Add(1);
    return true;
  }

 private:
  const std::shared_ptr<Database> pDatabase;
  const std::unique_ptr<Statement> pStatement;
  Progress& progress;
  const Columns columns;
};

// The columns of the primary key, in its order.
std::vector<std::string> KeyOf(const Columns& columns) {
  std::multimap<int, std::string> mapParts;
  for (const Column& column : columns) {
    if (column.nKey != 0) mapParts.emplace(column.nKey, column.strName);
  }
  std::vector<std::string> vNames;
  for (const auto& [nPart, strName] : mapParts) {
    vNames.push_back(strName);
  }
  return vNames;
}

class SqlSink : public RowSink {
 public:
  SqlSink(std::shared_ptr<Database> pOpened, SqlTarget tableToWrite, Warnings& lossesSeen)
      : pDatabase(std::move(pOpened)), target(std::move(tableToWrite)), warnings(lossesSeen) {}

  Needs GetNeeds() const override {
    return target.eExisting == SqlTarget::Existing::Append ? Needs::Columns : Needs::Kinds;
  }

  void Begin(const Columns& columns, bool) override {
    pColumns = &columns;
    if (columns.Count() == 0) throw InputError("there are no columns to make a table of");
    // A failure from here on closes the database, and that undoes what was begun.
    pDatabase->Begin();
    const std::string strTable = pDatabase->Quoted(target.strTable);
    if (target.eExisting == SqlTarget::Existing::Replace) {
      pDatabase->Execute("DROP TABLE IF EXISTS " + strTable);
    }
    if (target.eExisting != SqlTarget::Existing::Append) {
      pDatabase->Create(strTable, Definitions(columns));
    }
    vHold = pDatabase->Holds(target.strTable, columns);
    vValues.resize(columns.Count());
    std::string strMarks = "?";
    std::vector<std::string> vNames;
    for (const Column& column : columns) {
      strMarks += vNames.empty() ? "" : ", ?";
      vNames.push_back(column.strName);
    }
    pInsert = pDatabase->Prepare("INSERT INTO " + strTable + " (" + pDatabase->Quoted(vNames) +
                                 ") VALUES (" + strMarks + ")");
  }

  void Write(const Row& row) override {
    ++nRow;
    vTexts.clear();
    for (Value& value : vValues) {
      value.eKind = Kind::Null;
    }
    for (const Cell& cell : row) {
      if (cell.nColumn < vValues.size()) {
        SetValue(cell, vHold[cell.nColumn], vValues[cell.nColumn]);
      } else {
        Warn(kLate, cell);
      }
    }
    pInsert->Run(vValues);
  }

  void End() override {
    pInsert->Flush();
    pInsert.reset();
    pDatabase->Commit();
  }

 private:
  // The columns of a CREATE TABLE statement.
  std::string Definitions(const Columns& columns) const {
    const std::vector<std::string> vKey = target.vKey.empty() ? KeyOf(columns) : target.vKey;
    std::string strSql;
    for (const Column& column : columns) {
      const bool bInKey = std::find(vKey.begin(), vKey.end(), column.strName) != vKey.end();
      strSql += (strSql.empty() ? "" : ", ") + pDatabase->Quoted(column.strName) + " " +
                pDatabase->TypeOf(column, bInKey) + (column.bNotNull ? " NOT NULL" : "");
    }
    return strSql + (vKey.empty() ? "" : ", PRIMARY KEY (" + pDatabase->Quoted(vKey) + ")");
  }

  void Warn(const char* szReason, const Cell& cell) {
    warnings.Add(szReason, nRow, (*pColumns)[cell.nColumn].strName);
  }

  void SetValue(const Cell& cell, Hold eHold, Value& value) {
    value.eKind = cell.eKind;
    value.strText = cell.strText;
    const bool bWord =
        cell.eKind == Kind::Boolean || (eHold == Hold::Booleans && cell.eKind == Kind::Text &&
                                        (cell.strText == "true" || cell.strText == "false"));
    if (bWord && eHold != Hold::Texts) {
      value.nInteger = cell.strText == "true" ? 1 : 0;
      value.strText = value.nInteger != 0 ? "1" : "0";
      value.eKind = Kind::Integer;
    } else if (cell.eKind == Kind::Integer || cell.eKind == Kind::Real) {
      SetNumber(cell, eHold, value);
    } else if (cell.eKind != Kind::Null) {
      SetText(cell, value);
    }
  }

  // A number that the table's own numbers do not hold is stored as text, where the column is one of
  // texts; elsewhere the database makes the nearest number of it.
  void SetNumber(const Cell& cell, Hold eHold, Value& value) {
    const auto nValue = cell.eKind == Kind::Integer ? ToInt64(cell.strText) : std::nullopt;
    const bool bRounds = eHold == Hold::Reals || (eHold != Hold::Texts && !nValue);
    const bool bReal = cell.eKind == Kind::Real || eHold == Hold::Reals;
    if (bRounds && eHold != Hold::Exact && !(bReal && FitsDouble(cell.strText))) {
      Warn(kRounded, cell);
    }
    if (nValue) {
      value.nInteger = *nValue;
    } else if (cell.eKind == Kind::Real && eHold != Hold::Texts) {
      value.fReal = ToDouble(cell.strText);
    } else {
      value.eKind = Kind::Text;
    }
  }

  void SetText(const Cell& cell, Value& value) {
    value.eKind = Kind::Text;
    if (!cell.bEscaped) return;
    bool bWhole = true;
    value.strText = ShownText(cell, vTexts.emplace_back(), &bWhole);
    if (!bWhole) Warn(kHalfPair, cell);
  }

  const std::shared_ptr<Database> pDatabase;
  const SqlTarget target;
  Warnings& warnings;
  std::unique_ptr<Statement> pInsert;
  const Columns* pColumns = nullptr;
  std::vector<Hold> vHold;         // for each column
  std::vector<Value> vValues;      // of the current row
  std::deque<std::string> vTexts;  // its texts that had escapes
  unsigned long long nRow = 0;
};

}  // namespace

std::unique_ptr<RowSource> OpenQuery(std::shared_ptr<Database> pDatabase, const std::string& strSql,
                                     Progress& progress) {
  return std::make_unique<SqlSource>(std::move(pDatabase), strSql, progress);
}

std::unique_ptr<RowSink> OpenTable(std::shared_ptr<Database> pDatabase, const SqlTarget& target,
                                   Warnings& warnings) {
  return std::make_unique<SqlSink>(std::move(pDatabase), target, warnings);
}

}  // namespace qxrs
