// SPDX-License-Identifier: MIT
#include "host_foundation.h"

#include <algorithm>
#include <bit>
#include <utility>

long long HostObject::alive = 0;
HostObject::HostObject() : number_(++alive) {}
HostObject::HostObject(const HostObject&) : HostObject() {}
HostObject::~HostObject() { --alive; }

Tmetaclass::Tmetaclass(const char* text, std::vector<const Tmetaclass*> parents, Factory factory)
    : name(text), factory_(factory), parents_(std::move(parents)) {}

bool Tmetaclass::istype(const Tmetaclass* type, const Tmetaclass& ancestor) {
  return type && (type == &ancestor || std::ranges::any_of(type->parents_, [&](const auto* parent) {
                    return istype(parent, ancestor);
                  }));
}

void* Tmetaclass::construct(const Tmetaclass* type) {
  return type->factory_ ? type->factory_() : nullptr;
}

Tmetaclass TexceptionTmeta("Texception", {}, nullptr);
Tmetaclass* Texception::typeof() const { return &TexceptionTmeta; }
void* Texception::cast(Tmetaclass* type) { return type == &TexceptionTmeta ? this : nullptr; }

void Tstring::setDouble(double value) {
  text_ = "about " + std::to_string(static_cast<int>(value));
}

T4dDblMatrix::T4dDblMatrix() : columns_{} {
  for (int i = 0; i < 4; ++i) columns_[i][i] = 1;
}

void T4dDblPoint::postmultBy(const T4dDblMatrix& m) {
  double p[4];
  for (int j = 0; j < 4; ++j) p[j] = x * m(0, j) + y * m(1, j) + z * m(2, j) + w * m(3, j);
  x = p[0], y = p[1], z = p[2], w = p[3];
}

ThashTable::ThashTable(unsigned initial, unsigned)
    : storage_(std::bit_ceil(initial + 8)),
      buckets_(storage_.data()),
      bucketCount_(static_cast<unsigned>(storage_.size())),
      entryCount_(0) {}

ThashTable::ThashTable(const ThashTable& other) : ThashTable(other.bucketCount_ - 8, 0) {}
ThashTable& ThashTable::operator=(const ThashTable&) { return *this; }

bool ThashTable::insertWithHash(ThashTableEntry* entry, unsigned hash) {
  if (!entry) return false;
  entry->hash = hash;
  entry->next = std::exchange(buckets_[hash & (bucketCount_ - 1)], entry);
  ++entryCount_;
  return true;
}

bool ThashTableIterator::_first() {
  for (bucket_ = 0; bucket_ < table_->bucketCount_; ++bucket_) {
    if ((current_ = table_->buckets_[bucket_])) return true;
  }
  return false;
}

bool ThashTableIterator::_first(unsigned hash) {
  bucket_ = hash & (table_->bucketCount_ - 1);
  return (current_ = table_->buckets_[bucket_]) != nullptr;
}

bool ThashTableIterator::_next() {
  if (current_) current_ = current_->next;
  while (!current_ && ++bucket_ < table_->bucketCount_) current_ = table_->buckets_[bucket_];
  return current_ != nullptr;
}

void ThashTableIterator::_remove(ThashTableEntry* entry, unsigned bucket) {
  ThashTableEntry** link = &table_->buckets_[bucket];
  while (*link != entry) link = &(*link)->next;
  *link = entry->next;
  --table_->entryCount_;
}
