// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Reading files and standard input.

#include "tools/qxrs/support/Input.h"

#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qxrs {

namespace {

constexpr std::size_t kPiece = 65536;         // bytes asked for at a time: what a pipe holds
constexpr std::size_t kWindowPiece = 131072;  // the same for a window
constexpr std::size_t kFirstBytes = 4;        // tell what the text is compressed with

}  // namespace

Input::Input(const std::string& strPath, Progress& progressBar)
    : nFile(STDIN_FILENO), strName("standard input"), progress(progressBar), bBegun(false) {
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

// The bytes of the file: the first ones are known already. -1, and errno tells why, for a failure.
ssize_t Input::ReadRaw(char* pBytes, std::size_t nSize) {
  if (nFirstUsed < strFirst.size()) {
    const std::size_t nCopied = strFirst.copy(pBytes, nSize, nFirstUsed);
    nFirstUsed += nCopied;
    return static_cast<ssize_t>(nCopied);
  }
  if (nFile < 0) return 0;
  ssize_t nRead = 0;
  do {
    nRead = read(nFile, pBytes, nSize);
  } while (nRead < 0 && errno == EINTR);
  progress.Add(static_cast<unsigned long long>(std::max<ssize_t>(nRead, 0)));
  return nRead;
}

void Input::Begin() {
  bBegun = true;
  std::string strBytes(kPiece, '\0');
  std::size_t nSize = 0;
  for (ssize_t nRead = 1; nRead > 0 && nSize < kFirstBytes;) {
    nRead = ReadRaw(&strBytes[nSize], kPiece - nSize);  // another call will tell of a failure
    nSize += static_cast<std::size_t>(std::max<ssize_t>(nRead, 0));
  }
  strBytes.resize(nSize);
  strFirst = std::move(strBytes);
  if (strFirst.compare(0, 2, "\x1f\x8b") == 0 || strFirst.compare(0, 4, "\x28\xb5\x2f\xfd") == 0) {
    Unpack();
  }
}

// libarchive takes a compressed text for an archive of one file, in the format "raw".
void Input::Unpack() {
  pArchive.reset(archive_read_new());
  archive_read_support_filter_gzip(pArchive.get());
  archive_read_support_filter_zstd(pArchive.get());
  archive_read_support_format_raw(pArchive.get());
  archive_read_support_format_empty(pArchive.get());
  vPacked.resize(kPiece);
  archive_entry* pEntry = nullptr;
  int nResult = archive_read_open(pArchive.get(), this, nullptr, ReadPacked, nullptr);
  if (nResult == ARCHIVE_OK) nResult = archive_read_next_header(pArchive.get(), &pEntry);
  // Without a filter for it, what is left of a cut file would be the text.
  if (nResult < ARCHIVE_OK || archive_filter_count(pArchive.get()) < 2) RefusePacked();
  if (nResult == ARCHIVE_EOF) pArchive.reset();  // the text is empty, and all of the file was read
}

la_ssize_t Input::ReadPacked(archive* p, void* pInput, const void** ppBytes) {
  Input& input = *static_cast<Input*>(pInput);
  *ppBytes = input.vPacked.data();
  const ssize_t nRead = input.ReadRaw(input.vPacked.data(), input.vPacked.size());
  if (nRead < 0) archive_set_error(p, errno, "%s", std::strerror(errno));
  return nRead;
}

void Input::RefusePacked() const {
  const char* const szReason = archive_error_string(pArchive.get());
  throw InputError(strName + ": the compressed data are damaged or end too soon" +
                   (szReason ? ": " + std::string(szReason) : ""));
}

std::size_t Input::Read(char* pBytes, std::size_t nSize) {
  if (!bBegun) Begin();
  const auto nRead =
      pArchive ? archive_read_data(pArchive.get(), pBytes, nSize) : ReadRaw(pBytes, nSize);
  if (nRead < 0 && pArchive) RefusePacked();
  if (nRead < 0) throw InputError("cannot read " + strName + ": " + std::strerror(errno));
  return static_cast<std::size_t>(nRead);
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

// ---- Windows ------------------------------------------------------------------------------------

bool Window::Fill() {
  position.Advance({vBytes.data(), nBegin});
  nEnd -= nBegin;
  std::memmove(vBytes.data(), vBytes.data() + nBegin, nEnd);
  nBegin = 0;
  const std::size_t nMore = std::max(kWindowPiece, nEnd);
  if (vBytes.size() < nEnd + nMore + kSlack) vBytes.resize(nEnd + nMore + kSlack);
  const std::size_t nRead = input.Read(End(), nMore);
  nEnd += nRead;
  std::memset(End(), 0, kSlack);
  return nRead != 0;
}

void Window::Start() {
  while (nEnd - nBegin < kByteOrderMark.size() && Fill()) {
  }
  const std::string_view strText = Text();
  const std::string_view strTwo = strText.substr(0, 2);
  if (strTwo == "\xFF\xFE" || strTwo == "\xFE\xFF") {
    throw InputError(Name() + ": the text is UTF-16; iconv -f UTF-16 -t UTF-8 makes it readable");
  }
  if (strText.substr(0, kByteOrderMark.size()) == kByteOrderMark) nBegin += kByteOrderMark.size();
}

void Window::Refuse(const char* p, const std::string& strReason) {
  TextPosition place = position;
  place.Advance({vBytes.data(), static_cast<std::size_t>(p - vBytes.data())});
  throw Complaint(input.Name(), place, strReason);
}

}  // namespace qxrs
