// SPDX-License-Identifier: MIT
// Foundation stand-in: run-time type records.
#include "knotwork/platform/foundation/metaclass.h"

Tmetaclass::Tmetaclass(const char* name, std::initializer_list<const Tmetaclass*> parents,
                       Factory factory)
    : name_(name), parents_{}, parentCount_(0), factory_(factory) {
  for (const Tmetaclass* parent : parents) {
    if (parentCount_ < kMaxParents) parents_[parentCount_++] = parent;
  }
}

const char* Tmetaclass::name() const { return name_; }

bool Tmetaclass::istype(const Tmetaclass* type, const Tmetaclass& ancestor) {
  if (!type) return false;
  if (type == &ancestor) return true;
  for (int i = 0; i < type->parentCount_; ++i) {
    if (istype(type->parents_[i], ancestor)) return true;
  }
  return false;
}

void* Tmetaclass::construct(const Tmetaclass* type) {
  return type && type->factory_ ? type->factory_() : nullptr;
}
