// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// What the package calls beside the functions of RS.h: whole columns in both directions, and
// documents. No C++ exception may leave a function here: JavaScript could not put the stack back.
// Exhausted memory is a result.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "json/JSON.h"
#include "recordset/FlatHandle.h"
#include "recordset/RS.h"
#include "text/Block.h"
#include "text/NameHash.h"
#include "text/ReadDecimal.h"

namespace {

constexpr int kNoMemory = -2;

// What f() gives, or kNoMemory.
template <typename F>
int Guarded(F f) noexcept {
  try {
    return f();
  } catch (...) {
    return kNoMemory;
  }
}

// A value of a document, for JavaScript: its layout is known there.
struct Value {
  double real;
  std::int64_t integer;
  const char* text;
  std::int32_t size;
};

// Where a text was refused.
struct Fault {
  std::size_t offset;
  std::size_t line;
  std::size_t column;
  const char* reason;
};

const char* FindBackslash(const char* p, const char* pEnd) {
  using JSON::Block16;
  for (; pEnd - p >= Block16::kBytes; p += Block16::kBytes) {
    const std::uint32_t mask = Block16::Load(p).Equals('\\');
    if (mask != 0) return p + JSON::LowestBit(mask);
  }
  return std::find(p, pEnd, '\\');
}

constexpr int kEscape = 6;  // bytes of "\ud83d"

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int nLetter = (c | 0x20) - 'a';
  return nLetter >= 0 && nLetter < 6 ? 10 + nLetter : -1;
}

// The number in an escape; -1 when there is none.
int UnitAt(const char* p) {
  if (p[0] != '\\' || p[1] != 'u') return -1;
  int nUnit = 0;
  for (int i = 2; i < kEscape; ++i) {
    const int nDigit = HexDigit(p[i]);
    if (nDigit < 0) return -1;
    nUnit = 16 * nUnit + nDigit;
  }
  return nUnit;
}

// The character of a pair of escapes; 0 when there is none.
std::uint32_t PairAt(const char* p, const char* pEnd) {
  if (pEnd - p < 2 * kEscape) return 0;
  const int nHigh = UnitAt(p);
  if (nHigh < 0xD800 || nHigh > 0xDBFF) return 0;
  const int nLow = UnitAt(p + kEscape);
  if (nLow < 0xDC00 || nLow > 0xDFFF) return 0;
  return static_cast<std::uint32_t>(0x10000 + ((nHigh - 0xD800) << 10) + (nLow - 0xDC00));
}

// The different texts of a column, as long as there are few. Making a string is what texts cost
// most in JavaScript, and the same text can be the same string.
class Dictionary {
 public:
  static constexpr std::int32_t kFull = -1;

  // JavaScript reads the first two members.
  struct Entry {
    const char* text;
    std::uint32_t length;
    std::uint32_t nHash;
    std::uint64_t aBytes[2];  // all bytes of a text of up to 16, and zeros
  };

  // Begins anew, for a column of so many rows. It is worth its work where texts come again often.
  void Clear(long lRows) {
    hash_ = JSON::NameHash();
    nCount_ = 0;
    nMost_ = static_cast<std::int32_t>(std::min<long>(kMost, lRows / kRepeat));
    nSlots_ = 64;
    while (nSlots_ < 4 * static_cast<std::size_t>(nMost_))
      nSlots_ *= 2;
    std::fill_n(aSlots_, nSlots_, std::int16_t{kFree});
  }

  // The number of a cell's text, from 0 in the order in which they came; kFull when it has none.
  std::int32_t Find(const recordset::Cell& cell) {
    const Entry entry = EntryOf(cell);
    for (std::size_t nSlot = entry.nHash % nSlots_;; nSlot = (nSlot + 1) % nSlots_) {
      const std::int32_t nCode = aSlots_[nSlot];
      if (nCode == kFree) return Add(nSlot, entry);
      if (IsSame(aEntries_[nCode], entry)) return nCode;
    }
  }

  std::int32_t Count() const { return nCount_; }
  const Entry* Entries() const { return aEntries_; }

 private:
  static constexpr std::int32_t kMost = 1024;
  static constexpr long kRepeat = 8;
  static constexpr std::size_t kSlots = 4096;
  static constexpr std::int16_t kFree = -1;

  static constexpr std::size_t kShort = 16;

