// SPDX-License-Identifier: MIT
// How far the stages of the work are, for whoever shows it.
#pragma once

#include <cstddef>
#include <string>

#include "base/text.h"

namespace knotfit {

/// Hears how far the work is, every few thousand steps.
class Watcher {
 public:
  virtual ~Watcher() = default;
  /// @param text  a few words for a line that the next ones overwrite.
  virtual void tell(const std::string& text) = 0;
};

/// One stage of the work, of steps that take well under a millisecond.
class Stage {
 public:
  /// @param watcher  null: nobody.
  /// @param total    number of steps, 0 where it is not known.
  Stage(Watcher* watcher, const char* name, std::size_t total = 0)
      : watcher_(watcher), name_(name), total_(total) {}

  /// To be called with each step's number.
  void at(std::size_t step) const {
    constexpr std::size_t kSteps = 8192;
    if (step % kSteps == 0) now(step);
  }
  /// The same for steps that take longer.
  void now(std::size_t step) const {
    if (!watcher_) return;
    watcher_->tell(total_ ? cat(name_, ": ", 100 * step / total_, " %") : cat(name_, ": ", step));
  }

 private:
  Watcher* watcher_;
  const char* name_;
  std::size_t total_;
};

}  // namespace knotfit
