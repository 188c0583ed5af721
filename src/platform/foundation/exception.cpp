// SPDX-License-Identifier: MIT
// Foundation stand-in: root of the exceptions.
#include "knotwork/platform/foundation/exception.h"

Tmetaclass TexceptionTmeta("Texception", {}, nullptr);

Texception::Texception() = default;
Texception::Texception(const Texception&) = default;
Texception& Texception::operator=(const Texception&) = default;
Texception::~Texception() = default;

Tmetaclass* Texception::typeof() const { return &TexceptionTmeta; }

void* Texception::cast(Tmetaclass* type) { return type == &TexceptionTmeta ? this : nullptr; }

Texception* Texception::cache() {
  static Texception cached;
  if (this != &cached) cached = *this;
  return &cached;
}
