// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing files and standard output.

#include "tools/qxrs/support/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Bytes collected before they are written.
constexpr std::size_t kPiece = 131072;

[[noreturn]] void Fail(const std::string& strName) {
  throw InputError("cannot write " + strName + ": " + std::strerror(errno));
}

// Pipes, terminals and devices are written directly: there is nothing to put in place.
bool IsSpecial(const std::string& strPath) {
  struct stat status {};
  return stat(strPath.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

int OpenOutput(const std::string& strPath, std::optional<TemporaryFile>& file) {
  if (strPath == "-") return STDOUT_FILENO;
  if (!IsSpecial(strPath)) return file.emplace(strPath).File();
  const int nFile = open(strPath.c_str(), O_WRONLY | O_CLOEXEC);
  if (nFile < 0) Fail(strPath);
  return nFile;
}

}  // namespace

void WriteAll(int nFile, std::string_view strText, const std::string& strName) {
  while (!strText.empty()) {
    const ssize_t nWritten = write(nFile, strText.data(), strText.size());
    if (nWritten < 0 && errno != EINTR) Fail(strName);
    strText.remove_prefix(nWritten < 0 ? 0 : static_cast<std::size_t>(nWritten));
  }
}

Output::Output(const std::string& strPath, Progress& progressBar)
    : strName(strPath == "-" ? "standard output" : strPath),
      nFile(OpenOutput(strPath, file)),
      vBuffer(kPiece),
      pWrite(vBuffer.data()),
      pLimit(pWrite + vBuffer.size()),
      progress(progressBar),
      bTerminal(qxrs::IsTerminal(nFile)) {
  const std::string_view strSuffix = CompressionSuffix(strPath);
  if (!strSuffix.empty()) {
    compressor.emplace(strSuffix, [this](std::string_view str) { WriteAll(nFile, str, strName); });
  }
}

Output::~Output() {
  if (nFile != STDOUT_FILENO && !file) close(nFile);
}

void Output::Flush() {
  if (bTerminal) progress.Stop();
  const std::string_view strText(vBuffer.data(), static_cast<std::size_t>(pWrite - vBuffer.data()));
  pWrite = vBuffer.data();
  if (compressor) {
    compressor->Write(strText);
  } else {
    WriteAll(nFile, strText, strName);
  }
}

char* Output::MakeRoom(std::size_t nBytes) {
  Flush();
  if (nBytes > vBuffer.size()) {
    vBuffer.resize(nBytes);
    pWrite = vBuffer.data();
    pLimit = pWrite + nBytes;
  }
  return pWrite;
}

void Output::Commit() {
  Flush();
  if (compressor) compressor->End();
  if (file) file->Commit();
}

}  // namespace qxrs
