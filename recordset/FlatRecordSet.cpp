// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The flat interface of record sets: cells, columns and text.

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "recordset/FlatHandle.h"
#include "text/ReadDecimal.h"

using recordset::Access;
using recordset::Cell;
using recordset::Fail;
using recordset::Guarded;

namespace {

constexpr const char* kNoColumn = "there is no such column";
constexpr const char* kNullArgument = "an argument is NULL";

long IndexOf(RS_HANDLE handle, const char* name) {
  return std::as_const(handle->set).GetColumnIndex(name);
}

const Cell* CellAt(RS_HANDLE handle, long lIndex, long lRow) {
  return Access::Find(handle->set, lIndex, lRow);
}

long long ToLong64(const Cell* pCell) {
  return pCell != nullptr ? JSON::ReadDecimal<long long>(pCell->pText) : 0;
}

signed char TypeOf(const Cell* pCell) {
  return static_cast<signed char>(pCell != nullptr ? pCell->eType : RS_NONE);
}

// Writes a cell by index.
int SetCell(RS_HANDLE handle, long lIndex, long lRow, std::string_view text,
            CQXRecordSet::QX_TYPE eType) noexcept {
  if (!Access::HasColumn(handle->set, lIndex)) return Fail(handle, kNoColumn, 0);
  return Guarded(handle, 0, [&] {
    Access::Set(handle->set, lIndex, lRow, text, eType);
    return 1;
  });
}

// Writes a cell by name: `set` does so with the index that the name has, or gets.
template <typename Set>
int SetByName(RS_HANDLE handle, const char* name, Set set) noexcept {
  const long lIndex = RS_AddColumn(handle, name);
  return lIndex > 0 ? set(lIndex) : 0;
}

void Tell(const LoadResult& result, RS_LoadResult& told) {
  told.offset = result.error.nOffset;
  told.line = result.error.nLine;
  told.column = result.error.nColumn;
  told.reason = result.error.szReason;
  told.lossy_cells = result.nLossyCells;
  told.first_row = result.lFirstRow;
  told.first_column = result.lFirstColumn;
  told.reals = result.nReals;
  told.arrays = result.nArrays;
  told.cut = result.nCut;
  told.limited = result.nLimited;
}

}  // namespace

// ---- Making, copying, clearing ------------------------------------------------------------------

RS_HANDLE RS_Alloc(void) { return new (std::nothrow) RS_RecordSet; }

void RS_Free(RS_HANDLE handle) { delete handle; }

RS_HANDLE RS_Copy(RS_HANDLE handle) {
  return Guarded(handle, RS_HANDLE(nullptr), [&] {
    auto pCopy = std::make_unique<RS_RecordSet>();
    pCopy->set.Merge(handle->set);
    return pCopy.release();
  });
}

void RS_Clear(RS_HANDLE handle) {
  handle->vNames.clear();
  handle->set.Clear();
}

int RS_Merge(RS_HANDLE handle, RS_HANDLE other) {
  return Guarded(handle, 0, [&] {
    handle->set.Merge(other->set);
    return 1;
  });
}

const char* RS_Error(RS_HANDLE handle) { return handle->szError; }

// ---- JSON text ----------------------------------------------------------------------------------

int RS_Load(RS_HANDLE handle, const char* text, size_t length, struct RS_LoadResult* result) {
  LoadResult loaded;
  if (text == nullptr) {
    Fail(handle, kNullArgument, 0);
  } else {
    loaded = Guarded(handle, LoadResult(), [&] { return handle->set.Load({text, length}); });
    if (loaded.error.szReason != nullptr) Fail(handle, loaded.error.szReason, 0);
  }
  if (result != nullptr) {
    RS_LoadResult told{};
    Tell(loaded, told);
    told.size = result->size;
    std::memcpy(result, &told, std::min(told.size, sizeof told));
  }
  return loaded.bLoaded ? 1 : 0;
}

const char* RS_Text(RS_HANDLE handle, size_t* length) {
  if (length != nullptr) *length = 0;
  return Guarded(handle, static_cast<const char*>(nullptr), [&] {
    const std::string& strText = handle->set.GetString();
    if (length != nullptr) *length = strText.size();
    return strText.c_str();
  });
}

// ---- Rows and columns ---------------------------------------------------------------------------

long RS_RowsCount(RS_HANDLE handle) { return handle->set.GetRowsCount(); }

long RS_ColumnsCount(RS_HANDLE handle) { return handle->set.GetColumnCount(); }

