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
using recordset::ColumnOrder;
using recordset::Columns;
using recordset::TextStore;
using Names = std::vector<std::string>;

Names Numbered(int nCount, const std::string& strPrefix) {
  Names names;
  for (int i = 0; i < nCount; ++i) {
    names.push_back(strPrefix + std::to_string(1000 + i));
  }
  return names;
}

Names Shuffled(Names names) {
  Support::Random random(1);
  for (std::size_t i = names.size(); i > 1; --i) {
    std::swap(names[i - 1], names[random.Below(i)]);
  }
  return names;
}

struct Fixture {
  TextStore texts;
  Columns columns{texts};
  ColumnOrder order;

  void Reset() {
    texts.Reset();
    columns.Reset();
    order.Reset();
  }
};

// Each list crosses the number from which on names are hashed (16), and those where the table
// grows.
const struct {
  const char* szName;
  Names names;
} kLists[] = {
    {"ascending", Numbered(200, "n")},
    {"mixed", Shuffled(Numbered(200, "n"))},
    {"of more than a block", Shuffled(Numbered(200, "a name that is longer than sixteen bytes "))},
    {"with high bytes, escapes, and empty", {"\xFF", "b\"", "", "a\x01", "A", "\x80", "a", "b"}},
};

TEST(Columns, FindEveryNameAndNoOther) {
  for (const auto& [szName, names] : kLists) {
    SCOPED_TRACE(szName);
    Fixture fixture;
    Columns& columns = fixture.columns;
    Names sorted;
    for (int nTime = 0; nTime < 2; ++nTime, fixture.Reset(), sorted.clear()) {
      for (std::size_t i = 0; i < names.size(); ++i) {
        ASSERT_EQ(columns.Find(names[i]), nullptr);
        const Column& column = columns.FindOrAdd(names[i]);
        ASSERT_EQ(column.Index(), i + 1);
        ASSERT_EQ(column.Name(), names[i]);
        ASSERT_EQ(column.name.Text()[names[i].size()], '\0');
        ASSERT_EQ(column.bPlainName, names[i].find_first_of("\"\x01") == std::string::npos);
        ASSERT_EQ(&columns.FindOrAdd(names[i / 2]), columns.Find(names[i / 2]));
        ASSERT_EQ(columns.Count(), i + 1);
        sorted.push_back(names[i]);
        if (i % 7 != 0 && i % 50 > 5) continue;  // one by one, and several at a time
        std::sort(sorted.begin(), sorted.end());
        Names listed;
        for (const Column* const pColumn : fixture.order.Of(columns)) {
          listed.emplace_back(pColumn->Name());
        }
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
  Columns& columns = fixture.columns;
  const auto again = [&columns](std::string text) {
    text.append(16, ' ');
    return columns.AddAgain(text.data(), text.data() + text.size());
  };
  const Names names = Numbered(40, "n");
  for (const std::string& name : names) {
    columns.FindOrAdd(name);
  }
  columns.FindOrAdd("fifteen bytes..");
  EXPECT_EQ(again("n1000\":"), nullptr) << "it is there";
  for (int nTime = 0; nTime < 2; ++nTime) {
    fixture.Reset();
    EXPECT_EQ(again("n1001\":"), nullptr) << "the second";
    for (const std::string& name : names) {
      EXPECT_EQ(again(name + "\" :"), nullptr) << "no colon behind the quote";
      const Column* const pColumn = again(name + "\":");
      ASSERT_NE(pColumn, nullptr) << name;
      EXPECT_EQ(pColumn->Name(), name);
      EXPECT_EQ(columns.Find(name), pColumn);
    }
    EXPECT_EQ(again("fifteen bytes..\":"), nullptr);
    EXPECT_EQ(columns.Count(), names.size());
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
  const Names names = Numbered(30, "n");
  const Names asked = Shuffled(names);
  for (const std::string& name : names) {
    text.Learn(fixture.columns.FindOrAdd(name));
  }
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
  EXPECT_EQ(host.Get(), nullptr);
  EXPECT_EQ(host.Accept(asked[0].c_str()), nullptr);
}

}  // namespace
