// SPDX-License-Identifier: MIT
// knotfit: fits B-spline curves and surfaces to measured points.
#include <csignal>
#include <iostream>

#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

#include "cli/app.h"

namespace {

// A closed pipe ends a write with an error, which is told, in place of ending the program. Standard
// streams that the caller has closed are taken by what cannot be read or written the way they are
// used: otherwise the first file opened would get their number, and the report would go into it.
void settleStreams() {
#if !defined(_WIN32)
  std::signal(SIGPIPE, SIG_IGN);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) != -1) continue;
    // The lowest free number is taken, and those below are open: it is this stream's.
    if (open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) return;
  }
#endif
}

}  // namespace

int main(int argc, char** argv) {
  settleStreams();
  return knotfit::run({argv + (argc > 0), argv + argc}, {std::cout, std::cerr});
}
