// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A file or standard input, read front to back. gzip and Zstandard, recognised by the first bytes,
// are decompressed by libarchive. Failures to open or read are InputErrors.

#ifndef QXRECORDSET_TOOLS_SUPPORT_INPUT_H
#define QXRECORDSET_TOOLS_SUPPORT_INPUT_H

#include <archive.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/qxrs/support/Progress.h"

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

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_INPUT_H
