// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading files and standard input.

#include "tools/qxrs/support/Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Bytes asked for at a time: what a pipe holds.
constexpr std::size_t kPiece = 65536;

}  // namespace

Input::Input(const std::string& strPath, Progress& progressBar)
    : nFile(STDIN_FILENO), strName("standard input"), progress(progressBar) {
  if (strPath != "-") {
    strName = strPath;
    nFile = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (nFile < 0) {
      throw InputError("cannot open " + strName + ": " + std::strerror(errno));
    }
  }
  struct stat status {};
  if (fstat(nFile, &status) == 0 && S_ISREG(status.st_mode)) {
    progress.SetTotal(static_cast<unsigned long long>(status.st_size));
  }
}

Input::~Input() {
  if (nFile != STDIN_FILENO) {
    close(nFile);
  }
}

bool Input::Read(std::string& strBuffer) {
  const std::size_t nOld = strBuffer.size();
  strBuffer.resize(nOld + kPiece);
  ssize_t nRead = 0;
  do {
    nRead = read(nFile, &strBuffer[nOld], kPiece);
  } while (nRead < 0 && errno == EINTR);
  if (nRead < 0) {
    throw InputError("cannot read " + strName + ": " + std::strerror(errno));
  }
  strBuffer.resize(nOld + static_cast<std::size_t>(nRead));
  progress.Add(static_cast<unsigned long long>(nRead));
  return nRead > 0;
}

std::string Input::ReadAll() {
  std::string strText;
  while (Read(strText)) {
  }
  return strText;
}

}  // namespace qxrs
