// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interfaces. Input: a text. Every reader of a document, by ordinal, by name and by path,
// must give what the class gives for the same value, and what the C library reads from the value's
// text. The text is loaded into a record set, too: every function of a handle must give what the
// class gives, and cells must survive the way through Arrow streams.

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "fuzz/common/Fuzz.h"
#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RS.h"
#include "tests/support/PlainEscape.h"

namespace {

using JSON::JSONValue;

bool Same(const char* a, const char* b) {
  return a == nullptr || b == nullptr ? a == b : std::strcmp(a, b) == 0;
}
bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

// With all that stands behind it in the document, as the C library is given it.
std::string TextOf(const JSONValue& value) { return value.pText == nullptr ? "" : value.pText; }

unsigned long long UnsignedOf(const JSONValue& value) {
  long long n = value.AsBoolean() ? 1 : 0;
  if (value.eType == JSON::jtInteger) {
    n = 0;
    std::sscanf(TextOf(value).c_str(), "%lld", &n);
  } else if (value.eType == JSON::jtDouble) {
    const double d = std::strtod(TextOf(value).c_str(), nullptr);
    if (!(d > 0)) return 0;
    return d >= 18446744073709551616.0 ? ULLONG_MAX : static_cast<unsigned long long>(d);
  } else if (value.eType != JSON::jtBoolean) {
    return 0;
  }
  return static_cast<unsigned long long>(n);
}

// An integer's digits end where others would make a real of them, or find a word.
double RealOf(const std::string& text) {
  const std::size_t nSign = text[0] == '-' || text[0] == '+' ? 1 : 0;
  const std::size_t nDigits = text.find_first_not_of("0123456789", nSign);
  return std::strtod(text.substr(0, nDigits).c_str(), nullptr);
}

// The class's own readers against the C library.
void CheckValue(const JSONValue& value) {
  const std::string strText = TextOf(value);
  if (value.eType == JSON::jtInteger) {
    const long long n = std::strtoll(strText.c_str(), nullptr, 10);
    const long long nCut = n < INT_MIN ? INT_MIN : n > INT_MAX ? INT_MAX : n;
    Fuzz::Expect(value.AsInt() == nCut, "AsInt of an integer");
    Fuzz::Expect(value.AsDouble() == static_cast<double>(nCut), "AsDouble of an integer");
    Fuzz::Expect(value.AsLong64() == n, "AsLong64 of an integer");
    Fuzz::Expect(Same(value.AsReal(), RealOf(strText)), "AsReal of an integer");
  } else if (value.eType == JSON::jtDouble) {
    const double d = std::strtod(strText.c_str(), nullptr);
    Fuzz::Expect(Same(value.AsDouble(), d) && Same(value.AsReal(), d), "AsDouble and AsReal");
    const long long n = value.AsLong64();
    const bool bCut = d >= 9223372036854775808.0   ? n == LLONG_MAX
                      : d < -9223372036854775808.0 ? n == LLONG_MIN
                                                   : static_cast<double>(n) == std::trunc(d);
    Fuzz::Expect(bCut, "AsLong64 of a real");
  }
}

class Session {
 public:
  explicit Session(const char* szText) {
    const bool bAccepted = message.Parse(szText, -1);
    Fuzz::Expect(JSON_ParseMessage(handle, szText) == (bAccepted ? 1 : 0), "the result");
    Fuzz::Expect(JSON_MessageSize(handle) == message.Size(), "the size");
    std::size_t nOffset = 1, nLine = 1, nColumn = 1;
    const char* const szReason = JSON_ParseError(handle, &nOffset, &nLine, &nColumn);
    const JSON::ParseError& error = message.Error();
    Fuzz::Expect(szReason == error.szReason && (szReason == nullptr) == bAccepted, "the reason");
    Fuzz::Expect(nOffset == error.nOffset && nLine == error.nLine && nColumn == error.nColumn,
                 "the place of a fault");
    Fuzz::Expect(nOffset <= std::strlen(szText) && (bAccepted || nLine > 0), "a place in the text");
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { JSON_FreeMessage(handle); }

  void Run() {
    for (int i = -1; i <= message.Size(); ++i)
      CheckOrdinal(i);
    CheckName("");
    CheckName(nullptr);
    CheckName("rows");
    CheckPath(message, "");
  }

 private:
  void CheckOrdinal(int n) {
    const JSONValue& value = std::as_const(message)[n];
    CheckValue(value);
    Fuzz::Expect(JSON_IsOrdinalNull(handle, n) == IsNull(value), "IsOrdinalNull");
    Fuzz::Expect(Same(JSON_GetOrdinalAsString(handle, n), StringOf(value)), "OrdinalAsString");
    Fuzz::Expect(JSON_GetOrdinalAsInt(handle, n) == value.AsInt(), "OrdinalAsInt");
    Fuzz::Expect(Same(JSON_GetOrdinalAsDouble(handle, n), value.AsDouble()), "OrdinalAsDouble");
    Fuzz::Expect(JSON_GetOrdinalAsUnsignedLong64(handle, n) == UnsignedOf(value),
                 "OrdinalAsUnsignedLong64");
    Fuzz::Expect(JSON_GetOrdinalAsLong64(handle, n) == value.AsLong64(), "OrdinalAsLong64");
    Fuzz::Expect(Same(JSON_GetOrdinalAsReal(handle, n), value.AsReal()), "OrdinalAsReal");
    Fuzz::Expect(JSON_GetOrdinalAsBool(handle, n) == Bool(value), "OrdinalAsBool");
    Fuzz::Expect(JSON_GetOrdinalType(handle, n) == value.eType, "OrdinalType");
    Fuzz::Expect(JSON_GetOrdinalSize(handle, n) == value.Size(), "OrdinalSize");
    if (message.eType == JSON::jtObject) CheckName(message.pComposite->NameAt(n));
  }

  void CheckName(const char* name) {
    const JSONValue& value = std::as_const(message)[name];
    Fuzz::Expect(JSON_IsNameNull(handle, name) == IsNull(value), "IsNameNull");
    Fuzz::Expect(Same(JSON_GetNameAsString(handle, name), StringOf(value)), "NameAsString");
    Fuzz::Expect(JSON_GetNameAsInt(handle, name) == value.AsInt(), "NameAsInt");
    Fuzz::Expect(Same(JSON_GetNameAsDouble(handle, name), value.AsDouble()), "NameAsDouble");
    Fuzz::Expect(JSON_GetNameAsUnsignedLong64(handle, name) == UnsignedOf(value),
                 "NameAsUnsignedLong64");
    Fuzz::Expect(JSON_GetNameAsLong64(handle, name) == value.AsLong64(), "NameAsLong64");
    Fuzz::Expect(Same(JSON_GetNameAsReal(handle, name), value.AsReal()), "NameAsReal");
    Fuzz::Expect(JSON_GetNameAsBool(handle, name) == Bool(value), "NameAsBool");
    Fuzz::Expect(JSON_GetNameType(handle, name) == value.eType, "NameType");
    Fuzz::Expect(JSON_GetNameSize(handle, name) == value.Size(), "NameSize");
  }

  // The path that leads to `value`, and those of what is in it. A name is found by its path when it
  // is the first of its kind and holds neither '.' nor NUL.
  void CheckPath(const JSONValue& value, const std::string& path) {
    const JSONValue& found = message.Path(path.c_str());
    Fuzz::Expect(JSON_IsPathNull(handle, path.c_str()) == IsNull(found), "IsPathNull");
    Fuzz::Expect(Same(JSON_GetPathAsString(handle, path.c_str()), StringOf(found)), "PathAsString");
    Fuzz::Expect(JSON_GetPathAsInt(handle, path.c_str()) == found.AsInt(), "PathAsInt");
    Fuzz::Expect(Same(JSON_GetPathAsDouble(handle, path.c_str()), found.AsDouble()),
                 "PathAsDouble");
    CheckWidePath(found, path.c_str());
    if (value.pComposite == nullptr || --nPathsLeft < 0) return;
    for (int i = 0; i < value.Size() && nPathsLeft > 0; ++i) {
      const JSONValue& inside = *value.GetByOrdinal(i);
      std::string strSegment = std::to_string(i);
      bool bReachable = true;
      if (dynamic_cast<const JSON::ObjectValue*>(value.pComposite) != nullptr) {
        strSegment = value.pComposite->NameAt(i);
        bReachable = value.GetByName(strSegment.c_str(), -1) == &inside &&
                     strSegment.find('.') == std::string::npos &&
                     !(path.empty() && strSegment.empty());
      }
      const std::string strPath = path.empty() ? strSegment : path + '.' + strSegment;
      if (bReachable) {
        Fuzz::Expect(&message.Path(strPath.c_str()) == &inside, "a path leads to its value");
        CheckPath(inside, strPath);
      } else {
        message.Path(strPath.c_str());
      }
    }
  }

  void CheckWidePath(const JSONValue& found, const char* path) {
    Fuzz::Expect(JSON_GetPathAsUnsignedLong64(handle, path) == UnsignedOf(found),
                 "PathAsUnsignedLong64");
    Fuzz::Expect(JSON_GetPathAsLong64(handle, path) == found.AsLong64(), "PathAsLong64");
    Fuzz::Expect(Same(JSON_GetPathAsReal(handle, path), found.AsReal()), "PathAsReal");
    Fuzz::Expect(JSON_GetPathAsBool(handle, path) == Bool(found), "PathAsBool");
    Fuzz::Expect(JSON_GetPathType(handle, path) == found.eType, "PathType");
    Fuzz::Expect(JSON_GetPathSize(handle, path) == found.Size(), "PathSize");
    if (found.pComposite == nullptr) CheckValue(found);
  }

  static int Bool(const JSONValue& value) { return value.AsBoolean() ? 1 : 0; }
  static int IsNull(const JSONValue& value) { return value.eType == JSON::jtNull ? 1 : 0; }
  static const char* StringOf(const JSONValue& value) {
    return value.eType == JSON::jtString ? value.pText : nullptr;
  }

  JSON_HANDLE handle = JSON_AllocMessage();
  JSON::Message message;
  int nPathsLeft = 30;  // deep paths are long, and so is what they cost
};

// ---- Record sets --------------------------------------------------------------------------------

// A record set through its handle, beside the same by its class.
class RecordSets {
 public:
  explicit RecordSets(const std::string& text) {
    RS_LoadResult told{};
    told.size = sizeof told;
    const LoadResult loaded = set.Load(text);
    const int nLoaded = RS_Load(handle, text.data(), text.size(), &told);
    Fuzz::Expect(nLoaded == (loaded.bLoaded ? 1 : 0), "whether it loads");
    Fuzz::Expect(told.reason == loaded.error.szReason && told.offset == loaded.error.nOffset &&
                     told.line == loaded.error.nLine && told.column == loaded.error.nColumn,
                 "why it does not load");
    Fuzz::Expect(told.lossy_cells == loaded.nLossyCells && told.first_row == loaded.lFirstRow &&
                     told.first_column == loaded.lFirstColumn && told.reals == loaded.nReals &&
                     told.arrays == loaded.nArrays && told.cut == loaded.nCut &&
                     told.limited == loaded.nLimited,
                 "what is lost");
  }
  RecordSets(const RecordSets&) = delete;
  RecordSets& operator=(const RecordSets&) = delete;
  ~RecordSets() { RS_Free(handle); }

