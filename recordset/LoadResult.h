// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What CQXRecordSet::Load() tells: whether a text was loaded, else where and why not; and how many
// cells could not take all of their value.
//
//   const LoadResult result = set.Load(text);
//   if (!result.bLoaded) {
//     std::cerr << result.error.nLine << ':' << result.error.nColumn << ": "
//               << result.error.szReason << '\n';
//   } else if (result.nLossyCells != 0) {
//     std::cerr << "row " << result.lFirstRow << ", column " << result.lFirstColumn << '\n';
//   }

#ifndef QXRECORDSET_RECORDSET_LOADRESULT_H
#define QXRECORDSET_RECORDSET_LOADRESULT_H

#include <cstddef>

#include "json/ParseError.h"

struct LoadResult {
  bool bLoaded = false;    // the text is a JSON object, and its rows are in the record set
  JSON::ParseError error;  // where and why not

  // Cells that hold less than the text said; 0 when the text was not loaded. A nested object counts
  // as one cell, and so does each member of a row whose name comes twice.
  std::size_t nLossyCells = 0;

  // The first of them in the text: its row, and the index of its column (see GetColumnIndex). Both
  // are 0 when there is none.
  long lFirstRow = 0;
  long lFirstColumn = 0;

  // What they lost, counted by value: a nested object may hold several.
  std::size_t nReals = 0;    // numbers with '.', 'e' or 'E': "" or, in a nested object, null
  std::size_t nArrays = 0;   // arrays: the same
  std::size_t nCut = 0;      // texts with a NUL: end there
  std::size_t nLimited = 0;  // integers beyond `long`: the nearest bound
};

#endif  // QXRECORDSET_RECORDSET_LOADRESULT_H
