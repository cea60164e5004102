// Part of libQXRecordSet. MIT licence, see LICENSE.
//
// Columns, what is expected of them and their order: few and many, added in every order, removed
// and added again.

#include "recordset/Columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "recordset/ColumnOrder.h"
#include "recordset/ExpectedColumn.h"
#include "tests/support/Random.h"

namespace {

using recordset::Column;
using Names = std::vector<std::string>;

Names Numbered(int nCount, const std::string& strPrefix, bool bShuffled) {
  Names names;
  for (int i = 0; i < nCount; ++i)
    names.push_back(strPrefix + std::to_string(1000 + i));
  Support::Random random(1);
  for (std::size_t i = names.size(); i > 1 && bShuffled; --i)
    std::swap(names[i - 1], names[random.Below(i)]);
  return names;
}

struct Fixture {
  recordset::TextStore texts;
  recordset::Columns columns{texts};
  recordset::ColumnOrder order;

  void Reset() {
    texts.Reset();
    columns.Reset();
    order.Reset();
  }
};

// Each list crosses the number from which on names are hashed (16), and those where the table
// grows.
const Names kLists[] = {
    Numbered(200, "n", false),
    Numbered(200, "n", true),
    Numbered(200, "a name that is longer than sixteen bytes ", true),
    {"\xFF", "b\"", "", "a\x01", "A", "\x80", "a", "b"},
};

TEST(Columns, FindEveryNameAndNoOther) {
  for (const Names& names : kLists) {
    SCOPED_TRACE(names[0]);
    Fixture fixture;
    recordset::Columns& columns = fixture.columns;
    for (int nTime = 0; nTime < 2; ++nTime, fixture.Reset()) {
      Names sorted;
      for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string& name = names[i];
        ASSERT_EQ(columns.Find(name), nullptr);
        const Column& column = columns.FindOrAdd(name);
        ASSERT_TRUE(column.Index() == i + 1 && columns.Count() == i + 1);
        ASSERT_EQ(std::string(column.name.Text(), name.size() + 1), name + '\0');
        ASSERT_EQ(column.bPlainName, name.find_first_of("\"\x01") == std::string::npos);
        ASSERT_EQ(&columns.FindOrAdd(names[i / 2]), columns.Find(names[i / 2]));
        sorted.push_back(name);
        if (i % 7 != 0 && i % 50 > 5) continue;  // one by one, and several at a time
        std::sort(sorted.begin(), sorted.end());
        Names listed;
        for (const Column* const pColumn : fixture.order.Of(columns))
          listed.emplace_back(pColumn->Name());
        ASSERT_EQ(listed, sorted);
      }
      const Column* pColumn = columns.First();
      for (const std::string& name : names) {
        ASSERT_EQ(columns.Find(name), pColumn);
        pColumn = pColumn->pBehind;
      }
    }
    EXPECT_EQ(columns.Find(names[0]), nullptr) << "removed";
  }
}

// A column that was removed is added again by one comparison, in the order of the time before only,
// and not when its name is long.
TEST(Columns, ComeAgainInTheSameOrder) {
  Fixture fixture;
  recordset::Columns& columns = fixture.columns;
  const auto again = [&columns](std::string text) {
    text.append(16, ' ');
    return columns.AddAgain(text.data(), text.data() + text.size());
  };
  Names names = Numbered(40, "n", false);
  names.emplace_back("fifteen bytes..");
  for (const std::string& name : names)
    columns.FindOrAdd(name);
  names.pop_back();
  EXPECT_EQ(again("n1000\":"), nullptr) << "it is there";
  for (int nTime = 0; nTime < 2; ++nTime) {
    fixture.Reset();
    EXPECT_EQ(again("n1001\":"), nullptr) << "the second";
    for (const std::string& name : names) {
      EXPECT_EQ(again(name + "\" :"), nullptr) << "no colon behind the quote";
      const Column* const pColumn = again(name + "\":");
      ASSERT_TRUE(pColumn != nullptr && pColumn->Name() == name) << name;
      EXPECT_EQ(columns.Find(name), pColumn);
    }
    EXPECT_EQ(again("fifteen bytes..\":"), nullptr);
  }
  fixture.Reset();
  EXPECT_NE(again("n1000\":"), nullptr);
  columns.FindOrAdd("another");
  EXPECT_EQ(again("n1002\":"), nullptr) << "behind another column nothing is remembered";
}

// After one round, every column is expected behind the one before it; each user has its own order.
TEST(ExpectedColumn, IsTheOneThatFollowedTheLastTime) {
  Fixture fixture;
  recordset::ExpectedColumn<Column::kHost> host;
  recordset::ExpectedColumn<Column::kText> text;
  const Names names = Numbered(30, "n", false);
  const Names asked = Numbered(30, "n", true);
  for (const std::string& name : names)
    text.Learn(fixture.columns.FindOrAdd(name));
  for (int nRound = 0; nRound < 3; ++nRound) {
    for (std::size_t i = 0; i < names.size(); ++i) {
      const Column* const pColumn = text.Accept(std::string_view(names[i]));
      ASSERT_TRUE(pColumn != nullptr && pColumn->Name() == names[i]) << "in the order of addition";
      EXPECT_EQ(text.Accept(std::string_view(names[i])), nullptr) << "another one is due";
      const bool bExpected = host.Accept(asked[i].c_str()) != nullptr;
      EXPECT_TRUE(bExpected || nRound == 0 || (nRound == 1 && i == 0)) << nRound << ' ' << i;
      if (!bExpected) host.Learn(*fixture.columns.Find(asked[i]));
    }
  }
  host.Forget();
  EXPECT_EQ(host.Accept(asked[0].c_str()), nullptr);
}

}  // namespace
