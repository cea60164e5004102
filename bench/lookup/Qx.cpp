// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Lookups in a JSON::Message.

#include "bench/lookup/Lookup.h"
#include "json/JSONMessage.h"

namespace bench::lookup {
namespace {

class NameJob {
 public:
  explicit NameJob(NameQueryPtr pNameQuery) : pQuery(std::move(pNameQuery)) {
    message.Parse(pQuery->strText.data(), static_cast<int>(pQuery->strText.size()));
  }

  template <typename Sink>
  void Run(Sink& sink) {
    for (const std::string& strName : pQuery->vNames) {
      const JSON::JSONValue* pValue =
          message.GetByName(strName.data(), static_cast<int>(strName.size()));
      sink.Integer(0, strName, pValue->AsInt());
    }
  }

 private:
  NameQueryPtr pQuery;
  JSON::Message message;
};

template <typename Sink>
void ReadMembers(const JSON::Message& message, Sink& sink) {
  constexpr int kMemberLength = static_cast<int>(std::string_view(kMember).size());
  const JSON::JSONValue* pRows = message.GetByName("rows", 4);
  const int nRows = pRows->Size();
  for (int i = 0; i < nRows; ++i) {
    sink.Text(i, kMember, pRows->GetByOrdinal(i)->GetByName(kMember, kMemberLength)->pText);
  }
}

template <bool bParse>
class MemberJob {
 public:
  explicit MemberJob(const Input& input) : strText(input.Text()) { Parse(); }

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr (bParse) {
      Parse();
    }
    ReadMembers(message, sink);
  }

 private:
  void Parse() { message.Parse(strText.data(), static_cast<int>(strText.size())); }

  const std::string& strText;
  JSON::Message message;
};

class PathJob {
 public:
  explicit PathJob(const PathQueryPtr& pQuery) : vPaths(pQuery->Join(".")) {
    for (std::string& strPath : vPaths) {
      strPath.erase(0, 1);
    }
    const std::string& strText = pQuery->pInput->Text();
    message.Parse(strText.data(), static_cast<int>(strText.size()));
  }

  template <typename Sink>
  void Run(Sink& sink) {
    long lPath = 0;
    for (const std::string& strPath : vPaths) {
      sink.Text(++lPath, "", message.Path(strPath.c_str()).pText);
    }
  }

 private:
  std::vector<std::string> vPaths;
  JSON::Message message;
};

}  // namespace

void AddQx(Suite& suite, const Queries& queries) {
  AddJobs<NameJob, MemberJob<false>, MemberJob<true>, PathJob>(suite, queries, kQx);
}

}  // namespace bench::lookup
