// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs check, normalize and dump: whether the library accepts JSON text, and if not, where and why
// not; and what a record set that loads it has of it.

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <utility>

#include "recordset/QXRecordSet.h"
#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

namespace {

// ---- Losses -------------------------------------------------------------------------------------

using JSON::JSONValue;

// What a record set changes of a text, beside what the library counts; or null.
const char* LossOfText(std::string_view strText) {
  if (!IsUtf8(strText)) {
    return "a text is not UTF-8, or escapes a character as two surrogates, which a host keeps "
           "apart";
  }
  const std::size_t nFirst = strText.find_first_not_of(' ');
  const bool bLikeObject = nFirst != std::string_view::npos && strText[nFirst] == '{' &&
                           strText[strText.find_last_not_of(' ')] == '}';
  return bLikeObject ? "a record set writes a text that reads like an object as one, or not at all"
                     : nullptr;
}

void CountRow(const JSONValue& row, unsigned long long nRow, Warnings& warnings) {
  const auto& members = static_cast<const JSON::ObjectValue&>(*row.pComposite);
  std::set<std::string_view> setNames;
  for (int i = 0; i < members.Size(); ++i) {
    const char* const szName = members.NameAt(i);
    if (!setNames.insert(szName).second) {
      warnings.Add("a name occurs more than once in a row; its last value counts", nRow, szName);
    }
    const JSONValue& value = row[i];
    const char* const szLoss = value.eType == JSON::jtString ? LossOfText(TextOf(value)) : nullptr;
    if (szLoss) warnings.Add(szLoss, nRow, szName);
  }
}

// The elements of the array of rows.
void CountRows(const JSONValue& rows, Warnings& warnings) {
  for (int i = 0; i < rows.Size(); ++i) {
    const auto nRow = static_cast<unsigned long long>(i) + 1;
    if (rows[i].eType == JSON::jtObject) {
      CountRow(rows[i], nRow, warnings);
    } else if (rows[i].eType != JSON::jtNull) {
      warnings.Add("an element of the rows that is no object is ignored", nRow, {});
    } else {
      if (i + 1 == rows.Size()) return;
      return warnings.Add("a null ends the rows; what follows is ignored", nRow, {});
    }
  }
}

// What the library counted, as one loss.
void CountCells(CQXRecordSet& records, const LoadResult& result, Warnings& warnings) {
  if (result.nLossyCells == 0) return;
  const std::pair<const char*, std::size_t> aKinds[] = {
      {"real numbers", result.nReals},
      {"arrays", result.nArrays},
      {"texts behind a NUL", result.nCut},
      {"integers beyond its long", result.nLimited}};
  std::string strReason = "a record set does not keep";
  const std::size_t nPlain = strReason.size();
  for (const auto& [szWhat, nCount] : aKinds) {
    if (nCount == 0) continue;
    strReason += (strReason.size() == nPlain ? " " : ", ") + std::string(szWhat);
    strReason += " (" + std::to_string(nCount) + ")";
  }
  std::string strColumn;
  for (long i = 0; i < records.GetColumnCount() && strColumn.empty(); ++i) {
    const char* const szName = records.GetColumnName(i);
    if (records.GetColumnIndex(szName) == result.lFirstColumn) strColumn = szName;
  }
  warnings.Add(strReason, static_cast<unsigned long long>(result.lFirstRow), strColumn,
               result.nLossyCells);
}

// REQUIRES: the library loaded `strText`.
void CountLosses(const std::string& strText, Warnings& warnings) {
  JSON::Message message;
  message.Parse(strText.data(), static_cast<int>(strText.size()));
  const auto nRead = static_cast<std::size_t>(message.pCursor - message.pStart);
  if (strText.find_first_not_of(kWhiteSpace, nRead) != std::string::npos) {
    warnings.Add("the text behind the document is ignored");
  }
  const JSONValue& rows = std::as_const(message)["rows"];
  if (rows.eType != JSON::jtArray) return CountRow(message, 1, warnings);
  if (message.Size() > 1) warnings.Add("the members beside the rows are ignored");
  CountRows(rows, warnings);
}

// The record set that a host has after loading `strText`; a text that holds none is an InputError.
// What it does not keep of the text is counted where `pLosses` is not null.
CQXRecordSet LoadRecordSet(const std::string& strText, const std::string& strName,
                           Warnings* pLosses) {
  CQXRecordSet records;
  // The text of a record set that was never written to is empty.
  if (strText.find_first_not_of(kWhiteSpace) == std::string::npos) return records;
  const LoadResult result = records.Load(strText);
  if (!result.bLoaded) throw Complaint(strName, result.error);
  if (pLosses) {
    CountCells(records, result, *pLosses);
    CountLosses(strText, *pLosses);
  }
  return records;
}

// ---- Actions ------------------------------------------------------------------------------------

struct CheckOptions {
  std::vector<std::string> vInputs{"-"};
  bool bQuiet = false;
  bool bStrict = false;
  When eColor = When::Auto;
};

std::string Count(int nCount, const char* szWhat) {
  return std::to_string(nCount) + " " + szWhat + (nCount == 1 ? "" : "s");
}

std::string Acceptance(const JSON::Message& message, const std::string& strText) {
  std::string strResult = message.eType == JSON::jtObject
                              ? "an object of " + Count(message.Size(), "member")
                              : "an array of " + Count(message.Size(), "element");
  const auto nRead = static_cast<std::size_t>(message.pCursor - message.pStart);
  if (strText.find_first_not_of(kWhiteSpace, nRead) != std::string::npos) {
    strResult += "; the " + Count(static_cast<int>(strText.size() - nRead), "byte") +
                 " behind it are ignored";
  }
  return strResult;
}

// The line of `strText` around `nOffset` and a caret under that byte, as two lines. A long line is
// cut to the neighbourhood.
std::string Caret(std::string_view strText, std::size_t nOffset, bool bColor) {
  constexpr std::size_t kReach = 35;  // bytes shown on either side
  const std::size_t nLine = nOffset == 0 ? 0 : strText.rfind('\n', nOffset - 1) + 1;
  std::size_t nBegin = nOffset - nLine > kReach ? nOffset - kReach : nLine;
  std::size_t nEnd = std::min({strText.find('\n', nOffset), nOffset + kReach, strText.size()});
  const auto IsContinuation = [&](std::size_t i) {
    return i < strText.size() && (static_cast<unsigned char>(strText[i]) & 0xC0) == 0x80;
  };
  while (nBegin < nOffset && IsContinuation(nBegin)) {
    ++nBegin;
  }
  while (nEnd > nOffset && IsContinuation(nEnd)) {
    --nEnd;
  }
  const DisplayText before = MakeDisplayText(strText.substr(nBegin, nOffset - nBegin));
  const DisplayText behind = MakeDisplayText(strText.substr(nOffset, nEnd - nOffset));
  return "  " + before.strText + behind.strText + "\n  " + std::string(before.nWidth, ' ') +
         Styled("^", Style::Red, bColor) + "\n";
}

bool Check(const std::string& strPath, const CheckOptions& options) {
  Progress progress(When::Never);
  Input input(strPath, progress);
  const std::string strText = input.ReadAll();
  JSON::Message message;
  try {
    ParseOrThrow(message, strText, input.Name());
  } catch (const InputError& error) {
    std::cerr << "qxrs: " << MakeDisplayText(error.what()).strText << '\n'
              << Caret(strText, message.Error().nOffset, UseColor(options.eColor, STDERR_FILENO));
    return false;
  }
  Warnings warnings(options.bStrict);
  if (!options.bQuiet) {
    std::cout << input.Name() << ": accepted: " << Acceptance(message, strText) << std::endl;
  }
  if (message.eType == JSON::jtObject) LoadRecordSet(strText, input.Name(), &warnings);
  warnings.Report();
  return true;
}

int RunCheck(const CheckOptions& options) {
  bool bAccepted = true;
  for (const std::string& strPath : options.vInputs) {
    bAccepted = Check(strPath, options) && bAccepted;
  }
  std::cout.flush();
  if (!std::cout) throw InputError("cannot write standard output");
  return bAccepted ? kExitDone : kExitFailed;
}

struct NormalizeOptions {
  FileOptions files;
  bool bStrict = false;
};

int RunNormalize(const NormalizeOptions& options) {
  Files files(options.files);
  Warnings warnings(options.bStrict);
  CQXRecordSet records = LoadRecordSet(files.input.ReadAll(), files.input.Name(), &warnings);
  files.output.Write(records.GetString());
  files.output.Write("\n");
  files.output.Commit();
  warnings.Report();
  return 0;
}

int RunDump(const FileOptions& options) {
  Files files(options);
  const std::string strDump =
      LoadRecordSet(files.input.ReadAll(), files.input.Name(), nullptr).Dump();
  files.output.Write(files.output.IsTerminal() ? PrintableLines(strDump) : strDump);
  files.output.Commit();
  return 0;
}

}  // namespace

void AddCheck(CLI::App& app, Action& action) {
  const auto check = AddCommand(app, action, "check", RunCheck);
  check.command.add_option("FILE", check.options.vInputs);
  check.command.add_flag("-q,--quiet", check.options.bQuiet);
  check.command.add_flag("--strict", check.options.bStrict);
  AddColor(check.command, check.options.eColor);

  const auto normalize = AddCommand(app, action, "normalize", RunNormalize);
  AddFileOptions(normalize.command, normalize.options.files);
  normalize.command.add_flag("--strict", normalize.options.bStrict);

  const auto dump = AddCommand(app, action, "dump", RunDump);
  AddFileOptions(dump.command, dump.options);
}

}  // namespace qxrs
