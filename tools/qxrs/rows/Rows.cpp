// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Columns, selecting columns and rows, and passing rows on.

#include "tools/qxrs/rows/Rows.h"

#include <algorithm>
#include <deque>
#include <utility>

#include "tools/qxrs/rows/Spool.h"
#include "tools/qxrs/support/Errors.h"

namespace qxrs {

std::size_t Columns::Find(std::string_view strName) const {
  const auto it = mapPositions.find(std::string(strName));
  return it == mapPositions.end() ? kNone : it->second;
}

std::size_t Columns::FindOrAdd(std::string_view strName) {
  const auto [it, bNew] = mapPositions.emplace(strName, vColumns.size());
  if (bNew) vColumns.emplace_back().strName = strName;
  return it->second;
}

bool Columns::Add(Column column) {
  const bool bNew = mapPositions.emplace(column.strName, vColumns.size()).second;
  if (bNew) vColumns.push_back(std::move(column));
  return bNew;
}

const Cell* Find(const Row& row, std::size_t nColumn) {
  const auto it = std::find_if(row.begin(), row.end(),
                               [&](const Cell& cell) { return cell.nColumn == nColumn; });
  return it == row.end() ? nullptr : &*it;
}

// ---- Some of the rows ---------------------------------------------------------------------------

namespace {

class SelectedColumns : public RowSource {
 public:
  SelectedColumns(std::unique_ptr<RowSource> pRows, const std::vector<std::string>& vNames)
      : pSource(std::move(pRows)) {
    const Columns& all = pSource->GetColumns();
    for (const std::string& strName : vNames) {
      const std::size_t nColumn = all.Find(strName);
      Column column;
      if (nColumn != Columns::kNone) column = all[nColumn];
      column.strName = strName;
      if (!columns.Add(std::move(column))) throw UsageError(RepeatedName(strName));
    }
    Match();
    if (pSource->AllColumnsKnown()) RefuseUnseen();
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }

  bool Next(Row& row) override {
    if (!pSource->Next(rowAll)) {
      RefuseUnseen();
      return false;
    }
    Match();
    vCells.assign(columns.Count(), nullptr);
    for (const Cell& cell : rowAll) {
      if (vPlaces[cell.nColumn] != Columns::kNone) vCells[vPlaces[cell.nColumn]] = &cell;
    }
    row.clear();
    for (std::size_t i = 0; i < vCells.size(); ++i) {
      if (!vCells[i]) continue;
      row.push_back(*vCells[i]);
      row.back().nColumn = static_cast<std::uint32_t>(i);
    }
    return true;
  }

 private:
  // Takes in the columns that the source has now.
  void Match() {
    const Columns& all = pSource->GetColumns();
    for (std::size_t i = vPlaces.size(); i < all.Count(); ++i) {
      vPlaces.push_back(columns.Find(all[i].strName));
    }
  }

  void RefuseUnseen() const {
    for (std::size_t i = 0; i < columns.Count(); ++i) {
      if (std::find(vPlaces.begin(), vPlaces.end(), i) == vPlaces.end()) {
        throw InputError("there is no column '" + columns[i].strName + "'");
      }
    }
  }

  const std::unique_ptr<RowSource> pSource;
  Columns columns;
  std::vector<std::size_t> vPlaces;  // for each column of the source, where it goes
  Row rowAll;                        // the source's row
  std::vector<const Cell*> vCells;   // its cells in the order of the columns
};

class FirstOfRows : public RowSource {
 public:
  FirstOfRows(std::unique_ptr<RowSource> pRows, unsigned long long nRows)
      : pSource(std::move(pRows)), nMore(nRows) {}

  const Columns& GetColumns() const override { return pSource->GetColumns(); }
  bool AllColumnsKnown() const override { return pSource->AllColumnsKnown(); }
  bool Next(Row& row) override {
    if (nMore == 0) return false;
    --nMore;
    return pSource->Next(row);
  }

 private:
  const std::unique_ptr<RowSource> pSource;
  unsigned long long nMore;
};

class LastOfRows : public RowSource {
 public:
  LastOfRows(RowSource& source, unsigned long long nRows) {
    for (Row row; source.Next(row);) {
      if (vRows.size() == nRows) vRows.pop_front();
      PackRow(row, vRows.emplace_back());
    }
    columns = source.GetColumns();
  }

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return true; }
  bool Next(Row& row) override {
    if (nGiven == vRows.size()) return false;
    UnpackRow(vRows[nGiven++], row);
    return true;
  }

 private:
  Columns columns;
  std::deque<std::string> vRows;  // packed
  std::size_t nGiven = 0;
};

}  // namespace

std::unique_ptr<RowSource> SelectColumns(std::unique_ptr<RowSource> pRows,
                                         const std::vector<std::string>& vNames) {
  return std::make_unique<SelectedColumns>(std::move(pRows), vNames);
}

std::unique_ptr<RowSource> FirstRows(std::unique_ptr<RowSource> pRows, unsigned long long nRows) {
  return std::make_unique<FirstOfRows>(std::move(pRows), nRows);
}

std::unique_ptr<RowSource> LastRows(RowSource& source, unsigned long long nRows) {
  return std::make_unique<LastOfRows>(source, nRows);
}

// ---- Passing rows on ----------------------------------------------------------------------------

namespace {

bool Knows(const RowSource& source, RowSink::Needs eNeeds) {
  if (eNeeds == RowSink::Needs::Nothing) return true;
  const Columns& columns = source.GetColumns();
  return source.AllColumnsKnown() &&
         (eNeeds == RowSink::Needs::Columns ||
          std::all_of(columns.begin(), columns.end(), [](const Column& column) {
            return column.eKind || !column.strType.empty();
          }));
}

// The first row is read before the sink begins: it may bring columns.
void CopyAll(RowSource& source, RowSink& sink, bool bAtOnce) {
  Row row;
  bool bMore = source.Next(row);
  sink.Begin(source.GetColumns(), source.AllColumnsKnown());
  for (; bMore; bMore = source.Next(row)) {
    sink.Write(row);
    if (bAtOnce) sink.Flush();
  }
}

}  // namespace

void Copy(RowSource& source, RowSink& sink, bool bAtOnce) {
  if (bAtOnce || Knows(source, sink.GetNeeds())) {
    CopyAll(source, sink, bAtOnce);
  } else {
    SpooledRows rows(source, SpooledRows::Kinds::AsTheyAre);
    CopyAll(rows, sink, false);
  }
  sink.End();
}

}  // namespace qxrs
