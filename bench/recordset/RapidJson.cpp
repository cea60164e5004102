// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record set work with RapidJSON: in-situ parse of a copy of the text, Writer over the document.
// Reused: buffers, memory pool, document, output buffer and writer are kept.

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <vector>

#include "bench/common/RapidJsonTree.h"
#include "bench/common/Rows.h"
#include "bench/recordset/RecordSet.h"

namespace bench::recordset {
namespace {

// Finds every cell by its name and takes it as text.
class Reader {
 public:
  template <typename Sink>
  void Row(const rapidjson::Value& row, long lRow, Sink& sink) {
    for (std::size_t i = 0; i < kColumnCount; ++i) {
      sink.Text(lRow, kColumns[i], Cell(row.FindMember(vNames[i])->value));
    }
  }

 private:
  const char* Cell(const rapidjson::Value& value) {
    switch (value.GetType()) {
      case rapidjson::kStringType:
        return value.GetString();
      case rapidjson::kNumberType:
        return digits(value.GetInt64());
      case rapidjson::kTrueType:
        return "1";
      case rapidjson::kFalseType:
        return "0";
      default:
        return "";
    }
  }

  std::vector<rapidjson::Value> vNames = [] {
    std::vector<rapidjson::Value> vResult;
    for (const char* szColumn : kColumns) {
      vResult.emplace_back(rapidjson::StringRef(szColumn));
    }
    return vResult;
  }();
  IntegerText digits;
};

// Takes every member as it comes.
class Walker {
 public:
  template <typename Sink>
  void Row(const rapidjson::Value& row, long lRow, Sink& sink) {
    for (const auto& member : row.GetObject()) {
      switch (member.value.GetType()) {
        case rapidjson::kStringType:
          sink.Text(lRow, TextOf(member.name), member.value.GetString());
          break;
        case rapidjson::kNumberType:
          sink.Integer(lRow, TextOf(member.name), member.value.GetInt64());
          break;
        case rapidjson::kFalseType:
        case rapidjson::kTrueType:
          sink.Boolean(lRow, TextOf(member.name), member.value.GetBool());
          break;
        default:
          sink.Null(lRow, TextOf(member.name));
      }
    }
  }
};

template <typename Way, typename Sink>
void ReadCells(const rapidjson::Document& document, Sink& sink) {
  Way way;
  const auto rows = document.FindMember("rows");
  if (rows == document.MemberEnd()) {
    way.Row(document, 1, sink);
    return;
  }
  long lRow = 0;
  for (const rapidjson::Value& row : rows->value.GetArray()) {
    way.Row(row, ++lRow, sink);
  }
}

// What follows the parse.
template <unsigned kSteps, typename Sink>
void ReadAndWrite(const rapidjson::Document& document, rapidjson::StringBuffer& output,
                  Sink& sink) {
  if constexpr ((kSteps & kRead) != 0) {
    ReadCells<Reader>(document, sink);
  }
  if constexpr ((kSteps & kWalk) != 0) {
    ReadCells<Walker>(document, sink);
  }
  if constexpr ((kSteps & kWrite) != 0) {
    rapidjson::Writer<rapidjson::StringBuffer> writer(output);
    document.Accept(writer);
    sink.Output({output.GetString(), output.GetSize()});
  }
  if constexpr (kSteps == kLoad) {
    sink.Inspect([&](CheckSink& check) { ReadCells<Walker>(document, check); });
  }
}

template <unsigned kSteps>
class Reused {
 public:
  explicit Reused(const Input& input) : strText(input.Text()), document(&pool) { Load(); }

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr ((kSteps & kLoad) != 0) {
      Load();
    }
    output.Clear();
    ReadAndWrite<kSteps>(document, output, sink);
  }

 private:
  // The pool is emptied first: a document would otherwise grow from run to run.
  void Load() {
    strBuffer.assign(strText);
    document.SetNull();
    pool.Clear();
    document.ParseInsitu(strBuffer.data());
  }

  const std::string& strText;
  std::string strBuffer;
  rapidjson::MemoryPoolAllocator<> pool;
  rapidjson::Document document;
  rapidjson::StringBuffer output;
};

template <unsigned kSteps>
class Fresh {
 public:
  explicit Fresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    std::string strBuffer(strText);
    rapidjson::Document document;
    document.ParseInsitu(strBuffer.data());
    rapidjson::StringBuffer output;
    ReadAndWrite<kSteps>(document, output, sink);
  }

 private:
  const std::string& strText;
};

template <unsigned kSteps>
void AddBoth(Suite& suite, const std::string& strWork, const Input& input) {
  suite.Add<Reused<kSteps>>({strWork, input.Name(), kRapidJson, "reused"}, input);
  suite.Add<Fresh<kSteps>>({strWork, input.Name(), kRapidJson, "fresh"}, input);
}

}  // namespace

void AddRapidJson(Suite& suite, const Input& input) {
  AddBoth<kLoad>(suite, "load", input);
  AddBoth<kLoad | kRead>(suite, "load-read", input);
  AddBoth<kLoad | kWalk>(suite, "load-walk", input);
  suite.Add<Reused<kRead>>({"read", input.Name(), kRapidJson, "reused"}, input);
  suite.Add<Reused<kWalk>>({"walk", input.Name(), kRapidJson, "reused"}, input);
  suite.Add<Reused<kWrite>>({"write", input.Name(), kRapidJson, "reused"}, input);
  AddRapidJsonCycle(suite, "cycle", input);
}

void AddRapidJsonCycle(Suite& suite, const std::string& strWork, const Input& input) {
  AddBoth<kLoad | kRead | kWrite>(suite, strWork, input);
  AddBoth<kLoad | kWalk | kWrite>(suite, strWork + "-walk", input);
}

}  // namespace bench::recordset
