// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// libarchive takes a compressed text for an archive of one file, in the format "raw".

#include "tools/qxrs/support/Compression.h"

#include <archive.h>
#include <archive_entry.h>

#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "tools/qxrs/support/Errors.h"

namespace qxrs {

namespace {

constexpr std::size_t kPiece = 65536;  // bytes of compressed data at a time

bool EndsWith(std::string_view strName, std::string_view strSuffix) {
  return strName.size() > strSuffix.size() &&
         strName.substr(strName.size() - strSuffix.size()) == strSuffix;
}

}  // namespace

bool IsCompressed(std::string_view strFirstBytes) {
  return strFirstBytes.substr(0, 2) == "\x1f\x8b" ||
         strFirstBytes.substr(0, 4) == "\x28\xb5\x2f\xfd";
}

std::string_view CompressionSuffix(std::string_view strName) {
  return EndsWith(strName, ".gz") ? ".gz" : EndsWith(strName, ".zst") ? ".zst" : "";
}

// An exception must not pass through the C library: it is kept until that returns.
struct Decompressor::State {
  static la_ssize_t OnRead(archive*, void* pState, const void** ppBytes) {
    auto& state = *static_cast<State*>(pState);
    *ppBytes = state.vBytes.data();
    try {
      return static_cast<la_ssize_t>(state.read(state.vBytes.data(), state.vBytes.size()));
    } catch (...) {
      state.pFailure = std::current_exception();
      return ARCHIVE_FATAL;
    }
  }

  [[noreturn]] void Fail() const {
    if (pFailure) std::rethrow_exception(pFailure);
    const char* const szReason = archive_error_string(p);
    throw InputError(strName + ": the compressed data are damaged or end too soon" +
                     (szReason ? ": " + std::string(szReason) : ""));
  }

  std::string strName;
  ReadRaw read;
  archive* p = archive_read_new();
  std::vector<char> vBytes = std::vector<char>(kPiece);
  std::exception_ptr pFailure = nullptr;
  bool bOpen = false;
};

Decompressor::Decompressor(std::string strName, ReadRaw read)
    : pState(new State{std::move(strName), std::move(read)}) {
  archive_read_support_filter_gzip(pState->p);
  archive_read_support_filter_zstd(pState->p);
  archive_read_support_format_raw(pState->p);
}

Decompressor::~Decompressor() { archive_read_free(pState->p); }

std::size_t Decompressor::Read(char* pBytes, std::size_t nSize) {
  if (!pState->bOpen) {
    pState->bOpen = true;
    archive_entry* pEntry = nullptr;
    if (archive_read_open(pState->p, pState.get(), nullptr, State::OnRead, nullptr) != ARCHIVE_OK) {
      pState->Fail();
    }
    const int nResult = archive_read_next_header(pState->p, &pEntry);
    if (nResult == ARCHIVE_EOF) return 0;
    if (nResult != ARCHIVE_OK) pState->Fail();
  }
  const la_ssize_t nRead = archive_read_data(pState->p, pBytes, nSize);
  if (nRead < 0) pState->Fail();
  return static_cast<std::size_t>(nRead);
}

struct Compressor::State {
  static la_ssize_t OnWrite(archive*, void* pState, const void* pBytes, std::size_t nSize) {
    auto& state = *static_cast<State*>(pState);
    try {
      state.write({static_cast<const char*>(pBytes), nSize});
      return static_cast<la_ssize_t>(nSize);
    } catch (...) {
      state.pFailure = std::current_exception();
      return ARCHIVE_FATAL;
    }
  }

  void Check(bool bDone) const {
    if (pFailure) std::rethrow_exception(pFailure);
    if (!bDone) throw std::bad_alloc();
  }

  WriteRaw write;
  archive* p = archive_write_new();
  std::exception_ptr pFailure = nullptr;
};

Compressor::Compressor(std::string_view strSuffix, WriteRaw write)
    : pState(new State{std::move(write)}) {
  archive* const p = pState->p;
  archive_write_set_format_raw(p);
  strSuffix == ".gz" ? archive_write_add_filter_gzip(p) : archive_write_add_filter_zstd(p);
  archive_write_set_bytes_in_last_block(p, 1);  // nothing fills the last block
  archive_entry* const pEntry = archive_entry_new();
  archive_entry_set_filetype(pEntry, AE_IFREG);
  const bool bDone =
      archive_write_open(p, pState.get(), nullptr, State::OnWrite, nullptr) == ARCHIVE_OK &&
      archive_write_header(p, pEntry) == ARCHIVE_OK;
  archive_entry_free(pEntry);
  pState->Check(bDone);
}

Compressor::~Compressor() { archive_write_free(pState->p); }

void Compressor::Write(std::string_view strText) {
  pState->Check(archive_write_data(pState->p, strText.data(), strText.size()) >= 0);
}

void Compressor::End() { pState->Check(archive_write_close(pState->p) == ARCHIVE_OK); }

}  // namespace qxrs
