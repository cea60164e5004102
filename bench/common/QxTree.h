// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The outcome of a document tree of this library.

#ifndef QXRECORDSET_BENCH_COMMON_QXTREE_H
#define QXRECORDSET_BENCH_COMMON_QXTREE_H

#include <cstdlib>
#include <string>

#include "bench/common/Outcome.h"
#include "json/JSONMessage.h"

namespace bench {

inline std::uint64_t HashValue(TreeHasher& hasher, const JSON::JSONValue& value) {
  // Numbers keep their text; it is not NUL-terminated.
  const auto numberText = [&value] {
    return std::string(value.pText, static_cast<std::size_t>(value.nLength));
  };
  switch (value.eType) {
    case JSON::jtBoolean:
      return hasher.Boolean(value.AsBoolean());
    case JSON::jtInteger:
      return hasher.Integer(std::strtoll(numberText().c_str(), nullptr, 10));
    case JSON::jtDouble:
      return hasher.Real(std::strtod(numberText().c_str(), nullptr));
    case JSON::jtString:
      return hasher.String({value.pText, static_cast<std::size_t>(value.nLength)});
    case JSON::jtArray: {
      std::uint64_t nHash = hasher.Array();
      for (int i = 0; i < value.Size(); ++i) {
        nHash = TreeHasher::WithElement(nHash, HashValue(hasher, *value.GetByOrdinal(i)));
      }
      return nHash;
    }
    case JSON::jtObject: {
      std::uint64_t nHash = hasher.Object();
      for (int i = 0; i < value.Size(); ++i) {
        nHash = TreeHasher::WithMember(nHash, value.pComposite->NameAt(i),
                                       HashValue(hasher, *value.GetByOrdinal(i)));
      }
      return nHash;
    }
    default:
      return hasher.Null();
  }
}

inline Outcome HashTree(const JSON::JSONValue& root) {
  TreeHasher hasher;
  return hasher.Finish(HashValue(hasher, root));
}

}  // namespace bench

#endif  // QXRECORDSET_BENCH_COMMON_QXTREE_H
