// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Lookups in a RapidJSON document.

#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include "bench/lookup/Lookup.h"

namespace bench::lookup {
namespace {

rapidjson::SizeType Length(const std::string& strText) {
  return static_cast<rapidjson::SizeType>(strText.size());
}

class NameJob {
 public:
  explicit NameJob(NameQueryPtr pNameQuery) : pQuery(std::move(pNameQuery)) {
    document.Parse(pQuery->strText.data(), pQuery->strText.size());
  }

  template <typename Sink>
  void Run(Sink& sink) {
    for (const std::string& strName : pQuery->vNames) {
      const rapidjson::Value name(rapidjson::StringRef(strName.data(), Length(strName)));
      sink.Integer(0, strName, document.FindMember(name)->value.GetInt64());
    }
  }

 private:
  NameQueryPtr pQuery;
  rapidjson::Document document;
};

template <bool bParse>
class MemberJob {
 public:
  explicit MemberJob(const Input& input) : strText(input.Text()), document(&pool) { Parse(); }

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr (bParse) {
      Parse();
    }
    const rapidjson::Value name(rapidjson::StringRef(kMember));
    long lRow = 0;
    for (const rapidjson::Value& row : document["rows"].GetArray()) {
      sink.Text(lRow++, kMember, row.FindMember(name)->value.GetString());
    }
  }

 private:
  void Parse() {
    strBuffer.assign(strText);
    document.SetNull();
    pool.Clear();
    document.ParseInsitu(strBuffer.data());
  }

  const std::string& strText;
  std::string strBuffer;
  rapidjson::MemoryPoolAllocator<> pool;
  rapidjson::Document document;
};

class PathJob {
 public:
  explicit PathJob(const PathQueryPtr& pQuery) : vPaths(pQuery->Join("/")) {
    document.Parse(pQuery->pInput->Text().data(), pQuery->pInput->Text().size());
  }

  template <typename Sink>
  void Run(Sink& sink) {
    long lPath = 0;
    for (const std::string& strPath : vPaths) {
      const rapidjson::Pointer pointer(strPath.data(), strPath.size());
      sink.Text(++lPath, "", pointer.Get(document)->GetString());
    }
  }

 private:
  std::vector<std::string> vPaths;
  rapidjson::Document document;
};

}  // namespace

void AddRapidJson(Suite& suite, const Queries& queries) {
  AddJobs<NameJob, MemberJob<false>, MemberJob<true>, PathJob>(suite, queries, kRapidJson);
}

}  // namespace bench::lookup