  void Run() {
    const CQXRows rows = std::as_const(set).Rows();
    const long lRows = std::min(rows.Count(), 20L);
    Fuzz::Expect(RS_RowsCount(handle) == rows.Count(), "RowsCount");
    Fuzz::Expect(RS_ColumnsCount(handle) == set.GetColumnCount(), "ColumnsCount");
    for (long lColumn = 0; lColumn <= std::min(set.GetColumnCount() + 1, 20L); ++lColumn) {
      CheckColumn(rows, lColumn, lRows);
    }
    CheckArrow(rows.Count() / 2 + 1);
    Fuzz::ExpectEqual(RS_Text(handle, nullptr), set.GetString(), "the text");
  }

 private:
  void CheckColumn(const CQXRows& rows, long lColumn, long lRows) {
    const bool bColumn = lColumn >= 1 && lColumn <= set.GetColumnCount();
    const char* const szName = RS_ColumnName(handle, lColumn);
    Fuzz::Expect((szName != nullptr) == bColumn, "whether there is a column");
    if (bColumn) {
      Fuzz::Expect(rows.Names()[static_cast<std::size_t>(lColumn - 1)] == szName, "ColumnName");
      Fuzz::Expect(RS_ColumnIndex(handle, szName) == lColumn, "ColumnIndex");
      Fuzz::Expect(Same(RS_SortedColumnName(handle, lColumn - 1), set.GetColumnName(lColumn - 1)),
                   "SortedColumnName");
    }
    std::vector<long long> vNumbers(static_cast<std::size_t>(lRows) + 2);
    std::vector<signed char> vTypes(vNumbers.size());
    const int nRead =
        RS_GetColumnAsLong64(handle, lColumn, 0, lRows + 2, vNumbers.data(), vTypes.data());
    std::size_t nJoined = 0;
    const char* p = RS_GetColumnAsStrings(handle, lColumn, 0, lRows + 2, nullptr, &nJoined);
    Fuzz::Expect((nRead != 0) == bColumn && (p != nullptr) == bColumn, "whether it can be read");
    const char* const pEnd = p + nJoined;
    for (long lRow = 0; lRow < lRows + 2; ++lRow) {
      const auto nRow = static_cast<std::size_t>(lRow);
      const std::string strText = CheckCell(szName, lColumn, lRow);
      if (!bColumn) continue;
      Fuzz::Expect(vTypes[nRow] == RS_GetIndexType(handle, lColumn, lRow), "the types of a column");
      Fuzz::Expect(vNumbers[nRow] == RS_GetIndexAsLong64(handle, lColumn, lRow), "its numbers");
      Fuzz::Expect(p < pEnd && strText == p, "its texts");
      p += strText.size() + 1;
    }
    Fuzz::Expect(p == pEnd, "where the texts of a column end");
  }

