// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Writing files and standard output.

#include "tools/qxrs/support/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// Bytes collected before they are written.
constexpr std::size_t kPiece = 65536;

// The modes a new file gets from open(); mkstemp() would give less.
constexpr mode_t kNewFile = 0666;

// The temporary file that is there, for the handler below. A process has one at most.
std::atomic<const char*> szAbandoned = nullptr;

// Ends the process as the signal would have, without leaving the temporary file.
extern "C" void RemoveAndEnd(int nSignal) {
  const char* const szPath = szAbandoned;
  if (szPath) {
    unlink(szPath);
  }
  std::signal(nSignal, SIG_DFL);
  std::raise(nSignal);
}

void RemoveWhenInterrupted(const char* szPath) {
  szAbandoned = szPath;
  for (const int nSignal : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(nSignal, RemoveAndEnd) == SIG_IGN) {
      std::signal(nSignal, SIG_IGN);  // as nohup wants it
    }
  }
}

[[noreturn]] void Fail(const std::string& strName) {
  throw InputError("cannot write " + strName + ": " + std::strerror(errno));
}

// Pipes, terminals and devices are written directly: there is nothing to put in place.
bool IsSpecial(const std::string& strPath) {
  struct stat status {};
  return stat(strPath.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

// The file behind a symbolic link, so that the link stays; the path itself when there is none.
std::string Resolved(const std::string& strPath) {
  char* szPath = realpath(strPath.c_str(), nullptr);
  if (!szPath) {
    return strPath;
  }
  std::string strResult(szPath);
  std::free(szPath);
  return strResult;
}

mode_t CreationMode(const std::string& strTarget) {
  struct stat status {};
  if (stat(strTarget.c_str(), &status) == 0) {
    return status.st_mode & 07777;
  }
  const mode_t nMask = umask(0);
  umask(nMask);
  return kNewFile & ~nMask;
}

int OpenOutput(const std::string& strPath) {
  if (strPath == "-") {
    return STDOUT_FILENO;
  }
  return IsSpecial(strPath) ? open(strPath.c_str(), O_WRONLY | O_CLOEXEC) : -1;
}

}  // namespace

Output::Output(const std::string& strPath, Progress& progressBar)
    : nFile(OpenOutput(strPath)),
      strName(strPath == "-" ? "standard output" : strPath),
      progress(progressBar),
      bTerminal(nFile >= 0 && IsTerminal(nFile)) {
  if (nFile >= 0) {
    return;
  }
  if (IsSpecial(strPath)) {
    Fail(strName);
  }
  strTarget = Resolved(strPath);
  OpenTemporary();
}

Output::~Output() {
  if (nFile != STDOUT_FILENO) {
    close(nFile);
  }
  if (!strTemporary.empty()) {
    unlink(strTemporary.c_str());
    szAbandoned = nullptr;
  }
}

void Output::OpenTemporary() {
  // No signal comes between making the file and knowing its name.
  sigset_t setAll;
  sigset_t setBefore;
  sigfillset(&setAll);
  sigprocmask(SIG_SETMASK, &setAll, &setBefore);
  strTemporary = strTarget + ".XXXXXX";
  nFile = mkostemp(strTemporary.data(), O_CLOEXEC);
  RemoveWhenInterrupted(nFile >= 0 ? strTemporary.c_str() : nullptr);
  sigprocmask(SIG_SETMASK, &setBefore, nullptr);
  if (nFile < 0) {
    strTemporary.clear();
    Fail(strName);
  }
  fchmod(nFile, CreationMode(strTarget));
}

void Output::Write(std::string_view strText) {
  strBuffer += strText;
  if (strBuffer.size() >= kPiece) {
    Flush();
  }
}

void Output::Flush() {
  if (bTerminal) {
    progress.Stop();
  }
  std::string_view strRest = strBuffer;
  while (!strRest.empty()) {
    const ssize_t nWritten = write(nFile, strRest.data(), strRest.size());
    if (nWritten < 0 && errno != EINTR) {
      Fail(strName);
    }
    strRest.remove_prefix(nWritten < 0 ? 0 : static_cast<std::size_t>(nWritten));
  }
  strBuffer.clear();
}

void Output::Commit() {
  Flush();
  if (strTemporary.empty()) {
    return;
  }
  // The bytes have to be on the disk before the name points at them.
  if (fsync(nFile) != 0 || std::rename(strTemporary.c_str(), strTarget.c_str()) != 0) {
    Fail(strName);
  }
  szAbandoned = nullptr;
  strTemporary.clear();
}

}  // namespace qxrs
