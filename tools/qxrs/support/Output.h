// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Standard output, or the file of the option -o. A file is written under a temporary name and put
// in place by Commit(), so that it may be the input, too, and a command that fails leaves the old
// one alone. Failures to write are InputErrors.

#ifndef QXRECORDSET_TOOLS_SUPPORT_OUTPUT_H
#define QXRECORDSET_TOOLS_SUPPORT_OUTPUT_H

#include <string>
#include <string_view>

#include "tools/qxrs/support/Progress.h"

namespace qxrs {

class Output {
 public:
  // Opens the file at `strPath`; "-" is standard output. Before anything reaches a terminal,
  // `progressBar` is stopped; it must outlive the output.
  Output(const std::string& strPath, Progress& progressBar);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  ~Output();

  void Write(std::string_view strText);

  // Hands over all that was written. Without it a file never appears.
  void Commit();

  int File() const { return nFile; }

 private:
  void OpenTemporary();
  void Flush();

  int nFile;
  std::string strName;       // for messages
  std::string strTarget;     // where Commit() puts the temporary file
  std::string strTemporary;  // empty: the file is written directly
  std::string strBuffer;
  Progress& progress;
  const bool bTerminal;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_OUTPUT_H
