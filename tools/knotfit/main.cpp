// SPDX-License-Identifier: MIT
// knotfit: fits B-spline curves and surfaces to measured points.
#include <iostream>

#include "cli/app.h"

int main(int argc, char** argv) {
  return knotfit::run({argv + 1, argv + argc}, {std::cout, std::cerr});
}
