// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A long array of rows, parsed piece by piece. Both {"rows":[...]} and [...] may be far larger than
// memory; JsonBatches cuts them between two elements and has the library parse each part as a
// document of its own, so that the grammar stays the library's. A text of any other form is one
// document.
//
//   input:   {"rows":[ a , b , c , d ]}
//   batch 1: {"rows":[ a , b ]}              the end is supplied
//   batch 2:         {"rows":[ c , d ]}      the beginning is supplied

#ifndef QXRECORDSET_TOOLS_ROWS_JSONBATCHES_H
#define QXRECORDSET_TOOLS_ROWS_JSONBATCHES_H

#include <string>
#include <string_view>

#include "json/JSONMessage.h"
#include "tools/qxrs/support/Input.h"
#include "tools/qxrs/support/TextPosition.h"

namespace qxrs {

class JsonBatches {
 public:
  enum class Form { RecordSet, Array };

  JsonBatches(Input& inputText, Form eExpected);

  // Parses the next batch into Document(), which replaces the one before; false when there is none.
  // Throws InputError on a text that the library refuses.
  bool Next();

  const JSON::Message& Document() const { return message; }

  // Complains about the beginning of the input.
  [[noreturn]] void Refuse(const std::string& strReason) const;

 private:
  bool IsEmptyRecordSet() const;
  bool FindFirstElement();
  void Scan();
  void ParseBatch(std::size_t nLength, bool bLast);

  Input& input;
  const Form eForm;
  JSON::Message message;
  std::string strPending;  // text read and not yet parsed
  TextPosition position;   // where it begins in the input
  bool bBegun = false;     // some of the input was read
  bool bInside = false;    // it begins between two elements
  bool bEnd = false;       // all is parsed

  // How far strPending is scanned for a place to cut. Positions are offsets in it.
  bool bCuttable = true;  // false: no array of rows, or its end is reached
  std::size_t nScanned = 0;
  std::size_t nCut = 0;    // the last comma between two elements; 0: none
  std::size_t nDepth = 0;  // containers open within the array
  bool bInString = false;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSONBATCHES_H