long RS_ColumnIndex(RS_HANDLE handle, const char* name) { return IndexOf(handle, name); }

long RS_AddColumn(RS_HANDLE handle, const char* name) {
  if (name == nullptr) return Fail(handle, kNullArgument, -1L);
  return Guarded(handle, -1L, [&] { return handle->set.AddColumn(name); });
}

const char* RS_ColumnName(RS_HANDLE handle, long index) {
  const char* const szNone = nullptr;
  if (!Access::HasColumn(handle->set, index)) return Fail(handle, kNoColumn, szNone);
  return Guarded(handle, szNone, [&] {
    if (index > static_cast<long>(handle->vNames.size())) {
      handle->vNames = std::as_const(handle->set).Rows().Names();
    }
    return handle->vNames[static_cast<std::size_t>(index - 1)].data();
  });
}

const char* RS_SortedColumnName(RS_HANDLE handle, long position) {
  const char* const szNone = nullptr;
  if (position < 0 || position >= RS_ColumnsCount(handle)) return Fail(handle, kNoColumn, szNone);
  return Guarded(handle, szNone, [&] { return handle->set.GetColumnName(position); });
}

// ---- Writing cells ------------------------------------------------------------------------------

int RS_SetIndexAsString(RS_HANDLE handle, long index, long row, const char* text) {
  if (text == nullptr) return Fail(handle, kNullArgument, 0);
  return SetCell(handle, index, row, text, CQXRecordSet::QX_TEXT);
}

int RS_SetIndexAsLong64(RS_HANDLE handle, long index, long row, long long value) {
  const Access::Exact digits(value);
  return SetCell(handle, index, row, digits.Text(), digits.eType);
}

int RS_SetIndexAsBool(RS_HANDLE handle, long index, long row, int value) {
  return SetCell(handle, index, row, value != 0 ? "1" : "0", CQXRecordSet::QX_BOOL);
}

int RS_SetIndexNull(RS_HANDLE handle, long index, long row) {
  return SetCell(handle, index, row, "", CQXRecordSet::QX_NULL);
}

int RS_SetIndexAsRecordSet(RS_HANDLE handle, long index, long row, RS_HANDLE nested) {
  if (nested == nullptr) return Fail(handle, kNullArgument, 0);
  const char* const szText = RS_Text(nested, nullptr);
  if (szText == nullptr) return Fail(handle, recordset::kMemoryExhausted, 0);
  return SetCell(handle, index, row, szText, CQXRecordSet::QX_RECORDSET);
}

int RS_SetNameAsString(RS_HANDLE handle, const char* name, long row, const char* text) {
  if (text == nullptr) return Fail(handle, kNullArgument, 0);
  return SetByName(handle, name,
                   [&](long lIndex) { return RS_SetIndexAsString(handle, lIndex, row, text); });
}

int RS_SetNameAsLong64(RS_HANDLE handle, const char* name, long row, long long value) {
  return SetByName(handle, name,
                   [&](long lIndex) { return RS_SetIndexAsLong64(handle, lIndex, row, value); });
}

int RS_SetNameAsBool(RS_HANDLE handle, const char* name, long row, int value) {
  return SetByName(handle, name,
                   [&](long lIndex) { return RS_SetIndexAsBool(handle, lIndex, row, value); });
}

int RS_SetNameNull(RS_HANDLE handle, const char* name, long row) {
  return SetByName(handle, name, [&](long lIndex) { return RS_SetIndexNull(handle, lIndex, row); });
}

int RS_SetNameAsRecordSet(RS_HANDLE handle, const char* name, long row, RS_HANDLE nested) {
  if (nested == nullptr) return Fail(handle, kNullArgument, 0);
  return SetByName(handle, name, [&](long lIndex) {
    return RS_SetIndexAsRecordSet(handle, lIndex, row, nested);
  });
}

// ---- Reading cells ------------------------------------------------------------------------------

int RS_GetIndexType(RS_HANDLE handle, long index, long row) {
  const Cell* const pCell = CellAt(handle, index, row);
  return pCell != nullptr ? pCell->eType : RS_NONE;
}

const char* RS_GetIndexAsString(RS_HANDLE handle, long index, long row, size_t* length) {
  const Cell* const pCell = CellAt(handle, index, row);
  if (length != nullptr) *length = pCell != nullptr ? pCell->Length() : 0;
  return pCell != nullptr ? pCell->pText : nullptr;
}

long long RS_GetIndexAsLong64(RS_HANDLE handle, long index, long row) {
  return ToLong64(CellAt(handle, index, row));
}

