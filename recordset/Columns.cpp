// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Columns: lookups that were not expected, the hash table, and the order by name.

#include "recordset/Columns.h"

#include <algorithm>
#include <new>
#include <numeric>

#include "json/Escape.h"
#include "recordset/Rows.h"

namespace recordset {
namespace {

// Room for columns that is made at first.
constexpr std::size_t kFirstColumns = 16;

// The byte-wise order. Names differ in their first bytes; memcmp would be a detour.
bool IsBefore(std::string_view a, std::string_view b) {
  const auto it = std::mismatch(a.begin(), a.begin() + std::min(a.size(), b.size()), b.begin());
  if (it.first == a.end() || it.second == b.end()) return a.size() < b.size();
  return static_cast<unsigned char>(*it.first) < static_cast<unsigned char>(*it.second);
}

// Whether nothing in a name has to be escaped.
bool IsPlain(const char* name, std::size_t length, JSON::Block16 start) {
  if (length >= JSON::Block16::kBytes) return JSON::IsPlain({name, length});
  return (start.NeedsEscape() & ((1u << length) - 1)) == 0;
}

}  // namespace

void Columns::Reset() noexcept {
  vColumns_.clear();
  vSlots_.clear();
  vSorted_.clear();
  pLast_ = nullptr;
  pGuess_ = nullptr;
  bAscending_ = true;
}

std::size_t Columns::Footprint() const {
  return vColumns_.capacity() * sizeof(Column) +
         (vSlots_.capacity() + vSorted_.capacity()) * sizeof(std::uint32_t);
}

// ---- Lookup ------------------------------------------------------------------------------------

std::uint32_t Columns::FindElsewhere(const char* name, std::size_t length) {
  const std::uint32_t nColumn = Search(name, length);
  if (nColumn != 0) Learn(nColumn - 1);
  return nColumn;
}

std::uint32_t Columns::FindOrAddAny(const char* name, std::size_t length) {
  return FindOrAddElsewhere(name, length, JSON::ExpectedName::FirstBytes(name, length));
}

// `start` is a block that begins with the first bytes of the name.
std::uint32_t Columns::FindOrAddElsewhere(const char* name, std::size_t length,
                                          JSON::Block16 start) {
  const bool bBeyond = IsBeyond(name, length);
  const std::uint32_t nColumn = bBeyond ? 0 : FindElsewhere(name, length);
  return nColumn != 0 ? nColumn : Add(name, length, start, bBeyond);
}

// Whether the columns are in the order of their names, and the name comes behind all of them.
bool Columns::IsBeyond(const char* name, std::size_t length) const {
  return bAscending_ && (vColumns_.empty() || IsBefore(NameOf(Count()), {name, length}));
}

std::uint32_t Columns::Search(const char* name, std::size_t length) const {
  if (vSlots_.empty()) {
    const auto it = std::find_if(vColumns_.begin(), vColumns_.end(), [=](const Column& column) {
      return IsName(column, name, length);
    });
    return it != vColumns_.end() ? static_cast<std::uint32_t>(it - vColumns_.begin()) + 1 : 0;
  }
  const std::uint32_t nHash = (*hash_)(name, length);
  const std::size_t nMask = vSlots_.size() - 1;
  for (std::size_t i = nHash & nMask; vSlots_[i] != 0; i = (i + 1) & nMask) {
    const Column& column = vColumns_[vSlots_[i] - 1];
    if (column.nHash == nHash && IsName(column, name, length)) return vSlots_[i];
  }
  return 0;
}

// The column at nPosition follows the one found before; remember that.
void Columns::Learn(std::uint32_t nPosition) {
  const Column& column = vColumns_[nPosition];
  if (pLast_ != nullptr && pLast_ != &column) vColumns_[pLast_->nPosition].pNext = &column;
  Found(column);
}

// ---- Adding ------------------------------------------------------------------------------------

// What may fail for want of memory comes first.
std::uint32_t Columns::Add(const char* name, std::size_t length, JSON::Block16 start,
                           bool bBeyond) {
  const std::size_t nCount = vColumns_.size() + 1;
  if (nCount > Rows::kLastColumn) throw std::bad_alloc();
  if (vColumns_.size() == vColumns_.capacity()) MakeRoom();
  if (nCount > kFewColumns && 2 * nCount > vSlots_.size()) MakeTable(4 * nCount);
  const auto nPosition = static_cast<std::uint32_t>(nCount - 1);
  const char* const pName = texts_.Store(name, length);
  vColumns_.emplace_back(pName, length, start, nPosition + 1, IsPlain(pName, length, start));
  vColumns_.back().pNext = vColumns_.data();
  bAscending_ = bBeyond;
  if (!vSlots_.empty()) Enter(nPosition);
  Learn(nPosition);
  return nPosition + 1;
}

// Room for as many columns again. They move, and what they expect moves with them.
void Columns::MakeRoom() {
  std::vector<Column> vMoved;
  vMoved.reserve(std::max(kFirstColumns, 2 * vColumns_.size()));
  vMoved = vColumns_;
  const auto moved = [&vMoved](const Column* p) { return &vMoved[p->nPosition]; };
  for (Column& column : vMoved) {
    column.pNext = moved(column.pNext);
  }
  if (pLast_ != nullptr) Found(*moved(pLast_));
  vColumns_.swap(vMoved);
}

// Makes a hash table of at least nSlots slots, a power of two, and enters all columns.
void Columns::MakeTable(std::size_t nSlots) {
  std::size_t nSize = 4 * kFewColumns;
  while (nSize < nSlots) {
    nSize *= 2;
  }
  std::vector<std::uint32_t>(nSize).swap(vSlots_);
  if (!hash_) hash_.emplace();
  for (std::uint32_t i = 0; i < vColumns_.size(); ++i) {
    Enter(i);
  }
}

void Columns::Enter(std::uint32_t nPosition) noexcept {
  Column& column = vColumns_[nPosition];
  column.nHash = (*hash_)(column.name.Text(), column.name.Length());
  const std::size_t nMask = vSlots_.size() - 1;
  std::size_t i = column.nHash & nMask;
  while (vSlots_[i] != 0) {
    i = (i + 1) & nMask;
  }
  vSlots_[i] = nPosition + 1;
}

// ---- Order by name -----------------------------------------------------------------------------

const std::vector<std::uint32_t>& Columns::InNameOrder() {
  const std::size_t nSorted = vSorted_.size();
  if (nSorted == vColumns_.size()) return vSorted_;
  const auto less = [this](std::uint32_t a, std::uint32_t b) { return NameOf(a) < NameOf(b); };
  const auto nNew = static_cast<std::uint32_t>(nSorted + 1);
  if (nNew == vColumns_.size() && !bAscending_) {
    // One name is inserted with few comparisons, in case names are added and listed by turns.
    vSorted_.insert(std::upper_bound(vSorted_.begin(), vSorted_.end(), nNew, less), nNew);
    return vSorted_;
  }
  vSorted_.resize(vColumns_.size());
  const auto middle = vSorted_.begin() + static_cast<std::ptrdiff_t>(nSorted);
  std::iota(middle, vSorted_.end(), nNew);
  if (!bAscending_) {
    std::sort(middle, vSorted_.end(), less);
    std::inplace_merge(vSorted_.begin(), middle, vSorted_.end(), less);
  }
  return vSorted_;
}

}  // namespace recordset
