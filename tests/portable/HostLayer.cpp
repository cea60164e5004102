// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A host with a portability layer of its own: Latin-1, told apart from the default by any byte
// above 0x7F, and for texts of one character only. Exits with 0 when the library uses it. Compiled
// with HOST_DEFINES_DECODER_ONLY it brings only one of the two functions, and the other must come
// from the library.

#include <cstdio>
#include <string>

#include "portable/CPortable.h"
#include "recordset/QXRecordSet.h"

wchar_t* CPortable::mbstowcs(char const* text, unsigned int /*length*/) {
  return new wchar_t[2]{static_cast<unsigned char>(*text), L'\0'};
}

#ifdef HOST_DEFINES_DECODER_ONLY
constexpr const char* szExpected = "\xC3\xA9";  // U+00E9 as the default encodes it
#else
constexpr const char* szExpected = "\xE9";

char* CPortable::wcstombs(wchar_t const* text, unsigned int /*length*/) {
  return new char[2]{static_cast<char>(*text), '\0'};
}
#endif

int main() {
  const bool bDecodes = CQXRecordSet::UTF8ToWide("\xE9") == L"\xE9";
  const bool bEncodes = CQXRecordSet::WideToUTF8(L"\xE9") == szExpected;
  std::printf("decodes with the host's layer: %d, encodes with the right one: %d\n", bDecodes,
              bEncodes);
  return bDecodes && bEncodes ? 0 : 1;
}