  // Gives its text; "" when there is none.
  std::string CheckCell(const char* szName, long lColumn, long lRow) {
    const bool bCell = std::as_const(set).HasCell(lColumn, lRow);
    const std::string strText(set.GetView(lColumn, lRow));
    std::size_t nLength = 1;
    const char* const pText = RS_GetIndexAsString(handle, lColumn, lRow, &nLength);
    Fuzz::Expect((pText != nullptr) == bCell && nLength == strText.size(), "the length of a cell");
    Fuzz::Expect(!bCell || strText == pText, "the text of a cell");
    Fuzz::Expect(Same(RS_GetNameAsString(handle, szName, lRow, nullptr), pText), "it by name");
    const int nType = RS_GetIndexType(handle, lColumn, lRow);
    Fuzz::Expect(nType == (bCell ? int{set.GetType(lColumn, lRow)} : RS_NONE),
                 "the type of a cell");
    Fuzz::Expect(RS_GetNameType(handle, szName, lRow) == nType, "the type by name");
    const long long n = std::strtoll(strText.c_str(), nullptr, 10);
    Fuzz::Expect(RS_GetIndexAsLong64(handle, lColumn, lRow) == n, "the number of a cell");
    Fuzz::Expect(RS_GetNameAsLong64(handle, szName, lRow) == n, "the number by name");
    Fuzz::Expect(RS_GetIndexAsBool(handle, lColumn, lRow) == (n != 0 ? 1 : 0), "the boolean");
    return strText;
  }

