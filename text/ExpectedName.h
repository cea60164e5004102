// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A member name that a reader expects to find in its text, because it stood there in the object
// before. Whether it does is decided in one step of sixteen bytes, without searching for the name's
// end first.

#ifndef QXRECORDSET_TEXT_EXPECTEDNAME_H
#define QXRECORDSET_TEXT_EXPECTEDNAME_H

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "text/Block.h"

namespace JSON {

class ExpectedName {
 public:
  // `pName` must stay where it is. A name with a '"' or a '\' is never found: in the text it looks
  // different.
  ExpectedName(const char* pName, std::size_t nLength)
      : ExpectedName(pName, nLength, FirstBytes(pName, nLength)) {}

  // The same; `start` is a block that begins with the first bytes of the name.
  // Store() fills aStart_. NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
  ExpectedName(const char* pName, std::size_t nLength, Block16 start)
      : pName_(pName), nLength_(static_cast<std::uint32_t>(nLength)) {
    constexpr std::size_t kBlock = Block16::kBytes;
    start.Store(aStart_);
    if (nLength < kBlock) aStart_[nLength] = '"';
    if (nLength < kBlock - 1) aStart_[nLength + 1] = ':';
    nMask_ = (1u << std::min(nLength + 1, kBlock)) - 1;
    const std::uint32_t nNameBytes = nLength < kBlock ? nMask_ >> 1 : nMask_;
    const auto isEscaped = [](char c) { return c == '"' || c == '\\'; };
    if ((start.QuoteOrBackslash() & nNameBytes) != 0 ||
        (nLength > kBlock && std::any_of(pName + kBlock, pName + nLength, isEscaped))) {
      nMask_ = kNever;
    }
    nMemberMask_ = nLength < kShortName ? 2 * nMask_ + 1 : kNever;
    if (nLength >= kShortName) {
      std::memcpy(aEnd_, pName + nLength - (kBlock - 2), kBlock - 2);
      aEnd_[kBlock - 2] = '"';
      aEnd_[kBlock - 1] = ':';
    }
  }

  // The first bytes of a name that may end anywhere.
  static Block16 FirstBytes(const char* pName, std::size_t nLength) {
    return Block16::LoadFirst(pName, std::min(nLength, std::size_t{Block16::kBytes}));
  }

  const char* Text() const { return pName_; }
  // The same name at another address, or a text that no caller looks for.
  void SetText(const char* pName) { pName_ = pName; }
  std::size_t Length() const { return nLength_; }

  // Of a name shorter than kShortName bytes: the name, a quote and a colon, as they are looked for.
  static constexpr std::size_t kShortName = Block16::kBytes - 1;
  Block16 QuotedName() const { return Block16::Load(aStart_); }

  // Whether the text at p, behind an opening quote, is the name and a closing quote. False also
  // where fewer than 16 bytes are left: the caller then looks for the end of the name.
  bool Matches(const char* p, const char* pEnd) const {
    if (pEnd - p < Block16::kBytes) return false;
    if ((Block16::Load(p).Equals(Block16::Load(aStart_)) & nMask_) != nMask_) return false;
    return nLength_ < Block16::kBytes || MatchesRest(p, pEnd);
  }

  // Whether the name is short, and the text at p is the name, a closing quote and a colon.
  // REQUIRES: 16 bytes at p.
  bool MatchesShortMember(const char* p) const {
    return (Block16::Load(p).Equals(Block16::Load(aStart_)) & nMemberMask_) == nMemberMask_;
  }

  // The same for names of any length. Of a name that is not short the text has to have as many
  // bytes behind the colon.
  bool MatchesMember(const char* p, const char* pEnd) const {
    assert(pEnd - p >= Block16::kBytes);
    const std::uint32_t nEqual = Block16::Load(p).Equals(Block16::Load(aStart_));
    if ((nEqual & nMemberMask_) == nMemberMask_) return true;
    constexpr std::size_t kBlock = Block16::kBytes;
    if (nLength_ < kShortName || (nEqual & nMask_) != nMask_ ||
        static_cast<std::size_t>(pEnd - p) <= nLength_ + 2 + kBlock) {
      return false;
    }
    const Block16 last = Block16::Load(p + nLength_ + 2 - kBlock);
    return last.Equals(Block16::Load(aEnd_)) == 0xFFFFu &&
           (nLength_ <= 2 * kBlock - 2 || std::memcmp(p, pName_, nLength_) == 0);
  }

 private:
  static constexpr std::uint32_t kNever = 1u << Block16::kBytes;  // no block has this bit

  bool MatchesRest(const char* p, const char* pEnd) const {
    if (static_cast<std::size_t>(pEnd - p) <= nLength_ || p[nLength_] != '"') return false;
    return nLength_ <= Block16::kBytes || std::memcmp(p + Block16::kBytes, pName_ + Block16::kBytes,
                                                      nLength_ - Block16::kBytes) == 0;
  }

  const char* pName_;
  std::uint32_t nLength_;
  std::uint32_t nMask_;           // which bytes of aStart_ are name and quote
  std::uint32_t nMemberMask_;     // which are name, quote and colon, of a short name
  char aStart_[Block16::kBytes];  // the first bytes of the name, its closing quote and a colon
  char aEnd_[Block16::kBytes];    // the last ones, of a name that is not short
};

}  // namespace JSON

#endif  // QXRECORDSET_TEXT_EXPECTEDNAME_H
