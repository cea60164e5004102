// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Rows from and to JSON: record set text, an array of objects, and JSON Lines. All of them stream.

#ifndef QXRECORDSET_TOOLS_ROWS_JSON_H
#define QXRECORDSET_TOOLS_ROWS_JSON_H

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "text/ExpectedName.h"
#include "tools/qxrs/rows/JsonWalk.h"
#include "tools/qxrs/rows/Rows.h"
#include "tools/qxrs/support/Output.h"
#include "tools/qxrs/support/Warnings.h"
#include "tools/qxrs/support/Window.h"

namespace qxrs {

// Appends `strText` as a JSON string with its quotes. With bEscaped it is the content of one
// already, which is written anew. False when bytes that are no UTF-8 became U+FFFD.
bool AppendJsonText(std::string_view strText, bool bEscaped, std::string& strJson);

// A number that the parser accepts and strict JSON does not: without its plus and leading zeros, or
// as a string, when that is not enough.
std::string StrictNumber(std::string_view strNumber);

// The cell as JSON text.
std::string JsonValueText(const Cell& cell);

class JsonSource : public RowSource {
 public:
  enum class Form {
    Document,  // a record set, or an array of objects: what the first bracket says
    Lines      // an object on each line; blank lines are passed over
  };

  // Reads up to the first row. A record set may tell its columns in a member "columns" in front of
  // the rows, an array of objects with the members name, type, key and notNull.
  JsonSource(Input& input, Form eForm, Warnings& lossesSeen);

  const Columns& GetColumns() const override { return columns; }
  bool AllColumnsKnown() const override { return bColumnsTold; }
  bool Next(Row& row) override;

 private:
  friend class RowReader;
  enum class State { Single, Rows, Lines, End };
  enum class Search { Found, SingleRow, Failed };

  char PeekToken();
  void Take() { window.UseUpTo(window.Begin() + 1); }
  void FindRows();
  Search SearchRows();
  void TellColumns(std::string_view strJson);
  bool NextElement(Row& row);
  bool NextLine(Row& row);
  bool FindElement(char* pcFirst);
  void EndRows();
  void EndMembers();
  void ExpectEnd();
  void ReadRow(Row& row);
  void FillOrRefuse(const JsonWalk& walk);
  std::size_t FindColumn(std::string_view strName);

  struct Loss {
    const char* szReason;
    std::size_t nColumn;
  };

  Window window;
  Warnings& warnings;
  State eState = State::Rows;
  bool bInObject = false;     // the array of rows is a member of an object
  bool bFirst = true;         // no element was read so far
  bool bColumnsTold = false;  // by the member "columns"
  unsigned long long nRow = 0;

  Columns columns;
  std::deque<std::string> vNames;             // as the names of the columns stand in the text,
  std::vector<JSON::ExpectedName> vExpected;  // and as they are looked for
  std::vector<unsigned long long> vSeen;      // for each column, the last row that had it
  std::deque<std::string> vTexts;             // texts of the current row that are not in the window
  std::vector<Loss> vLosses;                  // of the current row
};

class JsonSink : public RowSink {
 public:
  enum class Form { RecordSet, Array, Lines };

  // Values that a host with a long of so many bits would lose, reals, arrays and large integers,
  // can become texts, as they are written.
  enum class Texts { None, Host64, Host32 };

  JsonSink(Output& outputText, Form eWanted, Texts eAsTexts, Warnings& lossesSeen);

  void Begin(const Columns& columns, bool bAllColumns) override;
  void Write(const Row& row) override;
  void End() override;
  void Flush() override;

 private:
  void WriteObject(const Row& row);
  void WriteCell(const Cell& cell);
  void WriteText(const Cell& cell);
  void WriteHead();
  void WriteFirst(bool bAlone);
  std::string_view Key(std::size_t nColumn);
  bool IsLostToHosts(const Cell& cell) const;
  bool StandsAlone(const Row& row) const;

  Output& output;
  const Form eForm;
  const Texts eTexts;
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

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSON_H
