// SPDX-License-Identifier: MIT
// Progress of the solvers on the standard error stream.
#include "cli/progress.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include "base/text.h"

namespace knotfit {
namespace {

constexpr int kBarWidth = 40;
constexpr std::string_view kProgressHead = "Constraint solving ... ";

// The share done that one of the library's progress texts tells, or a negative number.
double shareIn(std::string_view text) {
  if (!text.starts_with(kProgressHead)) return -1;
  text.remove_prefix(kProgressHead.size());
  double percent = -1;
  const bool ok = parseNumber(text.substr(0, text.find(' ')), percent) == NumberFault::kNone;
  return ok ? percent / 100 : -1;
}

}  // namespace

Progress::Progress(Talk talk)
    : TsolverReporter(talk == Talk::kQuiet),
      talk_(talk),
      start_(std::chrono::steady_clock::now()) {}

Progress::~Progress() { wipe(); }

void Progress::reportMessage(const char* text) {
  if (talk_ == Talk::kVerbose) TsolverReporter::reportMessage(text);
  if (talk_ == Talk::kBar) draw(shareIn(text));
}

int Progress::reportStep(int step, int maximum) {
  if (talk_ == Talk::kVerbose) return TsolverReporter::reportStep(step, maximum);
  if (talk_ == Talk::kBar && maximum > 0) draw(static_cast<double>(step) / maximum);
  return 0;
}

void Progress::draw(double fraction) {
  constexpr std::chrono::milliseconds kPatience(500);
  if (fraction < 0 || std::chrono::steady_clock::now() - start_ < kPatience) return;
  const int done = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * kBarWidth);
  const std::string bar = std::string(static_cast<std::size_t>(done), '#') +
                          std::string(static_cast<std::size_t>(kBarWidth - done), '.');
  std::fprintf(stderr, "\rsolving [%s] %3d %%", bar.c_str(), done * 100 / kBarWidth);
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::wipe() {
  if (!drawn_) return;
  std::fprintf(stderr, "\r%*s\r", kBarWidth + 20, "");
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
