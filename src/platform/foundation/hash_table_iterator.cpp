// SPDX-License-Identifier: MIT
// Foundation stand-in: placing an iterator and unlinking an entry.
#include "knotwork/platform/foundation/hash_table_iterator.h"

bool ThashTableIterator::_first() { return firstFrom(0); }

bool ThashTableIterator::_first(unsigned hash) {
  bucket_ = hash & (table_->bucketCount_ - 1);
  current_ = table_->buckets_[bucket_];
  return current_ != nullptr;
}

void ThashTableIterator::_remove(ThashTableEntry* entry, unsigned bucket) {
  ThashTableEntry** link = &table_->buckets_[bucket];
  while (*link && *link != entry) link = &(*link)->next;
  if (!*link) return;
  *link = entry->next;
  --table_->entryCount_;
}
