// SPDX-License-Identifier: MIT
// The global allocation operators, counting and failing on demand.
#include "support/failing_new.h"

#include <cstdlib>
#include <new>

#include "knotwork/vector/double_vec.h"

namespace {

long calls = 0;
long allowed = -1;  // negative: without limit

void* take(std::size_t size) noexcept {
  ++calls;
  if (allowed == 0) return nullptr;
  if (allowed > 0) --allowed;
  return std::malloc(size ? size : 1);
}

void* takeOrThrow(std::size_t size) {
  void* const memory = take(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

namespace knotwork::test {

FailingNew::FailingNew(long count) { allowed = count; }
FailingNew::~FailingNew() { allowed = -1; }
long newCalls() { return calls; }

bool canObserveAllocation() {
  const long before = newCalls();
  const DoubleVec v(10);
  return newCalls() > before;
}

}  // namespace knotwork::test

void* operator new(std::size_t size) { return takeOrThrow(size); }
void* operator new[](std::size_t size) { return takeOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return take(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
