// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The portability layer: how 8-bit text becomes wide text and back. The library calls it for
// CQXRecordSet::UTF8ToWide and WideToUTF8 and for nothing else.
//
// The library contains a default, strict UTF-8. A host that has a layer of its own defines both
// functions in its program; they are then used instead, with the shared library and with the static
// one. In a program compiled with hidden visibility the definitions must be visible (declared
// through this header they are), or the shared library does not find them.
//
// Threads: the default keeps no state; it may be called from any thread at any time.

#ifndef QXRECORDSET_PORTABLE_CPORTABLE_H
#define QXRECORDSET_PORTABLE_CPORTABLE_H

#include "qxrecordset_export.h"

class QXRECORDSET_EXPORT CPortable {
 public:
  // Decodes `length` bytes of text into a new NUL-terminated array of wide characters, which the
  // caller releases with delete[]. Null when the text cannot be converted. NUL bytes inside the
  // text are converted like any other character.
  //
  // The default reads UTF-8 and gives one wide character for each code point. It refuses everything
  // that is not well-formed: stray or missing continuation bytes, overlong forms, surrogates, code
  // points above U+10FFFF. It needs no terminating NUL and reads nothing at or beyond text +
  // length.
  static wchar_t* mbstowcs(char const* text, unsigned int length);

  // The other way: `length` wide characters become a new NUL-terminated array of bytes, under the
  // same rules. The default writes UTF-8 and refuses surrogates and values above U+10FFFF.
  static char* wcstombs(wchar_t const* text, unsigned int length);
};

#endif  // QXRECORDSET_PORTABLE_CPORTABLE_H
