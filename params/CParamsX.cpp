// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The builder and reader of parameter strings. Numbers are read and printed without the C library's
// format functions, which would cost more than all the rest.

#include "params/CParamsX.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <utility>

#include "text/Bytes.h"
#include "text/Digits.h"
#include "text/ReadDecimal.h"
#include "text/TextRoom.h"

namespace {

// The byte of PARAM_SEP. The library itself uses this one: it needs no construction at load time.
constexpr char kSeparator = ';';

// A length field is padded to this many bytes, its ';' not counted.
constexpr std::size_t kLengthFieldWidth = 6;

// "0x" and eight digits.
constexpr std::size_t kResultTextLength = 10;

// What both getHRESULT() give for a text without a result code.
constexpr long kNoResult = -1;

// The bits of a result code as the signed value that callers compare with.
long SignedResult(std::uint32_t nBits) { return static_cast<std::int32_t>(nBits); }

// What sscanf makes of a text that is not plainly "0x" and eight digits: fewer digits, a sign,
// white space and a second "0x" have a meaning to it, so it answers itself.
long ScanResult(std::string_view text) {
  char szText[kResultTextLength + 1] = {};
  std::memcpy(szText, text.data(), text.size());
  unsigned int nBits = 0;
  if (std::sscanf(szText, "0x%08X", &nBits) != 1) {  // NOLINT(cert-err34-c): eight digits fit
    return 0;
  }
  return SignedResult(nBits);
}

// Reads a result code from at most ten bytes; 0 when there is none.
long ReadResult(std::string_view text) {
  if (text.size() != kResultTextLength || text[0] != '0' || text[1] != 'x') return ScanResult(text);
  std::uint32_t nBits = 0;
  for (const char c : text.substr(2)) {
    const int nDigit = JSON::HexValue(c);
    if (nDigit < 0) return ScanResult(text);
    nBits = nBits << 4 | static_cast<std::uint32_t>(nDigit);
  }
  return SignedResult(nBits);
}

// Where the first segment begins: behind the header, if there is one. npos when the text neither
// begins with a digit nor holds a separator.
std::size_t FirstSegment(std::string_view text) {
  if (JSON::IsDigit(text.front())) return 0;
  const std::size_t nSeparator = text.find(kSeparator);
  return nSeparator == std::string_view::npos ? nSeparator : nSeparator + 1;
}

}  // namespace

// The priority is the first that programs may use: with the static library the order between object
// files is otherwise left to the linker.
// NOLINTNEXTLINE(cert-err58-cpp): one byte lies inside the string object, nothing can throw
[[gnu::init_priority(101)]] const std::string PARAM_SEP(1, kSeparator);

CParamsRS::CParamsRS(long reserve) {
  if (reserve > 0) {
    JSON::MakeCapacity(paramText, paramText.size(), static_cast<std::size_t>(reserve));
  }
}

CParamsRS::CParamsRS(const std::string& text) { constructor(text); }

CParamsRS::CParamsRS(const CParamsRS& other)
    : paramText(other.paramText),
      headerLength(other.headerLength),
      paramOffsets(other.paramOffsets) {}

CParamsRS::CParamsRS(CParamsRS&& other) noexcept { swap(other); }

CParamsRS& CParamsRS::operator=(CParamsRS other) noexcept {
  swap(other);
  return *this;
}

// The cursors are dropped: a short text lies inside its string object and does not move along.
void CParamsRS::swap(CParamsRS& other) noexcept {
  paramText.swap(other.paramText);
  std::swap(headerLength, other.headerLength);
  paramOffsets.swap(other.paramOffsets);
  textCursor = nullptr;
  other.textCursor = nullptr;
}

void CParamsRS::clear() {
  headerLength = 0;
  paramText.clear();
  textCursor = nullptr;
  paramOffsets.clear();
}

// ---- Building -----------------------------------------------------------------------------------

void CParamsRS::addHeader(const std::string& header) {
  if (header.empty()) return;
  if (&header == &paramText) return addHeader(paramList());
  const long lNewLength = static_cast<long>(header.size()) + 1;
  textCursor = nullptr;
  JSON::MakeCapacity(paramText, paramText.size(),
                     header.size() + 1);  // from here on nothing can throw
  paramText.replace(0, static_cast<std::size_t>(headerLength), header);
  paramText.insert(header.size(), 1, kSeparator);
  for (long& lOffset : paramOffsets) {
    lOffset += lNewLength - headerLength;
  }
  headerLength = lNewLength;
}

void CParamsRS::addParam(const std::string& text) {
  if (&text == &paramText) return addParam(paramList());
  addSegment(text);
}

void CParamsRS::addParam(long value) { addSegment(JSON::DecimalText<long>(value).View()); }

void CParamsRS::addResult(long code) {
  constexpr char szHex[] = "0123456789ABCDEF";
  char szText[kResultTextLength] = {'0', 'x'};
  auto nBits = static_cast<std::uint32_t>(code);
  for (std::size_t i = kResultTextLength; i > 2; --i) {
    szText[i - 1] = szHex[nBits & 0xF];
    nBits >>= 4;
  }
  addSegment({szText, sizeof szText});
}

