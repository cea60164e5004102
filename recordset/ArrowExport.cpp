// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record sets out through the Arrow C data interface. Each schema and each array is one holder with
// its children, their buffers and their names; a consumer may move a child out and release it by
// itself, so each child has a holder of its own.

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "recordset/FlatHandle.h"
#include "text/ReadDecimal.h"

using recordset::Access;
using recordset::Cell;
using recordset::Fail;
using recordset::Guarded;

namespace {

// ---- What a column is ---------------------------------------------------------------------------

// The types that the cells of a column have, and the bytes of their texts, in a range of rows.
class Found {
 public:
  void Add(const Cell& cell) {
    nTypes_ |= cell.eType == RS_NULL        ? 0U
               : cell.eType == RS_LONG      ? kLong
               : cell.eType == RS_BOOL      ? kBool
               : cell.eType == RS_RECORDSET ? kRecordSet
                                            : kText;
  }

  const char* Format() const {
    return nTypes_ == 0 ? "n" : nTypes_ == kLong ? "l" : nTypes_ == kBool ? "b" : "u";
  }
  bool IsRecordSet() const { return nTypes_ == kRecordSet; }

 private:
  enum : unsigned { kLong = 1, kBool = 2, kText = 4, kRecordSet = 8 };
  unsigned nTypes_ = 0;
};

std::vector<Found> Examine(const CQXRecordSet& set) {
  const recordset::Table* const pTable = Access::TableOf(set);
  if (pTable == nullptr) return {};
  std::vector<Found> vFound(pTable->columns.Count());
  for (long lRow = 1; lRow <= Access::RowsCount(set); ++lRow) {
    const recordset::Row* const pRow = pTable->rows.FindRow(lRow);
    if (pRow == nullptr) continue;
    pTable->rows.ForEachCell(lRow, *pRow, [&](std::uint32_t nColumn, const Cell& cell) {
      vFound[nColumn - 1].Add(cell);
    });
  }
  return vFound;
}

// ---- Holders ------------------------------------------------------------------------------------

// Releases a structure of the interface: its children, unless they were moved out, and its holder.
template <typename Arrow, typename Holder>
void Release(Arrow* pArrow) {
  for (int64_t i = 0; i < pArrow->n_children; ++i) {
    Arrow* const pChild = pArrow->children[i];
    if (pChild->release != nullptr) pChild->release(pChild);
  }
  delete static_cast<Holder*>(pArrow->private_data);
  pArrow->release = nullptr;
}

// The children of a structure. They are released with it when it was not handed out.
template <typename Arrow>
class Children {
 public:
  explicit Children(std::size_t nCount) : vChildren_(nCount), vPointers_(nCount) {
    std::transform(vChildren_.begin(), vChildren_.end(), vPointers_.begin(),
                   [](Arrow& child) { return &child; });
  }
  Arrow& operator[](std::size_t i) { return vChildren_[i]; }

  void GiveTo(Arrow& parent) {
    parent.n_children = static_cast<int64_t>(vChildren_.size());
    parent.children = vPointers_.data();
  }
  void ReleaseAll() {
    for (Arrow& child : vChildren_) {
      if (child.release != nullptr) child.release(&child);
    }
  }

