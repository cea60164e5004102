// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Making temporary files, and removing them in time; writing files and standard output.

#include "tools/qxrs/support/Output.h"

#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

// ---- Temporary files ----------------------------------------------------------------------------

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

// Bytes collected before they are written.
constexpr std::size_t kPiece = 131072;

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

// ---- Output -------------------------------------------------------------------------------------

std::string_view CompressionSuffix(std::string_view strName) {
  for (const std::string_view strEnding : {".gz", ".zst"}) {
    if (strName.size() > strEnding.size() &&
        strName.substr(strName.size() - strEnding.size()) == strEnding) {
      return strEnding;
    }
  }
  return {};
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
  if (!strSuffix.empty()) Pack(strSuffix == ".gz");
}

Output::~Output() {
  if (nFile != STDOUT_FILENO && !file) close(nFile);
}

// libarchive takes a text for an archive of one file, in the format "raw".
void Output::Pack(bool bGzip) {
  pArchive.reset(archive_write_new());
  archive* const p = pArchive.get();
  archive_write_set_format_raw(p);
  bGzip ? archive_write_add_filter_gzip(p) : archive_write_add_filter_zstd(p);
  archive_entry* const pEntry = archive_entry_new();
  archive_entry_set_filetype(pEntry, AE_IFREG);
  const bool bDone = archive_write_open_fd(p, nFile) == ARCHIVE_OK &&
                     archive_write_header(p, pEntry) == ARCHIVE_OK;
  archive_entry_free(pEntry);
  CheckPacked(bDone);
}

void Output::CheckPacked(bool bDone) const {
  if (bDone) return;
  errno = archive_errno(pArchive.get());
  Fail(strName);
}

void Output::WriteAll(std::string_view strText) {
  while (!strText.empty()) {
    const ssize_t nWritten = write(nFile, strText.data(), strText.size());
    if (nWritten < 0 && errno != EINTR) Fail(strName);
    strText.remove_prefix(nWritten < 0 ? 0 : static_cast<std::size_t>(nWritten));
  }
}

void Output::Flush() {
  if (bTerminal) progress.Stop();
  const std::string_view strText(vBuffer.data(), static_cast<std::size_t>(pWrite - vBuffer.data()));
  pWrite = vBuffer.data();
  if (pArchive) {
    CheckPacked(archive_write_data(pArchive.get(), strText.data(), strText.size()) >= 0);
  } else {
    WriteAll(strText);
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
  if (pArchive) CheckPacked(archive_write_close(pArchive.get()) == ARCHIVE_OK);
  if (file) file->Commit();
}

}  // namespace qxrs