  // A short text is read in one block, which cells allow.
  Entry EntryOf(const recordset::Cell& cell) const {
    const std::size_t nLength = cell.Length();
    Entry entry{cell.pText, static_cast<std::uint32_t>(nLength), 0, {0, 0}};
    if (nLength > kShort) {
      entry.nHash = hash_(cell.pText, nLength);
    } else if (nLength != 0) {
      std::memcpy(entry.aBytes, cell.pText, kShort);
      const std::size_t nUnused = 8 * (kShort - nLength);  // bits
      if (nLength <= 8) {
        entry.aBytes[0] = entry.aBytes[0] << (nUnused - 64) >> (nUnused - 64);
        entry.aBytes[1] = 0;
      } else {
        entry.aBytes[1] = entry.aBytes[1] << nUnused >> nUnused;
      }
      entry.nHash = hash_(reinterpret_cast<const char*>(entry.aBytes), kShort, nLength);
    }
    return entry;
  }

  static bool IsSame(const Entry& a, const Entry& b) {
    if (a.length != b.length || a.nHash != b.nHash) return false;
    if (a.length > kShort) return std::memcmp(a.text, b.text, a.length) == 0;
    return a.aBytes[0] == b.aBytes[0] && a.aBytes[1] == b.aBytes[1];
  }

  std::int32_t Add(std::size_t nSlot, const Entry& entry) {
    if (nCount_ == nMost_) return kFull;
    aEntries_[nCount_] = entry;
    aSlots_[nSlot] = static_cast<std::int16_t>(nCount_);
    return nCount_++;
  }

  JSON::NameHash hash_;
  std::int32_t nCount_ = 0;
  std::int32_t nMost_ = 0;
  std::size_t nSlots_ = kSlots;
  Entry aEntries_[kMost] = {};
  std::int16_t aSlots_[kSlots] = {};
};

// What QX_ReadColumns() finds, for JavaScript.
struct Found {
  std::int32_t whole;  // 0 where the column holds cells of several kinds, or too many texts
  std::int32_t kind;   // of all cells that are no nulls: RS_NULL when there are none
  std::int32_t empty;  // rows with a null or without a cell
  std::int32_t count;  // different texts
  const Dictionary::Entry* texts;
};

constexpr long kColumns = 8;      // that are read at a time
constexpr long kBlockRows = 512;  // whose cells and texts stay in the processor's cache

// False when the dictionary is full.
bool ReadValue(const recordset::Cell& cell, Dictionary& dictionary, std::int32_t& value) {
  if (cell.eType == RS_LONG || cell.eType == RS_BOOL) {
    value = JSON::ReadDecimal<std::int32_t>(cell.pText);
    return true;
  }
  value = dictionary.Find(cell);
  return value != Dictionary::kFull;
}

// A column on its way to JavaScript.
struct ColumnReader {
  std::uint32_t nIndex;
  std::int32_t* aValues;
  signed char* aTypes;
  Found& found;
  Dictionary& dictionary;

  // Reads the rows lFrom + 1 to lTo; false when it has to be read as texts.
  bool Read(const recordset::Rows& rows, long lFrom, long lTo) const {
    for (long i = lFrom; i < lTo; ++i) {
      const recordset::Cell* const pCell = rows.FindCell(i + 1, nIndex);
      const int nKind = pCell != nullptr ? pCell->eType : RS_NONE;
      aTypes[i] = static_cast<signed char>(nKind);
      aValues[i] = 0;
      if (nKind <= RS_NULL) {
        ++found.empty;
        continue;
      }
      if (found.kind == RS_NULL) found.kind = nKind;
      if (nKind != found.kind || !ReadValue(*pCell, dictionary, aValues[i])) return false;
    }
    return true;
  }
};

}  // namespace

