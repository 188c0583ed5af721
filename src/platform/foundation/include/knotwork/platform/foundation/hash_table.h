// SPDX-License-Identifier: MIT
// Foundation stand-in: a growing and shrinking bucket table for entries that subclasses define.
#pragma once

#include "knotwork/platform/foundation/export.h"

/// Head of every entry: the next one of its chain and the hash it was inserted with.
struct ThashTableEntry {
  ThashTableEntry* next;
  unsigned hash;
};

/// Chained hash table. It owns the bucket array; the subclass makes, copies and frees the entries.
///
/// The bucket count is a power of two, so the bucket of a hash is hash & (bucketCount_ - 1). It
/// doubles when the entries outnumber the buckets and falls when they are fewer than a quarter:
/// insertion and removal take amortised constant time. New entries stand first in their chain, and
/// entries of one hash keep that order, newest first, whenever the table grows or shrinks. Where
/// memory for more buckets cannot be had, the table stays as it is and chains grow instead.
class KNOTWORK_FOUNDATION_API ThashTable {
 public:
  /// @param initial  buckets at the start, rounded up to a power of two, at least 1 (fewer, where
  ///                 memory for so many cannot be had); the count never falls below it.
  /// @param maximum  growth stops before the count would exceed this.
  ThashTable(unsigned initial, unsigned maximum);

  virtual ~ThashTable();

 protected:
  /// An empty table with the limits of `other`, whose entries only the subclass can copy.
  ThashTable(const ThashTable& other);

  /// Takes over the limits of `other`, not its entries, and goes back to the initial bucket count;
  /// the entries of this table stay. A table assigned to itself stays as it is.
  ThashTable& operator=(const ThashTable& other);

  /// Puts an entry first in its chain, then grows the table if it is due.
  /// @return true; false, and nothing done, for a null entry.
  bool insertWithHash(ThashTableEntry* entry, unsigned hash);

  /// Halves the bucket count for as long as the entries are fewer than a quarter of the buckets,
  /// but not below the initial count.
  void shrinkTable();

  /// Goes back to the initial bucket count.
  void reinitializeTable();

  unsigned entryCount_;        ///< entries in all chains
  unsigned bucketCount_;       ///< a power of two
  ThashTableEntry** buckets_;  ///< first entry of each chain, or null

 private:
  friend class ThashTableIterator;
  bool doubleBuckets();
  void foldBuckets(unsigned count);

  ThashTableEntry* single_;  // the bucket array of a table with one bucket: it cannot fail
  unsigned initial_;
  unsigned maximum_;
};

// What every insertion and removal does is defined here, open to inlining.

KNOTWORK_FOUNDATION_INLINE_API inline bool ThashTable::insertWithHash(ThashTableEntry* entry,
                                                                      unsigned hash) {
  if (!entry) return false;
  ThashTableEntry*& head = buckets_[hash & (bucketCount_ - 1)];
  entry->hash = hash;
  entry->next = head;
  head = entry;
  if (++entryCount_ > bucketCount_) doubleBuckets();
  return true;
}

KNOTWORK_FOUNDATION_INLINE_API inline void ThashTable::shrinkTable() {
  unsigned count = bucketCount_;
  while (count > initial_ && 4ULL * entryCount_ < count) count /= 2;
  if (count < bucketCount_) foldBuckets(count);
}
