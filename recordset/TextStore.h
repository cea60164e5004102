// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The texts of a table: cell texts and column names. A text never moves once it is stored, so
// callers may keep pointers to it while everything around it grows.
//
// A stored text has no header. Its owner knows its length, and the length alone says how large
// its piece is:
//
//   "", "0", "1"                    constants, shared by all tables
//   up to kLongestSmall bytes       a piece of memory::BumpBlocks, in steps of kGranule bytes
//   longer                          a heap allocation, in steps of kLargeStep bytes
//
// A released small piece goes to the free list of its size and is the first to be taken again:
// texts that are replaced again and again use no more memory than the most that were stored at a
// time, size by size. A text that is replaced by one of the same piece size is written over where
// it is.
//
// Texts may be read in blocks: all of the sixteen bytes that begin at any byte of a text, its NUL
// included, may be read; what lies behind the NUL is undefined.

#ifndef QXRECORDSET_RECORDSET_TEXTSTORE_H
#define QXRECORDSET_RECORDSET_TEXTSTORE_H

#include <algorithm>
#include <cstddef>
#include <memory>

#include "memory/BumpBlocks.h"
#include "text/Block.h"
#include "text/ShortBytes.h"

namespace recordset {

class TextStore {
 public:
  // Small pieces are multiples of this. It is less than a 64-bit pointer, so the links of the free
  // lists lie unaligned, but an average text wastes only two and a half bytes, its NUL included.
  static constexpr std::size_t kGranule = 4;

  // The longest text with a piece of kLongestSmall + 1 bytes. Beyond, the bookkeeping of the heap
  // is small beside the text.
  static constexpr std::size_t kLongestSmall = 255;
  static constexpr std::size_t kLargeStep = 64;

  // Lengths are kept in 31 bits, and so is the size of a large piece. Storing a longer text fails
  // like any allocation that runs out of memory.
  static constexpr std::size_t kLongest = 0x7FFFFF00;

  // aOwn_ is room for pieces, not content. NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  TextStore() noexcept : blocks_(aOwn_, kOwnBytes) {}
  TextStore(const TextStore&) = delete;
  TextStore& operator=(const TextStore&) = delete;
  ~TextStore() { ReleaseLarge(); }

  // A copy of the `length` bytes at `text`, with a NUL behind it.
  const char* Store(const char* text, std::size_t length) {
    if (length <= 1) {
      const char* const pConstant = Constant(text, length);
      if (pConstant != nullptr) return pConstant;
    }
    char* const pText = Allocate(length);
    JSON::MoveBytes(pText, text, length);
    return pText;
  }

  // The same, where a whole block may be read at a text other than "", "0" and "1". What follows
  // the text there is written behind its copy, where no text is stored yet.
  QXRECORDSET_HOT const char* StoreReadable(const char* text, std::size_t length) {
    constexpr std::size_t kBlock = JSON::Block16::kBytes;
    static_assert(kBlock <= memory::BumpBlocks::kSlack);
    if (length <= 1) {
      const char* const pConstant = Constant(text, length);
      if (pConstant != nullptr) return pConstant;
    }
    if (length - 1 >= kBlock - 1 || pFree_ != nullptr) return Store(text, length);
    return StoreStart(JSON::Block16::Load(text), length);
  }

  // The first `length` bytes of a block, which are fewer than it has.
  const char* StoreStart(JSON::Block16 block, std::size_t length) {
    char* const pText = blocks_.Allocate(BlockPieceSize(length));
    block.Store(pText);  // the last piece and the slack behind it have room for a block
    pText[length] = '\0';
    return pText;
  }

  // Room for a text of `length` bytes that the caller writes itself, with the NUL in place.
  char* Allocate(std::size_t length) {
    char* const pText = length <= kLongestSmall ? AllocateSmall(length) : AllocateLarge(length);
    pText[length] = '\0';
    return pText;
  }

  // Takes back a text that this store gave. `length` is the length it was stored with.
  void Release(const char* pText, std::size_t length) noexcept;

  // Stores `text` in place of `pOld`, which is released. The new text may lie in the old one or in
  // any other text of this store. When memory runs out, the old text is still there.
  const char* Replace(const char* pOld, std::size_t nOldLength, const char* text,
                      std::size_t length);

  // Takes back all texts. Memory is kept; see memory/BumpBlocks.h.
  void Reset() noexcept;

  // Bytes of memory in use.
  std::size_t Footprint() const { return blocks_.Footprint(); }

 private:
  // Stands in front of a large text.
  struct LargeText {
    LargeText* pPrevious;
    LargeText* pNext;
  };

  // Enough for the texts of a row or two; the table that holds it stays a small allocation.
  static constexpr std::size_t kOwnBytes = 36 * sizeof(void*);

  static constexpr std::size_t kSmallestPiece = sizeof(void*);
  static constexpr std::size_t kPieceSizes = (kLongestSmall + 1) / kGranule + 1;

  static constexpr std::size_t kConstantBytes = 4 + memory::BumpBlocks::kSlack;
  static const char aConstants[kConstantBytes];

  // The constant equal to a text of up to one byte, or null.
  static const char* Constant(const char* text, std::size_t length) {
    if (length == 0) return aConstants + 1;
    if (*text == '0') return aConstants;
    return *text == '1' ? aConstants + 2 : nullptr;
  }
  static bool IsConstant(const char* pText);

  // Bytes of the piece that holds a text of `length` bytes and its NUL.
  static std::size_t PieceSize(std::size_t length) {
    const std::size_t nStep = length <= kLongestSmall ? kGranule : kLargeStep;
    const std::size_t nSize = (length + nStep) / nStep * nStep;
    return nSize < kSmallestPiece ? kSmallestPiece : nSize;
  }

  // The same for a text shorter than a block.
  static std::size_t BlockPieceSize(std::size_t length) {
    return std::max((length + kGranule) & ~(kGranule - 1), kSmallestPiece);
  }

  char* AllocateSmall(std::size_t length) {
    const std::size_t nSize = PieceSize(length);
    if (pFree_ != nullptr && pFree_[nSize / kGranule] != nullptr) return TakeFree(nSize);
    return blocks_.Allocate(nSize);
  }
  char* TakeFree(std::size_t nSize);
  char* AllocateLarge(std::size_t length);
  void ReleaseSmall(char* pPiece, std::size_t nSize) noexcept;
  void ReleaseLarge() noexcept;

  memory::BumpBlocks blocks_;
  std::unique_ptr<char*[]> pFree_;  // by piece size / kGranule: the first free piece, which holds
                                    // the address of the next; made for the first piece released
  LargeText* pLarge_ = nullptr;     // all large texts
  alignas(void*) char aOwn_[kOwnBytes + memory::BumpBlocks::kSlack];
};

}  // namespace recordset

#endif  // QXRECORDSET_RECORDSET_TEXTSTORE_H
