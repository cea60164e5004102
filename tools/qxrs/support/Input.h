// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A file or standard input, read front to back, and the part of it that is in memory. gzip and
// Zstandard, recognised by the first bytes, are decompressed by libarchive. Failures to open or
// read are InputErrors.

#ifndef QXRECORDSET_TOOLS_SUPPORT_INPUT_H
#define QXRECORDSET_TOOLS_SUPPORT_INPUT_H

#include <archive.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

class Input {
 public:
  // Opens the file at `strPath`; "-" is standard input. What is read is counted in `progressBar`,
  // which must outlive the input.
  Input(const std::string& strPath, Progress& progressBar);

  // A text that is in memory.
  Input(std::string strText, std::string strTextName, Progress& progressBar)
      : strName(std::move(strTextName)), progress(progressBar), strFirst(std::move(strText)) {}

  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input();

  // The name for messages: the path, or "standard input".
  const std::string& Name() const { return strName; }

  // Reads up to `nSize` bytes of the text to `pBytes`, as many as are there; 0 at the end.
  std::size_t Read(char* pBytes, std::size_t nSize);

  // All that is left.
  std::string ReadAll();

 private:
  struct Free {
    void operator()(archive* p) const { archive_read_free(p); }
  };

  static la_ssize_t ReadPacked(archive* p, void* pInput, const void** ppBytes);
  ssize_t ReadRaw(char* pBytes, std::size_t nSize);
  void Begin();
  void Unpack();
  [[noreturn]] void RefusePacked() const;

  int nFile = -1;
  std::string strName;
  Progress& progress;
  std::string strFirst;  // the first bytes, read to see what the text is
  std::size_t nFirstUsed = 0;
  bool bBegun = true;
  std::vector<char> vPacked;  // compressed bytes
  std::unique_ptr<archive, Free> pArchive;
};

// Some programs put it in front of UTF-8 text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The part of an input that is in memory: what a reader has not used yet. It is as long as one row
// and a piece of the input.
//
//   used up, dropped | Begin() ... unread text ... End() | kSlack zero bytes
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

#endif  // QXRECORDSET_TOOLS_SUPPORT_INPUT_H
