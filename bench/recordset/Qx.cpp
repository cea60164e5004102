// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Record set work with CQXRecordSet.

#include "bench/recordset/RecordSet.h"
#include "recordset/QXRecordSet.h"

namespace bench::recordset {
namespace {

template <typename Sink>
void ReadCells(CQXRecordSet& set, Sink& sink) {
  const long lRows = set.GetRowsCount();
  for (long lRow = 1; lRow <= lRows; ++lRow) {
    for (const char* szColumn : kColumns) {
      sink.Text(lRow, szColumn, set.GetValueAsString(szColumn, lRow));
    }
  }
}

// What follows the load.
template <unsigned kSteps, typename Sink>
void ReadAndWrite(CQXRecordSet& set, Sink& sink) {
  if constexpr ((kSteps & (kRead | kWalk)) != 0) {
    ReadCells(set, sink);
  }
  if constexpr ((kSteps & kWrite) != 0) {
    sink.Output(set.GetString());
  }
  if constexpr (kSteps == kLoad) {
    sink.Inspect([&](CheckSink& check) { ReadCells(set, check); });
  }
}

template <unsigned kSteps>
class Reused {
 public:
  explicit Reused(const Input& input) : strText(input.Text()), set(strText) {}

  template <typename Sink>
  void Run(Sink& sink) {
    if constexpr ((kSteps & kLoad) != 0) {
      set.Clear();
      set.SetString(strText);
    } else if constexpr ((kSteps & kWrite) != 0) {
      set.SetValue(kColumns[0], set.GetValueAsLong(kColumns[0]));  // or the text would be current
    }
    ReadAndWrite<kSteps>(set, sink);
  }

 private:
  const std::string& strText;
  CQXRecordSet set;
};

template <unsigned kSteps>
class Fresh {
 public:
  explicit Fresh(const Input& input) : strText(input.Text()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    CQXRecordSet set(strText);
    ReadAndWrite<kSteps>(set, sink);
  }

 private:
  const std::string& strText;
};

template <unsigned kSteps>
void AddBoth(Suite& suite, const std::string& strWork, const Input& input) {
  suite.Add<Reused<kSteps>>({strWork, input.Name(), kQx, "reused"}, input);
  suite.Add<Fresh<kSteps>>({strWork, input.Name(), kQx, "fresh"}, input);
}

}  // namespace

void AddQx(Suite& suite, const Input& input) {
  AddBoth<kLoad>(suite, "load", input);
  AddBoth<kLoad | kRead>(suite, "load-read", input);
  AddBoth<kLoad | kWalk>(suite, "load-walk", input);
  suite.Add<Reused<kRead>>({"read", input.Name(), kQx, "reused"}, input);
  suite.Add<Reused<kWalk>>({"walk", input.Name(), kQx, "reused"}, input);
  suite.Add<Reused<kWrite>>({"write", input.Name(), kQx, "reused"}, input);
  AddQxCycle(suite, "cycle", input);
}

void AddQxCycle(Suite& suite, const std::string& strWork, const Input& input) {
  AddBoth<kLoad | kRead | kWrite>(suite, strWork, input);
  AddBoth<kLoad | kWalk | kWrite>(suite, strWork + "-walk", input);
}

}  // namespace bench::recordset
