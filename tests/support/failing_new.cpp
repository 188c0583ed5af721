// SPDX-License-Identifier: MIT
// The global allocation operators, counting and failing on demand.
#include "support/failing_new.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <optional>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/math_error.h"

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

int outOfMemory = 0;
bool once = false;
std::optional<knotwork::test::FailingNew> limit;

void countReport(MathErrorRecord record, va_list) {
  if (record.code != knotwork::kOutOfMemory || record.severity != 2 || record.origin != 0x901A) {
    return;
  }
  ++outOfMemory;
  if (once) limit.reset();
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

void expectEveryFailureReported(const std::function<void()>& use) {
  const MathErrorHandler before = setMathErrorHandler(countReport);
  use();  // fills the cache of blocks
  const long start = newCalls();
  use();
  const long needed = newCalls() - start;
  EXPECT_GT(needed, 20);
  for (const bool single : {false, true}) {
    for (long granted = 0; granted < needed; ++granted) {
      once = single;
      outOfMemory = 0;
      limit.emplace(granted);
      EXPECT_NO_THROW(use()) << granted;
      limit.reset();
      EXPECT_TRUE(single ? outOfMemory == 1 : outOfMemory > 0) << granted;
    }
  }
  setMathErrorHandler(before);
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
