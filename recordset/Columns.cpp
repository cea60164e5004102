// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Columns: lookups that were not expected, the hash table, and the order by name.

#include "recordset/Columns.h"

#include <algorithm>
#include <new>
#include <numeric>

#include "memory/Spare.h"
#include "text/Escape.h"

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

// The names are gone with their texts. The first bytes, which a short name is all of, are still
// there; by its text no column is found, or one whose cells do not exist.
void Columns::Reset() noexcept {
  for (std::uint32_t i = 0; i < nRemembered_; ++i) {
    vColumns_[i].name.SetText("");
  }
  nCount_ = 0;
  for (Chain& chain : chains_) {
    chain = {};
  }
  bAscending_ = true;
  vSlots_.clear();
  vSorted_.clear();
}

std::size_t Columns::Footprint() const {
  return vColumns_.capacity() * sizeof(Column) +
         (vSlots_.capacity() + vSorted_.capacity()) * sizeof(std::uint32_t);
}

// ---- Lookup -------------------------------------------------------------------------------------

std::uint32_t Columns::FindElsewhere(Use use, const char* name, std::size_t length) {
  const std::uint32_t nColumn = Search(name, length);
  if (nColumn != 0) Learn(use, nColumn - 1);
  return nColumn;
}

std::uint32_t Columns::FindOrAddAny(Use use, const char* name, std::size_t length) {
  return FindOrAddElsewhere(use, name, length, JSON::ExpectedName::FirstBytes(name, length));
}

// `start` is a block that begins with the first bytes of the name.
std::uint32_t Columns::FindOrAddElsewhere(Use use, const char* name, std::size_t length,
                                          JSON::Block16 start) {
  const bool bBeyond = IsBeyond(name, length);
  const std::uint32_t nColumn = bBeyond ? 0 : FindElsewhere(use, name, length);
  return nColumn != 0 ? nColumn : Add(use, name, length, start, bBeyond);
}

// Whether the columns are in the order of their names, and the name comes behind all of them.
bool Columns::IsBeyond(const char* name, std::size_t length) const {
  return bAscending_ && (nCount_ == 0 || IsBefore(NameOf(nCount_), {name, length}));
}

std::uint32_t Columns::Search(const char* name, std::size_t length) const {
  if (!vSlots_.empty()) return SearchTable(name, length);
  for (std::uint32_t i = 0; i < nCount_; ++i) {
    if (IsName(vColumns_[i], name, length)) return i + 1;
  }
  return 0;
}

std::uint32_t Columns::SearchTable(const char* name, std::size_t length) const {
  const std::uint32_t nHash = (*hash_)(name, length);
  const std::size_t nMask = vSlots_.size() - 1;
  for (std::size_t i = nHash & nMask; vSlots_[i] != 0; i = (i + 1) & nMask) {
    const Column& column = vColumns_[vSlots_[i] - 1];
    if (column.nHash == nHash && IsName(column, name, length)) return vSlots_[i];
  }
  return 0;
}

// The column at nPosition follows the one found before; remember that.
QXRECORDSET_HOT void Columns::Learn(Use use, std::uint32_t nPosition) {
  const Column& column = vColumns_[nPosition];
  const Column* const pLast = chains_[use].pLast;
  if (pLast != nullptr && pLast != &column) vColumns_[pLast->nPosition].apNext[use] = &column;
  Found(use, column);
}

// ---- Adding -------------------------------------------------------------------------------------

// A new column takes the place of one that is remembered; what is behind that one will not come
// again in this order.
std::uint32_t Columns::Add(Use use, const char* name, std::size_t length, JSON::Block16 start,
                           bool bBeyond) {
  PrepareToAdd();
  const std::uint32_t nPosition = nCount_;
  const char* const pName = length < JSON::Block16::kBytes ? texts_.StoreStart(start, length)
                                                           : texts_.Store(name, length);
  const bool bPlain = IsPlain(pName, length, start);
  if (nPosition < vColumns_.size()) {
    new (&vColumns_[nPosition]) Column(pName, length, start, nPosition, bPlain, bBeyond);
  } else {
    vColumns_.emplace_back(pName, length, start, nPosition, bPlain, bBeyond);
  }
  nRemembered_ = nPosition + 1;
  for (const Column*& pNext : vColumns_[nPosition].apNext) {
    pNext = vColumns_.data();
  }
  Enlist(nPosition);
  Learn(use, nPosition);
  return nPosition + 1;
}

