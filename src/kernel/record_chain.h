// SPDX-License-Identifier: MIT
// Walking the chains of kernel records: reading trusts no count, writing shares repeated knots.
#pragma once

#include <utility>

#include "knotwork/kernel/knot_record.h"
#include "knotwork/platform/kernel/builders.h"

namespace knotwork::detail {

/// @return the number of knots of a record.
inline int knotCount(const KnotRecord& knots) { return knots.last() - knots.first() + 1; }

/// @return whether `count` nodes follow one another along `next`, each with its array `value`.
template <class Node, class Value>
bool chainHolds(const Node* node, Node* Node::*next, Value Node::*value, long long count) {
  for (; count > 0; --count, node = node->*next) {
    if (!node || !(node->*value)) return false;
  }
  return true;
}

/// Copies `count` knots out of a chain that holds them.
template <class Node>
void readKnots(const Node* node, Node* Node::*next, double* Node::*value, double* knots,
               int count) {
  for (int k = 0; k < count; ++k, node = node->*next) knots[k] = *(node->*value);
}

/// A record that the kernel built, until it is handed out; null where the kernel had no memory. A
/// kernel may also throw while the record is filled.
template <class Record, void (*kRelease)(Record*)>
class OwnedRecord {
 public:
  explicit OwnedRecord(Record* record) : record_(record) {}
  OwnedRecord(const OwnedRecord&) = delete;
  OwnedRecord& operator=(const OwnedRecord&) = delete;
  ~OwnedRecord() {
    if (record_) kRelease(record_);
  }

  Record* operator->() const { return record_; }
  Record* get() const { return record_; }
  Record* release() { return std::exchange(record_, nullptr); }

 private:
  Record* record_;
};

/// Gives the nodes of a chain their values: repeated knots share the cell of their predecessor.
/// @return false if the chain ends early or a cell cannot be had.
template <class Node>
bool writeKnots(Node* node, Node* Node::*next, double* Node::*value, const KnotRecord& knots) {
  double* cell = nullptr;
  for (int k = knots.first(); k <= knots.last(); ++k, node = node->*next) {
    if (!node) return false;
    if (!knots.repeats(k)) {
      cell = ag_al_dbl(1);
      if (!cell) return false;
      *cell = knots(k);
    }
    node->*value = cell;
  }
  return true;
}

}  // namespace knotwork::detail
