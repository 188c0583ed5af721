// SPDX-License-Identifier: MIT
// Foundation stand-in: run-time type records.
#pragma once

#include <initializer_list>

#include "knotwork/platform/foundation/export.h"

/// Record of one class: its name, the records of its parents and, where there is one, its factory.
/// Records are static objects: their addresses are the identities of the classes.
class KNOTWORK_FOUNDATION_API Tmetaclass {
 public:
  using Factory = void* (*)();
  static constexpr int kMaxParents = 8;

  /// @param name     the class's name, not copied.
  /// @param parents  records of its direct bases, at most kMaxParents of them.
  /// @param factory  makes a default object; null where the class has no factory.
  Tmetaclass(const char* name, std::initializer_list<const Tmetaclass*> parents, Factory factory);

  Tmetaclass(const Tmetaclass&) = delete;
  Tmetaclass& operator=(const Tmetaclass&) = delete;

  /// @return the class's name.
  [[nodiscard]] const char* name() const;

  /// @return whether `type` is `ancestor` or derives from it, over any number of steps; false for
  /// null.
  [[nodiscard]] static bool istype(const Tmetaclass* type, const Tmetaclass& ancestor);

  /// @return a new object of the class, owned by the caller; null where it has no factory.
  [[nodiscard]] static void* construct(const Tmetaclass* type);

 private:
  const char* name_;
  const Tmetaclass* parents_[kMaxParents];
  int parentCount_;
  Factory factory_;
};
