// SPDX-License-Identifier: MIT
// Allocation failure on demand, for the whole process: programs that use it link failing_new.cpp.
#pragma once

#include <functional>

namespace knotwork::test {

/// Which allocations fail once those that are granted have been made.
enum class Failing { kAll, kOne };
inline constexpr Failing kBothWays[] = {Failing::kOne, Failing::kAll};

/// The number of threads that an operation may start while memory fails: the address sanitizer ends
/// the program where a thread that starts finds none.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr int kThreadsWithoutMemory = 1;
#else
inline constexpr int kThreadsWithoutMemory = 2;
#endif

/// While it lives, `granted` further allocations succeed; the one after them fails, and by kAll all
/// behind it, too. An allocation is a call of operator new, calloc or realloc.
class FailingNew {
 public:
  explicit FailingNew(long granted, Failing which = Failing::kAll);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();

  /// @return whether an allocation has failed since the last of these was made.
  static bool reached();
};

/// While it lives, operator new fills what it hands out with `byte`: results that differ between
/// two bytes depend on memory that nobody has written.
class PoisonedNew {
 public:
  explicit PoisonedNew(unsigned char byte);
  PoisonedNew(const PoisonedNew&) = delete;
  PoisonedNew& operator=(const PoisonedNew&) = delete;
  ~PoisonedNew();
};

/// @return the number of allocations since the program started.
long newCalls();

/// @return whether the library's allocations come through here. On Windows they do not: a DLL has
/// its operator new from the run-time library, and tests of what it allocates must be skipped.
bool canObserveAllocation();

/// Runs `attempt` once for each of its allocations, in two ways: that one alone fails, or all from
/// it on. None may throw. After each run, with memory again, comes `check`.
void failEveryAllocation(const std::function<void()>& attempt, const std::function<void()>& check);

/// As above, with a handler that returns. Expects every run to report 0x3008: a single failure
/// once.
void expectEveryFailureReported(const std::function<void()>& use);

}  // namespace knotwork::test
