// SPDX-License-Identifier: MIT
// How the program ends when it cannot go on: an exit code and one line that names the mend.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace knotfit {

/// Exit codes of the program.
enum Exit : int {
  kDone = 0,             ///< everything done
  kToleranceMissed = 1,  ///< done, but the asked tolerance was not reached
  kUsage = 2,            ///< wrong usage, or a request that cannot fit in memory
  kInput = 3,            ///< input cannot be read
  kNoSolution = 4,       ///< no unique solution
  kOutput = 5,           ///< output cannot be written
  kInternal = 70,        ///< a fault of the program or the library
};

/// Thrown to end the program with `code()` after printing `what()` as its one line of error.
class Fault : public std::exception {
 public:
  Fault(Exit code, std::string line) : code_(code), line_(std::move(line)) {}
  Exit code() const { return code_; }
  const char* what() const noexcept override { return line_.c_str(); }

 private:
  Exit code_;
  std::string line_;
};

}  // namespace knotfit
