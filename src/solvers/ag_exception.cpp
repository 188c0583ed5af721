// SPDX-License-Identifier: MIT
// The error codes of the host's spline kernel as exceptions.
#include "knotwork/solvers/ag_exception.h"

#include "knotwork/platform/foundation/memory_exception.h"

Tmetaclass TagExceptionTmeta("TagException", {&TexceptionTmeta}, nullptr);

TagException::TagException(int code) : errorCode_(code) {}
TagException::TagException(const TagException&) = default;
TagException& TagException::operator=(const TagException&) = default;
TagException::~TagException() = default;

int TagException::errorCode() const { return errorCode_; }

Tmetaclass* TagException::typeof() const { return &TagExceptionTmeta; }

void* TagException::cast(Tmetaclass* type) {
  return type == &TagExceptionTmeta ? this : Texception::cast(type);
}

Texception* TagException::cache() {
  static TagException cached(0);
  if (this != &cached) cached = *this;
  return &cached;
}

void* TagException::construct(Tmetaclass* type) {
  if (type == nullptr || !Tmetaclass::istype(type, TagExceptionTmeta)) return nullptr;
  return Tmetaclass::construct(type);
}

void AG_raiseException(int code) {
  constexpr int kOutOfMemoryCode = 902;
  if (code == kOutOfMemoryCode) throw TmemoryException();
  throw TagException(code);
}
