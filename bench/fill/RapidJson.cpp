// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building and writing a RapidJSON document, and writing rows with its Writer. Member names are
// literals that the document refers to without copying them.

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "bench/fill/Fill.h"

namespace bench::fill {
namespace {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;
using Pool = rapidjson::MemoryPoolAllocator<>;

rapidjson::SizeType Length(const std::string& strText) {
  return static_cast<rapidjson::SizeType>(strText.size());
}

rapidjson::Value ToValue(std::nullptr_t, Pool&) { return {}; }
rapidjson::Value ToValue(bool bValue, Pool&) { return rapidjson::Value(bValue); }
rapidjson::Value ToValue(long lValue, Pool&) {
  return rapidjson::Value(static_cast<std::int64_t>(lValue));
}
rapidjson::Value ToValue(const std::string& strValue, Pool& pool) {
  return rapidjson::Value(strValue.data(), Length(strValue), pool);
}

void Fill(rapidjson::Document& document, const std::vector<Row>& vRows) {
  Pool& pool = document.GetAllocator();
  rapidjson::Value rows(rapidjson::kArrayType);
  for (const Row& row : vRows) {
    rapidjson::Value object(rapidjson::kObjectType);
    ForEachCell(row, [&](const char* szName, const auto& value) {
      object.AddMember(rapidjson::StringRef(szName), ToValue(value, pool), pool);
    });
    rows.PushBack(object, pool);
  }
  document.SetObject();
  document.AddMember("rows", rows, pool);
}

template <typename Sink>
void WriteDocument(const rapidjson::Document& document, rapidjson::StringBuffer& output,
                   Sink& sink) {
  Writer writer(output);
  document.Accept(writer);
  sink.Output({output.GetString(), output.GetSize()});
}

class Fresh {
 public:
  explicit Fresh(const Input& input) : vRows(input.Rows()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    rapidjson::Document document;
    Fill(document, vRows);
    rapidjson::StringBuffer output;
    WriteDocument(document, output, sink);
  }

 private:
  const std::vector<Row>& vRows;
};

class Reused {
 public:
  explicit Reused(const Input& input) : vRows(input.Rows()), document(&pool) {}

  template <typename Sink>
  void Run(Sink& sink) {
    document.SetNull();
    pool.Clear();
    Fill(document, vRows);
    output.Clear();
    WriteDocument(document, output, sink);
  }

 private:
  const std::vector<Row>& vRows;
  Pool pool;
  rapidjson::Document document;
  rapidjson::StringBuffer output;
};

void WriteValue(Writer& writer, std::nullptr_t) { writer.Null(); }
void WriteValue(Writer& writer, bool bValue) { writer.Bool(bValue); }
void WriteValue(Writer& writer, long lValue) { writer.Int64(lValue); }
void WriteValue(Writer& writer, const std::string& strValue) {
  writer.String(strValue.data(), Length(strValue));
}

class Stream {
 public:
  explicit Stream(const Input& input) : vRows(input.Rows()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    rapidjson::StringBuffer output;
    Writer writer(output);
    writer.StartObject();
    writer.Key("rows");
    writer.StartArray();
    for (const Row& row : vRows) {
      writer.StartObject();
      ForEachCell(row, [&](const char* szName, const auto& value) {
        writer.Key(szName);
        WriteValue(writer, value);
      });
      writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    sink.Output({output.GetString(), output.GetSize()});
  }

 private:
  const std::vector<Row>& vRows;
};

}  // namespace

void AddRapidJson(Suite& suite, const Input& input) {
  suite.Add<Fresh>({"fill", input.Name(), kRapidJson, "fresh"}, input);
  suite.Add<Reused>({"fill", input.Name(), kRapidJson, "reused"}, input);
  suite.Add<Stream>({"stream", input.Name(), kRapidJson, "fresh"}, input);
}

}  // namespace bench::fill
