// SPDX-License-Identifier: MIT
// Ranges of spans are cut where the rows up to there reach the next share of all. Every span is
// worked on by one thread, in the order of its rows, so the result knows nothing of the threads.
#include "solvers/balanced_spans.h"

#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace knotwork::detail {
namespace {

// Range k ends at the first span by which k / parts of the rows have come.
std::vector<int> boundsOf(std::size_t count, const int* spanOfRow, int spans, int parts) {
  std::vector<int> bounds = {0};
  if (parts > 1) {
    std::vector<std::size_t> rows(static_cast<std::size_t>(spans));
    for (std::size_t i = 0; i < count; ++i) ++rows[static_cast<std::size_t>(spanOfRow[i])];
    std::size_t sum = 0;
    for (int span = 0; span + 1 < spans; ++span) {
      sum += rows[static_cast<std::size_t>(span)];
      if (sum * static_cast<std::size_t>(parts) >= count * bounds.size())
        bounds.push_back(span + 1);
    }
  }
  bounds.push_back(spans);
  return bounds;
}

}  // namespace

void onBalancedSpans(std::size_t count, const int* spanOfRow, int spans, int threads,
                     const std::function<void(int, int)>& work) {
  const std::vector<int> bounds = boundsOf(count, spanOfRow, spans, threads);
  std::vector<std::exception_ptr> failures(bounds.size());
  const auto run = [&](std::size_t part) noexcept {
    try {
      work(bounds[part - 1], bounds[part]);
    } catch (...) {
      failures[part] = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> workers;
    workers.reserve(bounds.size());
    for (std::size_t part = 2; part < bounds.size(); ++part) {
      try {
        workers.emplace_back(run, part);
      } catch (const std::system_error&) {
        run(part);
      }
    }
    run(1);
  }
  for (const std::exception_ptr& failure : failures) {
    if (failure) std::rethrow_exception(failure);
  }
}

}  // namespace knotwork::detail
