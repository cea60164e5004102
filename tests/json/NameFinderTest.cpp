// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Names are found while they are added and changed, whatever is known of their order.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Random.h"
#include "tests/support/Values.h"

namespace {

using JSON::ObjectValue;
using JSON::UnsafeJSONValue;

// An object that is built, and whose names are changed, in all ways that a host has; and what its
// names are, by ordinal. Many are equal, or only up to a NUL, or in their first 16 bytes.
class Growing {
 public:
  explicit Growing(std::uint64_t nSeed) : random(nSeed) {}

  void Set() {
    const std::string name = Name().c_str();
    const int nFound = First(name);
    object.UpdateByName(name.c_str(), "1", JSON::jtInteger);
    if (nFound < 0) vNames.push_back(name);
    EXPECT_EQ(object.bSorted, nFound >= 0 && (object.bSorted || vNames.size() <= kFew));
  }
  void SetNew() {
    vNames.push_back("new" + std::to_string(vNames.size()));
    object.UpdateByName(vNames.back().c_str(), "2", JSON::jtInteger);
  }
  void Add(const std::string& strName) {
    texts.push_back(strName);
    UnsafeJSONValue name = Support::ValueOf(texts.back());
    object.AddName(name);
    object.AddValue(name);
    vNames.push_back(strName);
  }
  // Lookups come only after one of the three.
  void AddByHand() {
    for (std::uint32_t n = random.OneIn(4) ? 20 : 1; n > 0; --n)
      Add(Name());
    const std::uint32_t nHow = random.Below(3);
    if (nHow == 0) object.bSorted = false;
    if (nHow == 1) object.Sort();
    if (nHow == 2) SetNew();
  }
  // More than a few are sorted by their bytes, when many are new, behind what all have in common.
  void FillWithMany() {
    Clear();
    const std::string& strCommon = random.Of(kBegins);
    for (std::uint32_t n = random.Below(1500); n > 0; --n) {
      std::string name(random.Below(20), 'a');
      for (int i = 0; i < 4 && !name.empty(); ++i)
        name[random.Below(name.size())] = "\xE4z"[random.Below(3)];
      Add(strCommon + name);
    }
    object.Sort();
    for (std::size_t i = random.Below(40); i < vNames.size(); i += 40)
      ASSERT_EQ(object.OrdinalOf(vNames[i].data(), static_cast<int>(vNames[i].size())),
                First(vNames[i]));
  }
  void Sort() { object.Sort(); }
  void LoseOrder() { object.bSorted = false; }
  void Clear() {
    object.Clear();
    vNames.clear();
  }
  // What is known of the names ends with them.
  void Refill() {
    Clear();
    for (std::uint32_t n = random.Below(20); n > 0; --n)
      SetNew();
    object.Sort();
    SetNew();
    Clear();
    AddByHand();
  }
  // A name that was reached through the sequence, just now or before the last lookup.
  void Rename() {
    if (vNames.empty()) return;
    auto& entry = object.vNameMap[random.Below(vNames.size())];
    const bool bLate = random.OneIn(2);
    if (bLate) object.OrdinalOf("n1", -1);
    const std::string name = Name().c_str();
    vNames[static_cast<std::size_t>(entry.nOrdinal)] = name;
    entry.UpdateName(name.c_str());
    if (bLate || object.bSorted) object.bSorted = false;
  }
  // A text of the host's own that is the name of a member.
  void Overwrite() {
    for (std::size_t i = 0; i < vNames.size(); ++i) {
      const char* const pName = object.NameAt(static_cast<int>(i));
      for (std::string& text : texts) {
        if (pName != text.data() || text.empty() || random.OneIn(2)) continue;
        if (random.OneIn(2)) object.bSorted = false;
        if (random.OneIn(2)) SetNew();
        object.OrdinalOf("n1", -1);
        text.front() = text.front() == 'n' ? 'm' : 'n';
        vNames[i] = text;
        object.bSorted = false;
        return;
      }
    }
  }

  void Check() {
    for (int i = 0; i < 8; ++i) {
      std::string name = i < 3 && !vNames.empty() ? LateName() : Name();
      if (name.find('\0') != std::string::npos && random.OneIn(2)) name.back() = 'z';
      ASSERT_EQ(object.OrdinalOf(name.data(), static_cast<int>(name.size())), First(name));
      ASSERT_TRUE(object.bSorted || vNames.size() > kFew) << "few names are in order for a lookup";
    }
    ASSERT_EQ(static_cast<std::size_t>(object.Size()), vNames.size());
    if (!object.bSorted && !random.OneIn(9)) return;
    for (std::size_t i = 0; i < vNames.size(); ++i)
      ASSERT_TRUE(Equal(object.NameAt(static_cast<int>(i)), vNames[i]));
    const auto& names = std::as_const(object.vNameMap);
    ASSERT_TRUE(std::is_sorted(names.begin(), names.end(), ObjectValue::NameMap::Less));
  }

  Support::Random random;

 private:
  static constexpr std::size_t kFew = 12;  // names that a lookup sorts
  inline static const std::string kBegins[] = {"", "n", "a_long_beginning_", {"c\0", 2}};

  std::string Name() {
    std::string name = random.Of(kBegins) + std::to_string(random.Below(60));
    if (random.OneIn(4)) name[random.Below(name.size())] = "\xE4z"[random.Below(3)];
    if (random.OneIn(6)) name.append(1 + random.Below(2), '\0').append(random.OneIn(2) ? "x" : "y");
    return name;
  }
  std::string LateName() {
    return vNames[vNames.size() - 1 - random.Below(std::min(vNames.size(), kFew))];
  }
  static bool Equal(const char* pName, const std::string& name) {
    return std::strncmp(pName, name.data(), name.size()) == 0;
  }
  int First(const std::string& name) const {
    const auto it = std::find_if(vNames.begin(), vNames.end(), [&](const std::string& other) {
      return other.size() == name.size() && Equal(other.data(), name);
    });
    return it != vNames.end() ? static_cast<int>(it - vNames.begin()) : -1;
  }

  std::deque<std::string> texts;
  std::vector<std::string> vNames;
  ObjectValue object;
};

TEST(NameFinder, FindsNamesWhileTheyAreAddedAndChanged) {
  using Step = void (Growing::*)();
  static constexpr Step kMostly[] = {&Growing::Set, &Growing::Set, &Growing::AddByHand};
  static constexpr Step kNowAndThen[] = {
      &Growing::Sort,  &Growing::LoseOrder, &Growing::Rename,    &Growing::Rename,
      &Growing::Clear, &Growing::Refill,    &Growing::Overwrite, &Growing::FillWithMany};
  for (std::uint64_t nSeed = 1; nSeed <= 60; ++nSeed) {
    SCOPED_TRACE("seed " + std::to_string(nSeed));
    Growing growing(nSeed);
    for (int i = 0; i < 200; ++i) {
      const Step step =
          growing.random.OneIn(8) ? growing.random.Of(kNowAndThen) : growing.random.Of(kMostly);
      (growing.*step)();
      if (growing.random.OneIn(3)) growing.Check();
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
