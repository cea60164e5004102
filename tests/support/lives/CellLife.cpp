// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// The life of a record set, beside a model that is nothing but nested maps.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <utility>

#include "json/JSONSerialize.h"
#include "recordset/QXRecordSet.h"
#include "tests/support/lives/Life.h"

namespace {

using CountedMemory::Aside;

struct Item {
  std::string strValue;
  int eType = CQXRecordSet::QX_NULL;
  const char* pHandedOut = nullptr;  // where the record set said the text is, if it was asked
};

// Texts that look like objects, and what they are written as; "" for one that is left out.
constexpr struct {
  const char* szText;
  const char* szWritten;
} kObjects[] = {{R"({"k":[1,2],"m":1.5,"n":null,"s":"v\n","f":false,"i":-0,"s":""})",
                 R"({"k":null,"m":null,"n":null,"s":"v\n","f":false,"i":0,"s":""})"},
                {R"(  {"o":{"i":007,"t":true,"k":{}}} )", R"({"o":{"i":7,"t":true,"k":{}}})"},
                {"{ \n \"a\" : 1 } {oops}", R"({"a":1})"},
                {"{oops}", ""},
                {"{}", "{}"}};

// Texts that do not, or mean something as a number or a boolean.
const char* const kTexts[] = {"",    "0",   "1",    "01",   "x",   "true",      "-",  "007",
                              "-0",  "-12", "+-3",  "1-2",  "0x1", "{",         " {", "   ",
                              "} {", "{}x", "\t{}", "{}\n", "[1]", " \v\f\r+2x"};

const char* const kNested[] = {"", R"({"y":"z","x":-5})", R"({"rows":[{"y":1},{"y":2}]})"};

std::string Quoted(const std::string& text) {
  std::string strEscaped;
  JSON::EscapeString(strEscaped, text.c_str());
  return '"' + strEscaped + '"';
}

// In the text of the record set; "" for a member that is left out.
std::string WrittenOf(const Item& item) {
  const std::string& text = item.strValue;
  for (const auto& object : kObjects) {
    if (text == object.szText) return object.szWritten;
  }
  if (text.compare(0, 9, "{\"rows\":[") == 0) return R"({"rows":null})";
  if (text.compare(0, 2, "{\"") == 0) return text;  // a record set's
  if (item.eType == CQXRecordSet::QX_NULL) return "null";
  if (item.eType == CQXRecordSet::QX_BOOL) return text == "1" ? "true" : "false";
  if (item.eType != CQXRecordSet::QX_LONG) return Quoted(text);
  return std::to_string(std::strtol(text.c_str(), nullptr, 10));
}

// Every other name is of any length and differs from others in one byte.
std::string NameOf(std::uint32_t n) {
  if (n % 2 != 0) return 'c' + std::to_string(n);
  std::string name(n * 7 % 41, 'n');
  if (!name.empty()) name[n % name.size()] = "AZ\"\x01\x7F\x80\xFF"[n % 7];
  return name;
}

struct Model {
  long lRowsCount = 0;
  bool bModified = false;
  std::string strBuilt;  // the text last built
  std::map<std::string, long> mapColumns;
  std::map<long, std::map<std::string, Item>> mapRows;

  void Set(const std::string& name, long row, int eType, const std::string& text) {
    const Aside aside;
    AddColumn(name);
    mapRows[row][name] = {text, eType};
    lRowsCount = std::max(lRowsCount, row);
    bModified = true;
  }

  long AddColumn(const std::string& name) {
    const Aside aside;
    return mapColumns.try_emplace(name, static_cast<long>(mapColumns.size()) + 1).first->second;
  }

  // The cell that a read finds or makes; null for an unknown column.
  Item* Get(const std::string& name, long row) {
    const Aside aside;
    return mapColumns.count(name) != 0 ? &mapRows[row][name] : nullptr;
  }

  std::string RowText(long row) const {
    std::string strText;
    const auto cells = mapRows.find(row);
    if (cells == mapRows.end() || row > lRowsCount) return "{}";
    for (const auto& [name, item] : cells->second) {
      const std::string strWritten = WrittenOf(item);
      if (!strWritten.empty()) strText += ',' + Quoted(name) + ':' + strWritten;
    }
    return '{' + (strText.empty() ? strText : strText.substr(1)) + '}';
  }

  std::string Text() const {
    if (!bModified) return "";
    if (lRowsCount < 2) return RowText(1);
    std::string strText = "{\"rows\":[" + RowText(1);
    for (long row = 2; row <= lRowsCount; ++row)
      strText += ',' + RowText(row);
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
          const auto cell = cells->second.find(name);
          strDump += ' ' + (cell != cells->second.end() ? cell->second.strValue : "");
        }
        strDump += '\n';
      }
    }
    return strDump;
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

