// SPDX-License-Identifier: MIT
// TvertIndexTable: keys alone.
#include "knotwork/geometry/vert_index_table.h"

TvertIndexTable::TvertIndexTable() : TvertIndexTable(0, 0xFFFFFFFFU) {}

TvertIndexTable::TvertIndexTable(unsigned initial, unsigned maximum)
    : VertTable(initial, maximum) {}

TvertIndexTable::TvertIndexTable(const TvertIndexTable& other) = default;

TvertIndexTable& TvertIndexTable::operator=(const TvertIndexTable& other) = default;

TvertIndexTable::~TvertIndexTable() = default;

bool TvertIndexTable::insert(const int& key) { return insertEntry(key, 0); }

bool TvertIndexTable::insertUnique(const int& key) { return !findEntry(key) && insert(key); }

unsigned TvertIndexTable::keyCount(const int& key) const { return countEntries(key); }

TvertIndexTable::Iterator::Iterator(TvertIndexTable& table) : VertIterator(table) { first(); }

TvertIndexTable::Iterator::Iterator(const Iterator& other) = default;
TvertIndexTable::Iterator& TvertIndexTable::Iterator::operator=(const Iterator& other) = default;
