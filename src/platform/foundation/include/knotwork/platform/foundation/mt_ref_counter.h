// SPDX-License-Identifier: MIT
// Foundation stand-in: a reference count that several threads may hold at once.
#pragma once

#include <atomic>

#include "knotwork/platform/foundation/export.h"

/// Count of the owners of a shared record; safe to change from several threads.
class KNOTWORK_FOUNDATION_API TmtRefCounter {
 public:
  /// A record that is made has one owner.
  TmtRefCounter();

  TmtRefCounter(const TmtRefCounter&) = delete;
  TmtRefCounter& operator=(const TmtRefCounter&) = delete;

  /// Adds an owner. @return the count after it.
  unsigned increment();

  /// Takes an owner away. @return the count after it; 0 tells the caller to free the record.
  unsigned decrement();

  /// @return the number of owners.
  unsigned value() const;

 private:
  std::atomic<unsigned> count_;
};