class RecordSetLife : public Support::Life {
 public:
  RecordSetLife(Support::World& common, const Profile& profile)
      : Life(common), profile_(profile), lRow_(profile.lFirstRow) {}

  std::string CheckAll() override {
    CheckString();
    CheckNulls();
    if (random.OneIn(12)) Expect(set_.Dump() == model_.Dump(), "Dump");
    const long lColumns = static_cast<long>(model_.mapColumns.size());
    Expect(set_.GetRowsCount() == model_.lRowsCount, "GetRowsCount");
    Expect(set_.GetColumnCount() == lColumns, "GetColumnCount");
    for (const long lBeyond : {lColumns, LONG_MAX, -1L, LONG_MIN})
      Expect(*set_.GetColumnName(lBeyond) == '\0', "the name at no position");
    long position = 0;
    for (const auto& [name, index] : model_.mapColumns) {
      Expect(set_.GetColumnName(position++) == name, "GetColumnName");
      Expect(set_.GetColumnIndex(name.c_str()) == index, "GetColumnIndex");
    }
    std::size_t nListed = 0;
    for (auto& [row, cells] : model_.mapRows) {
      if (row >= 1 && row <= model_.lRowsCount) nListed += cells.size();
      for (auto& [name, item] : cells) {
        CheckConst(name, row, &item);
        CheckText(set_.GetValueAsString(name.c_str(), row), &item);
      }
    }
    for (const CQXRow& row : std::as_const(set_).Rows()) {
      long lBefore = 0;
      for (const CQXCell& cell : row) {
        Expect(std::exchange(lBefore, cell.lColumn) < cell.lColumn, "the order of cells");
        const Item* const pItem = model_.Get(std::string(cell.name), row.Number());
        Expect(pItem != nullptr && pItem->strValue == cell.text && pItem->eType == cell.eType &&
                   set_.GetColumnIndex(cell.name) == cell.lColumn,
               "what is listed");
        --nListed;
      }
    }
    Expect(nListed == 0, "every cell is listed once");
    return strFault;
  }

 private:
  void TakeOne() override {
    static const Named<RecordSetLife> kSteps[] = {
        {"write a cell", &RecordSetLife::Write, 1600},
        {"read a cell", &RecordSetLife::ReadCell, 320},
        {"read a cell otherwise", &RecordSetLife::ReadOtherwise, 160},
        {"add a column", &RecordSetLife::AddColumn, 160},
        {"load a text", &RecordSetLife::Load, 156},
        {"to another one and back", &RecordSetLife::Exchange, 3},
        {"assign itself", &RecordSetLife::AssignItself, 1},
        {"clear", &RecordSetLife::ClearAndCopy, 1},
        {"compare everything", &RecordSetLife::CheckNow, 8},
    };
    (this->*Choose("record set", kSteps).take)();
  }

  void CheckNow() { CheckAll(); }
  void ReadCell() { Read(); }

  // ---- Comparisons ------------------------------------------------------------------------------

  void CheckString() {
    Expect(set_.GetStringRef() == model_.strBuilt, "GetStringRef");
    {
      const Aside aside;
      model_.strBuilt = model_.Text();
    }
    Expect(set_.GetString() == model_.strBuilt, "GetString");
  }

  // Null pointers and unknown names change nothing.
  void CheckNulls() {
    set_.SetValue("none", static_cast<const char*>(nullptr));
    set_.SetValue("none", static_cast<CQXRecordSet*>(nullptr));
    set_.SetValue(nullptr, "none");
    Expect(set_.AddColumn(nullptr) == -1 && set_.GetColumnIndex(nullptr) == -1, "null as a name");
    Expect(set_.GetColumnIndex("none") == -1, "GetColumnIndex of no column");
    Expect(*set_.GetValueAsString(nullptr) == '\0', "the text of a null name");
  }

  void CheckText(const char* text, Item* pItem) {
    if (pItem == nullptr) return Expect(*text == '\0', "the text of an unknown column");
    Expect(text == pItem->strValue, "GetValueAsString");
    const bool bStays = pItem->pHandedOut == nullptr || text == pItem->pHandedOut;
    Expect(bStays, "a text stays where it is");
    pItem->pHandedOut = text;
  }

  // What reads a constant makes no cell.
  void CheckConst(const std::string& name, long row, const Item* pItem) {
    const CQXRecordSet& read = set_;
    Expect(read.HasCell(name, row) == (pItem != nullptr), "HasCell");
    Expect(read.GetType(name, row) == (pItem != nullptr ? pItem->eType : CQXRecordSet::QX_NULL),
           "GetType");
    Expect(read.GetView(name, row) == (pItem != nullptr ? pItem->strValue : ""), "GetView");
  }

