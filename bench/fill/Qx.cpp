// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Filling a CQXRecordSet, and writing rows with JSON::Serialize.

#include "bench/fill/Fill.h"
#include "json/JSONSerialize.h"
#include "recordset/QXRecordSet.h"

namespace bench::fill {
namespace {

void Fill(CQXRecordSet& set, const std::vector<Row>& vRows) {
  long lRow = 0;
  for (const Row& row : vRows) {
    ++lRow;
    ForEachCell(row, [&](const char* szName, const auto& value) {
      if constexpr (std::is_null_pointer_v<std::decay_t<decltype(value)>>) {
        set.SetValue(szName, "", lRow, CQXRecordSet::QX_NULL);
      } else {
        set.SetValue(szName, value, lRow);
      }
    });
  }
}

class Fresh {
 public:
  explicit Fresh(const Input& input) : vRows(input.Rows()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    CQXRecordSet set;
    Fill(set, vRows);
    sink.Output(set.GetString());
  }

 private:
  const std::vector<Row>& vRows;
};

class Reused {
 public:
  explicit Reused(const Input& input) : vRows(input.Rows()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    set.Clear();
    Fill(set, vRows);
    sink.Output(set.GetString());
  }

 private:
  const std::vector<Row>& vRows;
  CQXRecordSet set;
};

class Stream {
 public:
  explicit Stream(const Input& input) : vRows(input.Rows()) {}

  template <typename Sink>
  void Run(Sink& sink) {
    constexpr int kReserve = 1024;
    JSON::Serialize writer(kReserve);
    writer.OO().N("rows").AO();
    for (const Row& row : vRows) {
      writer.OO();
      ForEachCell(row, [&](const char* szName, const auto& value) {
        writer.N(szName);
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_null_pointer_v<Value>) {
          writer.JS(nullptr);
        } else if constexpr (std::is_same_v<Value, bool>) {
          writer.JS(value ? "true" : "false");
        } else if constexpr (std::is_same_v<Value, std::string>) {
          writer.V(value.c_str());
        } else {
          writer.V(value);
        }
      });
      writer.OC();
    }
    writer.AC().OC();
    sink.Output(writer.String());
  }

 private:
  const std::vector<Row>& vRows;
};

}  // namespace

void AddQx(Suite& suite, const Input& input) {
  suite.Add<Fresh>({"fill", input.Name(), kQx, "fresh"}, input);
  suite.Add<Reused>({"fill", input.Name(), kQx, "reused"}, input);
  suite.Add<Stream>({"stream", input.Name(), kQx, "fresh"}, input);
}

}  // namespace bench::fill
