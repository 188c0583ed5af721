// SPDX-License-Identifier: MIT
// A host's foundation: what the library asks of one, on other bases and in another layout than the
// stand-in's.
#pragma once

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host_export.h"

/// Every object of this host counts.
class HOST_API HostObject {
 public:
  HostObject() : number_(++alive) {}
  HostObject(const HostObject&) : HostObject() {}
  HostObject& operator=(const HostObject&) { return *this; }
  virtual ~HostObject() { --alive; }
  static long long alive;

 private:
  long long number_;
};

class HOST_API Tmetaclass {
 public:
  using Factory = void* (*)();
  Tmetaclass(const char* text, std::vector<const Tmetaclass*> parents, Factory factory)
      : name(text), factory_(factory), parents_(std::move(parents)) {}
  static bool istype(const Tmetaclass* type, const Tmetaclass& ancestor) {
    const auto descends = [&](const Tmetaclass* parent) { return istype(parent, ancestor); };
    return type && (type == &ancestor || std::ranges::any_of(type->parents_, descends));
  }
  static void* construct(const Tmetaclass* type) {
    return type->factory_ ? type->factory_() : nullptr;
  }
  std::string name;

 private:
  Factory factory_;
  std::vector<const Tmetaclass*> parents_;
};

extern HOST_API Tmetaclass TexceptionTmeta;

class HOST_API Texception : public std::runtime_error, public HostObject {
 public:
  explicit Texception(const char* text = "host") : std::runtime_error(text) {}
  virtual const char* advice() const { return ""; }
  virtual Tmetaclass* typeof() const { return &TexceptionTmeta; }
  virtual void* cast(Tmetaclass* type) { return type == &TexceptionTmeta ? this : nullptr; }
  virtual Texception* cache() = 0;
};

class HOST_API TmemoryException : public Texception {
 public:
  TmemoryException() : Texception("out of memory") {}
  Texception* cache() override { return this; }
};

class HOST_API Tstring : public HostObject {
 public:
  Tstring() = default;
  Tstring(const char* text) : text_(text) {}
  const char* asChar() const { return text_.c_str(); }
  void setDouble(double value) { text_ = "about " + std::to_string(static_cast<int>(value)); }
  void operator+=(const Tstring& other) { text_ += other.text_; }

 private:
  std::string text_;
};

/// Row i of the matrix is kept as column i.
class HOST_API T4dDblMatrix : public HostObject {
 public:
  T4dDblMatrix() : columns_{} {
    for (int i = 0; i < 4; ++i) columns_[i][i] = 1;
  }
  double& operator()(int i, int j) { return columns_[j][i]; }
  double operator()(int i, int j) const { return columns_[j][i]; }

 private:
  double columns_[4][4];
};

class HOST_API T4dDblPoint : public HostObject {
 public:
  void postmultBy(const T4dDblMatrix& m) {
    double p[4];
    for (int j = 0; j < 4; ++j) p[j] = x * m(0, j) + y * m(1, j) + z * m(2, j) + w * m(3, j);
    x = p[0], y = p[1], z = p[2], w = p[3];
  }
  double w = 1, z = 0, y = 0, x = 0;
};

class HOST_API TxformMatrix : public HostObject {
 public:
  virtual const char* kind() const = 0;
  virtual const T4dDblMatrix& matrix() const = 0;
};

struct ThashTableEntry {
  unsigned hash;
  long long stamp;
  ThashTableEntry* next;
};

/// As many buckets as at the start.
class HOST_API ThashTable : public HostObject {
 public:
  ThashTable(unsigned initial, unsigned)
      : storage_(std::bit_ceil(initial + 8)),
        buckets_(storage_.data()),
        bucketCount_(static_cast<unsigned>(storage_.size())) {}

 protected:
  ThashTable(const ThashTable& other) : ThashTable(other.bucketCount_ - 8, 0) {}
  ThashTable& operator=(const ThashTable&) { return *this; }
  bool insertWithHash(ThashTableEntry* entry, unsigned hash) {
    if (!entry) return false;
    entry->hash = hash;
    entry->next = std::exchange(buckets_[hash & (bucketCount_ - 1)], entry);
    ++entryCount_;
    return true;
  }
  void shrinkTable() {}
  void reinitializeTable() {}

  std::vector<ThashTableEntry*> storage_;
  ThashTableEntry** buckets_;
  unsigned bucketCount_;
  unsigned entryCount_ = 0;
  friend class ThashTableIterator;
};

class HOST_API ThashTableIterator : public HostObject {
 public:
  explicit ThashTableIterator(ThashTable& table) : table_(&table) {}

 protected:
  bool _first() {
    for (bucket_ = 0; bucket_ < table_->bucketCount_; ++bucket_) {
      if ((current_ = table_->buckets_[bucket_])) return true;
    }
    return false;
  }
  bool _first(unsigned hash) {
    bucket_ = hash & (table_->bucketCount_ - 1);
    return (current_ = table_->buckets_[bucket_]) != nullptr;
  }
  bool _next() {
    if (current_) current_ = current_->next;
    while (!current_ && ++bucket_ < table_->bucketCount_) current_ = table_->buckets_[bucket_];
    return current_ != nullptr;
  }
  void _remove(ThashTableEntry* entry, unsigned bucket) {
    ThashTableEntry** link = &table_->buckets_[bucket];
    while (*link != entry) link = &(*link)->next;
    *link = entry->next;
    --table_->entryCount_;
  }

  unsigned bucket_ = 0;
  ThashTableEntry* current_ = nullptr;
  ThashTable* table_;
};