  void ExpectCleared(CQXRecordSet& set) {
    Expect(set.GetRowsCount() == 0 && set.GetColumnCount() == 0, "counts when cleared");
    Expect(set.GetStringRef().empty() && set.GetString().empty(), "the text when cleared");
    Expect(set.Dump().empty(), "Dump when cleared");
  }

  // ---- Names, rows and texts --------------------------------------------------------------------

  long NextRow() {
    if (!profile_.vRows.empty()) return random.Of(profile_.vRows);
    if (random.OneIn(profile_.nColumns)) lRow_ += profile_.lStep;
    return random.OneIn(10) ? profile_.lFirstRow : lRow_;
  }

  const std::string& Name() { return strName_ = NameOf(random.Below(profile_.nColumns)); }

  const char* NextName() {
    if (!profile_.bColumnsInOrder || random.OneIn(8)) return Name().c_str();
    nColumn_ = (nColumn_ + 1) % profile_.nColumns;
    strName_ = NameOf(nColumn_);
    return strName_.c_str();
  }

  std::string Text() {
    if (random.OneIn(3)) return random.Of(kTexts);
    std::string text(random.OneIn(30) ? world.Size() : random.Below(24), 'a');
    for (char& c : text)
      c = "abc\"\\\n\x01\xC3 zyx"[random.Below(12)];
    return text;
  }

  // ---- Cells ------------------------------------------------------------------------------------

  // A value of some type under a name; see kWays.
  struct Written {
    const char* name;
    long row;
    std::string text;    // what the cell holds then
    const char* pGiven;  // where the text is given from
    int eType = CQXRecordSet::QX_TEXT;
  };

  template <typename Number>
  void WriteNumber(Written& written, Number n) {
    set_.SetValue(written.name, n, written.row);
    written.text = std::to_string(n);
    written.eType = CQXRecordSet::QX_LONG;
  }
  void WriteInt(Written& w) { WriteNumber(w, static_cast<int>(random.Below(100000)) - 50000); }
  void WriteLong(Written& w) { WriteNumber(w, random.OneIn(2) ? LONG_MIN : LONG_MAX); }
  void WriteBool(Written& w) {
    w.text = random.OneIn(2) ? "1" : "0";
    w.eType = CQXRecordSet::QX_BOOL;
    set_.SetValue(w.name, w.text == "1", w.row);
  }
  void WriteUpToNul(Written& w) { set_.SetValue(w.name, w.text + '\0' + w.text, w.row); }
  void WriteObject(Written& w) {
    w.text = random.Of(kObjects).szText;
    w.eType = CQXRecordSet::QX_RECORDSET;
    set_.SetValue(w.name, w.text.c_str(), w.row, CQXRecordSet::QX_RECORDSET);
  }
  // Another record set as a cell, or this one in itself.
  void WriteNested(Written& w) {
    CQXRecordSet inner;
    if (!random.OneIn(4)) inner = random.Of(kNested);
    const bool bSelf = random.OneIn(10) && model_.Text().size() < 2000;
    if (bSelf) CheckString();
    set_.SetValue(w.name, bSelf ? set_ : inner, w.row);
    w.text = bSelf ? model_.strBuilt : inner.GetStringRef();
    w.eType = CQXRecordSet::QX_RECORDSET;
  }
  void WriteOfAnyType(Written& w) {
    w.eType = static_cast<int>(random.Below(8)) - 1;
    set_.SetValue(w.name, w.pGiven, w.row, static_cast<CQXRecordSet::QX_TYPE>(w.eType));
  }

  void Write() {
    using Self = RecordSetLife;
    constexpr auto kOfAnyType = &Self::WriteOfAnyType;
    static constexpr void (Self::*kWays[])(Written&) = {
        &Self::WriteInt,    &Self::WriteLong,   &Self::WriteBool, &Self::WriteUpToNul,
        &Self::WriteObject, &Self::WriteNested, kOfAnyType,       kOfAnyType,
        kOfAnyType,         kOfAnyType};
    // A text of the record set itself, or the end of one, is as good as any.
    const bool bOwnText = random.OneIn(20);
    const char* pText = bOwnText ? Read() : "";
    if (std::strchr(pText, '{') == nullptr) pText += random.Below(std::strlen(pText) + 1);
    const long row = NextRow();
    Written written{NextName(), row, bOwnText ? pText : Text(), pText};
    if (!bOwnText) written.pGiven = written.text.c_str();
    (this->*(bOwnText ? kOfAnyType : random.Of(kWays)))(written);
    model_.Set(strName_, row, written.eType, written.text);
  }

