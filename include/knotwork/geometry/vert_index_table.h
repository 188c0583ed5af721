// SPDX-License-Identifier: MIT
// TvertIndexTable: a hash set of integers, typically vertex numbers, that may hold duplicates.
#pragma once

#include "knotwork/geometry/vert_table.h"

/// Multiset of integer keys with amortised constant insertion, search and removal.
///
/// The bucket of a key is the key modulo the power-of-two bucket count: consecutive vertex numbers
/// never collide. Memory that runs out is told by false; nothing is thrown.
class KNOTWORK_API TvertIndexTable : public knotwork::VertTable {
 public:
  /// An empty table of one bucket that may grow without limit.
  TvertIndexTable();

  /// @param initial  buckets at the start, rounded up to a power of two; the table never has fewer.
  /// @param maximum  the bucket count never exceeds this by growing.
  TvertIndexTable(unsigned initial, unsigned maximum);

  /// Deep copy.
  TvertIndexTable(const TvertIndexTable& other);
  /// Deep copy.
  TvertIndexTable& operator=(const TvertIndexTable& other);
  /// Frees every entry.
  ~TvertIndexTable() override;

  /// Adds a key, also one that is there already. @return whether memory for it was found.
  [[nodiscard]] bool insert(const int& key);

  /// Adds a key that is not there yet. @return whether it was added.
  [[nodiscard]] bool insertUnique(const int& key);

  /// @return whether the key is there.
  [[nodiscard]] KNOTWORK_INLINE_API bool find(const int& key) const {
    return findEntry(key) != nullptr;
  }

  /// @return how often the key is there.
  [[nodiscard]] unsigned keyCount(const int& key) const;

  /// Walk over all keys, bucket by bucket.
  class KNOTWORK_API Iterator : public knotwork::VertIterator {
   public:
    /// Attaches to a table and goes to its first entry.
    explicit Iterator(TvertIndexTable& table);
    /// Another walk, at the same entry.
    Iterator(const Iterator& other);
    Iterator& operator=(const Iterator& other);

    /// @return the current key; not tested for done.
    KNOTWORK_INLINE_API int key() const { return entry()->key; }
  };
};
