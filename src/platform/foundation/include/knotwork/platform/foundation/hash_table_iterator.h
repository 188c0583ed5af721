// SPDX-License-Identifier: MIT
// Foundation stand-in: a walk over the entries of a ThashTable.
#pragma once

#include "knotwork/platform/foundation/export.h"
#include "knotwork/platform/foundation/hash_table.h"

/// Position in a ThashTable: bucket by bucket, each chain from its first entry.
///
/// Inserting into the table or removing from it by other means than _remove() may resize it, which
/// ends the use of its iterators.
class KNOTWORK_FOUNDATION_API ThashTableIterator {
 public:
  /// Attaches to a table; the iterator is done until _first() places it.
  explicit ThashTableIterator(ThashTable& table) : table_(&table), current_(nullptr), bucket_(0) {}

 protected:
  /// Goes to the first entry of the table. @return whether there is one.
  bool _first();

  /// Goes to the first entry in the bucket of a hash. @return whether there is one.
  bool _first(unsigned hash);

  /// Goes to the next entry; an iterator that is done stays so. @return whether there is one.
  bool _next();

  /// Unlinks an entry from the chain of a bucket; the caller frees it. The table is not resized.
  void _remove(ThashTableEntry* entry, unsigned bucket);

  ThashTable* table_;
  ThashTableEntry* current_;  ///< null when done
  unsigned bucket_;           ///< bucket of the current entry

 private:
  bool firstFrom(unsigned bucket);
};

// The walk is defined here so that a host's loops over a table are loops, not calls.

KNOTWORK_FOUNDATION_INLINE_API inline bool ThashTableIterator::firstFrom(unsigned bucket) {
  ThashTableEntry* const* const buckets = table_->buckets_;
  const unsigned count = table_->bucketCount_;
  for (current_ = nullptr; bucket < count; ++bucket) {
    if (!buckets[bucket]) continue;
    current_ = buckets[bucket];
    bucket_ = bucket;
    return true;
  }
  return false;
}

KNOTWORK_FOUNDATION_INLINE_API inline bool ThashTableIterator::_next() {
  if (!current_) return false;
  current_ = current_->next;
  return current_ || firstFrom(bucket_ + 1);
}
