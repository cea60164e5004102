// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// CQXRecordSet: a table in memory that is exchanged as JSON text. Rows are numbered from 1, columns
// are addressed by name, and every cell holds a text and a cell type.
//
//   CQXRecordSet people;
//   people.SetValue("name", "Ada", 1);
//   people.SetValue("born", 1815L, 1);
//   std::string text = people.GetString();        // {"born":1815,"name":"Ada"}
//
//   CQXRecordSet copy(text);                      // on the other side
//   long year = copy.GetValueAsLong("born", 1);   // 1815
//
// Names and texts are 8-bit text, UTF-8 by convention, ended by their first NUL, stored and
// returned byte for byte. A null name is no column: setters ignore it, getters answer as for an
// unknown one.
//
// Ownership: a record set owns everything in it. A text that a getter hands out stays where it is
// while cells and columns are added, until its own cell is written or the record set is cleared,
// assigned to or destroyed.
//
// Failures come back by value: "", 0 or false for an unknown column. Nothing here throws, exhausted
// memory (std::bad_alloc) apart.
//
// Threads: a record set is used by one thread at a time, reading included; only the const functions
// may be called by several threads while no other function is. Distinct record sets are
// independent.

#ifndef QXRECORDSET_RECORDSET_QXRECORDSET_H
#define QXRECORDSET_RECORDSET_QXRECORDSET_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "json/JSONSerialize.h"
#include "json/JSONValue.h"
#include "params/CParamsX.h"
#include "qxrecordset_export.h"
#include "recordset/LoadResult.h"

namespace recordset {
class Table;  // the library's own: columns, rows and cells
class Access;
struct Cell;
}  // namespace recordset

class CQXRows;  // recordset/QXRows.h

class QXRECORDSET_EXPORT CQXRecordSet {
  // Result, where Name is a std::string or a std::string_view.
  template <typename Name, typename Result>
  using IfNameObject =
      std::enable_if_t<std::is_same_v<Name, std::string> || std::is_same_v<Name, std::string_view>,
                       Result>;
  static const std::string& Terminated(const std::string& name) { return name; }
  static std::string Terminated(std::string_view name) { return std::string(name); }

 public:
  // The type of a cell, which says how its text is to be read. The numbers are part of the
  // interface; a cell set with any other number is written as text.
  enum QX_TYPE : int {
    QX_NULL = 0,       // null; text ""
    QX_LONG = 1,       // integer; decimal digits with a leading '-' for negatives
    QX_BOOL = 2,       // boolean; "1" or "0"
    QX_TEXT = 3,       // text, as supplied
    QX_RECORDSET = 5,  // nested record set; its JSON text
  };

  // ---- Making, copying, clearing ----------------------------------------------------------------

  // An empty record set in the cleared state: no rows, no columns, GetString() gives "".
  CQXRecordSet();

  // An empty record set loaded with `text`, as by SetString().
  CQXRecordSet(const std::string& text);  // NOLINT: implicit on purpose
  CQXRecordSet(const char* text);         // NOLINT: implicit on purpose

  // An equal record set: rows, columns, cells, state and last text.
  CQXRecordSet(const CQXRecordSet& other);

  // Takes everything from `other` and leaves it cleared. Handed-out texts move along, unchanged.
  CQXRecordSet(CQXRecordSet&& other) noexcept;

  virtual ~CQXRecordSet();

  // Takes over rows, columns and cells of `other`; the last text and the parameters are emptied,
  // and the record set counts as written. Assigning a record set to itself keeps its cells.
  void operator=(const CQXRecordSet& other);

  // The same, but takes the cells away from `other` and leaves it cleared.
  void operator=(CQXRecordSet&& other) noexcept;

  // The same as SetString(text); it adds to what is there. Always true.
  bool operator=(const char* text);

  // Back to the cleared state. The memory of the contents is kept for the next ones; what they turn
  // out not to need is released when they are cleared in turn. Assigning CQXRecordSet() releases
  // all of it at once.
  void Clear();

  // ---- Columns and counts -----------------------------------------------------------------------

  // The index of a column, or -1. Indices are 1, 2, 3, ... in the order in which columns were
  // added. Constant time.
  long GetColumnIndex(const char* name);

  // The same, but a name that is no column yet becomes one, with the next index. -1 for a null
  // name.
  long AddColumn(const char* name);