// Appends one segment: the separator when one is due, the length field, its ';' and the text.
// REQUIRES: `text` does not lie in paramText.
void CParamsRS::addSegment(std::string_view text) {
  assert(std::less<>()(text.data(), paramText.data()) ||
         !std::less<>()(text.data(), paramText.data() + paramText.size()));
  const JSON::DecimalText<std::size_t> decimal(text.size());
  const std::string_view digits = decimal.View();
  const std::size_t nPadding = kLengthFieldWidth - std::min(digits.size(), kLengthFieldWidth);
  const bool bFollows = static_cast<std::size_t>(headerLength) < paramText.size();
  const std::size_t nOffset = paramText.size() + (bFollows ? 1 : 0);

  textCursor = nullptr;
  JSON::MakeCapacity(paramText, paramText.size(), 1 + nPadding + digits.size() + 1 + text.size());
  paramOffsets.push_back(static_cast<long>(nOffset));  // from here on nothing can throw
  if (bFollows) paramText += kSeparator;
  paramText.append(nPadding, ' ').append(digits);
  paramText += kSeparator;
  paramText.append(text);
}

void CParamsRS::append(const std::string& segments) {
  if (&segments == &paramText) return append(paramList());
  const bool bFollows = static_cast<std::size_t>(headerLength) < paramText.size();
  textCursor = nullptr;
  JSON::MakeCapacity(paramText, paramText.size(), 1 + segments.size());
  if (bFollows) paramText += kSeparator;
  const long lStart = length();
  paramText += segments;
  indexFrom(lStart);
}

// ---- Taking in a text ---------------------------------------------------------------------------

void CParamsRS::SetParams(const std::string& text) { constructor(text); }

void CParamsRS::constructor(const std::string& text) {
  textCursor = nullptr;
  paramText = text;
  headerLength = 0;
  paramOffsets.clear();
  if (paramText.empty()) return;
  const std::size_t nFirst = FirstSegment(paramText);
  headerLength = nFirst == std::string::npos ? 0 : static_cast<long>(nFirst);
  indexFrom(headerLength);
}

// Records the offset of every segment from `offset` to the end of the text. Each step moves
// forward, so the scan ends: a length field has at least two bytes, and a negative length is
// refused.
void CParamsRS::indexFrom(long offset) {
  while (offset < length()) {
    paramOffsets.push_back(offset);
    long lConsumed = 0;
    const long lText = getLength(offset, &lConsumed);
    if (lText < 0) throw std::exception();
    offset += lConsumed;
    if (lText >= length() - offset) return;
    offset += lText + 1;
  }
}

// ---- Reading ------------------------------------------------------------------------------------

int CParamsRS::count() const { return static_cast<int>(paramOffsets.size()); }

std::string CParamsRS::getHeader() const {
  if (headerLength < 1) return {};
  return paramText.substr(0, static_cast<std::size_t>(headerLength) - 1);
}

long CParamsRS::getLength(long offset, long* consumed) const {
  if (offset < 0 || offset > length()) throw std::exception();
  if (textCursor == nullptr) textCursor = paramText.data();
  const std::string_view rest(textCursor + offset, static_cast<std::size_t>(length() - offset));
  const std::size_t nField = rest.find(kSeparator);
  if (nField == std::string_view::npos || nField == 0) throw std::exception();
  if (consumed != nullptr) *consumed = static_cast<long>(nField) + 1;
  return JSON::ReadDecimal<long>(rest.substr(0, nField));
}

// The text of parameter `index`, inside paramText; empty for an index out of range.
std::string_view CParamsRS::textAt(int index) const {
  if (index < 0 || index >= count()) return {};
  const long lOffset = paramOffsets[static_cast<std::size_t>(index)];
  long lConsumed = 0;
  const long lText = getLength(lOffset, &lConsumed);
  const std::string_view rest = std::string_view(paramText).substr(
      static_cast<std::size_t>(lOffset) + static_cast<std::size_t>(lConsumed));
  return lText < 0 ? rest : rest.substr(0, static_cast<std::size_t>(lText));
}

std::string CParamsRS::getStringParamAt(int index) const { return std::string(textAt(index)); }

long CParamsRS::getLongParamAt(int index) const { return JSON::ReadDecimal<long>(textAt(index)); }

long CParamsRS::getHRESULT() const {
  if (count() == 0) return kNoResult;
  const std::string_view text = JSON::UpToNul(textAt(0));
  return text.size() == kResultTextLength ? ReadResult(text) : kNoResult;
}

long CParamsRS::getHRESULT(const std::string& text) {
  if (text.empty()) return kNoResult;
  const std::size_t nFirst = FirstSegment(text);
  if (nFirst >= text.size()) return kNoResult;
  const std::string_view segment = std::string_view(text).substr(nFirst);
  if (JSON::ReadDecimal<long>(segment) != static_cast<long>(kResultTextLength)) return kNoResult;
  const std::size_t nField = segment.find(kSeparator);
  if (nField == std::string_view::npos) return 0;
  return ReadResult(JSON::UpToNul(segment.substr(nField + 1, kResultTextLength)));
}

// ---- The whole text -----------------------------------------------------------------------------

long CParamsRS::length() const { return static_cast<long>(paramText.size()); }

std::string CParamsRS::paramList() const { return paramText; }

const std::string& CParamsRS::paramListRef() const { return paramText; }

void CParamsRS::dump() const {}
