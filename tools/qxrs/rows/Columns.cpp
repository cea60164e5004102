// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Aligning, gathering and selecting columns.

#include "tools/qxrs/rows/Columns.h"

#include <algorithm>
#include <utility>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

// ---- ColumnIndex --------------------------------------------------------------------------------

ColumnIndex::ColumnIndex(std::vector<std::string> vNames) : vColumns(std::move(vNames)) {
  for (std::size_t i = 0; i < vColumns.size(); ++i) {
    mapPositions.emplace(vColumns[i], i);
  }
}

std::size_t ColumnIndex::Find(std::string_view strName, std::size_t nGuess) const {
  if (nGuess < vColumns.size() && vColumns[nGuess] == strName) {
    return nGuess;
  }
  const auto it = mapPositions.find(std::string(strName));
  return it == mapPositions.end() ? kNone : it->second;
}

std::size_t ColumnIndex::FindOrAdd(std::string_view strName, std::size_t nGuess) {
  const std::size_t nFound = Find(strName, nGuess);
  if (nFound != kNone) {
    return nFound;
  }
  mapPositions.emplace(strName, vColumns.size());
  vColumns.emplace_back(strName);
  return vColumns.size() - 1;
}

// ---- ColumnSink ---------------------------------------------------------------------------------

void ColumnSink::Begin(const std::vector<std::string>* pColumns) {
  columns = ColumnIndex(*pColumns);
  BeginColumns();
}

void ColumnSink::Write(const Row& row) {
  vAligned.assign(Names().size(), Cell{"", CQXRecordSet::QX_NULL, ""});
  std::size_t nGuess = 0;
  for (const Cell& cell : row) {
    const std::size_t nColumn = columns.Find(cell.strColumn, nGuess);
    vAligned[nColumn] = cell;
    nGuess = nColumn + 1;
  }
  WriteCells(vAligned);
}

// ---- GatheredRows -------------------------------------------------------------------------------

GatheredRows::GatheredRows(RowSource& source) {
  if (const std::vector<std::string>* pKnown = source.Columns()) {
    columns = ColumnIndex(*pKnown);
  }
  for (Row row; source.Next(row);) {
    Add(row);
  }
}

void GatheredRows::Add(const Row& row) {
  std::size_t nGuess = 0;
  for (const Cell& cell : row) {
    const std::size_t nColumn = columns.FindOrAdd(cell.strColumn, nGuess);
    vCells.push_back({strTexts.size(), cell.strText.size(), nColumn, cell.eType});
    strTexts += cell.strText;
    nGuess = nColumn + 1;
  }
  vRowEnds.push_back(vCells.size());
}

bool GatheredRows::Next(Row& row) {
  if (nRow == vRowEnds.size()) {
    return false;
  }
  row.clear();
  for (; nCell < vRowEnds[nRow]; ++nCell) {
    const Kept& kept = vCells[nCell];
    row.push_back({columns.Names()[kept.nColumn], kept.eType,
                   std::string_view(strTexts).substr(kept.nText, kept.nLength)});
  }
  ++nRow;
  return true;
}

void GatheredRows::Rewind() {
  nRow = 0;
  nCell = 0;
}

namespace {

// ---- Selecting ----------------------------------------------------------------------------------

class SelectedColumns : public RowSource {
 public:
  SelectedColumns(std::unique_ptr<RowSource> pRows, std::vector<std::string> vNames)
      : pSource(std::move(pRows)), columns(std::move(vNames)), vSeen(columns.Names().size()) {
    if (const std::vector<std::string>* pKnown = pSource->Columns()) {
      for (const std::string& strColumn : *pKnown) {
        Note(columns.Find(strColumn, 0));
      }
      RefuseUnseen();
    }
  }

  const std::vector<std::string>* Columns() override { return &columns.Names(); }

  bool Next(Row& row) override {
    if (!pSource->Next(rowAll)) {
      RefuseUnseen();
      return false;
    }
    vPlaces.assign(columns.Names().size(), nullptr);
    for (const Cell& cell : rowAll) {
      const std::size_t nColumn = columns.Find(cell.strColumn, 0);
      Note(nColumn);
      if (nColumn != ColumnIndex::kNone) {
        vPlaces[nColumn] = &cell;
      }
    }
    row.clear();
    for (const Cell* pCell : vPlaces) {
      if (pCell) {
        row.push_back(*pCell);
      }
    }
    return true;
  }

 private:
  void Note(std::size_t nColumn) {
    if (nColumn != ColumnIndex::kNone) {
      vSeen[nColumn] = true;
    }
  }

  void RefuseUnseen() const {
    const auto itUnseen = std::find(vSeen.begin(), vSeen.end(), false);
    if (itUnseen != vSeen.end()) {
      const auto nColumn = static_cast<std::size_t>(itUnseen - vSeen.begin());
      throw InputError("there is no column '" + columns.Names()[nColumn] + "'");
    }
  }

  const std::unique_ptr<RowSource> pSource;
  const ColumnIndex columns;
  std::vector<bool> vSeen;           // for each column, whether it occurred
  Row rowAll;                        // the source's row
  std::vector<const Cell*> vPlaces;  // its cells in the order of the columns
};

}  // namespace

std::unique_ptr<RowSource> WithKnownColumns(std::unique_ptr<RowSource> pSource) {
  if (pSource->Columns()) {
    return pSource;
  }
  return std::make_unique<GatheredRows>(*pSource);
}

std::unique_ptr<RowSource> SelectColumns(std::unique_ptr<RowSource> pSource,
                                         std::vector<std::string> vNames) {
  return std::make_unique<SelectedColumns>(std::move(pSource), std::move(vNames));
}

}  // namespace qxrs
