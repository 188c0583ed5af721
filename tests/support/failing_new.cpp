// SPDX-License-Identifier: MIT
// The allocation functions, counting and failing on demand. malloc is left alone: the library does
// not call it, but the C library does, for itself.
#include "support/failing_new.h"

#include <gtest/gtest.h>
#include <cerrno>

#include <cstdlib>
#include <cstring>
#include <new>

#include "knotwork/vector/double_vec.h"
#include "knotwork/vector/math_codes.h"
#include "knotwork/vector/math_error.h"

#if defined(__linux__)
#include <dlfcn.h>
#endif

namespace {

long calls = 0;
long granted = -1;  // negative: without limit
bool onlyOne = false;
bool failed = false;
int poison = -1;  // negative: memory as it comes

// Counts an allocation. @return whether it is to fail.
bool fails() noexcept {
  ++calls;
  if (granted != 0) {
    if (granted > 0) --granted;
    return false;
  }
  if (onlyOne) granted = -1;
  return failed = true;
}

void* take(std::size_t size) noexcept {
  void* const memory = fails() ? nullptr : std::malloc(size ? size : 1);
  if (memory && poison >= 0) std::memset(memory, poison, size);
  return memory;
}

void* takeOrThrow(std::size_t size) {
  void* const memory = take(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}

int outOfMemory = 0;

void countReport(MathErrorRecord record, va_list) {
  outOfMemory +=
      record.code == knotwork::kOutOfMemory && record.severity == 2 && record.origin == 0x901A;
}

}  // namespace

namespace knotwork::test {

FailingNew::FailingNew(long count, Failing which) {
  granted = count;
  onlyOne = which == Failing::kOne;
  failed = false;
}

FailingNew::~FailingNew() { granted = -1; }

bool FailingNew::reached() { return failed; }

PoisonedNew::PoisonedNew(unsigned char byte) { poison = byte; }
PoisonedNew::~PoisonedNew() { poison = -1; }

long newCalls() { return calls; }

bool canObserveAllocation() {
  const long before = newCalls();
  const DoubleVec v(10);
  return newCalls() > before;
}

void failEveryAllocation(const std::function<void()>& attempt, const std::function<void()>& check) {
  for (const Failing which : kBothWays) {
    bool reached = true;
    for (long n = 0; reached; ++n) {
      SCOPED_TRACE(testing::Message()
                   << "allocation " << n
                   << (which == Failing::kOne ? " alone" : " and all behind it"));
      {
        const FailingNew failing(n, which);
        EXPECT_NO_THROW(attempt());
        reached = FailingNew::reached();
      }
      check();
    }
  }
}

void expectEveryFailureReported(const std::function<void()>& use) {
  const MathErrorHandler before = setMathErrorHandler(countReport);
  use();  // fills the cache of blocks
  const long start = newCalls();
  use();
  EXPECT_GT(newCalls() - start, 20);
  failEveryAllocation(
      [&] {
        outOfMemory = 0;
        use();
      },
      [] {
        EXPECT_TRUE(failed ? onlyOne ? outOfMemory == 1 : outOfMemory > 0 : outOfMemory == 0)
            << outOfMemory;
      });
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

#if defined(__linux__)

// Stand before the C library's (or a sanitizer's), which they call.
namespace {

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// The C library's own callers, such as those that make threads, look at errno.
static void* noMemory() {
  errno = ENOMEM;
  return nullptr;
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept {
  static const auto behind = next<void*(std::size_t, std::size_t)>("calloc");
  return fails() ? noMemory() : behind(count, size);
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept {
  static const auto behind = next<void*(void*, std::size_t)>("realloc");
  return fails() ? noMemory() : behind(memory, size);
}

#endif
