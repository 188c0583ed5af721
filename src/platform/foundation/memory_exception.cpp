// SPDX-License-Identifier: MIT
// Foundation stand-in: the exception of exhausted memory.
#include "knotwork/platform/foundation/memory_exception.h"

Tmetaclass TmemoryExceptionTmeta("TmemoryException", {&TexceptionTmeta}, nullptr);

TmemoryException::TmemoryException() = default;
TmemoryException::TmemoryException(const TmemoryException&) = default;
TmemoryException& TmemoryException::operator=(const TmemoryException&) = default;
TmemoryException::~TmemoryException() = default;

Tmetaclass* TmemoryException::typeof() const { return &TmemoryExceptionTmeta; }

void* TmemoryException::cast(Tmetaclass* type) {
  return type == &TmemoryExceptionTmeta ? this : Texception::cast(type);
}

Texception* TmemoryException::cache() {
  static TmemoryException cached;
  if (this != &cached) cached = *this;
  return &cached;
}
