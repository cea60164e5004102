// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Building and reading parameter strings with CParamsRS.

#include "params/CParamsX.h"

#include "bench/params/Params.h"

namespace bench::params {
namespace {

const std::string kText = "a parameter of thirty-six characters";

void Build(CParamsRS& params, int nParams) {
  params.addHeader("BENCH");
  params.addResult(0);
  for (int i = 1; i < nParams; ++i) {
    if (i % 2 == 0) {
      params.addParam(static_cast<long>(i) * 1'000);
    } else {
      params.addParam(kText);
    }
  }
}

class BuildJob {
 public:
  explicit BuildJob(int nParameters) : nParams(nParameters) {}

  template <typename Sink>
  void Run(Sink& sink) {
    CParamsRS params;
    Build(params, nParams);
    sink.Require(params.count() == nParams, "a parameter got lost");
    sink.Text(0, "", params.paramListRef().c_str());
  }

 private:
  int nParams;
};

class ReadJob {
 public:
  explicit ReadJob(int nParameters) : nParams(nParameters) {
    CParamsRS params;
    Build(params, nParams);
    strText = params.paramList();
  }

  template <typename Sink>
  void Run(Sink& sink) {
    const CParamsRS params(strText);
    sink.Require(params.getHRESULT() == 0, "the result code got lost");
    for (int i = 1; i < nParams; ++i) {
      if (i % 2 == 0) {
        const long lValue = params.getLongParamAt(i);
        sink.Require(lValue == static_cast<long>(i) * 1'000, "an integer got lost");
      } else {
        const std::string strValue = params.getStringParamAt(i);
        sink.Require(strValue.size() == kText.size(), "a text got lost");
      }
    }
  }

 private:
  int nParams;
  std::string strText;
};

}  // namespace

void AddQx(Suite& suite) {
  constexpr int kSizes[] = {10, 1'000};
  for (const int nParams : kSizes) {
    const std::string strInput = "params-" + std::to_string(nParams);
    const Amount amount{0, static_cast<std::size_t>(nParams)};
    suite.Add<BuildJob>({"params-build", strInput, kQx, "fresh"}, amount, nParams);
    suite.Add<ReadJob>({"params-read", strInput, kQx, "fresh"}, amount, nParams);
  }
}

}  // namespace bench::params
