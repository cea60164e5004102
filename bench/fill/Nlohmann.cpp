// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building and writing an nlohmann::json document. It has no streaming writer.

#include <nlohmann/json.hpp>

#include "bench/fill/Fill.h"

namespace bench::fill {
namespace {

class Fresh {
 public:
  explicit Fresh(const Input& input) : vRows(input.Rows()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    nlohmann::json document;
    nlohmann::json& rows = document["rows"];
    rows = nlohmann::json::array();
    for (const Row& row : vRows) {
      nlohmann::json& object = rows.emplace_back();
      ForEachCell(row, [&](const char* szName, const auto& value) { object[szName] = value; });
    }
    sink.Output(document.dump());
  }

 private:
  const std::vector<Row>& vRows;
};

}  // namespace

void AddNlohmann(Suite& suite, const Input& input) {
  suite.Add<Fresh>({"fill", input.Name(), kNlohmann, "fresh"}, input);
}

}  // namespace bench::fill
