// SPDX-License-Identifier: MIT
// A host's foundation: what the library asks of one, on other bases and in another layout than the
// stand-in's.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host_export.h"

/// Every object of this host counts.
class HOST_API HostObject {
 public:
  HostObject();
  HostObject(const HostObject&);
  HostObject& operator=(const HostObject&) { return *this; }
  virtual ~HostObject();
  static long long alive;

 private:
  long long number_;
};

class HOST_API Tmetaclass {
 public:
  using Factory = void* (*)();
  Tmetaclass(const char* name, std::vector<const Tmetaclass*> parents, Factory factory);
  static bool istype(const Tmetaclass* type, const Tmetaclass& ancestor);
  static void* construct(const Tmetaclass* type);
  std::string name;

 private:
  Factory factory_;
  std::vector<const Tmetaclass*> parents_;
};

class HOST_API Texception : public std::runtime_error, public HostObject {
 public:
  explicit Texception(const char* text = "host") : std::runtime_error(text) {}
  virtual const char* advice() const { return ""; }
  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);
  virtual Texception* cache() = 0;
};
extern HOST_API Tmetaclass TexceptionTmeta;

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
  void setDouble(double value);
  void operator+=(const Tstring& other) { text_ += other.text_; }

 private:
  std::string text_;
};

/// Row i of the matrix is kept as column i.
class HOST_API T4dDblMatrix : public HostObject {
 public:
  T4dDblMatrix();
  double& operator()(int i, int j) { return columns_[j][i]; }
  double operator()(int i, int j) const { return columns_[j][i]; }

 private:
  double columns_[4][4];
};

class HOST_API T4dDblPoint : public HostObject {
 public:
  void postmultBy(const T4dDblMatrix& m);
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
  ThashTable(unsigned initial, unsigned maximum);

 protected:
  ThashTable(const ThashTable& other);
  ThashTable& operator=(const ThashTable& other);
  bool insertWithHash(ThashTableEntry* entry, unsigned hash);
  void shrinkTable() {}
  void reinitializeTable() {}

  std::vector<ThashTableEntry*> storage_;
  ThashTableEntry** buckets_;
  unsigned bucketCount_;
  unsigned entryCount_;
  friend class ThashTableIterator;
};

class HOST_API ThashTableIterator : public HostObject {
 public:
  explicit ThashTableIterator(ThashTable& table) : table_(&table) {}

 protected:
  bool _first();
  bool _first(unsigned hash);
  bool _next();
  void _remove(ThashTableEntry* entry, unsigned bucket);

  unsigned bucket_ = 0;
  ThashTableEntry* current_ = nullptr;
  ThashTable* table_;
};
