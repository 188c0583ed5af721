// SPDX-License-Identifier: MIT
// Foundation stand-in: the bucket array of a chained hash table and its growth.
#include "knotwork/platform/foundation/hash_table.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace {

constexpr unsigned kMostBuckets = 1U << 31;

unsigned powerOfTwo(unsigned n) { return std::bit_ceil(std::clamp(n, 1U, kMostBuckets)); }

constexpr std::size_t kBucketBytes = sizeof(void*);  // a bucket is the address of its first entry

std::size_t arrayBytes(std::size_t buckets) {
  constexpr std::size_t kAll = static_cast<std::size_t>(-1);
  return buckets > kAll / kBucketBytes ? kAll : buckets * kBucketBytes;
}

ThashTableEntry** emptyBuckets(unsigned count) {
  return static_cast<ThashTableEntry**>(std::calloc(count, kBucketBytes));
}

}  // namespace

ThashTable::ThashTable(unsigned initial, unsigned maximum)
    : entryCount_(0),
      bucketCount_(powerOfTwo(initial)),
      buckets_(nullptr),
      single_(nullptr),
      initial_(bucketCount_),
      maximum_(maximum) {
  while (bucketCount_ > 1 && !(buckets_ = emptyBuckets(bucketCount_))) bucketCount_ /= 2;
  if (!buckets_) buckets_ = &single_;
}

ThashTable::ThashTable(const ThashTable& other) : ThashTable(other.initial_, other.maximum_) {}

ThashTable& ThashTable::operator=(const ThashTable& other) {
  if (this == &other) return *this;
  initial_ = other.initial_;
  maximum_ = other.maximum_;
  reinitializeTable();
  return *this;
}

ThashTable::~ThashTable() {
  if (buckets_ != &single_) std::free(buckets_);
}

void ThashTable::reinitializeTable() {
  if (initial_ < bucketCount_) foldBuckets(initial_);
  while (bucketCount_ < initial_ && doubleBuckets()) {
  }
}

// Splits each chain over its bucket and the one `bucketCount_` further on; order is kept.
bool ThashTable::doubleBuckets() {
  const unsigned old = bucketCount_;
  if (old >= kMostBuckets || 2 * old > maximum_) return false;
  void* const memory =
      std::realloc(buckets_ == &single_ ? nullptr : buckets_, arrayBytes(std::size_t{2} * old));
  if (!memory) return false;
  auto** const grown = static_cast<ThashTableEntry**>(memory);
  if (buckets_ == &single_) grown[0] = single_;
  for (unsigned b = 0; b < old; ++b) {
    ThashTableEntry** tails[2] = {&grown[b], &grown[b + old]};
    for (ThashTableEntry* entry = grown[b]; entry; entry = entry->next) {
      ThashTableEntry**& tail = tails[(entry->hash & old) != 0];
      *tail = entry;
      tail = &entry->next;
    }
    *tails[0] = *tails[1] = nullptr;
  }
  buckets_ = grown;
  bucketCount_ = 2 * old;
  return true;
}

// Puts the chains of the buckets from `count` on in front of those below, each in its order; there
// must be more than `count`. Most buckets of a table that shrinks are empty: a chain that meets
// none is moved without a branch.
void ThashTable::foldBuckets(unsigned count) {
  for (unsigned b = count; b < bucketCount_; ++b) {
    ThashTableEntry* const above = buckets_[b];
    ThashTableEntry*& below = buckets_[b & (count - 1)];
    if ((above != nullptr) & (below != nullptr)) {
      ThashTableEntry* last = above;
      while (last->next) last = last->next;
      last->next = below;
    }
    below = above ? above : below;
  }
  bucketCount_ = count;
  if (count == 1) {
    single_ = buckets_[0];
    std::free(buckets_);
    buckets_ = &single_;
  } else if (void* const memory = std::realloc(buckets_, arrayBytes(count))) {
    buckets_ = static_cast<ThashTableEntry**>(memory);
  }
}
