// SPDX-License-Identifier: MIT
// The vertex tables against std::map models under seeded random operations, and their oddities.
#include <gtest/gtest.h>

#include <list>
#include <map>
#include <optional>
#include <random>

#include "knotwork/geometry/vert_data_index_table.h"
#include "knotwork/geometry/vert_index_table.h"
#include "support/failing_new.h"

namespace {

using Model = std::map<int, std::list<int>>;  // key -> data, newest first

Model contents(TvertDataIndexTable& table) {
  Model all;
  for (TvertDataIndexTable::Iterator it(table); !it.isDone(); it.next()) {
    all[it.key()].push_back(it.data());
  }
  return all;
}

// One random operation on table and model, with equal results.
void step(std::mt19937& random, TvertDataIndexTable& table, Model& model, bool shrinking) {
  // Squares share low bits, so buckets meet when the table shrinks; threes share them at any size.
  const int root = static_cast<int>(random() % 97);
  const int key = root * root - 4000 + static_cast<int>(random() % 3) * 0x20000000;
  const int data = static_cast<int>(random());
  const auto choice = random() % 8 + (shrinking ? 3 : 0);
  std::list<int>& entries = model[key];
  const bool known = !entries.empty();
  if (choice < 4) {
    ASSERT_TRUE(table.insert(key, data));
    entries.push_front(data);
  } else if (choice == 4) {
    ASSERT_NE(table.insertUnique(key, data), known);
    if (!known) entries.push_front(data);
  } else if (choice == 5) {
    ASSERT_TRUE(table.insertReplace(key, data));
    entries.resize(known ? entries.size() : 1);
    entries.front() = data;
  } else {
    ASSERT_EQ(table.remove(key), known);
    if (known) entries.pop_front();
  }
  int found = 5;
  ASSERT_NE(table.find(key, found), entries.empty());
  ASSERT_EQ(found, entries.empty() ? 5 : entries.front());
  if (entries.empty()) model.erase(key);
}

}  // namespace

TEST(VertDataIndexTable, FollowsItsModelWhileGrowingAndShrinking) {
  for (const unsigned initial : {0U, 5U, 64U}) {
    std::mt19937 random(20240607U + initial);
    TvertDataIndexTable table(initial, initial == 5 ? 32 : 0xFFFFFFFFU);
    Model model;
    for (int i = 0; i < 40000; ++i) {
      ASSERT_NO_FATAL_FAILURE(step(random, table, model, i / 5000 % 2));
      if (i % 1000 == 0) {
        ASSERT_EQ(contents(table), model);
      }
    }
    TvertDataIndexTable copy(table), assigned(16, 16);
    EXPECT_TRUE(assigned.insert(1, 2));
    assigned = table;
    table.reset();
    EXPECT_EQ(contents(table), Model{});
    EXPECT_EQ(contents(copy), model);
    EXPECT_EQ(contents(assigned = assigned), model);
  }
}

TEST(VertDataIndexTable, KeyIteratorWalksNewestFirstAndRemoves) {
  TvertDataIndexTable table;
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(table.insert(i % 7 - 3, i));
  TvertDataIndexTable::KeyIterator it(table, -2);
  for (int i = 995; i >= 1; i -= 7) {
    ASSERT_EQ(*it.data(), i);
    EXPECT_TRUE(i % 2 ? it.removeThenNext() : it.next());
  }
  int untouched = 4;
  EXPECT_TRUE(it.isDone() && !it.next() && !it.removeThenNext() && !it.getData(untouched));
  EXPECT_TRUE(untouched == 4 && it.data() == nullptr);
  EXPECT_TRUE(it.first(-2) && *it.data() == 988);
  EXPECT_TRUE(TvertDataIndexTable::KeyIterator(table, 99).isDone());
}

TEST(VertDataIndexTable, RemovingWhileIteratingLeavesTheRest) {
  TvertDataIndexTable table, doubled;
  Model model;
  for (int i = 0; i < 8000; ++i) {  // doubling it makes the table grow
    EXPECT_TRUE(table.insert(i * 37, i));
    if (i % 3) model[i * 37] = {i};
  }
  TvertDataIndexTable::Iterator it(table);
  while (!it.isDone()) it.data() % 3 ? it.next() : it.removeThenNext();
  it.appendAllTo(doubled);
  it.appendAllTo(table);
  EXPECT_TRUE(it.isDone());
  EXPECT_EQ(contents(doubled), model);
  for (auto& [key, data] : model) data.push_front(data.front());
  EXPECT_EQ(contents(table), model);
  for (it.first(); it.removeThenNext();) {
  }
  EXPECT_EQ(contents(table), Model{});
}

TEST(VertIndexTable, CountsDuplicatesAndNegativeKeys) {
  constexpr int least = -2147483647 - 1;
  TvertIndexTable table;
  for (const int key : {7, -7, 7, least, 0}) EXPECT_TRUE(table.insert(key));
  EXPECT_EQ(table.keyCount(7), 2U);
  EXPECT_TRUE(!table.insertUnique(7) && table.insertUnique(8));
  EXPECT_TRUE(table.remove(7) && table.keyCount(7) == 1);
  EXPECT_TRUE(table.find(least) && table.find(-7) && !table.find(9) && !table.remove(9));
  TvertIndexTable::Iterator it(table), second(it);
  int key = 0, sum = 0;
  for (; second.getKey(key); second.next()) sum += key == second.key();
  EXPECT_EQ(sum, 5);
}

TEST(VertIndexTable, EveryFailingAllocationIsToldAndHarmless) {
  if (!knotwork::test::canObserveAllocation()) GTEST_SKIP() << "operator new is the library's own";
  const auto entries = [](TvertIndexTable& table) {
    unsigned walked = 0;
    for (TvertIndexTable::Iterator it(table); !it.isDone(); it.next())
      walked += table.find(it.key());
    return walked;
  };
  TvertIndexTable other;
  EXPECT_TRUE(other.insert(-1));
  std::optional<TvertIndexTable> table, copy, assigned;
  unsigned made = 0;
  knotwork::test::failEveryAllocation(
      [&] {
        table.emplace(4, 64);
        made = 0;
        for (int key = 0; key < 30; ++key) made += table->insert(key);
        copy.emplace(*table);
        assigned.emplace(other) = *table;
      },
      [&] {
        EXPECT_EQ(entries(*table), made);
        EXPECT_TRUE(entries(*copy) == made || entries(*copy) == 0);
        EXPECT_TRUE(entries(*assigned) == made || entries(*assigned) <= 1);
      });
  EXPECT_TRUE(made == 30 && entries(*copy) == 30);
}