  // The name at 0-based `position` in the byte-wise order of all names (not the name with that
  // index), or "" when there is none: positions 0 to GetColumnCount() - 1 give every name once,
  // sorted. The pointer lives until the record set is cleared, assigned to or destroyed. The first
  // call after columns were added sorts them.
  const char* GetColumnName(long position);

  // Number of columns.
  long GetColumnCount();

  // The largest row number that SetValue() was given since the last Clear(); 0 when there was none
  // above 0.
  long GetRowsCount();

  // ---- Writing cells ----------------------------------------------------------------------------
  //
  // Each writes the cell in column `name`, row `row`: it adds the column when it is new, raises the
  // row count when `row` lies above it, and replaces the cell's text and type. Any `long` is a row
  // number and costs no memory in proportion; rows below 1 can be written and read, but are no part
  // of the row count and of the JSON text. Constant time on average. When memory runs out, all
  // cells and the row count are as before; a new column may have been added.

  // The general setter: a copy of `text`, with type `type`. A null text changes nothing at all.
  void SetValue(const char* name, const char* text, long row = 1, QX_TYPE type = QX_TEXT);

  // Text (up to its first NUL), boolean, integer. An integer that `long` does not hold, which is
  // one beyond 32 bits in a 32-bit program, becomes a text cell with the same digits: the number
  // that the other side reads is exact, or seen to be no integer cell, but never another number.
  void SetValue(const char* name, const std::string& value, long row = 1);
  void SetValue(const char* name, std::string_view value, long row = 1);
  void SetValue(const char* name, bool value, long row = 1);
  void SetValue(const char* name, long value, long row = 1);
  void SetValue(const char* name, int value, long row = 1);
  void SetValue(const char* name, unsigned value, long row = 1);
  void SetValue(const char* name, unsigned long value, long row = 1);
  void SetValue(const char* name, long long value, long row = 1);
  void SetValue(const char* name, unsigned long long value, long row = 1);

  // There are no real cells: convert to text or to an integer first.
  void SetValue(const char* name, double value, long row = 1) = delete;

  // A character may be meant as a text or as a number: pass std::string(1, c) or int{c}. The small
  // integers signed char and unsigned char (std::int8_t, std::uint8_t) are numbers.
  void SetValue(const char* name, char value, long row = 1) = delete;
  void SetValue(const char* name, wchar_t value, long row = 1) = delete;
  void SetValue(const char* name, char16_t value, long row = 1) = delete;
  void SetValue(const char* name, char32_t value, long row = 1) = delete;

  // Any other pointer would be taken for `true`. Bytes that are text in UTF-8, such as the unsigned
  // char of some libraries: reinterpret_cast<const char*>(p). Wide text: WideToUTF8(p). A record
  // set that is const: store its text, or a copy of it. Whether a pointer is null: p != nullptr.
  template <typename T, typename = std::enable_if_t<!std::is_convertible_v<T*, const char*> &&
                                                    !std::is_convertible_v<T*, CQXRecordSet*>>>
  void SetValue(const char* name, T* value, long row = 1) = delete;

  // A nested record set: the cell takes `value`'s JSON text as it is now; the two stay independent.
  // The text of `value` is rebuilt. A null pointer changes nothing. A record set may be stored into
  // itself.
  void SetValue(const char* name, CQXRecordSet* value, long row = 1);
  void SetValue(const char* name, CQXRecordSet& value, long row = 1);

  // ---- Names as objects -------------------------------------------------------------------------
  //
  // The functions that take a column's name take it as a std::string or a std::string_view as well.
  // A view is copied first, because it need not end in a NUL.

  template <typename Name, typename... Rest>
  IfNameObject<Name, void> SetValue(const Name& name, Rest&&... rest) {
    SetValue(Terminated(name).c_str(), std::forward<Rest>(rest)...);
  }
  template <typename Name>
  IfNameObject<Name, long> AddColumn(const Name& name) {
    return AddColumn(Terminated(name).c_str());
  }
  template <typename Name>
  IfNameObject<Name, const char*> GetValueAsString(const Name& name, long row = 1) {
    return GetValueAsString(Terminated(name).c_str(), row);
  }
  template <typename Name>
  IfNameObject<Name, void> GetValueAsStringUTF8(std::string& out, const Name& name, long row = 1) {
    GetValueAsStringUTF8(out, Terminated(name).c_str(), row);
  }
  template <typename Name>
  IfNameObject<Name, long> GetValueAsLong(const Name& name, long row = 1) {
    return GetValueAsLong(Terminated(name).c_str(), row);
  }
  template <typename Name>
  IfNameObject<Name, bool> GetValueAsBool(const Name& name, long row = 1) {
    return GetValueAsBool(Terminated(name).c_str(), row);
  }
  template <typename Name>
  IfNameObject<Name, CQXRecordSet> GetValueAsRecordSet(const Name& name, long row = 1) {
    return GetValueAsRecordSet(Terminated(name).c_str(), row);
  }

