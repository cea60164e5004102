// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs params: building and reading parameter strings.

#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>

#include "params/CParamsX.h"
#include "tools/qxrs/Command.h"

namespace qxrs {

namespace {

// ---- Building -----------------------------------------------------------------------------------

struct BuildOptions {
  FileOptions files;
  std::string strHeader;
  std::optional<std::int64_t> nResult;
  std::vector<std::string> vTexts;
  std::string strLines;  // a file with one parameter on each line; empty: none
};

void CheckUsage(const BuildOptions& options) {
  const std::string& strHeader = options.strHeader;
  if (strHeader.find(';') != std::string::npos ||
      (!strHeader.empty() && strHeader[0] >= '0' && strHeader[0] <= '9')) {
    throw UsageError("a header must not begin with a digit and not hold ';'");
  }
  if (options.nResult && (*options.nResult < std::numeric_limits<std::int32_t>::min() ||
                          *options.nResult > std::numeric_limits<std::uint32_t>::max())) {
    throw UsageError("a result code has 32 bits");
  }
}

void AddLines(const std::string& strPath, CParamsRS& params) {
  Progress progress(When::Never);
  Input input(strPath, progress);
  std::istringstream lines(input.ReadAll());
  for (std::string strLine; std::getline(lines, strLine);) {
    params.addParam(strLine);
  }
}

int Build(const BuildOptions& options) {
  CheckUsage(options);
  if (options.strHeader.empty()) {
    std::cerr << "qxrs: warning: without --header a reader takes the first length for a header\n";
  }
  CParamsRS params;
  params.addHeader(options.strHeader);
  if (options.nResult) {
    params.addResult(static_cast<long>(static_cast<std::int32_t>(*options.nResult)));
  }
  for (const std::string& strText : options.vTexts) {
    params.addParam(strText);
  }
  if (!options.strLines.empty()) AddLines(options.strLines, params);
  Progress progress(When::Never);
  Output output(options.files.strOutput, progress);
  output.Write(params.paramListRef() + "\n");
  output.Commit();
  return kExitDone;
}

// ---- Reading ------------------------------------------------------------------------------------

struct ReadOptions {
  FileOptions files;
  std::optional<int> nIndex;
  bool bHeader = false;
  bool bResult = false;
};

std::string CheckIndex(const std::string& strText) {
  const bool bDigits = strText.find_first_not_of("0123456789") == std::string::npos;
  return bDigits ? "" : "'" + strText + "' is not a number from 0 on";
}

// Where the length field stands that `params` could not read: it is the last one counted.
std::size_t MalformedAt(const CParamsRS& params) {
  const std::string& strText = params.paramListRef();
  const bool bHeader = strText.find_first_of("0123456789") != 0;
  const std::size_t nSeparator = strText.find(';');
  long lOffset = bHeader && nSeparator != std::string::npos ? static_cast<long>(nSeparator) + 1 : 0;
  for (int i = 0; i + 1 < params.count(); ++i) {
    long lConsumed = 0;
    const long lLength = params.getLength(lOffset, &lConsumed);
    lOffset += lConsumed + lLength + 1;
  }
  return static_cast<std::size_t>(lOffset);
}

[[noreturn]] void RefuseMalformed(const CParamsRS& params, const std::string& strName) {
  const std::string_view strText = params.paramListRef();
  const std::size_t nOffset = MalformedAt(params);
  const std::string_view strField = strText.substr(nOffset);
  std::string strReason = "the length of parameter " + std::to_string(params.count() - 1);
  if (strField.find(';') == std::string_view::npos) {
    strReason += " has no ';' behind it";
  } else {
    strReason += strField.front() == ';' ? " is missing" : " is negative";
  }
  TextPosition position;
  position.Advance(strText.substr(0, nOffset));
  throw Complaint(strName, position, strReason);
}

// A line feed at the end of a file is no part of a parameter string; mostly the library passes over
// it like over a separator.
void Load(std::string strText, const std::string& strName, CParamsRS& params) {
  if (strText.empty()) return;
  try {
    params.SetParams(strText);
    return;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    if (strText.back() != '\n') RefuseMalformed(params, strName);
  }
  strText.pop_back();
  Load(strText, strName, params);
}

std::string Listing(const CParamsRS& params) {
  std::string strResult = "header\t" + MakeDisplayText(params.getHeader()).strText + "\n";
  for (int i = 0; i < params.count(); ++i) {
    strResult +=
        std::to_string(i) + "\t" + MakeDisplayText(params.getStringParamAt(i)).strText + "\n";
  }
  return strResult;
}

std::string Result(const CParamsRS& params, const std::string& strName) {
  const std::string strFirst = params.getStringParamAt(0);
  const long lCode = params.getHRESULT();
  // -1 is a code, too, and what the library gives without one.
  if (lCode == -1 && CLI::detail::to_lower(strFirst) != "0xffffffff") {
    throw InputError(strName + ": parameter 0 is no result code");
  }
  char szText[16];
  std::snprintf(szText, sizeof szText, "0x%08X", static_cast<unsigned>(lCode));
  return szText;
}

std::string Wanted(const ReadOptions& options, const CParamsRS& params,
                   const std::string& strName) {
  if (options.bHeader) return params.getHeader() + "\n";
  if (options.bResult) return Result(params, strName) + "\n";
  if (!options.nIndex) return Listing(params);
  if (*options.nIndex >= params.count()) {
    throw InputError(strName + ": there is no parameter " + std::to_string(*options.nIndex) +
                     "; the text holds " + std::to_string(params.count()));
  }
  return params.getStringParamAt(*options.nIndex) + "\n";
}

int Read(const ReadOptions& options) {
  Files files(options.files);
  CParamsRS params;
  Load(files.input.ReadAll(), files.input.Name(), params);
  files.output.Write(Wanted(options, params, files.input.Name()));
  files.output.Commit();
  return kExitDone;
}

}  // namespace

void AddParams(CLI::App& app, Action& action) {
  CLI::App& params = *app.add_subcommand("params");
  params.require_subcommand(1);

  const auto build = AddCommand(params, action, "build", Build);
  build.command.add_option("TEXT", build.options.vTexts);
  build.command.add_option("--header", build.options.strHeader);
  build.command.add_option("--result", build.options.nResult);
  build.command.add_option("--lines", build.options.strLines);
  build.command.add_option("-o,--output", build.options.files.strOutput);

  const auto read = AddCommand(params, action, "read", Read);
  AddFileOptions(read.command, read.options.files);
  auto* pAt = read.command.add_option("--at", read.options.nIndex)->check(CheckIndex);
  auto* pHeader = read.command.add_flag("--header", read.options.bHeader);
  auto* pResult = read.command.add_flag("--result", read.options.bResult);
  pAt->excludes(pHeader)->excludes(pResult);
  pHeader->excludes(pResult);
}

}  // namespace qxrs
