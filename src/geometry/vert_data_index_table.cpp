// SPDX-License-Identifier: MIT
// TvertDataIndexTable: keys with one integer each, and the walk over the entries of one key,
// which are those of its bucket that have its hash.
#include "knotwork/geometry/vert_data_index_table.h"

#include <tuple>

TvertDataIndexTable::TvertDataIndexTable() : TvertDataIndexTable(0, 0xFFFFFFFFU) {}

TvertDataIndexTable::TvertDataIndexTable(unsigned initial, unsigned maximum)
    : VertTable(initial, maximum) {}

TvertDataIndexTable::TvertDataIndexTable(const TvertDataIndexTable& other) = default;

TvertDataIndexTable& TvertDataIndexTable::operator=(const TvertDataIndexTable& other) = default;

TvertDataIndexTable::~TvertDataIndexTable() = default;

bool TvertDataIndexTable::insert(const int& key, const int& data) { return insertEntry(key, data); }

bool TvertDataIndexTable::insertUnique(const int& key, const int& data) {
  return !findEntry(key) && insert(key, data);
}

bool TvertDataIndexTable::insertReplace(const int& key, const int& data) {
  int* const present = find(key);
  if (!present) return insert(key, data);
  *present = data;
  return true;
}

bool TvertDataIndexTable::find(const int& key, int& data) const {
  const int* const present = find(key);
  if (present) data = *present;
  return present != nullptr;
}

TvertDataIndexTable::Iterator::Iterator(TvertDataIndexTable& table) : VertIterator(table) {
  first();
}

bool TvertDataIndexTable::Iterator::getData(int& data) const {
  if (isDone()) return false;
  data = entry()->data;
  return true;
}

void TvertDataIndexTable::Iterator::appendAllTo(TvertDataIndexTable& other) {
  if (&other == table_) {  // growth would bring entries back in front of this iterator
    TvertDataIndexTable snapshot(other);
    Iterator(snapshot).appendAllTo(other);
    current_ = nullptr;
    return;
  }
  for (first(); !isDone(); next()) std::ignore = other.insert(key(), data());
}

TvertDataIndexTable::KeyIterator::KeyIterator(TvertDataIndexTable& table, const int& key)
    : VertIterator(table), key_(key) {
  first(key);
}

bool TvertDataIndexTable::KeyIterator::first(const int& key) {
  key_ = key;
  _first(static_cast<unsigned>(key));  // the bucket's first entry, of whatever key
  current_ = knotwork::detail::findInChain(current_, static_cast<unsigned>(key));
  return !isDone();
}

bool TvertDataIndexTable::KeyIterator::next() {
  if (isDone()) return false;
  current_ = knotwork::detail::findInChain(current_->next, static_cast<unsigned>(key_));
  return !isDone();
}

int* TvertDataIndexTable::KeyIterator::data() const { return isDone() ? nullptr : &entry()->data; }

bool TvertDataIndexTable::KeyIterator::getData(int& data) const {
  if (isDone()) return false;
  data = entry()->data;
  return true;
}

bool TvertDataIndexTable::KeyIterator::removeThenNext() {
  if (isDone()) return false;
  ThashTableEntry* const former = current_;
  next();
  discard(former, bucket_);
  return true;
}

TvertDataIndexTable::Iterator::Iterator(const Iterator& other) = default;
TvertDataIndexTable::Iterator& TvertDataIndexTable::Iterator::operator=(const Iterator& other) =
    default;

TvertDataIndexTable::KeyIterator::KeyIterator(const KeyIterator& other) = default;
TvertDataIndexTable::KeyIterator& TvertDataIndexTable::KeyIterator::operator=(
    const KeyIterator& other) = default;
