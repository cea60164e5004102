// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Making temporary files, and removing them in time.

#include "tools/qxrs/support/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

// The modes a new file gets from open(); mkstemp() would give less.
constexpr mode_t kNewFile = 0666;

// The temporary file that is there, for the handler below. A process has one at most.
std::atomic<const char*> szAbandoned = nullptr;

// Ends the process as the signal would have, without leaving the temporary file.
extern "C" void RemoveAndEnd(int nSignal) {
  const char* const szPath = szAbandoned;
  if (szPath) unlink(szPath);
  std::signal(nSignal, SIG_DFL);
  std::raise(nSignal);
}

void RemoveWhenInterrupted(const char* szPath) {
  szAbandoned = szPath;
  for (const int nSignal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    if (std::signal(nSignal, RemoveAndEnd) == SIG_IGN) {
      std::signal(nSignal, SIG_IGN);  // as nohup wants it
    }
  }
}

[[noreturn]] void Fail(const std::string& strName) {
  throw InputError("cannot write " + strName + ": " + std::strerror(errno));
}

mode_t CreationMode(const std::string& strTarget) {
  struct stat status {};
  if (stat(strTarget.c_str(), &status) == 0) return status.st_mode & 07777;
  const mode_t nMask = umask(0);
  umask(nMask);
  return kNewFile & ~nMask;
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& strPath)
    : strName(strPath),
      strTarget(std::filesystem::weakly_canonical(strPath)),
      strTemporary(strTarget + ".XXXXXX") {
  // No signal comes between making the file and knowing its name.
  sigset_t setAll;
  sigset_t setBefore;
  sigfillset(&setAll);
  sigprocmask(SIG_SETMASK, &setAll, &setBefore);
  nFile = mkostemp(strTemporary.data(), O_CLOEXEC);
  RemoveWhenInterrupted(nFile >= 0 ? strTemporary.c_str() : nullptr);
  sigprocmask(SIG_SETMASK, &setBefore, nullptr);
  if (nFile < 0) Fail(strName);
  fchmod(nFile, CreationMode(strTarget));
}

TemporaryFile::~TemporaryFile() {
  close(nFile);
  if (!strTemporary.empty()) {
    unlink(strTemporary.c_str());
    szAbandoned = nullptr;
  }
}

void TemporaryFile::Commit() {
  // The bytes have to be on the disk before the name points at them.
  if (fsync(nFile) != 0 || std::rename(strTemporary.c_str(), strTarget.c_str()) != 0) Fail(strName);
  szAbandoned = nullptr;
  strTemporary.clear();
}

int OpenNamelessFile() {
  const char* szFolder = std::getenv("TMPDIR");
  std::string strPath = std::string(szFolder && *szFolder ? szFolder : "/tmp") + "/qxrs.XXXXXX";
  const int nFile = mkostemp(strPath.data(), O_CLOEXEC);
  if (nFile < 0) Fail("a temporary file in " + strPath.substr(0, strPath.rfind('/')));
  unlink(strPath.c_str());
  return nFile;
}

}  // namespace qxrs
