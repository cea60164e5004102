// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The outcome of an nlohmann::json value.

#ifndef QXRECORDSET_BENCH_COMMON_NLOHMANNTREE_H
#define QXRECORDSET_BENCH_COMMON_NLOHMANNTREE_H

#include <nlohmann/json.hpp>

#include "bench/common/Outcome.h"

namespace bench {

inline std::uint64_t HashValue(TreeHasher& hasher, const nlohmann::json& value) {
  using nlohmann::json;
  switch (value.type()) {
    case json::value_t::boolean:
      return hasher.Boolean(value.get<bool>());
    case json::value_t::number_integer:
    case json::value_t::number_unsigned:
      return hasher.Integer(value.get<std::int64_t>());
    case json::value_t::number_float:
      return hasher.Real(value.get<double>());
    case json::value_t::string:
      return hasher.String(value.get_ref<const std::string&>());
    case json::value_t::array: {
      std::uint64_t nHash = hasher.Array();
      for (const json& element : value) {
        nHash = TreeHasher::WithElement(nHash, HashValue(hasher, element));
      }
      return nHash;
    }
    case json::value_t::object: {
      std::uint64_t nHash = hasher.Object();
      for (const auto& [strName, member] : value.items()) {
        nHash = TreeHasher::WithMember(nHash, strName, HashValue(hasher, member));
      }
      return nHash;
    }
    default:
      return hasher.Null();
  }
}

inline Outcome HashTree(const nlohmann::json& root) {
  TreeHasher hasher;
  return hasher.Finish(HashValue(hasher, root));
}

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_NLOHMANNTREE_H
