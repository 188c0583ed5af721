// SPDX-License-Identifier: MIT
// What the two vertex tables share: entries with an integer key, their searches and their walk.
#pragma once

#include "knotwork/export.h"
#include "knotwork/platform/foundation/hash_table.h"
#include "knotwork/platform/foundation/hash_table_iterator.h"

namespace knotwork::detail {

/// @return the first entry with a hash in the rest of a chain, from `entry` on, or null.
inline ThashTableEntry* findInChain(ThashTableEntry* entry, unsigned hash) {
  while (entry && entry->hash != hash) entry = entry->next;
  return entry;
}

}  // namespace knotwork::detail

namespace knotwork {

/// Entry of a vertex table; a table of keys alone leaves `data` 0.
struct VertEntry : ThashTableEntry {
  int key;
  int data;
};

/// Hash multimap from an integer key to an integer, whose hash of a key is the key itself.
class KNOTWORK_API VertTable : public ThashTable {
 public:
  /// Removes the newest entry of a key; the table may shrink. @return whether there was one.
  bool remove(const int& key);

  /// Removes every entry and goes back to the initial size; the table can be used on.
  void reset();

  ~VertTable() override;

 protected:
  /// Arguments as for ThashTable.
  VertTable(unsigned initial, unsigned maximum);

  /// Deep copy; empty if memory runs out.
  VertTable(const VertTable& other);

  /// Deep copy; unchanged if memory runs out.
  VertTable& operator=(const VertTable& other);

  /// Makes a new entry, first of its key. @return whether memory for it was found.
  bool insertEntry(int key, int data);

  /// @return the newest entry of a key, or null. The stored hash is the whole key, so comparing
  /// hashes is comparing keys.
  KNOTWORK_INLINE_API VertEntry* findEntry(int key) const {
    const auto hash = static_cast<unsigned>(key);
    return static_cast<VertEntry*>(detail::findInChain(buckets_[hash & (bucketCount_ - 1)], hash));
  }

  /// @return the number of entries of a key.
  unsigned countEntries(int key) const;

 private:
  friend class VertIterator;
  KNOTWORK_LOCAL static VertEntry* reversedCopies(const VertTable& other);
  KNOTWORK_LOCAL void insertAll(ThashTableEntry* entries);
  void clearall();
};

/// Walk over all entries of a vertex table. Removal by removeThenNext() alone keeps it valid.
class KNOTWORK_API VertIterator : public ThashTableIterator {
 public:
  /// Goes to the first entry. @return whether there is one.
  bool first();

  /// Goes to the next entry; false, and done, after the last one. An iterator that is done stays
  /// so.
  KNOTWORK_INLINE_API bool next() { return _next(); }

  /// @return whether no entry is current.
  [[nodiscard]] KNOTWORK_INLINE_API bool isDone() const { return !current_; }

  /// Removes the current entry and goes to the next one: the way to delete while iterating.
  /// @return whether there was a current entry.
  bool removeThenNext();

  /// @param[out] key  the current key; left alone when done. @return whether an entry is current.
  [[nodiscard]] bool getKey(int& key) const;

 protected:
  explicit VertIterator(VertTable& table);

  /// Unlinks an entry that lies in a bucket, and frees it.
  void discard(ThashTableEntry* entry, unsigned bucket);

  /// @return the current entry; not tested for done.
  KNOTWORK_INLINE_API VertEntry* entry() const { return static_cast<VertEntry*>(current_); }
};

}  // namespace knotwork
