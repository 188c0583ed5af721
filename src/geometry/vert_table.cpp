// SPDX-License-Identifier: MIT
// Entries of the vertex tables: made and freed one by one, searched by the stored hash.
//
// The hash of a key is the key itself. So equal hashes are equal keys, and a search compares
// nothing else; and vertices, which are numbered from 0 on, fill the buckets evenly. Buckets are a
// power of two, so that the low bits tell the bucket.
#include "knotwork/geometry/vert_table.h"

#include <new>

namespace knotwork {

static unsigned hashOf(int key) { return static_cast<unsigned>(key); }

static void freeChain(ThashTableEntry* entry) {
  while (ThashTableEntry* const first = entry) {
    entry = first->next;
    delete static_cast<VertEntry*>(first);
  }
}

VertTable::VertTable(unsigned initial, unsigned maximum) : ThashTable(initial, maximum) {}

VertTable::VertTable(const VertTable& other) : ThashTable(other) {
  insertAll(reversedCopies(other));
}

VertTable& VertTable::operator=(const VertTable& other) {
  if (this == &other) return *this;
  // All copies before the first change: without memory the table stays as it was.
  VertEntry* const copies = reversedCopies(other);
  if (copies == nullptr && other.entryCount_ > 0) return *this;
  clearall();
  ThashTable::operator=(other);
  insertAll(copies);
  return *this;
}

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
  for (ThashTableEntry* e = findEntry(key); e; e = detail::findInChain(e->next, hashOf(key)))
    ++count;
  return count;
}

// Copies of all entries in one chain, last entry first: each goes in front of its bucket's chain,
// which so gets the order of the original. Null if memory runs out.
VertEntry* VertTable::reversedCopies(const VertTable& other) {
  VertEntry* copies = nullptr;
  for (unsigned b = 0; b < other.bucketCount_; ++b) {
    for (const ThashTableEntry* e = other.buckets_[b]; e != nullptr; e = e->next) {
      auto* const copy = new (std::nothrow) VertEntry(*static_cast<const VertEntry*>(e));
      if (copy == nullptr) {
        freeChain(copies);
        return nullptr;
      }
      copy->next = copies;
      copies = copy;
    }
  }
  return copies;
}

void VertTable::insertAll(ThashTableEntry* entries) {
  while (ThashTableEntry* const entry = entries) {
    entries = entry->next;
    insertWithHash(entry, entry->hash);
  }
}

void VertTable::clearall() {
  for (unsigned b = 0; b < bucketCount_; ++b) {
    freeChain(buckets_[b]);
    buckets_[b] = nullptr;
  }
  entryCount_ = 0;
}

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
  _next();  // before the entry goes, which holds the way on
  discard(former, bucket);
  return true;
}

void VertIterator::discard(ThashTableEntry* former, unsigned bucket) {
  _remove(former, bucket);
  delete static_cast<VertEntry*>(former);
}

}  // namespace knotwork
