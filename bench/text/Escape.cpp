// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Escaping strings: JSON::EscapeString, RapidJSON's Writer, nlohmann's dump. The three are so short
// that they share a file.

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <nlohmann/json.hpp>

#include "bench/text/Text.h"
#include "json/JSONSerialize.h"

namespace bench::text {
namespace {

class Qx {
 public:
  explicit Qx(std::string strSource) : strText(std::move(strSource)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    strOutput.clear();
    strOutput += '"';
    JSON::EscapeString(strOutput, strText.c_str());
    strOutput += '"';
    sink.Output(strOutput);
  }

 private:
  std::string strText;
  std::string strOutput;
};

class RapidJson {
 public:
  explicit RapidJson(std::string strSource) : strText(std::move(strSource)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    output.Clear();
    writer.Reset(output);
    writer.String(strText.data(), static_cast<rapidjson::SizeType>(strText.size()));
    sink.Output({output.GetString(), output.GetSize()});
  }

 private:
  std::string strText;
  rapidjson::StringBuffer output;
  rapidjson::Writer<rapidjson::StringBuffer> writer;
};

class Nlohmann {
 public:
  explicit Nlohmann(const std::string& strSource) : value(strSource) {}

  template <typename Sink>
  void Run(Sink& sink) {
    sink.Output(value.dump());
  }

 private:
  nlohmann::json value;
};

// `nBytes` bytes of the pattern, over and over.
std::string Repeat(std::string_view pattern, std::size_t nBytes) {
  std::string strText;
  while (strText.size() < nBytes) {
    strText += pattern;
  }
  return strText;
}

void AddText(Suite& suite, const char* szInput, const std::string& strText) {
  const Amount amount{strText.size(), 0};
  suite.Add<Qx>({"escape", szInput, kQx, "reused"}, amount, strText);
  suite.Add<RapidJson>({"escape", szInput, kRapidJson, "reused"}, amount, strText);
  suite.Add<Nlohmann>({"escape", szInput, kNlohmann, "fresh"}, amount, strText);
}

}  // namespace

void AddEscape(Suite& suite) {
  constexpr std::size_t kLong = 1024;
  AddText(suite, "plain-16", "sixteen letters.");
  AddText(suite, "plain-1k", Repeat("plain words without a stop ", kLong));
  AddText(suite, "utf8-1k", Repeat("žluťoučký kůň 東京 naïve ", kLong));
  AddText(suite, "few-escapes-1k",
          Repeat("said \"no\", and left at eight\nfor the station ", kLong));
  AddText(suite, "all-escapes-1k", Repeat("\"\\\n\t\x01", kLong));
}

}  // namespace bench::text
