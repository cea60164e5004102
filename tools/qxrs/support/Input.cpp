// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading files and standard input.

#include "tools/qxrs/support/Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr std::size_t kPiece = 65536;   // bytes asked for at a time: what a pipe holds
constexpr std::size_t kFirstBytes = 4;  // tell what the text is compressed with

}  // namespace

Input::Input(const std::string& strPath, Progress& progressBar)
    : nFile(STDIN_FILENO), strName("standard input"), progress(progressBar) {
  if (strPath != "-") {
    strName = strPath;
    nFile = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (nFile < 0) throw InputError("cannot open " + strName + ": " + std::strerror(errno));
  }
  struct stat status {};
  if (fstat(nFile, &status) == 0 && S_ISREG(status.st_mode)) {
    progress.SetTotal(static_cast<unsigned long long>(status.st_size));
  }
}

Input::~Input() {
  if (nFile > STDIN_FILENO) close(nFile);
}

// The bytes of the file: the first ones are known already.
std::size_t Input::ReadRaw(char* pBytes, std::size_t nSize) {
  if (nFirstUsed < strFirst.size()) {
    const std::size_t nCopied = strFirst.copy(pBytes, nSize, nFirstUsed);
    nFirstUsed += nCopied;
    return nCopied;
  }
  if (nFile < 0) return 0;
  ssize_t nRead = 0;
  do {
    nRead = read(nFile, pBytes, nSize);
  } while (nRead < 0 && errno == EINTR);
  if (nRead < 0) throw InputError("cannot read " + strName + ": " + std::strerror(errno));
  progress.Add(static_cast<unsigned long long>(nRead));
  return static_cast<std::size_t>(nRead);
}

void Input::Begin() {
  bBegun = true;
  std::string strBytes(kPiece, '\0');
  std::size_t nSize = 0;
  for (std::size_t nRead = 1; nRead != 0 && nSize < kFirstBytes; nSize += nRead) {
    nRead = ReadRaw(&strBytes[nSize], kPiece - nSize);
  }
  strBytes.resize(nSize);
  strFirst = std::move(strBytes);
  if (IsCompressed(strFirst)) {
    pDecompressor.emplace(
        strName, [this](char* pBytes, std::size_t nMost) { return ReadRaw(pBytes, nMost); });
  }
}

std::size_t Input::Read(char* pBytes, std::size_t nSize) {
  if (!bBegun) Begin();
  return pDecompressor ? pDecompressor->Read(pBytes, nSize) : ReadRaw(pBytes, nSize);
}

std::string Input::ReadAll() {
  std::string strText;
  std::size_t nRead = 0;
  std::size_t nOld = 0;
  do {
    strText.resize(nOld + std::max(kPiece, nOld));
    nRead = Read(&strText[nOld], strText.size() - nOld);
    nOld += nRead;
  } while (nRead != 0);
  strText.resize(nOld);
  return strText;
}

}  // namespace qxrs
