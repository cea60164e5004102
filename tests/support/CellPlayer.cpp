// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The model, the arrangements, and the steps in the record set and in the model.

#include "tests/support/CellPlayer.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

#include "json/JSONSerialize.h"
#include "recordset/QXRecordSet.h"

namespace {

using Support::Random;

struct Item {
  int eType = CQXRecordSet::QX_NULL;
  std::string strValue;
  const char* pHandedOut = nullptr;  // where the record set said the text is, if it was asked
};

// What a text that looks like an object is written as; "" for one that is left out.
struct ObjectText {
  const char* szText;
  const char* szWritten;
};
const ObjectText kObjects[] = {{R"({"k":[1,2],"s":"v"})", R"({"k":null,"s":"v"})"},
                               {R"(  {"o":{"i":7,"t":true}} )", R"({"o":{"i":7,"t":true}})"},
                               {"{oops}", ""},
                               {"{}", "{}"}};

std::string Quoted(const std::string& text) {
  std::string strEscaped;
  JSON::EscapeString(strEscaped, text.c_str());
  return '"' + strEscaped + '"';
}

class Model {
 public:
  void Set(const std::string& name, long row, int eType, const std::string& text) {
    Item& item = mapRows[row][AddColumn(name)];
    item = {eType, text, nullptr};
    lRowsCount = std::max(lRowsCount, row);
    bModified = true;
  }

  long AddColumn(const std::string& name) {
    return mapColumns.try_emplace(name, static_cast<long>(mapColumns.size()) + 1).first->second;
  }

  // The cell that a read finds or makes; null for an unknown column.
  Item* Get(const std::string& name, long row) {
    const auto column = mapColumns.find(name);
    return column != mapColumns.end() ? &mapRows[row][column->second] : nullptr;
  }

  std::string Text() const {
    if (!bModified) return "";
    if (lRowsCount < 2) return RowText(1);
    std::string strText = "{\"rows\":[" + RowText(1);
    for (long row = 2; row <= lRowsCount; ++row) {
      strText += ',' + RowText(row);
    }
    return strText + "]}";
  }

  std::string Dump() const {
    std::string strDump;
    for (long row = 1; row <= lRowsCount; ++row) {
      strDump += "Row " + std::to_string(row) + '\n';
      const auto cells = mapRows.find(row);
      for (const auto& [name, index] : mapColumns) {
        strDump += "\tField (" + name + "):";
        if (cells != mapRows.end()) {
          const auto cell = cells->second.find(index);
          strDump += ' ' + (cell != cells->second.end() ? cell->second.strValue : "");
        }
        strDump += '\n';
      }
    }
    return strDump;
  }

  long lRowsCount = 0;
  bool bModified = false;
  std::map<std::string, long> mapColumns;
  std::map<long, std::map<long, Item>> mapRows;

 private:
  std::string RowText(long row) const {
    std::string strText;
    const auto cells = mapRows.find(row);
    if (cells == mapRows.end() || row > lRowsCount) return "{}";
    for (const auto& [name, index] : mapColumns) {
      const auto cell = cells->second.find(index);
      if (cell == cells->second.end()) continue;
      const std::string strValue = ValueText(cell->second);
      if (!strValue.empty()) strText += ',' + Quoted(name) + ':' + strValue;
    }
    return '{' + (strText.empty() ? strText : strText.substr(1)) + '}';
  }

  static std::string ValueText(const Item& item) {
    for (const ObjectText& object : kObjects) {
      if (item.strValue == object.szText) return object.szWritten;
    }
    switch (item.eType) {
      case CQXRecordSet::QX_NULL:
        return "null";
      case CQXRecordSet::QX_LONG:
        return std::to_string(std::strtol(item.strValue.c_str(), nullptr, 10));
      case CQXRecordSet::QX_BOOL:
        return item.strValue == "1" ? "true" : "false";
      default:
        return Quoted(item.strValue);
    }
  }
};

// Where the cells of a round lie.
struct Profile {
  const char* szName;
  std::vector<long> vRows;  // picked at random when not empty, else
  long lStep;               // the row number changes by this now and then,
  long lFirstRow;           // from here
  std::uint32_t nColumns;
  bool bColumnsInOrder;  // as a loader writes them, not at random
};
const Profile kProfiles[] = {
    {"grid", {}, 1, 1, 10, true},
    {"grid of random cells", {}, 1, 1, 60, false},
    {"backwards", {}, -1, 700, 6, true},
    {"gaps", {}, 3, 1, 5, false},
    {"rows far ahead", {}, 1, 3000, 20, true},
    {"wide and sparse", {1, 2, 3, 4, 5, 6, 7, 8, 9}, 0, 0, 3000, false},
    {"odd numbers", {LONG_MIN, -7, -1, 0, 1, 2, 60, 70, 400, 1500}, 0, 0, 40, false},
    {"one row", {1}, 0, 0, 30, true},
};

}  // namespace

