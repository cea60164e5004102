// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record set work with nlohmann::json. It has no state to reuse.

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench/common/Rows.h"
#include "bench/recordset/RecordSet.h"

namespace bench::recordset {
namespace {

using nlohmann::json;

// Finds every cell by its name and takes it as text.
class Reader {
 public:
  template <typename Sink>
  void Row(const json& row, long lRow, Sink& sink) {
    for (const std::string& strName : vNames) {
      sink.Text(lRow, strName, Cell(*row.find(strName)));
    }
  }

 private:
  const char* Cell(const json& value) {
    switch (value.type()) {
      case json::value_t::string:
        return value.get_ref<const std::string&>().c_str();
      case json::value_t::number_integer:
      case json::value_t::number_unsigned:
        return digits(value.get<std::int64_t>());
      case json::value_t::boolean:
        return value.get<bool>() ? "1" : "0";
      default:
        return "";
    }
  }

  std::vector<std::string> vNames{std::begin(kColumns), std::end(kColumns)};
  IntegerText digits;
};

// Takes every member as it comes.
class Walker {
 public:
  template <typename Sink>
  void Row(const json& row, long lRow, Sink& sink) {
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
};

template <typename Way, typename Sink>
void ReadCells(const json& document, Sink& sink) {
  Way way;
  const auto rows = document.find("rows");
  if (rows == document.end()) {
    way.Row(document, 1, sink);
    return;
  }
  long lRow = 0;
  for (const json& row : *rows) {
    way.Row(row, ++lRow, sink);
  }
}

template <unsigned kSteps, typename Sink>
void ReadAndWrite(const json& document, Sink& sink) {
  if constexpr ((kSteps & kRead) != 0) {
    ReadCells<Reader>(document, sink);
  }
  if constexpr ((kSteps & kWalk) != 0) {
    ReadCells<Walker>(document, sink);
  }
  if constexpr ((kSteps & kWrite) != 0) {
    sink.Output(document.dump());
  }
  if constexpr (kSteps == kLoad) {
    sink.Inspect([&](CheckSink& check) { ReadCells<Walker>(document, check); });
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
  suite.Add<Fresh<kLoad | kWalk>>({"load-walk", input.Name(), kNlohmann, "fresh"}, input);
  suite.Add<Kept<kRead>>({"read", input.Name(), kNlohmann, "reused"}, input);
  suite.Add<Kept<kWalk>>({"walk", input.Name(), kNlohmann, "reused"}, input);
  suite.Add<Kept<kWrite>>({"write", input.Name(), kNlohmann, "reused"}, input);
  AddNlohmannCycle(suite, "cycle", input);
}

void AddNlohmannCycle(Suite& suite, const std::string& strWork, const Input& input) {
  suite.Add<Fresh<kLoad | kRead | kWrite>>({strWork, input.Name(), kNlohmann, "fresh"}, input);
  suite.Add<Fresh<kLoad | kWalk | kWrite>>({strWork + "-walk", input.Name(), kNlohmann, "fresh"},
                                           input);
}

}  // namespace bench::recordset
