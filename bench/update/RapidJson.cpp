// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Changing, copying and writing a RapidJSON document. The copied document was
// parsed by copying, so that its copies take their texts along, as those of a JSON::Message do.

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "bench/common/RapidJsonTree.h"
#include "bench/update/Update.h"

namespace bench::update {
namespace {

template <typename Sink>
void WriteDocument(const rapidjson::Document& document, Sink& sink) {
  rapidjson::StringBuffer output;
  rapidjson::Writer<rapidjson::StringBuffer> writer(output);
  document.Accept(writer);
  sink.Output({output.GetString(), output.GetSize()});
}

class EditJob {
 public:
  explicit EditJob(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    std::string strBuffer(strText);
    rapidjson::Document document;
    document.ParseInsitu(strBuffer.data());
    auto& pool = document.GetAllocator();
    for (rapidjson::Value& row : document["rows"].GetArray()) {
      row[kReplaced].SetString(kCity, pool);
      row.AddMember(rapidjson::StringRef(kAdded), true, pool);
    }
    WriteDocument(document, sink);
  }

 private:
  const std::string& strText;
};

class BuildJob {
 public:
  explicit BuildJob(std::vector<std::string> vMemberNames) : vNames(std::move(vMemberNames)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    rapidjson::Document document(rapidjson::kObjectType);
    auto& pool = document.GetAllocator();
    const auto toText = [&pool](const std::string& strText) {
      return rapidjson::Value(strText.data(), static_cast<rapidjson::SizeType>(strText.size()),
                              pool);
    };
    int nValue = 0;
    for (const std::string& strName : vNames) {
      rapidjson::Value value = ++nValue % 2 == 0 ? rapidjson::Value(nValue) : toText(strName);
      document.AddMember(toText(strName), value, pool);
    }
    WriteDocument(document, sink);
  }

 private:
  std::vector<std::string> vNames;
};

class CopyJob {
 public:
  explicit CopyJob(const Input& input) { document.Parse(input.Text().data(), input.Text().size()); }

  template <typename Sink>
  void Run(Sink& sink) {
    rapidjson::Document copy;
    copy.CopyFrom(document, copy.GetAllocator());
    sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(copy)); });
  }

 private:
  rapidjson::Document document;
};

class DumpJob {
 public:
  explicit DumpJob(const Input& input) {
    document.Parse<rapidjson::kParseFullPrecisionFlag>(input.Text().data(), input.Text().size());
  }

  template <typename Sink>
  void Run(Sink& sink) {
    WriteDocument(document, sink);
  }

 private:
  rapidjson::Document document;
};

}  // namespace

void AddRapidJson(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied) {
  AddJobs<EditJob, BuildJob, CopyJob, DumpJob>(suite, table, vCopied, kRapidJson);
}

}  // namespace bench::update
