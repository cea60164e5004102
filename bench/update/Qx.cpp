// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Changing, copying and writing a JSON::Message.

#include "bench/common/QxTree.h"
#include "bench/update/Update.h"
#include "json/JSONMessage.h"

namespace bench::update {
namespace {

class EditJob {
 public:
  explicit EditJob(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    message.Parse(strText.data(), static_cast<int>(strText.size()));
    JSON::JSONValue& rows = message["rows"];
    const int nRows = rows.Size();
    for (int i = 0; i < nRows; ++i) {
      JSON::JSONValue& row = rows[i];
      row.Set(kReplaced, kCity);
      row.Set(kAdded, true);
    }
    std::string strOutput;
    message.Serialize(strOutput);
    sink.Output(strOutput);
  }

 private:
  const std::string& strText;
};

class BuildJob {
 public:
  explicit BuildJob(std::vector<std::string> vMemberNames) : vNames(std::move(vMemberNames)) {}

  template <typename Sink>
  void Run(Sink& sink) {
    JSON::Message message;
    int nValue = 0;
    for (const std::string& strName : vNames) {
      if (++nValue % 2 == 0) {
        message.Set(strName.c_str(), nValue);
      } else {
        message.Set(strName.c_str(), strName.c_str());
      }
    }
    std::string strOutput;
    message.Serialize(strOutput);
    sink.Output(strOutput);
  }

 private:
  std::vector<std::string> vNames;
};

class CopyJob {
 public:
  explicit CopyJob(const Input& input) {
    message.Parse(input.Text().data(), static_cast<int>(input.Text().size()));
  }

  template <typename Sink>
  void Run(Sink& sink) {
    const JSON::Message copy(message);
    sink.Inspect([&](CheckSink& check) { check.Tree(HashTree(copy)); });
  }

 private:
  JSON::Message message;
};

class DumpJob {
 public:
  explicit DumpJob(const Input& input) {
    message.Parse(input.Text().data(), static_cast<int>(input.Text().size()));
  }

  template <typename Sink>
  void Run(Sink& sink) {
    std::string strOutput;
    message.Serialize(strOutput);
    sink.Output(strOutput);
  }

 private:
  JSON::Message message;
};

}  // namespace

void AddQx(Suite& suite, const Input& table, const std::vector<const Input*>& vCopied) {
  AddJobs<EditJob, BuildJob, CopyJob, DumpJob>(suite, table, vCopied, kQx);
}

}  // namespace bench::update
