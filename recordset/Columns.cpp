// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Columns: searching, adding, and the hash table.

#include "recordset/Columns.h"

#include <algorithm>
#include <new>

#include "text/Escape.h"

namespace recordset {
namespace {

// A position has 30 bits.
constexpr std::uint32_t kMostColumns = 0x3FFFFFFF;

// The byte-wise order. Most names differ in their first bytes, so a call of memcmp would cost more.
bool IsBefore(std::string_view a, std::string_view b) {
  const auto it = std::mismatch(a.begin(), a.begin() + std::min(a.size(), b.size()), b.begin());
  if (it.first == a.end() || it.second == b.end()) return a.size() < b.size();
  return static_cast<unsigned char>(*it.first) < static_cast<unsigned char>(*it.second);
}

// Whether nothing in a name has to be escaped.
bool IsPlain(std::string_view name, JSON::Block16 start) {
  if (name.size() >= JSON::Block16::kBytes) return JSON::IsPlain(name);
  return (start.NeedsEscape() & ((1u << name.size()) - 1)) == 0;
}

}  // namespace

Column::Column(std::string_view text, JSON::Block16 start, std::uint32_t nAt, bool bIsBeyond,
               const Column* pFirst, Column* pNextInList)
    : name(text.data(), text.size(), start),
      nPosition(nAt & kMostColumns),
      bPlainName(IsPlain(text, start) ? 1 : 0),
      bBeyond(bIsBeyond ? 1 : 0),
      apNext{pFirst, pFirst},
      pBehind(pNextInList) {}

void Columns::Reset() noexcept {
  Column* pColumn = pFirst_;
  for (std::uint32_t i = 0; i < nRemembered_; ++i, pColumn = pColumn->pBehind) {
    pColumn->name.SetText("");
  }
  nCount_ = 0;
  pLast_ = nullptr;
  vSlots_.clear();
}

const Column* Columns::Find(std::string_view name) const {
  if (!vSlots_.empty()) return FindInTable(name);
  const Column* pColumn = pFirst_;
  for (std::uint32_t i = 0; i < nCount_; ++i, pColumn = pColumn->pBehind) {
    if (pColumn->Is(name)) return pColumn;
  }
  return nullptr;
}

// A text that was written by this library has its names in order: as long as each comes behind all
// others, it is known to be new.
const Column& Columns::FindOrAdd(std::string_view name, JSON::Block16 start) {
  const bool bBeyond = Ascend() && (pLast_ == nullptr || IsBefore(pLast_->Name(), name));
  const Column* const pFound = bBeyond ? nullptr : Find(name);
  return pFound != nullptr ? *pFound : Add(name, start, bBeyond);
}

// ---- Adding -------------------------------------------------------------------------------------

// A new column takes the place of one that is remembered; those behind that one are forgotten.
const Column& Columns::Add(std::string_view name, JSON::Block16 start, bool bBeyond) {
  PrepareToAdd();
  const char* const pName = name.size() < JSON::Block16::kBytes
                                ? texts_.StoreStart(start, name.size())
                                : texts_.Store(name.data(), name.size());
  Column*& pPlace = NextPlace();
  Column* const pBehind = pPlace != nullptr ? pPlace->pBehind : nullptr;
  try {
    if (pPlace == nullptr) pPlace = reinterpret_cast<Column*>(blocks_.Allocate(sizeof(Column)));
  } catch (...) {
    texts_.Release(pName, name.size());
    throw;
  }
  new (pPlace) Column({pName, name.size()}, start, nCount_, bBeyond, pFirst_, pBehind);
  nRemembered_ = nCount_ + 1;
  ++nAdded_;
  return Enlist(*pPlace);
}

// The column behind the last one is there again. Its name stands at `name`.
const Column& Columns::Restore(Column& column, const char* name) {
  PrepareToAdd();
  column.name.SetText(texts_.StoreStart(JSON::Block16::Load(name), column.name.Length()));
  column.apNext[Column::kText] = pFirst_;
  return Enlist(column);
}

// Makes room in the hash table.
QXRECORDSET_HOT void Columns::PrepareToAdd() {
  const std::size_t nCount = std::size_t{nCount_} + 1;
  if (nCount > kMostColumns) throw std::bad_alloc();
  if (nCount > kFewColumns && 2 * nCount > vSlots_.size()) MakeTable(4 * nCount);
}

// The column is there from now on.
QXRECORDSET_HOT const Column& Columns::Enlist(Column& column) noexcept {
  pLast_ = &column;
  ++nCount_;
  if (!vSlots_.empty()) Enter(column);
  return column;
}

// ---- Hash table ---------------------------------------------------------------------------------

const Column* Columns::FindInTable(std::string_view name) const {
  const std::uint32_t nHash = (*hash_)(name.data(), name.size());
  const std::size_t nMask = vSlots_.size() - 1;
  for (std::size_t i = nHash & nMask; vSlots_[i] != nullptr; i = (i + 1) & nMask) {
    if (vSlots_[i]->nHash == nHash && vSlots_[i]->Is(name)) return vSlots_[i];
  }
  return nullptr;
}

// Makes a hash table of at least nSlots slots, a power of two, and enters all columns.
void Columns::MakeTable(std::size_t nSlots) {
  std::size_t nSize = 4 * kFewColumns;
  while (nSize < nSlots) {
    nSize *= 2;
  }
  std::vector<const Column*>(nSize).swap(vSlots_);
  if (!hash_) hash_.emplace();
  Column* pColumn = pFirst_;
  for (std::uint32_t i = 0; i < nCount_; ++i, pColumn = pColumn->pBehind) {
    Enter(*pColumn);
  }
}

void Columns::Enter(Column& column) noexcept {
  column.nHash = (*hash_)(column.name.Text(), column.name.Length());
  const std::size_t nMask = vSlots_.size() - 1;
  std::size_t i = column.nHash & nMask;
  while (vSlots_[i] != nullptr) {
    i = (i + 1) & nMask;
  }
  vSlots_[i] = &column;
}

}  // namespace recordset
