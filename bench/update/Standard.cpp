// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building without a JSON library: a map of texts and integers, and a loop that writes it.

#include <charconv>
#include <map>
#include <string_view>
#include <variant>

#include "bench/update/Update.h"

namespace bench::update {
namespace {

void WriteQuoted(std::string_view text, std::string& strOutput) {
  constexpr char kHexDigits[] = "0123456789abcdef";
  constexpr unsigned char kFirstPlain = 0x20;
  strOutput += '"';
  for (const char c : text) {
    const auto nByte = static_cast<unsigned char>(c);
    if (nByte < kFirstPlain) {
      strOutput.append("\\u00") += kHexDigits[nByte >> 4];
      strOutput += kHexDigits[nByte & 0xF];
      continue;
    }
    if (c == '"' || c == '\\') strOutput += '\\';
    strOutput += c;
  }
  strOutput += '"';
}

class BuildJob {
 public:
  explicit BuildJob(std::vector<std::string> vMemberNames) : vNames(std::move(vMemberNames)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    std::map<std::string, std::variant<int, std::string>> mapMembers;
    int nValue = 0;
    for (const std::string& strName : vNames) {
      if (++nValue % 2 == 0) {
        mapMembers[strName] = nValue;
      } else {
        mapMembers[strName] = strName;
      }
    }
    std::string strOutput;
    for (const auto& [strName, value] : mapMembers) {
      strOutput += strOutput.empty() ? '{' : ',';
      WriteQuoted(strName, strOutput);
      strOutput += ':';
      if (const auto* const pText = std::get_if<std::string>(&value)) {
        WriteQuoted(*pText, strOutput);
      } else {
        char szNumber[16];
        const auto end = std::to_chars(szNumber, std::end(szNumber), std::get<int>(value));
        strOutput.append(szNumber, end.ptr);
      }
    }
    strOutput += '}';
    sink.Output(strOutput);
  }

 private:
  std::vector<std::string> vNames;
};

}  // namespace

void AddStandard(Suite& suite) { AddBuildJobs<BuildJob>(suite, kStandard); }

}  // namespace bench::update
