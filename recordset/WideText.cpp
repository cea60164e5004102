// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// CQXRecordSet: wide text, converted by the portability layer.

#include <climits>
#include <memory>
#include <string>

#include "portable/CPortable.h"
#include "recordset/QXRecordSet.h"

std::wstring CQXRecordSet::UTF8ToWide(const std::string& text) {
  if (text.size() > UINT_MAX) return {};
  const std::unique_ptr<wchar_t[]> pWide(
      CPortable::mbstowcs(text.data(), static_cast<unsigned>(text.size())));
  return pWide != nullptr ? std::wstring(pWide.get()) : std::wstring();
}

std::string CQXRecordSet::WideToUTF8(const std::wstring& text) {
  if (text.size() > UINT_MAX) return {};
  const std::unique_ptr<char[]> pText(
      CPortable::wcstombs(text.data(), static_cast<unsigned>(text.size())));
  return pText != nullptr ? std::string(pText.get()) : std::string();
}
