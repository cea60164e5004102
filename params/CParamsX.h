// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Parameter strings: one piece of 8-bit text that carries an optional header and a list of
// parameters, each with its length in front so that it may hold any byte. CParamsRS builds such a
// text and reads it back by index.
//
//   CMD;    10;0x00000000;     3;abc;     2;42
//   |   |      |               |          an integer, as decimal digits
//   |   |      |               a text
//   |   |      a result code, always ten bytes, by convention the first parameter
//   |   length field: decimal, padded with spaces to at least six bytes, ended by ';'
//   header: no leading digit, no ';'
//
//   CParamsRS sender;                           CParamsRS receiver(sender.paramListRef());
//   sender.addHeader("CMD");                    receiver.getHeader();           // "CMD"
//   sender.addResult(0);                        receiver.getHRESULT();          // 0
//   sender.addParam("abc");                     receiver.getStringParamAt(1);   // "abc"
//   sender.addParam(42);                        receiver.getLongParamAt(2);     // 42
//
// A text built without a header begins with the spaces of its first length field, and a reader
// takes that field as the header. So build with a header, unless the text is not read back.
//
// Everything is held by value and copied in and out. All lengths and offsets are in bytes.
//
// Failures: a malformed length field is a std::exception; an index out of range is an empty text or
// 0, a missing result code -1. Beyond that only exhausted memory (std::bad_alloc) leaves a call.
//
// Threads: an object is used by one thread at a time, reading included. Distinct objects are
// independent.

#ifndef QXRECORDSET_PARAMS_CPARAMSX_H
#define QXRECORDSET_PARAMS_CPARAMSX_H

#include <string>
#include <string_view>
#include <vector>

#include "qxrecordset_export.h"

// The separator between the pieces of a parameter string: ";". Built when the library is loaded,
// before ordinary static objects, so that their constructors may use it.
extern QXRECORDSET_EXPORT const std::string PARAM_SEP;

class QXRECORDSET_EXPORT CParamsRS {
 public:
  // An empty object: no text, no header, no parameters.
  CParamsRS() = default;

  // The empty object with room for `reserve` bytes of text; 0 and below reserve nothing.
  explicit CParamsRS(long reserve);

  // Reads `text` as SetParams() does. When that throws there is no object.
  explicit CParamsRS(const std::string& text);

  // A copy is independent; what is moved from is left empty.
  CParamsRS(const CParamsRS& other);
  CParamsRS(CParamsRS&& other) noexcept;
  CParamsRS& operator=(CParamsRS other) noexcept;
  ~CParamsRS() = default;

  // Back to the empty object. Memory is kept for the next text.
  void clear();

  // ---- Building ---------------------------------------------------------------------------------
  //
  // Call addHeader() once, if a header is wanted, then addResult(), so that the code is parameter
  // 0, then addParam() for each further parameter. When memory runs out in one of these three, the
  // object is as before the call.

  // Puts `header` in front. A header that is there already is replaced; parameters are kept. An
  // empty `header` changes nothing. For the text to read back, the header must not begin with a
  // digit and must not hold ';'.
  void addHeader(const std::string& header);

  // Appends a parameter: the bytes of `text`, which may be any, or `value` in decimal.
  void addParam(const std::string& text);
  void addParam(long value);

  // Appends a result code: the lower 32 bits of `code` as "0x" and eight upper-case hexadecimal
  // digits.
  void addResult(long code);

  // Appends ready-made segments (length fields and texts, separated by ';') and indexes them. A
  // separator is put in front when there is a parameter already, also when `segments` is empty.
  // Throws std::exception on a malformed length field, as SetParams() does.
  void append(const std::string& segments);

  // ---- Taking in a text -------------------------------------------------------------------------

  // Takes `text` as the whole parameter string, in place of what the object held, and indexes
  // its parameters once, so that each can be read without a scan. A text whose first byte is a
  // digit has no header; any other has a header up to its first ';', or, without one, none.
  //
  // Throws std::exception when a length field is malformed: no ';' ends it, it is empty, or its
  // length is negative. The text has been taken in by then, and the parameters up to and including
  // the malformed one are counted (as far as they were reached, when memory runs out). A length
  // that runs past the end of the text is no error: it is the last parameter.
  void SetParams(const std::string& text);

  // Like SetParams(); the second half of the text constructor.
  void constructor(const std::string& text);

  // ---- Reading ----------------------------------------------------------------------------------

  // Number of parameters.
  int count() const;

  // The header without its separator; empty when there is none.
  std::string getHeader() const;

  // The text of parameter `index`, counted from 0. An index out of range gives the empty text. A
  // length that runs past the end of the text gives what is there. Throws std::exception for a
  // parameter that SetParams() or append() refused, unless only its length is negative: that one
  // reads to the end of the text.
  std::string getStringParamAt(int index) const;

  // The same text read as a decimal integer, as strtol reads it: white space, a sign, digits up to
  // the first byte that is none. No digits or an index out of range give 0; a value beyond the
  // range of long gives the nearest limit. Throws like getStringParamAt().
  long getLongParamAt(int index) const;

  // The result code in parameter 0, as a signed 32-bit value. -1 when there is no parameter or its
  // text, up to its first NUL, is not ten bytes long; 0 when those bytes do not begin with "0x" and
  // a hexadecimal digit. (The code 0xFFFFFFFF reads as -1 too.) Throws like getStringParamAt().
  long getHRESULT() const;

  // The result code straight from a parameter string, without indexing it; never throws. -1 for an
  // empty text, for one that begins with no digit and holds no ';', and for one whose first length
  // field is not 10.
  static long getHRESULT(const std::string& text);

  // Reads the length field at byte `offset` of the text and returns the length, as strtol reads it;
  // `consumed`, which may be null, gets the bytes up to and including the field's ';'. The bytes in
  // front of the ';' need not be digits: "abc;" is length 0. Throws std::exception when no ';'
  // follows, when the offset points at one, and when the offset lies outside the text.
  long getLength(long offset, long* consumed) const;

  // ---- The whole text ---------------------------------------------------------------------------

  // Bytes of text.
  long length() const;

  // A copy of the text; the text itself, valid until the object changes or dies.
  std::string paramList() const;
  const std::string& paramListRef() const;

  // Does nothing; kept for hosts that call it.
  void dump() const;

 private:
  QXRECORDSET_NO_EXPORT void swap(CParamsRS& other) noexcept;
  QXRECORDSET_NO_EXPORT void addSegment(std::string_view text);
  QXRECORDSET_NO_EXPORT void indexFrom(long offset);
  QXRECORDSET_NO_EXPORT std::string_view textAt(int index) const;

  std::string paramText;                     // the whole parameter string
  mutable const char* textCursor = nullptr;  // paramText's bytes; null after every change of it
  long headerLength = 0;                     // bytes of header and its separator; 0: no header
  std::vector<long> paramOffsets;            // for each parameter, where its length field begins
};

#endif  // QXRECORDSET_PARAMS_CPARAMSX_H
