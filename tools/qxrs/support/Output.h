// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Standard output, or the file of the option -o, and temporary files. A file is written under a
// temporary name and put in place by Commit(), so that it may be the input, too, and a command that
// fails leaves the old one alone. A file whose name ends in .gz or .zst is compressed by
// libarchive. Failures to write are InputErrors.

#ifndef QXRECORDSET_TOOLS_SUPPORT_OUTPUT_H
#define QXRECORDSET_TOOLS_SUPPORT_OUTPUT_H

#include <archive.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qxrs/support/Terminal.h"

namespace qxrs {

// A file that is written under a temporary name beside its target and put in place when it is
// complete. A command that fails, or is interrupted by a signal, leaves neither.
class TemporaryFile {
 public:
  // Makes the temporary file; it gets the permissions of the file at `strPath`, or those of a new
  // one. A symbolic link stays, and the file behind it is the target. Throws InputError. There can
  // be one at a time.
  explicit TemporaryFile(const std::string& strPath);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  int File() const { return nFile; }
  const std::string& Path() const { return strTemporary; }

  // Puts it in place. Throws InputError.
  void Commit();

 private:
  const std::string strName;  // for messages
  const std::string strTarget;
  std::string strTemporary;  // empty: it is in place
  int nFile = -1;
};

// A file without a name in the folder for temporary files: it is gone when it is closed.
int OpenNamelessFile();

// The ending .gz or .zst of a file's name, or nothing.
std::string_view CompressionSuffix(std::string_view strName);

class Output {
 public:
  // Opens the file at `strPath`; "-" is standard output. Before anything reaches a terminal,
  // `progressBar` is stopped; it must outlive the output.
  Output(const std::string& strPath, Progress& progressBar);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  // Room for `nBytes` bytes, to be filled from its beginning; Use() then takes what ends at
  // `pBehind`.
  char* Room(std::size_t nBytes) {
    return static_cast<std::size_t>(pLimit - pWrite) >= nBytes ? pWrite : MakeRoom(nBytes);
  }
  void Use(char* pBehind) { pWrite = pBehind; }

  void Write(std::string_view strText) {
    char* const p = Room(strText.size());
    std::memcpy(p, strText.data(), strText.size());
    Use(p + strText.size());
  }

  // Hands over what was written so far.
  void Flush();

  // Hands over all that was written. Without it a file never appears.
  void Commit();

  int File() const { return nFile; }
  bool IsTerminal() const { return bTerminal; }

 private:
  struct Free {
    void operator()(archive* p) const { archive_write_free(p); }
  };

  char* MakeRoom(std::size_t nBytes);
  void WriteAll(std::string_view strText);
  void Pack(bool bGzip);
  void CheckPacked(bool bDone) const;

  std::string strName;                // for messages
  std::optional<TemporaryFile> file;  // none: written directly
  int nFile;
  std::unique_ptr<archive, Free> pArchive;  // what is written is compressed
  std::vector<char> vBuffer;
  char* pWrite;  // behind what was written to the buffer
  char* pLimit;  // its end
  Progress& progress;
  const bool bTerminal;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_OUTPUT_H