class Support::CellPlayer::Player {
 public:
  Player(const Profile& profile, const Random& choices)
      : profile_(profile), random_(choices), lRow_(profile.lFirstRow) {}

  std::string Play() {
    Step();
    return strFault_;
  }
  std::string CheckEverything() {
    CheckAll();
    return strFault_;
  }
  bool UsedUp() const { return random_.UsedUp(); }

 private:
  void Expect(bool bHolds, const char* what) {
    if (!bHolds && strFault_.empty()) strFault_ = what;
  }

  void Step() {
    switch (random_.Below(16)) {
      case 0:
      case 1:
        return Read();
      case 2:
        return ReadLong();
      case 3:
        Name();
        Expect(set_.AddColumn(strName_.c_str()) == model_.AddColumn(strName_), "AddColumn");
        return;
      case 4:
        return random_.OneIn(20) ? CheckAll() : Read();
      case 5:
        return random_.OneIn(40) ? Replace() : Load();
      default:
        return Write();
    }
  }

  void Write() {
    const long row = NextRow();
    const char* const name = NextName();
    switch (random_.Below(6)) {
      case 0: {
        const bool bValue = random_.OneIn(2);
        set_.SetValue(name, bValue, row);
        return model_.Set(strName_, row, CQXRecordSet::QX_BOOL, bValue ? "1" : "0");
      }
      case 1: {
        const long lValue = static_cast<long>(random_.Below(100000)) - 50000;
        set_.SetValue(name, lValue, row);
        return model_.Set(strName_, row, CQXRecordSet::QX_LONG, std::to_string(lValue));
      }
      case 2: {
        const char* const szText = random_.Of(kObjects).szText;
        set_.SetValue(name, szText, row, CQXRecordSet::QX_RECORDSET);
        return model_.Set(strName_, row, CQXRecordSet::QX_RECORDSET, szText);
      }
      default: {
        const int eType = static_cast<int>(random_.Below(8)) - 1;
        const std::string text = Text();
        set_.SetValue(name, text.c_str(), row, static_cast<CQXRecordSet::QX_TYPE>(eType));
        return model_.Set(strName_, row, eType, text);
      }
    }
  }

  void Read() {
    const long row = NextRow();
    const char* const name = NextName();
    CheckText(set_.GetValueAsString(name, row), model_.Get(strName_, row));
  }

  void ReadLong() {
    const long row = NextRow();
    const long lValue = set_.GetValueAsLong(NextName(), row);
    const Item* const pItem = model_.Get(strName_, row);
    Expect(lValue == (pItem == nullptr ? 0 : std::strtol(pItem->strValue.c_str(), nullptr, 10)),
           "GetValueAsLong");
    Expect(set_.GetValueAsBool(strName_.c_str(), row) == (lValue != 0), "GetValueAsBool");
  }

  // Loads rows of texts, which also tells where the last one lies.
  void Load() {
    const std::uint32_t nRows = 1 + random_.Below(4);
    std::string strText;
    for (std::uint32_t i = 0; i < nRows; ++i) {
      strText += i == 0 ? "{" : ",{";
      for (std::uint32_t nMember = random_.Below(5); nMember > 0; --nMember) {
        const std::string text = Text();
        strText += Quoted(Name()) + ':' + Quoted(text) + (nMember > 1 ? "," : "");
        model_.Set(strName_, static_cast<long>(i) + 1, CQXRecordSet::QX_TEXT, text);
      }
      strText += '}';
    }
    model_.bModified = true;
    Expect(set_.SetString("{\"rows\":[" + strText + "]}"), "SetString");
  }

