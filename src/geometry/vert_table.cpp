// SPDX-License-Identifier: MIT
// Entries of the vertex tables: made and freed one by one, searched by the stored hash.
#include "knotwork/geometry/vert_table.h"

#include <new>

namespace knotwork::detail {

static unsigned hashOf(int key) { return static_cast<unsigned>(key); }

VertTable::VertTable(unsigned initial, unsigned maximum) : ThashTable(initial, maximum) {}

VertTable::VertTable(const VertTable& other) : ThashTable(other) { copyEntries(other); }

VertTable& VertTable::operator=(const VertTable& other) = default;

VertTable::~VertTable() { clearall(); }

bool VertTable::remove(const int& key) {
  const unsigned hash = hashOf(key);
  ThashTableEntry** link = &buckets_[hash & (bucketCount_ - 1)];
  while (*link && (*link)->hash != hash) link = &(*link)->next;
  ThashTableEntry* const entry = *link;
  if (!entry) return false;
  *link = entry->next;
  delete static_cast<VertEntry*>(entry);
  --entryCount_;
  shrinkTable();
  return true;
}

void VertTable::reset() {
  clearall();
  reinitializeTable();
}

bool VertTable::insertEntry(int key, int data) {
  return insertWithHash(new (std::nothrow) VertEntry{{}, key, data}, hashOf(key));
}

unsigned VertTable::countEntries(int key) const {
  unsigned count = 0;
  for (ThashTableEntry* e = findEntry(key); e; e = findInChain(e->next, hashOf(key))) ++count;
  return count;
}

ThashTableEntry* VertTable::cloneEntry(const ThashTableEntry* entry) const {
  return new (std::nothrow) VertEntry(*static_cast<const VertEntry*>(entry));
}

void VertTable::freeEntry(ThashTableEntry* entry) const { delete static_cast<VertEntry*>(entry); }

void VertTable::clearall() { freeEntries(); }

VertIterator::VertIterator(VertTable& table) : ThashTableIterator(table) {}

bool VertIterator::first() { return _first(); }

bool VertIterator::getKey(int& key) const {
  if (isDone()) return false;
  key = entry()->key;
  return true;
}

bool VertIterator::removeThenNext() {
  if (isDone()) return false;
  ThashTableEntry* const former = current_;
  const unsigned bucket = bucket_;
  _next();
  discard(former, bucket);
  return true;
}

void VertIterator::discard(ThashTableEntry* former, unsigned bucket) {
  _remove(former, bucket);
  delete static_cast<VertEntry*>(former);
}

}  // namespace knotwork::detail
