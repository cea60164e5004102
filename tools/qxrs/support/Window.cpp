// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading pieces of an input.

#include "tools/qxrs/support/Window.h"

#include <algorithm>
#include <cstring>

namespace qxrs {

namespace {

constexpr std::size_t kPiece = 131072;  // bytes asked for at a time

}  // namespace

bool Window::Fill() {
  position.Advance({vBytes.data(), nBegin});
  nEnd -= nBegin;
  std::memmove(vBytes.data(), vBytes.data() + nBegin, nEnd);
  nBegin = 0;
  const std::size_t nMore = std::max(kPiece, nEnd);
  if (vBytes.size() < nEnd + nMore + kSlack) vBytes.resize(nEnd + nMore + kSlack);
  const std::size_t nRead = input.Read(End(), nMore);
  nEnd += nRead;
  std::memset(End(), 0, kSlack);
  return nRead != 0;
}

void Window::Start() {
  while (nEnd - nBegin < kByteOrderMark.size() && Fill()) {
  }
  const std::string_view strText = Text();
  const std::string_view strTwo = strText.substr(0, 2);
  if (strTwo == "\xFF\xFE" || strTwo == "\xFE\xFF") {
    throw InputError(Name() + ": the text is UTF-16; iconv -f UTF-16 -t UTF-8 makes it readable");
  }
  if (strText.substr(0, kByteOrderMark.size()) == kByteOrderMark) nBegin += kByteOrderMark.size();
}

void Window::Refuse(const char* p, const std::string& strReason) {
  TextPosition place = position;
  place.Advance({vBytes.data(), static_cast<std::size_t>(p - vBytes.data())});
  throw Complaint(input.Name(), place, strReason);
}

}  // namespace qxrs