  // ---- Reading that changes nothing -------------------------------------------------------------
  //
  // Nothing is made, and nothing is remembered for the next call: these functions are const. A
  // column is named, or given by its index, which saves looking for it: GetColumnIndex() once, then
  // index and row. A null name, an unknown one and an index that is none are no column.

  // Whether there is such a cell. A null cell is one.
  bool HasCell(const char* name, long row = 1) const;
  bool HasCell(std::string_view name, long row = 1) const;
  bool HasCell(long column, long row) const;

  // The type of the cell; QX_NULL when there is none.
  QX_TYPE GetType(const char* name, long row = 1) const;
  QX_TYPE GetType(std::string_view name, long row = 1) const;
  QX_TYPE GetType(long column, long row) const;

  // The text of the cell, with a NUL behind it, in place as long as that of GetValueAsString(); an
  // empty view, without an address, when there is no such cell.
  std::string_view GetView(const char* name, long row = 1) const;
  std::string_view GetView(std::string_view name, long row = 1) const;
  std::string_view GetView(long column, long row) const;

  // The index of a column, or -1; as GetColumnIndex() of a record set that is not const.
  long GetColumnIndex(const char* name) const;
  long GetColumnIndex(std::string_view name) const;

  // The rows within the row count, and the cells of each that exist:
  //
  //   for (const CQXRow& row : set.Rows())
  //     for (const CQXCell& cell : row)
  //       std::cout << row.Number() << ' ' << cell.name << '=' << cell.text << '\n';
  //
  // The range knows the columns that there are when it is made. It is good until the record set is
  // changed.
  CQXRows Rows() const;

  // Adds rows, columns and cells of `other` to those that are there, as loading its text would: a
  // cell overwrites the one of the same name and row. But nothing is lost on the way: types stay as
  // they are, rows outside the row count come along. The record set counts as written. When memory
  // runs out, some cells may have been overwritten.
  void Merge(const CQXRecordSet& other);

  // ---- Reading cells ----------------------------------------------------------------------------
  //
  // An unknown column reads as "", 0 or false. Reading a cell that does not exist, in a column that
  // does, makes it: a null cell, which GetString() writes when its row is within the row count.
  // Constant time on average.

  // The text, NUL-terminated. It stays valid and in place until this cell is written or the record
  // set is cleared, assigned to or destroyed.
  const char* GetValueAsString(const char* name, long row = 1);

  // A copy of the text in `out`, without any conversion.
  void GetValueAsStringUTF8(std::string& out, const char* name, long row = 1);

  // The number that the text begins with, as strtol reads it in base 10: white space and a sign are
  // allowed in front, no digits give 0, a number outside the range of `long` gives the nearest
  // bound.
  long GetValueAsLong(const char* name, long row = 1);

  // Whether that number is not 0.
  bool GetValueAsBool(const char* name, long row = 1);

  // A new record set loaded from the text of a cell of any type; empty when the text is no JSON
  // object or array. It is independent of this one.
  CQXRecordSet GetValueAsRecordSet(const char* name, long row = 1);

  // ---- JSON text --------------------------------------------------------------------------------

  // The record set as compact JSON text: "" in the cleared state, {} without rows, the object of
  // row 1 for one row, {"rows":[...]} for several. Members are sorted by name.
  // docs/record-set-text.md describes the form. The text is built and kept; the reference is to the
  // kept text. Linear in the number of cells; at once when no cell was set and none came into being
  // since the last call.
  const std::string& GetString();

  // The text that the last GetString() built; nothing is built.
  const std::string& GetStringRef() const;

  // Loads JSON text in the form that GetString() writes: {"rows":[...]} gives rows 1, 2, 3, ...,
  // any other object gives row 1. Cells are added to those already there and overwrite those of the
  // same name and row; Clear() first to replace the contents. Objects become QX_RECORDSET cells,
  // reals and arrays become empty texts. A text that is no JSON object loads nothing. Always true;
  // the record set counts as written either way. A null text is the empty text. When memory runs
  // out, nothing is loaded into an empty record set; of one with columns, some cells may have been
  // overwritten.
  bool SetString(const std::string& text);
  bool SetString(const char* text);

