// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Support::Author writes random documents: rows as hosts write them and every oddity that the
// grammar knows, whole or damaged. Each follows from its seed.

#ifndef QXRECORDSET_TESTS_SUPPORT_AUTHOR_H
#define QXRECORDSET_TESTS_SUPPORT_AUTHOR_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/Random.h"

namespace Support {

enum class Kind { kRows, kPrettyRows, kStrings, kMixed, kDeep };

// Writes one random document.
class Author {
 public:
  explicit Author(std::uint64_t seed) : random(seed) {}

  std::string Document(Kind kind) {
    if (kind == Kind::kDeep) return Deep();
    if (kind == Kind::kStrings) return List('[', random.Below(7), [&] { return String(); });
    if (kind == Kind::kMixed) return Space() + (random.OneIn(2) ? Object(4) : Array(4)) + Space();
    bSpaced = kind == Kind::kPrettyRows;
    const std::string strRows = Rows();
    return random.OneIn(2) ? strRows : "{\"rows\":" + strRows + "}";
  }

  // Changes a few bytes, or loses or repeats a slice.
  void Damage(std::string& strText) {
    const std::size_t nAt = random.Below(strText.size());
    const std::size_t nLength = random.OneIn(2) ? 1 : 1 + random.Below(20);
    const char byte = random.OneIn(4) ? static_cast<char>(random.Below(256))
                                      : random.Of("{}[]\",:\\ ntfu0-.e\n\v");  // or its NUL
    const std::uint32_t nWhat = random.Below(6);
    if (nWhat < 2) strText[nAt] = byte;
    if (nWhat == 2) strText.insert(nAt, 1, byte);
    if (nWhat == 3) strText.erase(nAt, nLength);
    if (nWhat == 4) strText.resize(nAt + 1);
    if (nWhat == 5) strText.insert(random.Below(strText.size()), strText.substr(nAt, nLength));
    if (strText.empty()) strText = "[";
  }

  Random random;

 private:
  std::string Space() {
    std::string strSpace;
    while (bSpaced ? !random.OneIn(3) : random.OneIn(30))
      strSpace += random.Of(kSpace);
    if (bSpaced && random.OneIn(8)) strSpace += "\n" + std::string(random.Below(40), ' ');
    return strSpace;
  }

  // A list of what `element` writes nElements times.
  template <typename Element>
  std::string List(char open, std::size_t nElements, Element element) {
    std::string strList = open + Space();
    for (std::size_t i = 0; i < nElements; ++i)
      strList += (i > 0 ? "," + Space() : "") + element() + Space();
    return strList + (open == '[' ? ']' : '}');
  }
  std::string Object(int nDepth) {
    return List('{', random.Below(7), [&] { return Member(Name(), Any(nDepth - 1)); });
  }
  std::string Array(int nDepth) {
    return List('[', random.Below(7), [&] { return random.OneIn(12) ? "" : Any(nDepth - 1); });
  }
  std::string Any(int nDepth) {
    if (nDepth > 0 && random.OneIn(3)) return random.OneIn(2) ? Object(nDepth) : Array(nDepth);
    return Scalar();
  }
  std::string Member(const std::string& name, const std::string& value) {
    return Quoted(name) + Space() + ":" + Space() + value;
  }
  static std::string Quoted(const std::string& text) { return '"' + text + '"'; }

  std::string Scalar() {
    const std::uint32_t nKind = random.Below(8);
    if (nKind == 0) return std::string(random.OneIn(2) ? random.Of(kWords) : random.Of(kNumbers));
    if (nKind == 1) return std::to_string(random.Below(100000)) + ".25";
    if (nKind < 4) return String();
    if (nKind > 4) return std::to_string(random.Below(random.OneIn(2) ? 10 : 1000000));
    std::string strNumber(1, "+-0123456789"[random.Below(12)]);
    for (std::size_t n = random.Below(40); n > 0; --n)
      strNumber += "+-0123456789.eE"[random.Below(15)];
    return strNumber;
  }

  // Content of 0 to 70 bytes, mostly plain, with escapes where 16-byte steps begin and end.
  std::string String() {
    std::string strText;
    const std::size_t nLength = random.OneIn(2) ? random.Below(12) : random.Below(71);
    const bool bEscapes = random.OneIn(2);
    while (strText.size() < nLength) {
      const bool bEdge = (strText.size() + 3) % 16 < 5;
      if (bEscapes && random.OneIn(bEdge ? 3 : 20)) {
        strText += random.Of(kEscapes);
      } else if (random.OneIn(30)) {
        strText += random.Of("\x01\x1F\x7F\x80\xC3\xFF\n\t");
      } else {
        strText += static_cast<char>('a' + random.Below(26));
      }
    }
    return Quoted(strText);
  }

