// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A host with a portability layer of its own: Latin-1, told apart from the default by any byte
// above 0x7F. Exits with 0 when the library uses it. Compiled with HOST_DEFINES_DECODER_ONLY it
// brings only one of the two functions, and the other must come from the library.

#include <cstdio>
#include <string>

#include "portable/CPortable.h"
#include "recordset/QXRecordSet.h"

wchar_t* CPortable::mbstowcs(char const* text, unsigned int length) {
  auto* const pWide = new wchar_t[std::size_t{length} + 1];
  for (unsigned int i = 0; i < length; ++i) {
    pWide[i] = static_cast<unsigned char>(text[i]);
  }
  pWide[length] = L'\0';
  return pWide;
}

#ifdef HOST_DEFINES_DECODER_ONLY
constexpr const char* szExpected = "\xC3\xA9";  // U+00E9 as the default encodes it
#else
constexpr const char* szExpected = "\xE9";

char* CPortable::wcstombs(wchar_t const* text, unsigned int length) {
  auto* const pBytes = new char[std::size_t{length} + 1];
  for (unsigned int i = 0; i < length; ++i) {
    pBytes[i] = static_cast<char>(text[i]);
  }
  pBytes[length] = '\0';
  return pBytes;
}
#endif

int main() {
  const bool bDecodes = CQXRecordSet::UTF8ToWide("\xE9") == L"\xE9";
  const bool bEncodes = CQXRecordSet::WideToUTF8(L"\xE9") == szExpected;
  std::printf("decodes with the host's layer: %d, encodes with the right one: %d\n", bDecodes,
              bEncodes);
  return bDecodes && bEncodes ? 0 : 1;
}