 private:
  std::vector<Arrow> vChildren_;
  std::vector<Arrow*> vPointers_;
};

// ---- Schemas ------------------------------------------------------------------------------------

struct SchemaHolder {
  std::string strName;
  std::string strMetadata;
  Children<ArrowSchema> children{0};
};

// Metadata: the number of pairs, and each key and value with its length in front.
std::string RecordSetMark() {
  std::string strMark;
  const auto number = [&strMark](std::size_t n) {
    const auto nValue = static_cast<std::int32_t>(n);
    char bytes[sizeof nValue];
    std::memcpy(bytes, &nValue, sizeof nValue);
    strMark.append(bytes, sizeof bytes);
  };
  number(1);
  for (const std::string_view word : {"qxrecordset.type", "recordset"}) {
    number(word.size());
    strMark += word;
  }
  return strMark;
}

void Fill(ArrowSchema& schema, const char* szFormat, std::unique_ptr<SchemaHolder> pHolder) {
  schema = ArrowSchema();
  schema.format = szFormat;
  schema.name = pHolder->strName.c_str();
  if (!pHolder->strMetadata.empty()) schema.metadata = pHolder->strMetadata.data();
  pHolder->children.GiveTo(schema);
  schema.release = Release<ArrowSchema, SchemaHolder>;
  schema.private_data = pHolder.release();
}

void MakeSchema(const CQXRecordSet& set, const std::vector<Found>& vFound, ArrowSchema& schema) {
  auto pHolder = std::make_unique<SchemaHolder>();
  pHolder->children = Children<ArrowSchema>(vFound.size());
  const std::vector<std::string_view> vNames = set.Rows().Names();
  try {
    for (std::size_t i = 0; i < vFound.size(); ++i) {
      auto pField = std::make_unique<SchemaHolder>();
      pField->strName = vNames[i];
      if (vFound[i].IsRecordSet()) pField->strMetadata = RecordSetMark();
      Fill(pHolder->children[i], vFound[i].Format(), std::move(pField));
      pHolder->children[i].flags = ARROW_FLAG_NULLABLE;
    }
  } catch (...) {
    pHolder->children.ReleaseAll();
    throw;
  }
  Fill(schema, "+s", std::move(pHolder));
}

// ---- Arrays -------------------------------------------------------------------------------------

struct ArrayHolder {
  std::vector<std::uint8_t> vValid;    // bits
  std::vector<std::int64_t> vValues;   // integers
  std::vector<std::uint8_t> vBits;     // booleans
  std::vector<std::int32_t> vOffsets;  // of texts
  std::vector<char> vText;
  const void* aBuffers[3] = {nullptr, nullptr, nullptr};
  Children<ArrowArray> children{0};
};

void SetBit(std::vector<std::uint8_t>& vBits, long i) {
  const auto nBit = static_cast<unsigned long>(i);
  vBits[nBit / CHAR_BIT] =
      static_cast<std::uint8_t>(vBits[nBit / CHAR_BIT] | 1U << (nBit % CHAR_BIT));
}

void Fill(ArrowArray& array, long lRows, long lNulls, int nBuffers,
          std::unique_ptr<ArrayHolder> pHolder) {
  array = ArrowArray();
  array.length = lRows;
  array.null_count = lNulls;
  array.n_buffers = nBuffers;
  array.buffers = pHolder->aBuffers;
  pHolder->children.GiveTo(array);
  array.release = Release<ArrowArray, ArrayHolder>;
  array.private_data = pHolder.release();
}

// The rows that are exported, and what they are taken from.
struct Range {
  const CQXRecordSet& set;
  long lFirst;
  long lRows;