  // Few different bytes, so that names of one length are often equal or nearly so.
  std::string Name() {
    const std::size_t nLength = random.OneIn(3)   ? 13 + random.Below(6)
                                : random.OneIn(4) ? random.Below(41)
                                                  : random.Below(6);
    std::string strName(nLength, 'a');
    for (int i = 0; i < 3 && nLength > 0; ++i)
      strName[random.Below(nLength)] = random.Of(kNameBytes);
    if (random.OneIn(12)) strName.insert(random.Below(nLength + 1), random.Of(kNameEscapes));
    return strName;
  }

  // Rows that repeat their names, as a table's do, and rows that nearly do; now and then many rows
  // that each pick a few of the names, or rows of more names than a table would have.
  std::string Rows() {
    std::vector<std::string> vNames(random.OneIn(300)  ? 1000 + random.Below(60)
                                    : random.OneIn(10) ? random.Below(40)
                                                       : random.Below(6));
    for (std::string& name : vNames)
      name = Name();
    const bool bPicked = vNames.size() < 40 && random.OneIn(20);
    return List('[', bPicked ? 40 : random.Below(7), [&] {
      std::vector<std::string> vPicked = vNames;
      if (bPicked) {
        std::rotate(vPicked.begin(), vPicked.begin() + At(vNames), vPicked.end());
        vPicked.resize(random.Below(vNames.size() + 1));
      }
      return Row(std::move(vPicked));
    });
  }
  std::ptrdiff_t At(const std::vector<std::string>& names) {
    return names.empty() ? 0 : static_cast<std::ptrdiff_t>(random.Below(names.size()));
  }
  std::string Row(std::vector<std::string> vNames) {
    if (!vNames.empty() && random.OneIn(3)) {
      const auto at = vNames.begin() + At(vNames);
      const std::uint32_t nWhat = random.Below(7);
      if (nWhat == 0 && !at->empty()) (*at)[random.Below(at->size())] ^= 1;
      if (nWhat == 1 && !at->empty()) *at = "\\u0061" + at->substr(1);
      if (nWhat == 2) *at += 'a';
      if (nWhat == 3) std::swap(*at, random.Of(vNames));
      if (nWhat == 4) vNames.push_back(*at);
      if (nWhat == 5) vNames.insert(at, Name());
      if (nWhat == 6) vNames.erase(at);
    }
    auto name = vNames.begin();
    return List('{', vNames.size(),
                [&] { return Member(*name++, random.OneIn(5) ? Any(2) : Scalar()); });
  }

  // Nesting on both sides of the bound, closed again or not.
  std::string Deep() {
    std::string strText = Any(2);
    for (auto n = random.OneIn(2) ? 1020 + random.Below(10) : random.Below(200); n > 0; --n)
      strText = random.OneIn(2) ? "{\"a\":" + strText + '}' : '[' + strText + ']';
    return strText.substr(0, random.OneIn(3) ? 1 + random.Below(strText.size()) : strText.size());
  }

  static constexpr std::string_view kSpace = " \t\f\n\r";
  static constexpr std::string_view kNameBytes = "abc\xE4xyz_";
  static constexpr std::string_view kWords[] = {"true", "false", "null", "{}",
                                                "[]",   "\"\"",  "\"0\""};
  static constexpr std::string_view kNumbers[] = {"007", "-0", "2147483648", "-2147483649",
                                                  "99999999999"};
  static constexpr std::string_view kEscapes[] = {
      "\\n",     "\\\"",     "\\\\",           "\\/",
      "\\b",     "\\q",      "\\u0041",        "\\u007f",
      "\\u0080", "\\u07FF",  "\\u0800",        "\\uffff",
      "\\ud83d", "\\uDE00",  "\\u0000",        "\\u-00f",
      "\\u 0x4", "\\u12\"x", "{\\\"k\\\":[1]}"};
  static constexpr std::string_view kNameEscapes[] = {"\\n", "\\\"", "\\u0061", "\\u0000",
                                                      "\\u20ac"};

  bool bSpaced = false;
};

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_AUTHOR_H
