// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The part of an input that is in memory: what a reader has not used yet. It is as long as one row
// and a piece of the input.
//
//   used up, dropped | Begin() ... unread text ... End() | kSlack zero bytes

#ifndef QXRECORDSET_TOOLS_SUPPORT_WINDOW_H
#define QXRECORDSET_TOOLS_SUPPORT_WINDOW_H

#include <string>
#include <string_view>
#include <vector>

#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Input.h"

namespace qxrs {

// Some programs put it in front of UTF-8 text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class Window {
 public:
  static constexpr std::size_t kSlack = 32;  // readable behind End(), all zero

  explicit Window(Input& inputText) : input(inputText) {}
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  char* Begin() { return vBytes.data() + nBegin; }
  char* End() { return vBytes.data() + nEnd; }
  const char* End() const { return vBytes.data() + nEnd; }
  std::string_view Text() { return {Begin(), nEnd - nBegin}; }

  // Begin() becomes `p`. The text in front of it stays readable until the next Fill().
  void UseUpTo(const char* p) { nBegin = static_cast<std::size_t>(p - vBytes.data()); }

  // Reads more behind what is there, as much as is there already or a piece; false at the end of
  // the input. Pointers into the window become invalid.
  bool Fill();

  // Reads the first piece and passes over a byte order mark. A text in UTF-16 is an InputError.
  void Start();

  // Throws InputError: what is wrong, and at which line and column `p` stands.
  [[noreturn]] void Refuse(const char* p, const std::string& strReason);

  const std::string& Name() const { return input.Name(); }

 private:
  Input& input;
  std::vector<char> vBytes = std::vector<char>(kSlack);
  std::size_t nBegin = 0;
  std::size_t nEnd = 0;
  TextPosition position;  // of the first byte in vBytes
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_WINDOW_H
