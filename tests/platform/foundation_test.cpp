// SPDX-License-Identifier: MIT
// The foundation stand-in: shared text, type records and exceptions.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <list>
#include <map>
#include <random>

#include "knotwork/platform/foundation/hash_table_iterator.h"
#include "knotwork/platform/foundation/memory_exception.h"
#include "knotwork/platform/foundation/string.h"

TEST(String, ShortestDecimalReadsBackTheSame) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 2000; ++i) {
    const double value =
        std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 2000) - 1050);
    EXPECT_EQ(std::strtod(Tstring().setDouble(value).asChar(), nullptr), value);
  }
  EXPECT_STREQ(Tstring().setDouble(0.1).asChar(), "0.1");
  EXPECT_STREQ(Tstring("x").setDouble(37.5).asChar(), "37.5");
  EXPECT_STREQ(Tstring().setDouble(-std::numeric_limits<double>::infinity()).asChar(), "-inf");
}

TEST(String, CopiesKeepTheirTextWhenTheOriginalChanges) {
  Tstring text("Constraint solving ... ");
  const Tstring copy(text);
  EXPECT_EQ(copy.asChar(), text.asChar());
  text += Tstring().setDouble(50);
  EXPECT_STREQ((text += " completed.").asChar(), "Constraint solving ... 50 completed.");
  EXPECT_STREQ(copy.asChar(), "Constraint solving ... ");
  const Tstring& itself = text;
  text = itself;
  EXPECT_EQ(text.length(), 36U);
  EXPECT_TRUE(Tstring(nullptr) == Tstring("") && !(text == copy));
}

TEST(Metaclass, FindsAncestorsOverSeveralSteps) {
  const Tmetaclass other("Other", {}, nullptr);
  const Tmetaclass made("Made", {&other, &TmemoryExceptionTmeta},
                        []() -> void* { return new Tstring("made"); });
  EXPECT_TRUE(Tmetaclass::istype(&made, TexceptionTmeta) && Tmetaclass::istype(&made, other));
  EXPECT_FALSE(Tmetaclass::istype(&other, made) || Tmetaclass::istype(nullptr, other));
  auto* const text = static_cast<Tstring*>(Tmetaclass::construct(&made));
  EXPECT_STREQ(text->asChar(), "made");
  delete text;
  EXPECT_EQ(Tmetaclass::construct(&TexceptionTmeta), nullptr);
}

TEST(Exception, CastsAndCachesByType) {
  try {
    throw TmemoryException();
  } catch (Texception& e) {
    EXPECT_EQ(e.typeof(), &TmemoryExceptionTmeta);
    EXPECT_NE(e.cast(&TexceptionTmeta), nullptr);
    EXPECT_EQ(e.cast(nullptr), nullptr);
    Texception* const kept = e.cache();
    EXPECT_TRUE(kept != &e && kept->cache() == kept && kept->cast(&TmemoryExceptionTmeta));
  }
}

namespace {

struct OpenTable : ThashTable {
  using ThashTable::bucketCount_;
  using ThashTable::buckets_;
  using ThashTable::entryCount_;
  using ThashTable::insertWithHash;
  using ThashTable::reinitializeTable;
  using ThashTable::shrinkTable;
  using ThashTable::ThashTable;
};

struct OpenIterator : ThashTableIterator {
  using ThashTableIterator::_first;
  using ThashTableIterator::_next;
  using ThashTableIterator::_remove;
  using ThashTableIterator::bucket_;
  using ThashTableIterator::current_;
  using ThashTableIterator::ThashTableIterator;
};

// What the table says it holds: the entries of each hash, in the order of its chain.
std::map<unsigned, std::list<ThashTableEntry*>> contents(OpenTable& table) {
  std::map<unsigned, std::list<ThashTableEntry*>> all;
  unsigned count = 0;
  OpenIterator it(table);
  for (bool more = it._first(); more; more = it._next(), ++count) {
    EXPECT_EQ(it.bucket_, it.current_->hash & (table.bucketCount_ - 1));
    all[it.current_->hash].push_back(it.current_);
  }
  EXPECT_TRUE(count == table.entryCount_ && it.current_ == nullptr && !it._next());
  return all;
}

}  // namespace

TEST(HashTable, GrowsAndShrinksByItsRuleAndKeepsEveryChainsOrder) {
  for (const unsigned initial : {0U, 1U, 2U, 5U, 64U}) {
    for (const unsigned maximum : {0U, 32U, 0xFFFFFFFFU}) {
      std::mt19937 random(20240607U + initial + maximum);
      OpenTable table(initial, maximum);
      const unsigned least = std::bit_ceil(initial);
      unsigned buckets = least, entries = 0;
      std::map<unsigned, std::list<ThashTableEntry*>> model;
      std::list<ThashTableEntry> made;
      for (int i = 0; i < 6000; ++i) {
        const bool growing = i / 1000 % 2 == 0;
        if (random() % 8 < (growing ? 6U : 2U)) {
          const auto hash = static_cast<unsigned>(random() % 64 * (random() % 2 ? 1 : 0x01000001));
          ASSERT_TRUE(table.insertWithHash(&made.emplace_back(), hash));
          model[hash].push_front(&made.back());
          if (++entries > buckets && 2 * buckets <= maximum) buckets *= 2;
        } else if (OpenIterator it(table); it._first()) {
          std::list<ThashTableEntry*>& same = model[it.current_->hash];
          ASSERT_EQ(same.front(), it.current_);
          same.pop_front();
          if (same.empty()) model.erase(it.current_->hash);
          it._remove(it.current_, it.bucket_);
          table.shrinkTable();
          // Fewer than a quarter of the buckets: 4 * entries, for a quarter may be half an entry.
          for (--entries; buckets > least && 4 * entries < buckets;) buckets /= 2;
        }
        ASSERT_TRUE(table.bucketCount_ == buckets && table.entryCount_ == entries);
        if (i % 100 == 0) {
          ASSERT_EQ(contents(table), model);
        }
      }
      table.reinitializeTable();
      EXPECT_TRUE(table.bucketCount_ == least && !table.insertWithHash(nullptr, 3));
      EXPECT_EQ(contents(table), model);
    }
  }
}
