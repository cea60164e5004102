// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Releasing, replacing and the large texts of a TextStore.

#include "recordset/TextStore.h"

#include <cstring>
#include <functional>
#include <new>

namespace recordset {

// "", "0" and "1", each at twice the value of its digit: nulls, booleans and many numbers.
const char TextStore::aConstants[kConstantBytes] = {'0', '\0', '1', '\0'};

bool TextStore::IsConstant(const char* pText) {
  const std::less<> before;
  return !before(pText, aConstants) && before(pText, aConstants + sizeof aConstants);
}

void TextStore::Release(const char* pText, std::size_t length) noexcept {
  if (IsConstant(pText)) return;
  char* const pPiece = const_cast<char*>(pText);
  if (length <= kLongestSmall) {
    ReleaseSmall(pPiece, PieceSize(length));
    return;
  }
  // AllocateLarge() put a LargeText in front.
  LargeText* const pLarge = reinterpret_cast<LargeText*>(pPiece) - 1;
  (pLarge->pPrevious != nullptr ? pLarge->pPrevious->pNext : pLarge_) = pLarge->pNext;
  if (pLarge->pNext != nullptr) pLarge->pNext->pPrevious = pLarge->pPrevious;
  ::operator delete(pLarge);
}

const char* TextStore::Replace(const char* pOld, std::size_t nOldLength, const char* text,
                               std::size_t length) {
  const bool bSamePiece = length > 1 && length <= kLongest && !IsConstant(pOld) &&
                          PieceSize(nOldLength) == PieceSize(length);
  if (bSamePiece) {
    char* const pPiece = const_cast<char*>(pOld);
    JSON::MoveBytes(pPiece, text, length);
    pPiece[length] = '\0';
    return pOld;
  }
  const char* const pNew = Store(text, length);
  Release(pOld, nOldLength);
  return pNew;
}

void TextStore::Reset() noexcept {
  ReleaseLarge();
  pFree_.reset();
  blocks_.Reset();
}

// ---- Small texts --------------------------------------------------------------------------------

char* TextStore::TakeFree(std::size_t nSize) {
  char*& pFirst = pFree_[nSize / kGranule];
  char* const pPiece = pFirst;
  std::memcpy(&pFirst, pPiece, sizeof pFirst);
  return pPiece;
}

// Without memory for the lists themselves the piece is not used again until Reset().
void TextStore::ReleaseSmall(char* pPiece, std::size_t nSize) noexcept {
  if (blocks_.ShrinkLast(pPiece + nSize, nSize)) return;
  if (pFree_ == nullptr) pFree_.reset(new (std::nothrow) char*[kPieceSizes]());
  if (pFree_ == nullptr) return;
  char*& pFirst = pFree_[nSize / kGranule];
  std::memcpy(pPiece, &pFirst, sizeof pFirst);
  pFirst = pPiece;
}

// ---- Large texts --------------------------------------------------------------------------------

char* TextStore::AllocateLarge(std::size_t length) {
  if (length > kLongest) throw std::bad_alloc();
  const std::size_t nBytes = sizeof(LargeText) + PieceSize(length) + memory::BumpBlocks::kSlack;
  void* const pMemory = ::operator new(nBytes);
  LargeText* const pText = new (pMemory) LargeText{nullptr, pLarge_};
  if (pLarge_ != nullptr) pLarge_->pPrevious = pText;
  pLarge_ = pText;
  return reinterpret_cast<char*>(pText + 1);  // behind the header: the piece, and the slack
}

void TextStore::ReleaseLarge() noexcept {
  while (pLarge_ != nullptr) {
    LargeText* const pNext = pLarge_->pNext;
    ::operator delete(pLarge_);
    pLarge_ = pNext;
  }
}

}  // namespace recordset
