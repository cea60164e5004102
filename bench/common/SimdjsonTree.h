// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The outcome of a simdjson DOM element.

#ifndef QXRECORDSET_BENCH_COMMON_SIMDJSONTREE_H
#define QXRECORDSET_BENCH_COMMON_SIMDJSONTREE_H

#include <simdjson.h>

#include "bench/common/Outcome.h"

namespace bench {

inline std::uint64_t HashValue(TreeHasher& hasher, simdjson::dom::element value) {
  using simdjson::dom::element_type;
  switch (value.type()) {
    case element_type::BOOL:
      return hasher.Boolean(value.get_bool().value());
    case element_type::INT64:
    case element_type::UINT64:
      return hasher.Integer(value.get_int64().value());
    case element_type::DOUBLE:
      return hasher.Real(value.get_double().value());
    case element_type::STRING:
      return hasher.String(value.get_string().value());
    case element_type::ARRAY: {
      std::uint64_t nHash = hasher.Array();
      const simdjson::dom::array array = value;
      for (const simdjson::dom::element element : array) {
        nHash = TreeHasher::WithElement(nHash, HashValue(hasher, element));
      }
      return nHash;
    }
    case element_type::OBJECT: {
      std::uint64_t nHash = hasher.Object();
      const simdjson::dom::object object = value;
      for (const simdjson::dom::key_value_pair member : object) {
        nHash = TreeHasher::WithMember(nHash, member.key, HashValue(hasher, member.value));
      }
      return nHash;
    }
    default:
      return hasher.Null();
  }
}

inline Outcome HashTree(simdjson::dom::element root) {
  TreeHasher hasher;
  return hasher.Finish(HashValue(hasher, root));
}

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_SIMDJSONTREE_H
