// SPDX-License-Identifier: MIT
// Progress of the work on the standard error stream. The bar waits for half a second, so that
// short fits show none, and is wiped in the end, so that a terminal holds nothing but the report.
#include "cli/progress.h"

#include <cstdio>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace knotfit {
namespace {

constexpr int kWidth = 60;  // columns that the line takes

}  // namespace

Progress::Progress(Talk talk)
    : TsolverReporter(talk != Talk::kVerbose),
      talk_(talk),
      start_(std::chrono::steady_clock::now()) {}

Progress::~Progress() { wipe(); }

// The solvers tell of their progress in words, which are shown as they are.
void Progress::reportMessage(const char* text) {
  if (talk_ != Talk::kLine) return TsolverReporter::reportMessage(text);
  tell(text);
}

void Progress::tell(const std::string& text) {
  constexpr std::chrono::milliseconds kPatience(500);
  if (talk_ != Talk::kLine || std::chrono::steady_clock::now() - start_ < kPatience) return;
  std::fprintf(stderr, "\r%-*.*s", kWidth, kWidth, text.c_str());
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::wipe() {
  if (!drawn_) return;
  std::fprintf(stderr, "\r%*s\r", kWidth, "");
  std::fflush(stderr);
  drawn_ = false;
}

bool errorIsTerminal() {
#if defined(_WIN32)
  return _isatty(_fileno(stderr)) != 0;
#else
  return isatty(STDERR_FILENO) != 0;
#endif
}

}  // namespace knotfit
