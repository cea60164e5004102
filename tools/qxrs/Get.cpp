// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs get and pretty: values of a JSON document, and all of it broken into lines.

#include <sstream>

#include "json/JSON.h"
#include "tools/qxrs/Command.h"
#include "tools/qxrs/rows/Values.h"

namespace qxrs {

namespace {

struct GetOptions {
  FileOptions files;
  std::string strPath;
  bool bJson = false;
};

// The segments of a path: /a/b with ~1 for a slash and ~0 for a tilde, or a.b.
std::vector<std::string> Segments(const std::string& strPath) {
  std::vector<std::string> vSegments;
  if (strPath.empty() || strPath == ".") return vSegments;
  const bool bPointer = strPath.front() == '/';
  const char chEnd = bPointer ? '/' : '.';
  std::istringstream stream(strPath.substr(bPointer ? 1 : 0) + chEnd);
  for (std::string strSegment; std::getline(stream, strSegment, chEnd);) {
    for (std::size_t n = 0; bPointer && (n = strSegment.find('~', n)) != std::string::npos; ++n) {
      strSegment.replace(n, 2, strSegment.compare(n, 2, "~1") == 0 ? "/" : "~");
    }
    vSegments.push_back(strSegment);
  }
  return vSegments;
}

// Looks for values in a document, and names the place where there is none.
struct Finder {
  const std::vector<std::string> vSegments;
  const std::string strName;

  // Calls `found` with each value that the path leads to from `value`.
  template <typename Found>
  void Find(const JSON::JSONValue& value, std::size_t nSegment, Found found) const {
    if (nSegment == vSegments.size()) return found(value);
    const std::string& strSegment = vSegments[nSegment];
    if (strSegment == "*" && (value.eType == JSON::jtObject || value.eType == JSON::jtArray)) {
      for (int i = 0; i < value.Size(); ++i) {
        Find(*value.GetByOrdinal(i), nSegment + 1, found);
      }
      return;
    }
    const JSON::JSONValue* pNext =
        value.eType == JSON::jtArray
            ? Element(value, nSegment)
            : value.GetByName(strSegment.data(), static_cast<int>(strSegment.size()));
    if (!pNext) Refuse(nSegment, "there is nothing");
    Find(*pNext, nSegment + 1, found);
  }

  const JSON::JSONValue* Element(const JSON::JSONValue& array, std::size_t nSegment) const {
    const auto nOrdinal = ToInt64(vSegments[nSegment]);
    if (!nOrdinal || *nOrdinal < 0) Refuse(nSegment, "an array has no names but ordinals from 0");
    return *nOrdinal < array.Size() ? array.GetByOrdinal(static_cast<int>(*nOrdinal)) : nullptr;
  }

  [[noreturn]] void Refuse(std::size_t nSegment, const char* szReason) const {
    std::string strPlace;
    for (std::size_t i = 0; i <= nSegment; ++i) {
      strPlace += "/" + vSegments[i];
    }
    throw InputError(strName + ": " + szReason + " at '" + strPlace + "'");
  }
};

std::string ResultText(const JSON::JSONValue& value, bool bJson) {
  if (value.eType == JSON::jtString && !bJson) return std::string(TextOf(value));
  std::string strText;
  value.Serialize(strText);
  return strText;
}

int RunGet(const GetOptions& options) {
  Files files(options.files);
  JSON::Message message;
  ParseOrThrow(message, files.input.ReadAll(), files.input.Name());
  const Finder finder{Segments(options.strPath), files.input.Name()};
  finder.Find(message, 0, [&](const JSON::JSONValue& value) {
    const std::string strText = ResultText(value, options.bJson);
    files.output.Write(files.output.IsTerminal() ? PrintableLines(strText) : strText);
    files.output.Write("\n");
  });
  files.output.Commit();
  return kExitDone;
}

struct PrettyOptions {
  FileOptions files;
  bool bCompact = false;
  bool bHost = false;
};

std::string HostText(const std::string& strText, const std::string& strName) {
  if (strText.find('\0') != std::string::npos) {
    throw InputError(strName + ": a NUL byte, where a host's text would end");
  }
  std::string strPretty;
  return JSON_PrettyPrint(strText.c_str(), strPretty);
}

int RunPretty(const PrettyOptions& options) {
  Files files(options.files);
  const std::string strText = files.input.ReadAll();
  const std::string& strName = files.input.Name();
  JSON::Message message;
  ParseOrThrow(message, strText, strName);
  files.output.Write(options.bHost ? HostText(strText, strName)
                                   : StrictJson(strText, !options.bCompact, strName));
  files.output.Write("\n");
  files.output.Commit();
  return kExitDone;
}

}  // namespace

void AddGet(CLI::App& app, Action& action) {
  const auto get = AddCommand(app, action, "get", RunGet);
  get.command.add_option("PATH", get.options.strPath)->required();
  get.command.add_flag("-j,--json", get.options.bJson);
  AddFileOptions(get.command, get.options.files);

  const auto pretty = AddCommand(app, action, "pretty", RunPretty);
  CLI::Option* pCompact = pretty.command.add_flag("--compact", pretty.options.bCompact);
  pretty.command.add_flag("--host", pretty.options.bHost)->excludes(pCompact);
  AddFileOptions(pretty.command, pretty.options.files);
}

}  // namespace qxrs
