// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The outcome of a RapidJSON document.

#ifndef QXRECORDSET_BENCH_COMMON_RAPIDJSONTREE_H
#define QXRECORDSET_BENCH_COMMON_RAPIDJSONTREE_H

#include <rapidjson/document.h>

#include "bench/common/Outcome.h"

namespace bench {

inline std::string_view TextOf(const rapidjson::Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

inline std::uint64_t HashValue(TreeHasher& hasher, const rapidjson::Value& value) {
  switch (value.GetType()) {
    case rapidjson::kFalseType:
    case rapidjson::kTrueType:
      return hasher.Boolean(value.GetBool());
    case rapidjson::kNumberType:
      return value.IsInt64() ? hasher.Integer(value.GetInt64()) : hasher.Real(value.GetDouble());
    case rapidjson::kStringType:
      return hasher.String(TextOf(value));
    case rapidjson::kArrayType: {
      std::uint64_t nHash = hasher.Array();
      for (const rapidjson::Value& element : value.GetArray()) {
        nHash = TreeHasher::WithElement(nHash, HashValue(hasher, element));
      }
      return nHash;
    }
    case rapidjson::kObjectType: {
      std::uint64_t nHash = hasher.Object();
      for (const auto& member : value.GetObject()) {
        nHash = TreeHasher::WithMember(nHash, TextOf(member.name), HashValue(hasher, member.value));
      }
      return nHash;
    }
    default:
      return hasher.Null();
  }
}

inline Outcome HashTree(const rapidjson::Value& root) {
  TreeHasher hasher;
  return hasher.Finish(HashValue(hasher, root));
}

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_RAPIDJSONTREE_H