// The column behind the last one is there again. Its name stands at `name`.
const Columns::Column& Columns::Restore(const char* name) {
  PrepareToAdd();
  const std::uint32_t nPosition = nCount_;
  Column& column = vColumns_[nPosition];
  column.name.SetText(texts_.StoreStart(JSON::Block16::Load(name), column.name.Length()));
  column.apNext[kInText] = vColumns_.data();
  Enlist(nPosition);
  Learn(kInText, nPosition);
  return column;
}

// Whatever may fail for want of memory.
QXRECORDSET_HOT void Columns::PrepareToAdd() {
  const std::size_t nCount = std::size_t{nCount_} + 1;
  if (nCount > kLastColumn) throw std::bad_alloc();
  if (nCount > vColumns_.capacity()) MakeRoom();
  if (nCount > kFewColumns && 2 * nCount > vSlots_.size()) MakeTable(4 * nCount);
}

// The column at nPosition is there from now on.
QXRECORDSET_HOT void Columns::Enlist(std::uint32_t nPosition) noexcept {
  nCount_ = nPosition + 1;
  bAscending_ = vColumns_[nPosition].bBeyond != 0;
  if (!vSlots_.empty()) Enter(nPosition);
}

// Room for as many columns again. They move, and what they expect moves with them.
void Columns::MakeRoom() {
  std::vector<Column> vMoved;
  const std::size_t nNeeded = vColumns_.size() + 1;
  if (nNeeded > vMoved.max_size()) throw std::bad_alloc();
  const std::size_t nGrown = std::min(2 * vColumns_.size(), vMoved.max_size());
  memory::WithSpare(nNeeded, std::max({nGrown, nNeeded, kFirstColumns}) - nNeeded,
                    [&vMoved](std::size_t nRoom) { vMoved.reserve(nRoom); });
  vMoved = vColumns_;
  const auto moved = [&vMoved](const Column* p) {
    return p != nullptr ? &vMoved[p->nPosition] : nullptr;
  };
  for (Column& column : vMoved) {
    for (const Column*& pNext : column.apNext) {
      pNext = moved(pNext);
    }
  }
  for (Chain& chain : chains_) {
    chain = {moved(chain.pLast), moved(chain.pGuess)};
  }
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
  for (std::uint32_t i = 0; i < nCount_; ++i) {
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

// ---- Order by name ------------------------------------------------------------------------------

const std::vector<std::uint32_t>& Columns::InNameOrder() {
  const std::size_t nSorted = vSorted_.size();
  if (nSorted == nCount_) return vSorted_;
  const auto less = [this](std::uint32_t a, std::uint32_t b) { return NameOf(a) < NameOf(b); };
  const auto nNew = static_cast<std::uint32_t>(nSorted + 1);
  if (nNew == nCount_ && !bAscending_) {
    // One name is inserted with few comparisons, in case names are added and listed by turns.
    vSorted_.insert(std::upper_bound(vSorted_.begin(), vSorted_.end(), nNew, less), nNew);
    return vSorted_;
  }
  vSorted_.resize(nCount_);
  const auto middle = vSorted_.begin() + static_cast<std::ptrdiff_t>(nSorted);
  std::iota(middle, vSorted_.end(), nNew);
  if (!bAscending_) {
    std::sort(middle, vSorted_.end(), less);
    std::inplace_merge(vSorted_.begin(), middle, vSorted_.end(), less);
  }
  return vSorted_;
}

}  // namespace recordset