  // Calls f(i, cell) for the cells of a column that are no nulls.
  template <typename F>
  void ForEach(std::size_t nColumn, F f) const {
    for (long i = 0; i < lRows; ++i) {
      const Cell* const pCell = Access::Find(set, static_cast<long>(nColumn) + 1, lFirst + i);
      if (pCell != nullptr && pCell->eType != RS_NULL) f(i, *pCell);
    }
  }
};

bool FillTexts(const Range& range, std::size_t nColumn, ArrayHolder& holder) {
  std::size_t nBytes = 0;
  range.ForEach(nColumn, [&](long /*i*/, const Cell& cell) { nBytes += cell.Length(); });
  if (nBytes > INT32_MAX) return false;
  holder.vText.resize(std::max<std::size_t>(nBytes, 1));  // the buffer has an address in any case
  holder.vOffsets.resize(static_cast<std::size_t>(range.lRows) + 1);
  char* p = holder.vText.data();
  std::size_t nNext = 0;  // the row whose offset comes next
  const auto begin = [&](long lRow) {
    for (; nNext <= static_cast<std::size_t>(lRow); ++nNext) {
      holder.vOffsets[nNext] = static_cast<std::int32_t>(p - holder.vText.data());
    }
  };
  range.ForEach(nColumn, [&](long i, const Cell& cell) {
    begin(i);
    p = std::copy_n(cell.pText, cell.Length(), p);
  });
  begin(range.lRows);
  holder.aBuffers[1] = holder.vOffsets.data();
  holder.aBuffers[2] = holder.vText.data();
  return true;
}

void FillIntegers(const Range& range, std::size_t nColumn, ArrayHolder& holder) {
  holder.vValues.resize(std::max<std::size_t>(static_cast<std::size_t>(range.lRows), 1));
  range.ForEach(nColumn, [&](long i, const Cell& cell) {
    holder.vValues[static_cast<std::size_t>(i)] = JSON::ReadDecimal<long long>(cell.pText);
  });
  holder.aBuffers[1] = holder.vValues.data();
}

void FillBooleans(const Range& range, std::size_t nColumn, ArrayHolder& holder) {
  holder.vBits.resize(holder.vValid.size());
  range.ForEach(nColumn, [&](long i, const Cell& cell) {
    if (std::string_view(cell.pText, cell.Length()) == "1") SetBit(holder.vBits, i);
  });
  holder.aBuffers[1] = holder.vBits.data();
}

// False when the texts of the column are too long for one array.
bool MakeColumn(const Range& range, std::size_t nColumn, const Found& found, ArrowArray& array) {
  auto pHolder = std::make_unique<ArrayHolder>();
  const char cFormat = *found.Format();
  if (cFormat == 'n') {
    Fill(array, range.lRows, range.lRows, 0, std::move(pHolder));
    return true;
  }
  pHolder->vValid.resize(static_cast<std::size_t>(range.lRows) / CHAR_BIT + 1);
  long lNulls = range.lRows;
  range.ForEach(nColumn, [&](long i, const Cell& /*cell*/) {
    SetBit(pHolder->vValid, i);
    --lNulls;
  });
  pHolder->aBuffers[0] = lNulls != 0 ? pHolder->vValid.data() : nullptr;
  if (cFormat == 'l') FillIntegers(range, nColumn, *pHolder);
  if (cFormat == 'b') FillBooleans(range, nColumn, *pHolder);
  if (cFormat == 'u' && !FillTexts(range, nColumn, *pHolder)) return false;
  Fill(array, range.lRows, lNulls, cFormat == 'u' ? 3 : 2, std::move(pHolder));
  return true;
}

bool MakeArray(const Range& range, const std::vector<Found>& vFound, ArrowArray& array) {
  auto pHolder = std::make_unique<ArrayHolder>();
  pHolder->children = Children<ArrowArray>(vFound.size());
  bool bFits = true;
  try {
    for (std::size_t i = 0; i < vFound.size() && bFits; ++i) {
      bFits = MakeColumn(range, i, vFound[i], pHolder->children[i]);
    }
  } catch (...) {
    pHolder->children.ReleaseAll();
    throw;
  }
  if (!bFits) {
    pHolder->children.ReleaseAll();
    return false;
  }
  Fill(array, range.lRows, 0, 1, std::move(pHolder));
  return true;
}

// ---- Streams ------------------------------------------------------------------------------------

constexpr const char* kTooLong = "a column has 2 GB of text or more in these rows";

struct StreamHolder {
  CQXRecordSet set;
  std::vector<Found> vFound;
  long lBatch = 0;
  long lNext = 1;
  const char* szError = nullptr;
};

StreamHolder& HolderOf(ArrowArrayStream* pStream) {
  return *static_cast<StreamHolder*>(pStream->private_data);
}

int GetSchema(ArrowArrayStream* pStream, ArrowSchema* pSchema) noexcept {
  StreamHolder& holder = HolderOf(pStream);
  try {
    MakeSchema(holder.set, holder.vFound, *pSchema);
    return 0;
  } catch (...) {
    holder.szError = recordset::kMemoryExhausted;
    return ENOMEM;
  }
}

int GetNext(ArrowArrayStream* pStream, ArrowArray* pArray) noexcept {
  StreamHolder& holder = HolderOf(pStream);
  const long lLeft = Access::RowsCount(holder.set) - (holder.lNext - 1);
  *pArray = ArrowArray();
  if (lLeft <= 0) return 0;  // an array that is released: the end
  const long lRows = holder.lBatch > 0 ? std::min(holder.lBatch, lLeft) : lLeft;
  try {
    if (!MakeArray({holder.set, holder.lNext, lRows}, holder.vFound, *pArray)) {
      holder.szError = kTooLong;
      return EOVERFLOW;
    }
  } catch (...) {
    holder.szError = recordset::kMemoryExhausted;
    return ENOMEM;
  }
  holder.lNext += lRows;
  return 0;
}

const char* GetLastError(ArrowArrayStream* pStream) noexcept { return HolderOf(pStream).szError; }

void ReleaseStream(ArrowArrayStream* pStream) noexcept {
  delete &HolderOf(pStream);
  pStream->release = nullptr;
}

}  // namespace

int RS_ExportRows(RS_HANDLE handle, long row, long rows, struct ArrowSchema* schema,
                  struct ArrowArray* array) {
  const CQXRecordSet& set = handle->set;
  if (row < 1 || rows < 0 || rows > Access::RowsCount(set) - (row - 1)) {
    return Fail(handle, "there are no such rows", 0);
  }
  ArrowArray made{};
  return Guarded(handle, 0, [&] {
    const std::vector<Found> vFound = Examine(set);
    if (array != nullptr && !MakeArray({set, row, rows}, vFound, made)) {
      return Fail(handle, kTooLong, 0);
    }
    try {
      if (schema != nullptr) MakeSchema(set, vFound, *schema);
    } catch (...) {
      if (made.release != nullptr) made.release(&made);
      throw;
    }
    if (array != nullptr) *array = made;
    return 1;
  });
}

int RS_ExportStream(RS_HANDLE handle, long batch_rows, struct ArrowArrayStream* stream) {
  return Guarded(handle, 0, [&] {
    auto pHolder = std::make_unique<StreamHolder>();
    pHolder->set.Merge(handle->set);
    pHolder->vFound = Examine(pHolder->set);
    pHolder->lBatch = batch_rows;
    *stream = {GetSchema, GetNext, GetLastError, ReleaseStream, pHolder.release()};
    return 1;
  });
}
