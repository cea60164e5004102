// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// How rows travel through the tool: a RowSource gives them one by one, a RowSink takes them. Every
// format is one of each, so any source can feed any sink, and only one row is in memory at a time.
// A cell carries its value as it was written: what a sink can hold it gets.

#ifndef QXRECORDSET_TOOLS_ROWS_ROWS_H
#define QXRECORDSET_TOOLS_ROWS_ROWS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qxrs {

// The kinds of values: those of JSON, with integers apart.
enum class Kind : std::uint8_t { Null, Boolean, Integer, Real, Text, Nested };

struct Cell {
  // Boolean: true or false. Integer, Real: a number of JSON, of any length. Nested: an array or an
  // object, without white space. Text: its bytes; with bEscaped they are the content of a JSON
  // string in which something is escaped.
  std::string_view strText;
  std::uint32_t nColumn = 0;  // its position in the source's columns
  Kind eKind = Kind::Null;
  bool bEscaped = false;
};

// The cells of one row in the order in which they came, at most one for each column. A column
// without a cell is not there.
using Row = std::vector<Cell>;

// The cell of a column, or null.
const Cell* Find(const Row& row, std::size_t nColumn);

// What is known about a column.
struct Column {
  std::string strName;
  std::string strType;        // as a database declares it; empty: not known
  std::optional<Kind> eKind;  // of all its cells, nulls apart, when that is known
  bool bNotNull = false;
  int nKey = 0;  // position in the primary key, from 1; 0: no part of it
};

// The columns of a table, in their order, and where each stands.
class Columns {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  std::size_t Count() const { return vColumns.size(); }
  const Column& operator[](std::size_t n) const { return vColumns[n]; }
  Column& operator[](std::size_t n) { return vColumns[n]; }
  std::vector<Column>::const_iterator begin() const { return vColumns.begin(); }
  std::vector<Column>::const_iterator end() const { return vColumns.end(); }

  // The position of `strName`, or kNone.
  std::size_t Find(std::string_view strName) const;

  // The position of `strName`; a new name becomes the last column.
  std::size_t FindOrAdd(std::string_view strName);

  // Adds a column whose name is new; false when it is not.
  bool Add(Column column);

 private:
  std::vector<Column> vColumns;
  std::unordered_map<std::string, std::size_t> mapPositions;
};

class RowSource {
 public:
  RowSource() = default;
  RowSource(const RowSource&) = delete;
  RowSource& operator=(const RowSource&) = delete;
  virtual ~RowSource() = default;

  // The columns that are known so far. Next() may add to them, unless AllColumnsKnown().
  virtual const Columns& GetColumns() const = 0;
  virtual bool AllColumnsKnown() const = 0;

  // The next row in place of what `row` holds; false at the end. The texts stay valid until the
  // next call. Throws InputError.
  virtual bool Next(Row& row) = 0;
};

class RowSink {
 public:
  RowSink() = default;
  RowSink(const RowSink&) = delete;
  RowSink& operator=(const RowSink&) = delete;
  virtual ~RowSink() = default;

  // What has to be known before the first row.
  enum class Needs { Nothing, Columns, Kinds };
  virtual Needs GetNeeds() const { return Needs::Nothing; }

  // Called once, before the first row. The columns outlive the sink and may grow, unless
  // `bAllColumns`.
  virtual void Begin(const Columns& columns, bool bAllColumns) = 0;
  virtual void Write(const Row& row) = 0;
  virtual void End() = 0;

  // Hands over the rows that were written, where somebody waits for them.
  virtual void Flush() {}
};

// Some columns, in a new order. Throws InputError, from Next() at the end when not before, when one
// of them never occurred in any row.
std::unique_ptr<RowSource> SelectColumns(std::unique_ptr<RowSource> pRows,
                                         const std::vector<std::string>& vNames);

// The first rows. What follows is not read.
std::unique_ptr<RowSource> FirstRows(std::unique_ptr<RowSource> pRows, unsigned long long nRows);

// The last rows; the source is read at once.
std::unique_ptr<RowSource> LastRows(RowSource& source, unsigned long long nRows);

// Passes all rows on; with bAtOnce each is handed over before the next is read, and a sink that
// needs the columns gets those of the first row. Otherwise rows of a source that does not know what
// the sink needs are kept in a temporary file until it is known.
void Copy(RowSource& source, RowSink& sink, bool bAtOnce);

// Why two columns cannot have that name.
inline std::string RepeatedName(const std::string& strName) {
  return "the column name '" + strName + "' occurs more than once";
}

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_ROWS_H