  // Out in batches, in behind a row that is there; a missing cell comes back as a null, and a
  // column of several types as text.
  void CheckArrow(long lBatch) {
    RS_HANDLE copy = RS_Alloc();
    RS_SetNameNull(copy, RS_ColumnsCount(handle) > 0 ? RS_ColumnName(handle, 1) : "", 1);
    ArrowArrayStream stream;
    Fuzz::Expect(RS_ExportStream(handle, lBatch, &stream) == 1, "a stream goes out");
    Fuzz::Expect(RS_ImportStream(copy, &stream) == 1, "a stream comes in");
    const long lRows = RS_RowsCount(handle);
    const long lColumns = RS_ColumnsCount(handle);
    Fuzz::Expect(RS_RowsCount(copy) == (lColumns > 0 ? lRows + 1 : 1), "the rows of a stream");
    for (long lColumn = 1; lColumn <= lColumns; ++lColumn) {
      int nAll = RS_NULL;  // the type of all cells that are no nulls, or RS_NONE
      for (long lRow = 1; lRow <= lRows; ++lRow) {
        const int nType = RS_GetIndexType(handle, lColumn, lRow);
        if (nType > RS_NULL) nAll = nAll == RS_NULL || nAll == nType ? nType : RS_NONE;
      }
      for (long lRow = 1; lRow <= lRows; ++lRow) {
        const int nType = RS_GetIndexType(handle, lColumn, lRow);
        const int nWanted = nType <= RS_NULL ? RS_NULL : nAll == RS_NONE ? RS_TEXT : nType;
        Fuzz::Expect(RS_GetIndexType(copy, lColumn, lRow + 1) == nWanted, "a type by Arrow");
        const char* const pText = RS_GetIndexAsString(handle, lColumn, lRow, nullptr);
        Fuzz::Expect(Same(RS_GetIndexAsString(copy, lColumn, lRow + 1, nullptr),
                          pText != nullptr ? pText : ""),
                     "a text by Arrow");
      }
    }
    RS_Free(copy);
  }

  RS_HANDLE handle = RS_Alloc();
  CQXRecordSet set;
};

void CheckEscape(const std::string& text) {
  const std::string strEscaped = Plain::Escape(text);
  for (const std::size_t nRoom : {strEscaped.size() + 1, strEscaped.size() + 2}) {
    std::string strBuffer(nRoom, '#');
    char* pDest = strBuffer.data();
    const int nWritten = JSON_EscapeString(&pDest, pDest + nRoom, text.c_str());
    Fuzz::Expect(nWritten == (nRoom > strEscaped.size() + 1 ? 1 : 0), "whether it fits");
    if (nWritten == 1) Fuzz::ExpectEqual(strBuffer.c_str(), strEscaped, "the escaped text");
  }
}

}  // namespace

void Fuzz::Run(std::string_view input) {
  const std::string strInput(input.substr(0, input.find('\0')));
  Session(strInput.c_str()).Run();
  RecordSets(strInput).Run();
  CheckEscape(strInput);
}