extern "C" {

// ---- Text ---------------------------------------------------------------------------------------

// Writes pairs of escapes as in "\ud83d\ude00" as the character that they are, in place; the
// library reads each as a character of its own, which would make two names of one. Gives the new
// length, behind which it writes a NUL. REQUIRES: there is a NUL at the end.
std::size_t QX_JoinPairs(char* text, std::size_t length) {
  const char* const pEnd = text + length;
  char* pTo = text;
  const char* pFrom = text;
  while (pFrom != pEnd) {
    const char* const pEscape = FindBackslash(pFrom, pEnd);
    if (pTo != pFrom) std::memmove(pTo, pFrom, static_cast<std::size_t>(pEscape - pFrom));
    pTo += pEscape - pFrom;
    pFrom = pEscape;
    if (pFrom == pEnd) break;
    const std::uint32_t nPoint = PairAt(pFrom, pEnd);
    if (nPoint != 0) {
      for (int nShift = 18; nShift >= 0; nShift -= 6) {
        *pTo++ = static_cast<char>(nShift == 18 ? 0xF0 | nPoint >> 18
                                                : 0x80 | (nPoint >> nShift & 0x3F));
      }
      pFrom += 2 * kEscape;
    } else {  // with the byte behind it, which may be a backslash
      *pTo++ = *pFrom++;
      if (pFrom != pEnd) *pTo++ = *pFrom++;
    }
  }
  *pTo = '\0';
  return static_cast<std::size_t>(pTo - text);
}

// ---- Columns ------------------------------------------------------------------------------------

// Reads the rows from 1 on of up to kColumns columns: `room` has 5 * rows bytes, rounded up to 4,
// for each, which receive the values (integers, booleans as 0 and 1, texts as numbers in
// found->texts) and behind them the types. `found` has a place for each column. REQUIRES: there are
// such columns.
void QX_ReadColumns(RS_HANDLE handle, long index, long columns, long rows, char* room,
                    Found* found) {
  static Dictionary aDictionaries[kColumns];
  const recordset::Rows& table = recordset::Access::TableOf(handle->set)->rows;
  const long lRoom = (5 * rows + 3) / 4 * 4;
  for (long i = 0; i < columns; ++i) {
    aDictionaries[i].Clear(rows);
    found[i] = {1, RS_NULL, 0, 0, aDictionaries[i].Entries()};
  }
  for (long lFrom = 0; lFrom < rows; lFrom += kBlockRows) {
    const long lTo = lFrom + std::min(kBlockRows, rows - lFrom);
    for (long i = 0; i < columns; ++i) {
      char* const pRoom = room + i * lRoom;
      const ColumnReader reader{
          static_cast<std::uint32_t>(index + i), reinterpret_cast<std::int32_t*>(pRoom),
          reinterpret_cast<signed char*>(pRoom + 4 * rows), found[i], aDictionaries[i]};
      if (found[i].whole != 0 && !reader.Read(table, lFrom, lTo)) found[i].whole = 0;
    }
  }
  for (long i = 0; i < columns; ++i) {
    found[i].count = aDictionaries[i].Count();
  }
}

// Writes the rows from 1 on of a column. `valid`, unless it is null, has a byte for each row, 0 for
// a null. 1, or 0 when memory is exhausted.
int QX_SetIntegers(RS_HANDLE handle, long index, const std::int32_t* values, const char* valid,
                   long rows, int bBool) {
  for (long i = 0; i < rows; ++i) {
    const bool bNull = valid != nullptr && valid[i] == 0;
    const int nWritten = bNull        ? RS_SetIndexNull(handle, index, i + 1)
                         : bBool != 0 ? RS_SetIndexAsBool(handle, index, i + 1, values[i])
                                      : RS_SetIndexAsLong64(handle, index, i + 1, values[i]);
    if (nWritten == 0) return 0;
  }
  return 1;
}

// The same with texts, one behind the other with a NUL behind each, `length` bytes in all. -1 when
// there are not as many texts as rows: one of them holds a NUL.
int QX_SetTexts(RS_HANDLE handle, long index, const char* texts, std::size_t length,
                const char* valid, long rows) {
  if (std::count(texts, texts + length, '\0') != rows) return -1;
  for (long i = 0; i < rows; ++i, texts += std::strlen(texts) + 1) {
    const bool bNull = valid != nullptr && valid[i] == 0;
    const int nWritten = bNull ? RS_SetIndexNull(handle, index, i + 1)
                               : RS_SetIndexAsString(handle, index, i + 1, texts);
    if (nWritten == 0) return 0;
  }
  return 1;
}

// ---- Documents ----------------------------------------------------------------------------------

// Null when memory is exhausted.
JSON_HANDLE QX_OpenDocument() {
  JSON_HANDLE handle = nullptr;
  Guarded([&] {
    handle = JSON_AllocMessage();
    return 0;
  });
  return handle;
}

void QX_FreeDocument(JSON_HANDLE handle) { JSON_FreeMessage(handle); }

// 1; 0 with *fault when the text is refused; or kNoMemory.
int QX_ParseDocument(JSON_HANDLE handle, const char* text, Fault* fault) {
  return Guarded([&] {
    if (JSON_ParseMessage(handle, text) != 0) return 1;
    fault->reason = JSON_ParseError(handle, &fault->offset, &fault->line, &fault->column);
    return 0;
  });
}

// The type of the value in that path, a number of JSON.h, with what the type has in *value; or
// kNoMemory.
int QX_ReadPath(JSON_HANDLE handle, const char* path, Value* value) {
  return Guarded([&] {
    const int nType = JSON_GetPathType(handle, path);
    switch (nType) {
      case JSON_TYPE_BOOLEAN:
      case JSON_TYPE_INTEGER:
      case JSON_TYPE_REAL:
        value->real = JSON_GetPathAsReal(handle, path);
        value->integer = JSON_GetPathAsLong64(handle, path);
        break;
      case JSON_TYPE_STRING:
        value->text = JSON_GetPathAsString(handle, path);
        break;
      case JSON_TYPE_ARRAY:
      case JSON_TYPE_OBJECT:
        value->size = JSON_GetPathSize(handle, path);
        break;
      default:
        break;
    }
    return nType;
  });
}

}  // extern "C"
