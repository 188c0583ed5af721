// SPDX-License-Identifier: MIT
// Whether memory ran out while something was computed.
//
// A request for memory that fails is reported, and where the handler returns the operation goes on
// with what it has: a vector that is empty, a copy that is none, a change that was left out. What
// has a code to return asks here, once for all its steps and for those of the classes that it uses.
#pragma once

namespace knotwork::detail {

/// How many requests for vector storage have failed since the program started.
unsigned failedRequests();

class MemoryWatch {
 public:
  /// Whether a request failed since the watch was made, whoever asked.
  bool ranOut() const { return failedRequests() != before_; }

 private:
  unsigned before_ = failedRequests();
};

}  // namespace knotwork::detail
