// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Columns, and passing rows on.

#include "tools/qxrs/rows/Rows.h"

#include <algorithm>
#include <utility>

#include "tools/qxrs/rows/Spool.h"

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

void CopyAll(RowSource& source, RowSink& sink) {
  sink.Begin(source.GetColumns(), source.AllColumnsKnown());
  for (Row row; source.Next(row);) {
    sink.Write(row);
  }
}

void CopyAtOnce(RowSource& source, RowSink& sink) {
  Row row;
  bool bMore = source.Next(row);
  sink.Begin(source.GetColumns(), source.AllColumnsKnown());
  for (; bMore; bMore = source.Next(row)) {
    sink.Write(row);
    sink.Flush();
  }
}

}  // namespace

void Copy(RowSource& source, RowSink& sink, bool bAtOnce) {
  if (bAtOnce) {
    CopyAtOnce(source, sink);
  } else if (Knows(source, sink.GetNeeds())) {
    CopyAll(source, sink);
  } else {
    SpooledRows rows(source, SpooledRows::Kinds::AsTheyAre);
    CopyAll(rows, sink);
  }
  sink.End();
}

}  // namespace qxrs
