// SPDX-License-Identifier: MIT
// Allocation failure on demand, for the whole process: programs that use it link failing_new.cpp.
#pragma once

#include <functional>

namespace knotwork::test {

/// While it lives, `allowed` further allocations by operator new succeed and all after them fail.
class FailingNew {
 public:
  explicit FailingNew(long allowed);
  FailingNew(const FailingNew&) = delete;
  FailingNew& operator=(const FailingNew&) = delete;
  ~FailingNew();
};

/// @return the calls of operator new since the program started.
long newCalls();

/// @return whether the library's allocations come through here. On Windows they do not: a DLL has
/// its operator new from the run-time library, and tests of what it allocates must be skipped.
bool canObserveAllocation();

/// Runs `use` once for each of its allocations, in two ways: that one alone fails, or all from it
/// on. Expects every run to report 0x3008 and none to throw.
void expectEveryFailureReported(const std::function<void()>& use);

}  // namespace knotwork::test
