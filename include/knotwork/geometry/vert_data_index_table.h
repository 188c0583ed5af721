// SPDX-License-Identifier: MIT
// TvertDataIndexTable: a hash multimap from an integer, typically a vertex number, to an integer.
#pragma once

#include "knotwork/geometry/vert_table.h"

/// Multimap from integer keys to one integer each, with amortised constant insertion, search and
/// removal.
///
/// Among the entries of one key the newest is the first: find(), remove(), insertReplace() and
/// KeyIterator agree on it. Memory that runs out is told by false; nothing is thrown.
class KNOTWORK_API TvertDataIndexTable : public knotwork::VertTable {
 public:
  /// An empty table of one bucket that may grow without limit.
  TvertDataIndexTable();

  /// @param initial  buckets at the start, rounded up to a power of two; the table never has fewer.
  /// @param maximum  the bucket count never exceeds this by growing.
  TvertDataIndexTable(unsigned initial, unsigned maximum);

  /// Deep copy.
  TvertDataIndexTable(const TvertDataIndexTable& other);
  /// Deep copy.
  TvertDataIndexTable& operator=(const TvertDataIndexTable& other);
  /// Frees every entry.
  ~TvertDataIndexTable() override;

  /// Adds an entry, also for a key that is there already. @return whether memory for it was found.
  [[nodiscard]] bool insert(const int& key, const int& data);

  /// Adds an entry for a key that is not there yet. @return whether it was added.
  [[nodiscard]] bool insertUnique(const int& key, const int& data);

  /// Overwrites the data of the key's first entry, or adds one if there is none.
  /// @return false only if memory for a new entry was not found.
  [[nodiscard]] bool insertReplace(const int& key, const int& data);

  /// @return the data of the key's first entry, writable, until that entry is removed; or null.
  [[nodiscard]] KNOTWORK_INLINE_API int* find(const int& key) {
    knotwork::VertEntry* const entry = findEntry(key);
    return entry ? &entry->data : nullptr;
  }

  /// @return the data of the key's first entry, until that entry is removed; or null.
  [[nodiscard]] KNOTWORK_INLINE_API const int* find(const int& key) const {
    const knotwork::VertEntry* const entry = findEntry(key);
    return entry ? &entry->data : nullptr;
  }

  /// @param[out] data  the data of the key's first entry; left alone if there is none.
  /// @return whether the key is there.
  [[nodiscard]] bool find(const int& key, int& data) const;

  /// Walk over all entries, bucket by bucket.
  class KNOTWORK_API Iterator : public knotwork::VertIterator {
   public:
    /// Attaches to a table and goes to its first entry.
    explicit Iterator(TvertDataIndexTable& table);
    /// Another walk, at the same entry.
    Iterator(const Iterator& other);
    Iterator& operator=(const Iterator& other);

    /// @return the current key; not tested for done.
    KNOTWORK_INLINE_API const int& key() const { return entry()->key; }

    /// @return the current data, writable; not tested for done.
    KNOTWORK_INLINE_API int& data() const { return entry()->data; }

    /// @param[out] data  the current data; left alone when done.
    /// @return whether an entry is current.
    [[nodiscard]] bool getData(int& data) const;

    /// Inserts every entry of this table into another one, duplicates kept; the iterator ends done.
    /// The other table may be this one: the entries it holds now are then doubled. Entries
    /// that there is no memory for are missing there.
    void appendAllTo(TvertDataIndexTable& other);
  };

  /// Walk over the entries of one key, newest first.
  class KNOTWORK_API KeyIterator : public knotwork::VertIterator {
   public:
    /// Attaches to a table and goes to the first entry of a key.
    KeyIterator(TvertDataIndexTable& table, const int& key);
    /// Another walk, at the same entry.
    KeyIterator(const KeyIterator& other);
    KeyIterator& operator=(const KeyIterator& other);

    /// Goes to the first entry of a key, which it then remembers. @return whether there is one.
    bool first(const int& key);

    /// Goes to the key's next entry; false, and done, after the last one. @return whether there is
    /// one.
    bool next();

    /// @return the current data, writable; null when done.
    int* data() const;

    /// @param[out] data  the current data; left alone when done.
    /// @return whether an entry is current.
    [[nodiscard]] bool getData(int& data) const;

    /// Removes the current entry and goes to the key's next one. @return whether there was one.
    bool removeThenNext();

   private:
    int key_;
  };
};