  void AddColumn() {
    const char* const name = random.OneIn(8) ? Read() : Name().c_str();
    const long lExpected = model_.AddColumn(name);
    Expect(set_.AddColumn(name) == lExpected, "AddColumn");
    if (!model_.bModified) CheckString();
  }

  const char* Read() {
    const long row = NextRow();
    const char* const text = set_.GetValueAsString(NextName(), row);
    CheckText(text, model_.Get(strName_, row));
    return text;
  }

  void ReadOtherwise() {
    const long row = NextRow();
    const char* const name = NextName();
    const auto cells = model_.mapRows.find(row);
    const bool bThere = cells != model_.mapRows.end() && cells->second.count(name) != 0;
    CheckConst(name, row, bThere ? &cells->second[name] : nullptr);
    const Item* const pItem = model_.Get(strName_, row);
    const std::string text = pItem != nullptr ? pItem->strValue : "";
    const long lExpected = std::strtol(text.c_str(), nullptr, 10);
    Expect(set_.GetValueAsLong(name, row) == lExpected, "GetValueAsLong");
    Expect(set_.GetValueAsBool(name, row) == (lExpected != 0), "GetValueAsBool");
    std::string strCopy = "old";
    set_.GetValueAsStringUTF8(strCopy, name, row);
    Expect(strCopy == text, "GetValueAsStringUTF8");
    Expect(set_.GetValueAsRecordSet(name, row).GetString() == CQXRecordSet(text).GetString(),
           "GetValueAsRecordSet");
  }

  // ---- All of it --------------------------------------------------------------------------------

  // Loads rows of texts, which also tells where the last one lies, or what cannot be loaded.
  void Load() {
    static const char* const kRefused[] = {"", "{\"c1\":7", "[{\"c1\":7}]", nullptr};
    model_.bModified = true;
    if (random.OneIn(10)) return Expect(set_.SetString(random.Of(kRefused)), "SetString");
    const std::uint32_t nRows = 1 + random.Below(4);
    std::string strText;
    for (std::uint32_t i = 0; i < nRows; ++i) {
      strText += i == 0 ? "{" : ",{";
      for (std::uint32_t nMember = random.Below(5); nMember > 0; --nMember) {
        const std::string text = Text();
        strText += Quoted(Name()) + ':' + Quoted(text) + (nMember > 1 ? "," : "");
        model_.Set(strName_, static_cast<long>(i) + 1, CQXRecordSet::QX_TEXT, text);
      }
      strText += '}';
    }
    Expect(set_.SetUTF8String("{\"rows\":[" + strText + "]}"), "SetUTF8String");
  }

  void Clear() {
    const Aside aside;
    set_.Clear();
    model_ = Model();
  }
  void ClearAndCopy() {
    Clear();
    CQXRecordSet copy(set_);
    ExpectCleared(copy);
    ExpectCleared(set_);
    copy = set_;
    Expect(copy.GetString() == "{}", "what was assigned counts as written");
    CheckAll();
  }

  // A construction takes over the state and the last text, an assignment does not.
  void Exchange() {
    CQXRecordSet other("{\"gone\":1}");
    other.GetString();
    const std::uint32_t nWay = random.Below(3);
    if (nWay == 2) {
      other = set_;
    } else {
      CQXRecordSet made(nWay == 0 ? CQXRecordSet(set_) : std::move(set_));
      if (nWay != 0) ExpectCleared(set_);  // NOLINT: moved-from
      Expect(made.GetStringRef() == model_.strBuilt, "GetStringRef of what was constructed");
      Expect(CQXRecordSet(made).GetString() == model_.Text(), "GetString of a copy");
      other = std::move(made);
      ExpectCleared(made);  // NOLINT: moved-from
    }
    Expect(other.GetStringRef().empty(), "GetStringRef of what was assigned");
    for (auto& [row, cells] : model_.mapRows) {
      for (auto& [name, item] : cells)
        item.pHandedOut = nWay == 1 ? item.pHandedOut : nullptr;
    }
    set_ = std::move(other);
    Rewritten();
  }
  void AssignItself() {
    if (random.OneIn(2)) set_ = *&set_;
    if (random.OneIn(2)) set_ = std::move(*&set_);
    set_ = *&set_;
    Rewritten();
  }
  void Rewritten() {
    model_.bModified = true;
    model_.strBuilt.clear();
    CheckAll();
  }

  const Profile& profile_;
  Model model_;
  CQXRecordSet set_;
  long lRow_;
  std::uint32_t nColumn_ = 0;
  std::string strName_;
};

}  // namespace

std::unique_ptr<Support::Life> Support::MakeRecordSetLife(World& common, std::size_t nProfile) {
  static_assert(std::size(kProfiles) == kRecordSetProfiles);
  return std::make_unique<RecordSetLife>(common, kProfiles[nProfile % kRecordSetProfiles]);
}
