// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// qxrs get and pretty: values of a JSON document, and all of it broken into lines.

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
  std::string strSegment;
  for (std::size_t i = bPointer ? 1 : 0; i < strPath.size(); ++i) {
    const char c = strPath[i];
    if (c == (bPointer ? '/' : '.')) {
      vSegments.push_back(std::move(strSegment));
      strSegment.clear();
    } else if (bPointer && c == '~' && i + 1 < strPath.size()) {
      strSegment += strPath[++i] == '1' ? '/' : '~';
    } else {
      strSegment += c;
    }
  }
  vSegments.push_back(std::move(strSegment));
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
  const auto [command, options] = AddCommand(
      app, action,
      {"get", "Write values of a JSON document.",
       "  qxrs get rows.2.name planets.rs\n"
       "  qxrs get '/rows/*/name' < planets.rs",
       "A path is a JSON pointer, /rows/2/name, in which ~1 is a slash and ~0 a tilde, or\n"
       "names joined by dots. Elements of arrays have ordinals from 0; * is every element or\n"
       "member, each on a line of its own; . is the whole document."},
      RunGet);
  AddRequired(command, "PATH", options.strPath, "where the value is");
  command.add_flag("-j,--json", options.bJson, "write a text in quotes and escaped, not as it is");
  AddFileOptions(command, options.files, "the JSON text");
}

void AddPretty(CLI::App& app, Action& action) {
  const auto [command, options] =
      AddCommand(app, action,
                 {"pretty", "Write JSON text in indented lines.",
                  "  qxrs pretty planets.rs\n"
                  "  qxrs from-csv planets.csv | qxrs pretty | less",
                  "The result is strict JSON, whatever leniency of the parser the text uses."},
                 RunPretty);
  CLI::Option* pCompact =
      command.add_flag("--compact", options.bCompact, "on one line, without white space");
  command
      .add_flag("--host", options.bHost,
                "by the library's printer, as a host's log has it: it knows no strings, so that "
                "brackets and commas inside texts break the line, too")
      ->excludes(pCompact);
  AddFileOptions(command, options.files, "the JSON text");
}

}  // namespace qxrs
