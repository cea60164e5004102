// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The benchmark inputs, made on demand.

#include "bench/common/Inputs.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace bench {
namespace {

constexpr const char* kDocuments[] = {"twitter", "citm_catalog", "canada"};

std::string ReadFile(const std::string& strPath) {
  std::ifstream file(strPath, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  if (!file) {
    throw std::runtime_error("cannot read " + strPath);
  }
  return content.str();
}

std::string RowsName(std::size_t nRows) {
  constexpr std::size_t kThousand = 1'000;
  constexpr std::size_t kMillion = 1'000'000;
  if (nRows % kMillion == 0) {
    return "rows-" + std::to_string(nRows / kMillion) + "M";
  }
  if (nRows % kThousand == 0) {
    return "rows-" + std::to_string(nRows / kThousand) + "k";
  }
  return "rows-" + std::to_string(nRows);
}

}  // namespace

const std::string& Input::Text() const {
  if (strText.empty()) {
    strText = strPath.empty() ? MakeRowsText(nRows) : ReadFile(strPath);
  }
  return strText;
}

const std::vector<Row>& Input::Rows() const {
  if (vRows.empty()) {
    vRows = MakeRows(nRows);
  }
  return vRows;
}

const Input& RowsInput(std::size_t nRows) {
  static std::map<std::size_t, Input> mapInputs;
  return mapInputs.try_emplace(nRows, RowsName(nRows), nRows).first->second;
}

std::vector<const Input*> DocumentInputs(const std::string& strFolder) {
  static std::map<std::string, Input> mapInputs;
  std::vector<const Input*> vInputs;
  for (const char* szName : kDocuments) {
    const std::string strPath = strFolder + "/" + szName + ".json";
    if (std::filesystem::exists(strPath)) {
      vInputs.push_back(&mapInputs.try_emplace(strPath, szName, strPath).first->second);
    }
  }
  return vInputs;
}

}  // namespace bench
