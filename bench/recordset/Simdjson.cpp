// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record set work with simdjson's DOM. Reused: parser and padded input are kept, nothing is copied.
// Fresh: the parser is new and makes its padded copy. Writing is simdjson::minify of the element.

#include <simdjson.h>

#include <string_view>
#include <vector>

#include "bench/common/Rows.h"
#include "bench/recordset/RecordSet.h"

namespace bench::recordset {
namespace {

namespace dom = simdjson::dom;

// Finds every cell by its name and takes it as text.
class Reader {
 public:
  template <typename Sink>
  void Row(dom::object row, long lRow, Sink& sink) {
    for (const std::string_view name : vNames) {
      sink.Text(lRow, name, Cell(row.at_key(name).value_unsafe()));
    }
  }

 private:
  const char* Cell(dom::element value) {
    switch (value.type()) {
      case dom::element_type::STRING:
        return value.get_c_str().value_unsafe();
      case dom::element_type::INT64:
        return digits(value.get_int64().value_unsafe());
      case dom::element_type::BOOL:
        return value.get_bool().value_unsafe() ? "1" : "0";
      default:
        return "";
    }
  }

  std::vector<std::string_view> vNames{std::begin(kColumns), std::end(kColumns)};
  IntegerText digits;
};

// Takes every member as it comes.
class Walker {
 public:
  template <typename Sink>
  void Row(dom::object row, long lRow, Sink& sink) {
    for (const dom::key_value_pair member : row) {
      switch (member.value.type()) {
        case dom::element_type::STRING:
          sink.Text(lRow, member.key, member.value.get_c_str().value_unsafe());
          break;
        case dom::element_type::INT64:
          sink.Integer(lRow, member.key, member.value.get_int64().value_unsafe());
          break;
        case dom::element_type::BOOL:
          sink.Boolean(lRow, member.key, member.value.get_bool().value_unsafe());
          break;
        default:
          sink.Null(lRow, member.key);
      }
    }
  }
};

template <typename Way, typename Sink>
void ReadCells(dom::element root, Sink& sink) {
  Way way;
  dom::array rows;
  if (root["rows"].get(rows) != simdjson::SUCCESS) {
    way.Row(root.get_object().value_unsafe(), 1, sink);
    return;
  }
  long lRow = 0;
  for (const dom::element row : rows) {
    way.Row(row.get_object().value_unsafe(), ++lRow, sink);
  }
}

template <unsigned kSteps, typename Sink>
void ReadAndWrite(dom::element root, Sink& sink) {
  if constexpr ((kSteps & kRead) != 0) {
    ReadCells<Reader>(root, sink);
  }
  if constexpr ((kSteps & kWalk) != 0) {
    ReadCells<Walker>(root, sink);
  }
  if constexpr ((kSteps & kWrite) != 0) {
    sink.Output(simdjson::minify(root));
  }
  if constexpr (kSteps == kLoad) {
    sink.Inspect([&](CheckSink& check) { ReadCells<Walker>(root, check); });
  }
}

template <unsigned kSteps>
class Reused {
 public:
  explicit Reused(const Input& input)
      : padded(input.Text()), root(parser.parse(padded).value_unsafe()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr ((kSteps & kLoad) != 0) {
      root = parser.parse(padded).value_unsafe();
    }
    ReadAndWrite<kSteps>(root, sink);
  }

 private:
  simdjson::padded_string padded;
  dom::parser parser;
  dom::element root;
};

template <unsigned kSteps>
class Fresh {
 public:
  explicit Fresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    dom::parser parser;
    ReadAndWrite<kSteps>(parser.parse(strText.data(), strText.size()).value_unsafe(), sink);
  }

 private:
  const std::string& strText;
};

template <unsigned kSteps>
void AddBoth(Suite& suite, const std::string& strWork, const Input& input) {
  suite.Add<Reused<kSteps>>({strWork, input.Name(), kSimdjson, "reused"}, input);
  suite.Add<Fresh<kSteps>>({strWork, input.Name(), kSimdjson, "fresh"}, input);
}

}  // namespace

void AddSimdjson(Suite& suite, const Input& input) {
  AddBoth<kLoad>(suite, "load", input);
  AddBoth<kLoad | kRead>(suite, "load-read", input);
  AddBoth<kLoad | kWalk>(suite, "load-walk", input);
  suite.Add<Reused<kRead>>({"read", input.Name(), kSimdjson, "reused"}, input);
  suite.Add<Reused<kWalk>>({"walk", input.Name(), kSimdjson, "reused"}, input);
  suite.Add<Reused<kWrite>>({"write", input.Name(), kSimdjson, "reused"}, input);
  AddSimdjsonCycle(suite, "cycle", input);
}

void AddSimdjsonCycle(Suite& suite, const std::string& strWork, const Input& input) {
  AddBoth<kLoad | kRead | kWrite>(suite, strWork, input);
  AddBoth<kLoad | kWalk | kWrite>(suite, strWork + "-walk", input);
}

}  // namespace bench::recordset
