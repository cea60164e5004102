// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Distinct record sets on all cores: 1, 2, 4, ... threads each load a table of 1000 rows from text,
// read every cell and write it again, over and over.
//
//   bench_threads [SECONDS]      for each number of threads; 1 second without
//
// Writes a line each: threads, tables a second, tables a second of processor time and thread, and
// that beside one thread. Processor time is what the threads themselves used: what other work on
// the machine takes away does not count, waiting for each other would.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "bench/common/Rows.h"
#include "recordset/QXRecordSet.h"

namespace {

constexpr std::size_t kRows = 1000;

double Now(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Work {
  long lTables = 0;
  double processor = 0.0;  // seconds
  std::size_t nRead = 0;   // bytes, so that nothing is left out
};

void Cycle(const std::string& strText, Work& work) {
  CQXRecordSet set(strText);
  for (long lRow = 1; lRow <= set.GetRowsCount(); ++lRow) {
    for (const char* szName : bench::kColumns) {
      work.nRead += set.GetValueAsString(szName, lRow)[0] != '\0' ? 1 : 0;
    }
  }
  work.nRead += set.GetString().size();
  ++work.lTables;
}

// Lets so many threads work for a while, and gives the sum of what they did.
Work Run(int nThreads, double seconds, const std::string& strText) {
  std::vector<Work> vWorks(static_cast<std::size_t>(nThreads));
  std::vector<std::thread> vThreads;
  std::atomic<bool> bStop{false};
  for (Work& work : vWorks) {
    vThreads.emplace_back([&] {
      const std::string strOwn = strText;
      Work own;
      const double begin = Now(CLOCK_THREAD_CPUTIME_ID);
      while (!bStop) {
        Cycle(strOwn, own);
      }
      own.processor = Now(CLOCK_THREAD_CPUTIME_ID) - begin;
      work = own;
    });
  }
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
  bStop = true;
  Work sum;
  for (std::size_t i = 0; i < vThreads.size(); ++i) {
    vThreads[i].join();
    sum.lTables += vWorks[i].lTables;
    sum.processor += vWorks[i].processor;
    sum.nRead += vWorks[i].nRead;
  }
  return sum;
}

}  // namespace

int main(int nArguments, char** vArguments) {
  const double seconds = nArguments > 1 ? std::atof(vArguments[1]) : 1.0;
  const std::string strText = bench::MakeRowsText(kRows);
  std::printf("%u cores; tables of %zu rows\n", std::thread::hardware_concurrency(), kRows);
  double alone = 0.0;
  for (const int nThreads : {1, 2, 4, 8}) {
    const double begin = Now(CLOCK_MONOTONIC);
    const Work work = Run(nThreads, seconds, strText);
    const double took = Now(CLOCK_MONOTONIC) - begin;
    const double rate = static_cast<double>(work.lTables) / work.processor;
    if (nThreads == 1) alone = rate;
    std::printf("%d threads  %7.0f tables/s  %7.0f a processor second  %3.0f %% of one thread's\n",
                nThreads, static_cast<double>(work.lTables) / took, rate, 100.0 * rate / alone);
  }
  return 0;
}
