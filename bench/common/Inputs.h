// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The texts that are parsed and loaded: tables of generated rows, and JSON documents from a folder.
// An input is made or read when it is first asked for, so that those no chosen benchmark needs cost
// nothing, and is kept until the program ends.

#ifndef QXRECORDSET_BENCH_COMMON_INPUTS_H
#define QXRECORDSET_BENCH_COMMON_INPUTS_H

#include <cstddef>
#include <string>
#include <vector>

#include "bench/common/Rows.h"

namespace bench {

class Input {
 public:
  // A table of `nRowCount` generated rows.
  Input(std::string strInputName, std::size_t nRowCount)
      : strName(std::move(strInputName)), nRows(nRowCount) {}

  // The document in the file `strFilePath`.
  Input(std::string strInputName, std::string strFilePath)
      : strName(std::move(strInputName)), strPath(std::move(strFilePath)) {}

  const std::string& Name() const { return strName; }

  // The JSON text.
  const std::string& Text() const;

  // The rows, for a table.
  const std::vector<Row>& Rows() const;

  // Number of cells of a table, 0 for a document.
  std::size_t Cells() const { return nRows * kColumnCount; }

 private:
  std::string strName;
  std::string strPath;    // empty: a table
  std::size_t nRows = 0;  // 0: a document
  mutable std::string strText;
  mutable std::vector<Row> vRows;
};

// The table of `nRows` rows, named "rows-1", "rows-1k", "rows-1M", ...
const Input& RowsInput(std::size_t nRows);

// Those of the documents twitter, citm_catalog and canada that the folder holds.
std::vector<const Input*> DocumentInputs(const std::string& strFolder);

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_INPUTS_H