int RS_GetIndexAsBool(RS_HANDLE handle, long index, long row) {
  return RS_GetIndexAsLong64(handle, index, row) != 0 ? 1 : 0;
}

RS_HANDLE RS_GetIndexAsRecordSet(RS_HANDLE handle, long index, long row) {
  const RS_HANDLE none = nullptr;
  const Cell* const pCell = CellAt(handle, index, row);
  if (pCell == nullptr) return Fail(handle, "there is no such cell", none);
  return Guarded(handle, none, [&]() -> RS_HANDLE {
    auto pNested = std::make_unique<RS_RecordSet>();
    const LoadResult result = pNested->set.Load({pCell->pText, pCell->Length()});
    if (!result.bLoaded) return Fail(handle, result.error.szReason, none);
    return pNested.release();
  });
}

int RS_GetNameType(RS_HANDLE handle, const char* name, long row) {
  return RS_GetIndexType(handle, IndexOf(handle, name), row);
}

const char* RS_GetNameAsString(RS_HANDLE handle, const char* name, long row, size_t* length) {
  return RS_GetIndexAsString(handle, IndexOf(handle, name), row, length);
}

long long RS_GetNameAsLong64(RS_HANDLE handle, const char* name, long row) {
  return RS_GetIndexAsLong64(handle, IndexOf(handle, name), row);
}

int RS_GetNameAsBool(RS_HANDLE handle, const char* name, long row) {
  return RS_GetIndexAsBool(handle, IndexOf(handle, name), row);
}

RS_HANDLE RS_GetNameAsRecordSet(RS_HANDLE handle, const char* name, long row) {
  return RS_GetIndexAsRecordSet(handle, IndexOf(handle, name), row);
}

// ---- Whole columns ------------------------------------------------------------------------------

void recordset::JoinedTexts::Grow(std::size_t nMore) {
  constexpr std::size_t kAtLeast = 4096;
  const std::size_t nRoom = std::max({kAtLeast, nSize_ + nMore, nSize_ + nSize_ / 2});
  auto pGrown = std::unique_ptr<char[]>(new char[nRoom]);
  if (nSize_ != 0) std::memcpy(pGrown.get(), pData_.get(), nSize_);
  pData_ = std::move(pGrown);
  nRoom_ = nRoom;
}

namespace {

// Calls f(i, pCell) for the cells of a column in rows lRow + i, with null where there is none.
// REQUIRES: there is such a column.
template <typename F>
void ForColumn(RS_HANDLE handle, long lIndex, long lRow, long lRows, signed char* pTypes, F f) {
  assert(Access::HasColumn(handle->set, lIndex));
  const recordset::Rows& rows = Access::TableOf(handle->set)->rows;
  const auto nColumn = static_cast<std::uint32_t>(lIndex);
  for (long i = 0; i < lRows; ++i) {
    const Cell* const pCell = rows.FindCell(lRow + i, nColumn);
    if (pTypes != nullptr) pTypes[i] = TypeOf(pCell);
    f(i, pCell);
  }
}

// Whether there are such cells to be asked for: their column, and numbers for their rows.
bool CanRead(RS_HANDLE handle, long lIndex, long lRow, long lRows) {
  if (!Access::HasColumn(handle->set, lIndex)) return Fail(handle, kNoColumn, false);
  const bool bRows = lRows >= 0 && (lRow <= 0 || lRows <= LONG_MAX - lRow);
  return bRows || Fail(handle, "there are no such rows", false);
}

}  // namespace

int RS_GetColumnAsLong64(RS_HANDLE handle, long index, long row, long rows, long long* values,
                         signed char* types) {
  if (!CanRead(handle, index, row, rows)) return 0;
  ForColumn(handle, index, row, rows, types,
            [&](long i, const Cell* pCell) { values[i] = ToLong64(pCell); });
  return 1;
}

const char* RS_GetColumnAsStrings(RS_HANDLE handle, long index, long row, long rows,
                                  signed char* types, size_t* length) {
  const char* const szNone = nullptr;
  if (!CanRead(handle, index, row, rows)) return szNone;
  return Guarded(handle, szNone, [&] {
    recordset::JoinedTexts& joined = handle->joined;
    joined.Clear();
    ForColumn(handle, index, row, rows, types,
              [&](long /*i*/, const Cell* pCell) { joined.Add(pCell); });
    if (length != nullptr) *length = joined.Size();
    return rows != 0 ? joined.Data() : "";
  });
}
