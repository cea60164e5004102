// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A walk over one JSON value by the library's grammar: to find its end, to write it anew, compact
// or indented, and to say of a value that is refused what was expected where.

#ifndef QXRECORDSET_TOOLS_ROWS_JSONWALK_H
#define QXRECORDSET_TOOLS_ROWS_JSONWALK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "text/Grammar.h"

namespace qxrs {

using JsonText = JSON::Text<const char, true>;

// What the library's parser takes for white space.
constexpr std::string_view kWhiteSpace = " \t\n\r\f";

class JsonWalk {
 public:
  enum class Style { Compact, Indented };

  // The text ends at `pEnd`, where a NUL stands.
  explicit JsonWalk(const char* pEnd);

  // Makes the walk write what it reads: strict JSON, whatever the parser accepted.
  void WriteTo(std::string& strText, Style eHow);

  // Reads the value at `p`; the position behind it, or null.
  const char* Read(const char* p) { return Value(p, text.Peek(p)); }

  // Whether the value that was read is strict JSON without white space between its tokens.
  bool IsTight(std::size_t nLength) const { return bStrict && nTight == nLength; }

  // Whether everything that was read is UTF-8; what is written always is.
  bool IsWhole() const { return bWhole; }

  // REQUIRES: Read() gave null. Where it failed, and whether more text could change that.
  const char* FailedAt() const;
  bool MayGoOn() const;
  std::string Reason() const;

  // ---- What the grammar calls ----

  std::uint32_t& Indent() { return nIndent; }
  static bool Expects(const char* /*pName*/) { return false; }
  static const char* AcceptExpected(const char* pName) { return pName; }
  const char* Name(const char* p);
  const char* Value(const char* p, char c);
  const char* Element(const char* p, char c);
  void Complete() {}
  void Missing();
  const char* String(const char* p);
  const char* Number(const char* p);
  const char* Literal(const char* p, const char* pNext);
  const char* NoValue(const char* p) { return text.Fail(p, JSON::Fault::kValue); }
  const char* Nested(const char* p);

 private:
  struct Level {
    char cOpen;  // the innermost container: '{', '[', or 0
    std::uint32_t nItems;
  };

  const char* Token(const char* p, const char* pNext);
  void Put(std::string_view strToken);
  void BeginItem();
  void BreakLine();

  JsonText text;
  const char* pBegin = nullptr;  // of the outermost value
  std::string* pOut = nullptr;
  Style eStyle = Style::Compact;
  std::uint32_t nIndent = 0;
  std::uint32_t nDepth = 0;
  Level level{0, 0};
  bool bName = false;        // a name was read last
  bool bOpenString = false;  // a string has no end
  bool bStrict = true;       // no leniency of the parser was used
  bool bWhole = true;
  std::size_t nTight = 0;  // bytes that the value takes without white space
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_ROWS_JSONWALK_H
