// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Changing, copying and writing an nlohmann::json document.

#include "bench/common/NlohmannTree.h"
#include "bench/update/Update.h"

namespace bench::update {
namespace {

using nlohmann::json;

class EditJob {
 public:
  explicit EditJob(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    json document = json::parse(strText);
    for (json& row : document["rows"]) {
      row[kReplaced] = kCity;
      row[kAdded] = true;
    }
    sink.Output(document.dump());
  }

 private:
  const std::string& strText;
};

class BuildJob {
 public:
  explicit BuildJob(std::vector<std::string> vMemberNames) : vNames(std::move(vMemberNames)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    json document = json::object();
    int nValue = 0;
    for (const std::string& strName : vNames) {
      if (++nValue % 2 == 0) {
        document[strName] = nValue;
      } else {
        document[strName] = strName;
      }
    }
    sink.Output(document.dump());
  }

 private:
  std::vector<std::string> vNames;
};

class CopyJob {
 public:
  explicit CopyJob(const Input& input) : document(json::parse(input.Text())) {}

  template <typename Sink>
  void Run(Sink& sink) {
    const json copy(document);
    sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(copy)); });
  }

 private:
  json document;
};

class DumpJob {
 public:
  explicit DumpJob(const Input& input) : document(json::parse(input.Text())) {}

  template <typename Sink>
  void Run(Sink& sink) {
    sink.Output(document.dump());
  }

 private:
  json document;
};

}  // namespace

void AddNlohmann(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied) {
  AddJobs<EditJob, BuildJob, CopyJob, DumpJob>(suite, table, vCopied, kNlohmann);
}

}  // namespace bench::update
