// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record set work with nlohmann::json. It has no state to reuse.

#include <nlohmann/json.hpp>

#include "bench/recordset/RecordSet.h"

namespace bench::recordset {
namespace {

using nlohmann::json;

template <typename Sink>
void ReadRow(const json& row, long lRow, Sink& sink) {
  for (auto member = row.begin(); member != row.end(); ++member) {
    switch (member->type()) {
      case json::value_t::string:
        sink.Text(lRow, member.key(), member->get_ref<const std::string&>().c_str());
        break;
      case json::value_t::number_integer:
      case json::value_t::number_unsigned:
        sink.Integer(lRow, member.key(), member->get<std::int64_t>());
        break;
      case json::value_t::boolean:
        sink.Boolean(lRow, member.key(), member->get<bool>());
        break;
      default:
        sink.Null(lRow, member.key());
    }
  }
}

template <typename Sink>
void ReadCells(const json& document, Sink& sink) {
  const auto rows = document.find("rows");
  if (rows == document.end()) {
    ReadRow(document, 1, sink);
    return;
  }
  long lRow = 0;
  for (const json& row : *rows) {
    ReadRow(row, ++lRow, sink);
  }
}

template <unsigned kSteps, typename Sink>
void ReadAndWrite(const json& document, Sink& sink) {
  if constexpr ((kSteps & kRead) != 0) {
    ReadCells(document, sink);
  }
  if constexpr ((kSteps & kWrite) != 0) {
    sink.Output(document.dump());
  }
  if constexpr (kSteps == kLoad) {
    sink.Inspect([&](CheckSink& check) { ReadCells(document, check); });
  }
}

// Works on a document that is there.
template <unsigned kSteps>
class Kept {
 public:
  explicit Kept(const Input& input) : document(json::parse(input.Text())) {}

  template <typename Sink>
  void Run(Sink& sink) {
    ReadAndWrite<kSteps>(document, sink);
  }

 private:
  json document;
};

template <unsigned kSteps>
class Fresh {
 public:
  explicit Fresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    const json document = json::parse(strText);
    ReadAndWrite<kSteps>(document, sink);
  }

 private:
  const std::string& strText;
};

}  // namespace

void AddNlohmann(Suite& suite, const Input& input) {
  suite.Add<Fresh<kLoad>>({"load", input.Name(), kNlohmann, "fresh"}, input);
  suite.Add<Fresh<kLoad | kRead>>({"load-read", input.Name(), kNlohmann, "fresh"}, input);
  suite.Add<Kept<kRead>>({"read", input.Name(), kNlohmann, "reused"}, input);
  suite.Add<Kept<kWrite>>({"write", input.Name(), kNlohmann, "reused"}, input);
  AddNlohmannCycle(suite, "cycle", input);
}

void AddNlohmannCycle(Suite& suite, const char* szWork, const Input& input) {
  suite.Add<Fresh<kLoad | kRead | kWrite>>({szWork, input.Name(), kNlohmann, "fresh"}, input);
}

}  // namespace bench::recordset
