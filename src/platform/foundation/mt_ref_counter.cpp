// SPDX-License-Identifier: MIT
// Foundation stand-in: the shared count.
#include "knotwork/platform/foundation/mt_ref_counter.h"

TmtRefCounter::TmtRefCounter() : count_(1) {}

unsigned TmtRefCounter::increment() { return ++count_; }

unsigned TmtRefCounter::decrement() { return --count_; }

unsigned TmtRefCounter::value() const { return count_; }
