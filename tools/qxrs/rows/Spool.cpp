// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Keeping rows.

#include "tools/qxrs/rows/Spool.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Output.h"
#include "tools/qxrs/support/TemporaryFile.h"

namespace qxrs {

namespace {

constexpr std::size_t kInMemory = 4194304;  // bytes of rows that need no file
constexpr std::size_t kPiece = 262144;      // bytes written and read at a time
constexpr const char* kFileName = "a temporary file";

constexpr unsigned kKindBits = 4;  // of the word that tells column and kind

void AppendWord(std::string& strBytes, std::size_t nWord) {
  const auto nBits = static_cast<std::uint32_t>(nWord);
  char aBytes[sizeof nBits];
  std::memcpy(aBytes, &nBits, sizeof nBits);
  strBytes.append(aBytes, sizeof aBytes);
}

// An integer that no database holds as one is a text to it.
Kind HoldableKind(const Cell& cell) {
  constexpr std::size_t kSafeDigits = 18;
  const bool bTooLong =
      cell.eKind == Kind::Integer && cell.strText.size() > kSafeDigits && !ToInt64(cell.strText);
  return bTooLong ? Kind::Text : cell.eKind;
}

std::uint32_t WordAt(const char* p) {
  std::uint32_t nWord = 0;
  std::memcpy(&nWord, p, sizeof nWord);
  return nWord;
}

}  // namespace

void PackRow(const Row& row, std::string& strBytes) {
  std::size_t nLength = 0;
  for (const Cell& cell : row) {
    nLength += 2 * sizeof(std::uint32_t) + cell.strText.size();
  }
  AppendWord(strBytes, nLength);
  for (const Cell& cell : row) {
    AppendWord(strBytes, cell.nColumn << kKindBits | static_cast<std::uint32_t>(cell.eKind) << 1 |
                             static_cast<std::uint32_t>(cell.bEscaped));
    AppendWord(strBytes, cell.strText.size());
    strBytes += cell.strText;
  }
}

void UnpackRow(std::string_view strBytes, Row& row) {
  row.clear();
  const char* const pEnd = strBytes.data() + strBytes.size();
  for (const char* p = strBytes.data(); p != pEnd;) {
    const std::uint32_t nWhat = WordAt(p);
    const std::uint32_t nLength = WordAt(p + sizeof nWhat);
    p += 2 * sizeof nWhat;
    row.push_back({{p, nLength},
                   nWhat >> kKindBits,
                   static_cast<Kind>(nWhat >> 1 & ((1u << (kKindBits - 1)) - 1)),
                   (nWhat & 1) != 0});
    p += nLength;
  }
}

Kind CommonKind(std::optional<Kind> eOne, Kind eOther) {
  if (!eOne || *eOne == eOther) return eOther;
  const auto IsNumber = [](Kind e) { return e == Kind::Integer || e == Kind::Real; };
  return IsNumber(*eOne) && IsNumber(eOther) ? Kind::Real : Kind::Text;
}

SpooledRows::SpooledRows(RowSource& source, Kinds eWanted) : eKinds(eWanted) {
  const Columns& known = source.GetColumns();
  std::vector<std::optional<Kind>> vKinds;   // of all cells
  std::vector<std::optional<Kind>> vReadAs;  // what the texts can be read as
  for (Row row; source.Next(row);) {
    vKinds.resize(known.Count());
    vReadAs.resize(known.Count());
    for (const Cell& cell : row) {
      if (cell.eKind == Kind::Null) continue;
      std::optional<Kind>& eKind = vKinds[cell.nColumn];
      eKind = CommonKind(eKind, HoldableKind(cell));
      std::optional<Kind>& eReadAs = vReadAs[cell.nColumn];
      if (eKinds == Kinds::Inferred && eReadAs != Kind::Text) {
        eReadAs = CommonKind(eReadAs, ReadAs(cell));
      }
    }
    Keep(row);
  }
  if (nFile >= 0) WriteOut();
  columns = known;
  vKinds.resize(known.Count());
  vReadAs.resize(known.Count());
  vInferred.resize(known.Count());
  for (std::size_t i = 0; i < columns.Count(); ++i) {
    vInferred[i] = vReadAs[i] && *vReadAs[i] != Kind::Text;
    columns[i].eKind = vInferred[i] ? vReadAs[i] : vKinds[i];
  }
  Rewind();
}

SpooledRows::~SpooledRows() {
  if (nFile >= 0) close(nFile);
}

void SpooledRows::Keep(const Row& row) {
  PackRow(row, strBytes);
  ++nRows;
  if (strBytes.size() >= (nFile < 0 ? kInMemory : kPiece)) WriteOut();
}

void SpooledRows::WriteOut() {
  if (nFile < 0) nFile = OpenNamelessFile();
  WriteAll(nFile, strBytes, kFileName);
  strBytes.clear();
  strBytes.shrink_to_fit();
}

void SpooledRows::Rewind() {
  nUsed = 0;
  if (nFile >= 0) {
    strBytes.clear();
    if (lseek(nFile, 0, SEEK_SET) != 0) {
      throw InputError(std::string("cannot read ") + kFileName + ": " + std::strerror(errno));
    }
  }
}

// Whether `nBytes` unused bytes are there, read from the file if need be.
bool SpooledRows::Fill(std::size_t nBytes) {
  if (strBytes.size() - nUsed >= nBytes) return true;
  if (nFile < 0) return false;
  strBytes.erase(0, nUsed);
  nUsed = 0;
  while (strBytes.size() < nBytes) {
    const std::size_t nOld = strBytes.size();
    strBytes.resize(nOld + kPiece);
    const ssize_t nRead = read(nFile, &strBytes[nOld], kPiece);
    if (nRead < 0 && errno != EINTR) {
      throw InputError(std::string("cannot read ") + kFileName + ": " + std::strerror(errno));
    }
    strBytes.resize(nOld + (nRead < 0 ? 0 : static_cast<std::size_t>(nRead)));
    if (nRead == 0) return false;
  }
  return true;
}

bool SpooledRows::Next(Row& row) {
  if (!Fill(sizeof(std::uint32_t))) return false;
  const std::size_t nRowBytes = sizeof(std::uint32_t) + WordAt(strBytes.data() + nUsed);
  if (!Fill(nRowBytes)) return false;
  UnpackRow(std::string_view(strBytes).substr(nUsed + sizeof(std::uint32_t),
                                              nRowBytes - sizeof(std::uint32_t)),
            row);
  nUsed += nRowBytes;
  if (eKinds == Kinds::Inferred) Retype(row);
  return true;
}

void SpooledRows::Retype(Row& row) const {
  for (Cell& cell : row) {
    if (cell.eKind == Kind::Text && vInferred[cell.nColumn]) cell.eKind = ReadAs(cell);
  }
}

}  // namespace qxrs
