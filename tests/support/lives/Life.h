// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// A life: an object of the library that goes through any number of steps, and a model of it in
// standard containers that goes through the same. The steps of a kind stand in a table by name.
// What all lives of a player share is their World.

#ifndef QXRECORDSET_TESTS_SUPPORT_LIVES_LIFE_H
#define QXRECORDSET_TESTS_SUPPORT_LIVES_LIFE_H

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/CountedMemory.h"
#include "tests/support/Random.h"

namespace Support {

class TreeLife;

// The last steps, by name. With QXRECORDSET_LIVES_TRACE in the environment each step is printed
// before it is taken, for a program that dies.
class Diary {
 public:
  explicit Diary(std::string strAbout) : strTitle(std::move(strAbout)) {}

  void Note(const char* szLife, int nLife, const char* szStep) {
    static const bool bTrace = std::getenv("QXRECORDSET_LIVES_TRACE") != nullptr;
    const CountedMemory::Aside aside;
    std::string& strLine = vLines[nNotes++ % vLines.size()];
    strLine = std::string("  ") + szLife + ' ' + std::to_string(nLife) + ": " + szStep + '\n';
    if (bTrace) std::fprintf(stderr, "%s:%s", strTitle.c_str(), strLine.c_str());
  }
  std::string Text() const {
    std::string strText = "step " + std::to_string(nNotes) + " of " + strTitle + '\n';
    for (std::size_t i = 0; i < vLines.size(); ++i)
      strText += vLines[(nNotes + i) % vLines.size()];
    return strText;
  }

 private:
  std::string strTitle;
  std::array<std::string, 12> vLines{};  // the last ones
  std::size_t nNotes = 0;
};

struct World {
  Random random;
  std::size_t nMost;  // elements that one step adds or removes at most
  Diary diary{""};
  std::list<std::string> vTexts{};
  std::vector<TreeLife*> vTrees{};

  // A number of elements. It jumps: none, one, a few, a block's worth, many blocks' worth.
  std::size_t Size() {
    const std::uint32_t n = random.Below(1000);
    const std::size_t nSize = n < 150   ? 0
                              : n < 300 ? 1
                              : n < 800 ? 2 + random.Below(9)
                              : n < 950 ? 700 + random.Below(600)
                              : n < 990 ? 9000 + random.Below(3000)
                                        : 100000;
    return nSize <= nMost ? nSize : random.Below(nMost);
  }

  // A copy of `text` that lives as long as the world.
  char* Keep(const std::string& text) {
    const CountedMemory::Aside aside;
    return vTexts.emplace_back(text).data();
  }
};

class Life {
 public:
  explicit Life(World& common) : world(common), random(common.random) {}
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;
  virtual ~Life() = default;

  // Takes a step and compares what it was about with the model. The first difference, or "".
  std::string Step() {
    strFault.clear();
    TakeOne();
    return strFault;
  }

  // Compares everything.
  virtual std::string CheckAll() = 0;

  int nNumber = 0;

 protected:
  template <typename Self>
  struct Named {
    const char* szName;
    void (Self::*take)();
    unsigned nWeight;  // how often, beside the others
  };

  virtual void TakeOne() = 0;

  // A step of the table.
  template <typename Step, std::size_t nSteps>
  const Step& Choose(const char* szLife, const Step (&steps)[nSteps]) {
    unsigned nWeights = 0;
    for (const auto& step : steps)
      nWeights += step.nWeight;
    std::uint32_t n = random.Below(nWeights);
    const Step* pStep = steps;
    for (; n >= pStep->nWeight; ++pStep)
      n -= pStep->nWeight;
    world.diary.Note(szLife, nNumber, pStep->szName);
    return *pStep;
  }

  void Expect(bool bHolds, const std::string& what) {
    if (!bHolds && strFault.empty()) strFault = what;
  }

  // Nothing, where a difference is looked for.
  void ExpectNone(const std::string& difference, const char* szWhere) {
    Expect(difference.empty(), szWhere + difference);
  }

  World& world;
  Random& random;
  std::string strFault;  // what went wrong in this step
};

// A message that copies its text or parses in place, or a container that a host makes by hand.
enum class TreeKind { kCopying, kInPlace, kObject, kArray, kHostObject, kHostArray };
std::unique_ptr<Life> MakeTreeLife(World& common, TreeKind kind);

// Profiles of row numbers and columns drive the cells of a record set through every way of storing
// them: dense rows, rows written backwards, rows far off, columns far apart.
constexpr std::size_t kRecordSetProfiles = 8;
std::unique_ptr<Life> MakeRecordSetLife(World& common, std::size_t nProfile);

}  // namespace Support

#endif  // QXRECORDSET_TESTS_SUPPORT_LIVES_LIFE_H
