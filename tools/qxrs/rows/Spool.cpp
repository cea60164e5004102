// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Keeping rows.

#include "tools/qxrs/rows/Spool.h"

#include <cerrno>
#include <cstring>

#include "tools/qxrs/rows/Values.h"
#include "tools/qxrs/support/Errors.h"
#include "tools/qxrs/support/Output.h"

namespace qxrs {

namespace {

constexpr std::size_t kPiece = 131072;  // bytes written and read at a time

constexpr unsigned kKindBits = 4;  // of the word that tells column and kind

// What stands in front of the text of a cell.
struct Head {
  std::uint32_t nWhat;
  std::uint32_t nLength;
};

// An integer that no database holds as one is a text to it.
Kind HoldableKind(const Cell& cell) {
  constexpr std::size_t kSafeDigits = 18;
  const bool bTooLong =
      cell.eKind == Kind::Integer && cell.strText.size() > kSafeDigits && !ToInt64(cell.strText);
  return bTooLong ? Kind::Text : cell.eKind;
}

}  // namespace

void PackRow(const Row& row, std::string& strBytes) {
  for (const Cell& cell : row) {
    const Head head{cell.nColumn << kKindBits | static_cast<std::uint32_t>(cell.eKind) << 1 |
                        static_cast<std::uint32_t>(cell.bEscaped),
                    static_cast<std::uint32_t>(cell.strText.size())};
    strBytes.append(reinterpret_cast<const char*>(&head), sizeof head).append(cell.strText);
  }
}

void UnpackRow(std::string_view strBytes, Row& row) {
  row.clear();
  const char* const pEnd = strBytes.data() + strBytes.size();
  for (const char* p = strBytes.data(); p != pEnd;) {
    Head head{};
    std::memcpy(&head, p, sizeof head);
    p += sizeof head;
    row.push_back({{p, head.nLength},
                   head.nWhat >> kKindBits,
                   static_cast<Kind>(head.nWhat >> 1 & ((1u << (kKindBits - 1)) - 1)),
                   (head.nWhat & 1) != 0});
    p += head.nLength;
  }
}

Kind CommonKind(std::optional<Kind> eOne, Kind eOther) {
  if (!eOne || *eOne == eOther) return eOther;
  const auto IsNumber = [](Kind e) { return e == Kind::Integer || e == Kind::Real; };
  return IsNumber(*eOne) && IsNumber(eOther) ? Kind::Real : Kind::Text;
}

SpooledRows::SpooledRows(RowSource& source, Kinds eWanted)
    : eKinds(eWanted), pFile(fdopen(OpenNamelessFile(), "w+")) {
  if (!pFile) Fail("open");
  std::setvbuf(pFile.get(), nullptr, _IOFBF, kPiece);
  const Columns& known = source.GetColumns();
  std::vector<Kept> vKept;
  for (Row row; source.Next(row);) {
    vKept.resize(known.Count());
    Keep(row, vKept);
  }
  columns = known;
  vKept.resize(known.Count());
  for (std::size_t i = 0; i < columns.Count(); ++i) {
    vInferred.push_back(vKept[i].eReadAs && vKept[i].eReadAs != Kind::Text);
    columns[i].eKind = vInferred[i] ? vKept[i].eReadAs : vKept[i].eKind;
  }
  Rewind();
}

void SpooledRows::Keep(const Row& row, std::vector<Kept>& vKept) {
  for (const Cell& cell : row) {
    Kept& kept = vKept[cell.nColumn];
    if (cell.eKind == Kind::Null) continue;
    kept.eKind = CommonKind(kept.eKind, HoldableKind(cell));
    if (eKinds == Kinds::Inferred && kept.eReadAs != Kind::Text) {
      kept.eReadAs = CommonKind(kept.eReadAs, ReadAs(cell));
    }
  }
  strBytes.assign(sizeof(std::uint32_t), '\0');
  PackRow(row, strBytes);
  const auto nLength = static_cast<std::uint32_t>(strBytes.size() - sizeof(std::uint32_t));
  std::memcpy(strBytes.data(), &nLength, sizeof nLength);
  ++nRows;
  if (std::fwrite(strBytes.data(), 1, strBytes.size(), pFile.get()) != strBytes.size()) {
    Fail("write");
  }
}

void SpooledRows::Fail(const char* szWhat) {
  throw InputError(std::string("cannot ") + szWhat + " a temporary file: " + std::strerror(errno));
}

void SpooledRows::Rewind() {
  if (std::fseek(pFile.get(), 0, SEEK_SET) != 0) Fail("write");
}

bool SpooledRows::Read(char* pBytes, std::size_t nBytes) {
  return std::fread(pBytes, 1, nBytes, pFile.get()) == nBytes;
}

bool SpooledRows::Next(Row& row) {
  std::uint32_t nLength = 0;
  if (!Read(reinterpret_cast<char*>(&nLength), sizeof nLength)) {
    if (std::ferror(pFile.get()) != 0) Fail("read");
    return false;
  }
  strBytes.resize(nLength);
  if (!Read(strBytes.data(), nLength)) Fail("read");
  UnpackRow(strBytes, row);
  if (eKinds == Kinds::AsTheyAre) return true;
  for (Cell& cell : row) {
    if (cell.eKind == Kind::Text && vInferred[cell.nColumn]) cell.eKind = ReadAs(cell);
  }
  return true;
}

// ---- In another order ---------------------------------------------------------------------------

namespace {

// A number that SQLite does not hold is the nearest that it does.
void SetValue(const Cell& cell, std::string& strBuffer, Value& value) {
  const auto nValue = cell.eKind == Kind::Integer ? ToInt64(cell.strText) : std::nullopt;
  value.eKind = cell.eKind;
  if (cell.eKind == Kind::Boolean || nValue) {
    value.eKind = Kind::Integer;
    value.nInteger = nValue.value_or(cell.strText == "true" ? 1 : 0);
  } else if (cell.eKind == Kind::Real || cell.eKind == Kind::Integer) {
    value.eKind = Kind::Real;
    value.fReal = ToDouble(cell.strText);
  } else {
    value.strText = strBuffer = ShownText(cell, strBuffer);
  }
}

}  // namespace

SortedRows::SortedRows(RowSource& source, const std::vector<std::string>& vKey, Order eOrder)
    : vKeys(vKey), vBuffers(vKey.size()), pDatabase(OpenDatabase("", DatabaseMode::Scratch)) {
  std::string strNames;
  std::string strMarks;
  std::string strOrder;
  std::string strEqual;
  for (std::size_t i = 0; i < vKeys.size(); ++i) {
    const std::string strName = "k" + std::to_string(i);
    strNames += strName + ", ";
    strMarks += "?, ";
    strOrder += strName + (eOrder == Order::Descending ? " DESC, " : ", ");
    strEqual += (i == 0 ? "" : " AND ") + strName + " IS ?";
  }
  pDatabase->Execute("CREATE TABLE r (" + strNames + "packed TEXT); BEGIN");
  const auto pInsert = pDatabase->Prepare("INSERT INTO r VALUES (" + strMarks + "?)");
  std::string strPacked;
  for (Row row; source.Next(row);) {
    SetKey(row, source.GetColumns());
    strPacked.clear();
    PackRow(row, strPacked);
    Value& packed = vValues.emplace_back();
    packed.eKind = Kind::Text;
    packed.strText = strPacked;
    pInsert->Run(vValues);
  }
  columns = source.GetColumns();
  for (const std::string& strKey : vKeys) {
    if (columns.Find(strKey) == Columns::kNone) {
      throw UsageError("there is no column '" + strKey + "'");
    }
  }
  if (eOrder == Order::AsTheyCame) {
    strOrder.clear();
    pDatabase->Execute("CREATE INDEX i ON r (" + strNames.substr(0, strNames.size() - 2) + ")");
    pTake = pDatabase->Prepare("DELETE FROM r WHERE rowid = (SELECT min(rowid) FROM r WHERE " +
                               strEqual + ") RETURNING packed");
  }
  pSelect = pDatabase->Prepare("SELECT packed FROM r ORDER BY " + strOrder + "rowid");
}

void SortedRows::SetKey(const Row& row, const Columns& columnsOfRow) {
  vValues.assign(vKeys.size(), {});
  for (std::size_t i = 0; i < vKeys.size(); ++i) {
    const Cell* const pCell = Find(row, columnsOfRow.Find(vKeys[i]));
    if (pCell) SetValue(*pCell, vBuffers[i], vValues[i]);
  }
}

bool SortedRows::Unpack(Statement& statement, Row& row) {
  if (!statement.Next(rowPacked)) return false;
  UnpackRow(rowPacked[0].strText, row);
  return true;
}

bool SortedRows::Take(const Row& row, const Columns& columnsOfRow, Row& rowFound) {
  SetKey(row, columnsOfRow);
  pTake->Bind(vValues);
  return Unpack(*pTake, rowFound);
}

}  // namespace qxrs
