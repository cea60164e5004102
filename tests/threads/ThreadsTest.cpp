// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Distinct objects in distinct threads. The threads begin with their first calls at the same
// moment, so that whatever the library builds on first use is built under contention. The thread
// sanitizer (make tsan) tells of every byte that they share without order; here all must come to
// the same result.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "params/CParamsX.h"
#include "recordset/QXRecordSet.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 50;
constexpr int kManyRows = 2000;  // their memory comes in blocks that go from thread to thread

// A little of everything, from the first use of each part on.
std::string UseEverything() {
  std::string strRows = "{\"rows\":[{}";
  for (int i = 0; i < kManyRows; ++i)
    strRows += ",{\"number\":" + std::to_string(i) + ",\"text\":\"some text\"}";
  CQXRecordSet set(strRows + "]}");
  for (long row = 1; row <= 20; ++row)
    set.SetValue(("c" + std::to_string(row % 7)).c_str(), row * 1000003, row);
  set.SetValue("inner", set);
  std::string strResult = CQXRecordSet(set.GetString()).GetString() + set.Dump();
  strResult += CQXRecordSet::WideToUTF8(CQXRecordSet::UTF8ToWide("\xC3\xA9"));

  JSON::Message message;
  message.Parse(strResult.c_str());
  message.Set("added", 2.5);
  JSON::Message copy(message);
  copy.Serialize(strResult);
  strResult += copy["none"]["at"]["all"].AsBoolean() ? "?" : "";

  const JSON_HANDLE handle = JSON_AllocMessage();
  JSON_ParseMessage(handle, strResult.c_str());
  strResult += std::to_string(JSON_GetPathAsInt(handle, "rows.5.c6"));
  JSON_FreeMessage(handle);
  JSON_ReleaseMemory();

  CParamsRS params;
  params.addHeader("H");
  params.addResult(params.length());
  strResult += params.paramList() + PARAM_SEP;
  JSON_PrettyPrint(strResult.c_str(), strResult);
  return strResult;
}

TEST(Threads, ShareNothingBetweenDistinctObjects) {
  std::vector<std::string> vResults(kThreads);
  std::atomic<int> nReady{0};
  std::vector<std::thread> vThreads;
  for (std::string& result : vResults) {
    vThreads.emplace_back([&result, &nReady] {
      ++nReady;
      while (nReady < kThreads)
        std::this_thread::yield();
      for (int i = 0; i < kRounds; ++i)
        result = UseEverything();
    });
  }
  for (std::thread& thread : vThreads)
    thread.join();
  const std::string strAlone = UseEverything();
  EXPECT_GT(strAlone.size(), 1000U);
  for (const std::string& result : vResults)
    EXPECT_EQ(result, strAlone);
}

}  // namespace
