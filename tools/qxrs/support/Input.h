// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A file or standard input, read front to back. Failures to open or read are InputErrors.

#ifndef QXRECORDSET_TOOLS_SUPPORT_INPUT_H
#define QXRECORDSET_TOOLS_SUPPORT_INPUT_H

#include <string>

#include "tools/qxrs/support/Progress.h"

namespace qxrs {

class Input {
 public:
  // Opens the file at `strPath`; "-" is standard input. What is read is counted in `progressBar`,
  // which must outlive the input.
  Input(const std::string& strPath, Progress& progressBar);
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input();

  // The name for messages: the path, or "standard input".
  const std::string& Name() const { return strName; }

  // Appends the next piece of the text to `strBuffer`; false at the end.
  bool Read(std::string& strBuffer);

  // All that is left.
  std::string ReadAll();

 private:
  int nFile;
  std::string strName;
  Progress& progress;
};

}  // namespace qxrs

#endif  // QXRECORDSET_TOOLS_SUPPORT_INPUT_H