  // Copies, moves, assigns or clears the whole record set.
  void Replace() {
    switch (random_.Below(5)) {
      case 0: {
        CQXRecordSet copy(set_);
        Expect(copy.GetStringRef() == set_.GetStringRef(), "GetStringRef of a copy");
        model_.bModified = true;
        ForgetAddresses();
        set_ = std::move(copy);
        return;
      }
      case 1: {
        CQXRecordSet moved(std::move(set_));
        Expect(set_.GetString().empty(), "moved from is cleared");  // NOLINT: moved-from
        Expect(set_.GetColumnCount() == 0, "moved from has no columns");
        model_.bModified = true;
        set_ = std::move(moved);
        return;
      }
      case 2: {
        CQXRecordSet assigned("{\"gone\":1}");
        assigned = set_;
        model_.bModified = true;
        ForgetAddresses();
        set_ = std::move(assigned);
        return;
      }
      case 3:
        set_ = *&set_;
        model_.bModified = true;
        return;
      default:
        set_.Clear();
        model_ = Model();
    }
  }

  void CheckAll() {
    Expect(set_.GetRowsCount() == model_.lRowsCount, "GetRowsCount");
    Expect(set_.GetColumnCount() == static_cast<long>(model_.mapColumns.size()), "GetColumnCount");
    Expect(set_.GetString() == model_.Text(), "GetString");
    if (random_.OneIn(12)) {
      Expect(set_.Dump() == model_.Dump(), "Dump");
    }
    long position = 0;
    std::map<long, const char*> mapNames;
    for (const auto& [name, index] : model_.mapColumns) {
      Expect(set_.GetColumnName(position++) == name, "GetColumnName");
      Expect(set_.GetColumnIndex(name.c_str()) == index, "GetColumnIndex");
      mapNames[index] = name.c_str();
    }
    for (auto& [row, cells] : model_.mapRows) {
      for (auto& [index, item] : cells) {
        CheckText(set_.GetValueAsString(mapNames[index], row), &item);
      }
    }
  }

  void CheckText(const char* text, Item* pItem) {
    if (pItem == nullptr) {
      Expect(*text == '\0', "the text of an unknown column");
      return;
    }
    Expect(text == pItem->strValue, "GetValueAsString");
    if (pItem->pHandedOut != nullptr) {
      Expect(text == pItem->pHandedOut, "a text stays where it is");
    }
    pItem->pHandedOut = text;
  }

  void ForgetAddresses() {
    for (auto& [row, cells] : model_.mapRows) {
      for (auto& [index, item] : cells) {
        item.pHandedOut = nullptr;
      }
    }
  }

  long NextRow() {
    if (!profile_.vRows.empty()) return random_.Of(profile_.vRows);
    if (random_.OneIn(profile_.nColumns)) lRow_ += profile_.lStep;
    return random_.OneIn(10) ? profile_.lFirstRow : lRow_;
  }

  const std::string& Name() {
    strName_ = "c" + std::to_string(random_.Below(profile_.nColumns));
    if (random_.OneIn(200)) strName_ = "a name that is longer than sixteen bytes " + strName_;
    if (random_.OneIn(200)) strName_ = "";
    return strName_;
  }

  const char* NextName() {
    if (!profile_.bColumnsInOrder || random_.OneIn(8)) return Name().c_str();
    nColumn_ = (nColumn_ + 1) % profile_.nColumns;
    strName_ = "c" + std::to_string(nColumn_);
    return strName_.c_str();
  }

  std::string Text() {
    static const char* const kTexts[] = {"",  "0",   "1",   "x",  "true",
                                         "-", "007", "-12", " {", "\t{}"};
    if (random_.OneIn(3)) return random_.Of(kTexts);
    std::string text(random_.OneIn(30) ? random_.Below(700) : random_.Below(24), 'a');
    for (char& c : text) {
      c = "abc\"\\\n\x01\xC3 zyx"[random_.Below(12)];
    }
    return text;
  }

  std::string strFault_;  // the first thing that went wrong
  const Profile& profile_;
  Random random_;
  Model model_;
  CQXRecordSet set_;
  long lRow_;
  std::uint32_t nColumn_ = 0;
  std::string strName_;
};

Support::CellPlayer::CellPlayer(std::size_t nProfile, const Random& choices)
    : pPlayer(std::make_unique<Player>(kProfiles[nProfile % kProfileCount], choices)) {
  static_assert(std::size(kProfiles) == kProfileCount);
}
Support::CellPlayer::~CellPlayer() = default;
std::string Support::CellPlayer::Step() { return pPlayer->Play(); }
std::string Support::CellPlayer::CheckAll() { return pPlayer->CheckEverything(); }
bool Support::CellPlayer::UsedUp() const { return pPlayer->UsedUp(); }