  // The same: text is taken byte for byte.
  bool SetUTF8String(const std::string& text);

  // Loads as SetString() does and tells what came of it: whether the text was loaded, else where
  // and why not, and how many cells lost something on the way. See LoadResult. The empty text,
  // which is that of a cleared record set, counts as not loaded.
  LoadResult Load(std::string_view text);

  // ---- Diagnostics and wide text ----------------------------------------------------------------

  // The table as plain text for people: a line "Row 1" for each row within the row count, and below
  // it one line "\tField (name): text" for each column in name order.
  std::string Dump();

  // UTF-8 to wide text and back, by the portability layer (portable/CPortable.h) that the host may
  // replace. What it refuses gives the empty text; a result ends at its first NUL.
  static std::wstring UTF8ToWide(const std::string& text);
  static std::string WideToUTF8(const std::wstring& text);

 private:
  friend class CQXRows;
  friend class recordset::Access;

  QXRECORDSET_NO_EXPORT void AfterAssignment() noexcept;
  QXRECORDSET_NO_EXPORT recordset::Table& EnsureTable();
  QXRECORDSET_NO_EXPORT recordset::Table& NewTable();
  QXRECORDSET_NO_EXPORT void SetText(const char* name, std::string_view text, long row,
                                     QX_TYPE type);
  QXRECORDSET_NO_EXPORT std::string BufferForText();
  QXRECORDSET_NO_EXPORT const recordset::Cell* FindCell(long column, long row) const;
  QXRECORDSET_NO_EXPORT const char* FindValue(const char* name, long row);
  template <typename Losses>
  QXRECORDSET_NO_EXPORT bool LoadCells(const std::string& text, Losses losses);
  QXRECORDSET_NO_EXPORT static std::unique_ptr<recordset::Table> CopyOf(
      const recordset::Table* pSource);

  long lRowsCount = 0;
  bool bModified = false;  // false only in the cleared state
  CParamsRS params;
  std::string strText;                       // the text last built
  std::unique_ptr<recordset::Table> pTable;  // null before the first column
};

// A record of one row with a before/after interface. Only the after values are kept, in row 1; no
// comparison is made: every field counts as changed. All operations of the record set are
// available.
class QXRECORDSET_EXPORT CBeforeAfterRecord : public CQXRecordSet {
 public:
  // A record in the cleared state.
  CBeforeAfterRecord();
  ~CBeforeAfterRecord() override;

  CBeforeAfterRecord(const CBeforeAfterRecord& other) = default;
  CBeforeAfterRecord(CBeforeAfterRecord&& other) noexcept = default;

  // As the record set's own assignment; any record set can be assigned.
  void operator=(const CQXRecordSet& other);
  void operator=(const CBeforeAfterRecord& other);

  // Stores `after` in field `name`, as CQXRecordSet::SetValue does in row 1; `before` is not kept.
  void SetFieldValues(const char* name, bool before, bool after);
  void SetFieldValues(const char* name, long before, long after);
  void SetFieldValues(const char* name, std::string& before, std::string& after);

  // Pointers, literals included, would be taken for `true`: pass std::string objects.
  template <typename T, typename U>
  void SetFieldValues(const char* name, T* before, U* after) = delete;

  // Reads field `name` into `after`, as the getters of the record set do; `before` is left alone.
  void GetFieldValues(const char* name, std::string& before, std::string& after);
  void GetFieldValuesUTF8(const char* name, std::string& before, std::string& after);
  void GetFieldValues(const char* name, long& before, long& after);
  void GetFieldValues(const char* name, bool& before, bool& after);

  // True for every name.
  bool IsChanged(const char* name);

  // Whether any field is changed: true when there is a column. And how many are.
  bool IsChanged();
  int GetChangeCount();
};

// Writes the members of `value` (an object, or a message whose root is one) to `writer` in document
// order. With `nested` 0 it writes the braces around them itself; otherwise the caller has opened
// the object and closes it. Objects, booleans, integers and strings keep their values; nulls, reals
// and arrays are written as null. No nesting is too deep: no recursion.
QXRECORDSET_EXPORT void json_walk_obj(JSON::Serialize& writer, JSON::JSONValue const* value,
                                      int nested);

#include "recordset/QXRows.h"  // NOLINT: needs the class above, and is used with it

#endif  // QXRECORDSET_RECORDSET_QXRECORDSET_H
