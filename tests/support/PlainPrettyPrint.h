// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The pretty printer's rules once more, byte by byte. Tests hold JSON_PrettyPrint against it.

#ifndef QXRECORDSET_TESTS_SUPPORT_PLAINPRETTYPRINT_H
#define QXRECORDSET_TESTS_SUPPORT_PLAINPRETTYPRINT_H

#include <cstddef>
#include <string>

namespace Plain {

// The stack of open brackets is a text.
inline std::string PrettyPrint(const std::string& text) {
  std::string output;
  std::string open;
  int nDepth = 0;
  const auto breakLine = [&] {
    output += '\n' + std::string(static_cast<std::size_t>(nDepth > 0 ? nDepth : 0), '\t');
  };
  for (const char c : text) {
    const bool bOpens = c == '[' || c == '{';
    const bool bCloses = c == ']' || c == '}';
    if (bCloses) {
      --nDepth;
      if (!open.empty()) open.pop_back();
    }
    if (bOpens || bCloses) breakLine();
    output += c;
    if (bOpens) {
      ++nDepth;
      open += c;
      breakLine();
    }
    if (c == ',' && (open.empty() || open.back() == '{')) breakLine();
  }
  return output;
}

}  // namespace Plain

#endif  // QXRECORDSET_TESTS_SUPPORT_PLAINPRETTYPRINT_H
