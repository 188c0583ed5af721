// SPDX-License-Identifier: MIT
// Rows of a system shared out to threads.
#pragma once

#include <cstddef>
#include <functional>

namespace knotwork::detail {

/// Calls work(from, to) for at most `threads` ranges of spans from <= span < to with about as many
/// of the `count` rows each, on as many threads as the system gives, and waits for all of them.
/// Together the ranges are 0 .. spans - 1. What a call throws is thrown here.
void onBalancedSpans(std::size_t count, const int* spanOfRow, int spans, int threads,
                     const std::function<void(int, int)>& work);

}  // namespace knotwork::detail
