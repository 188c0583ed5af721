// SPDX-License-Identifier: MIT
// The input options that several commands share.
#pragma once

#include <string>

#include "io/table.h"

namespace CLI {
class App;
}

namespace knotfit {

/// How text tables are read.
struct TableArguments {
  std::string delimiter = "auto";
  std::size_t skip = 0;

  /// Adds --delimiter and --skip.
  void addTo(CLI::App& app);
  TableOptions options() const;
  /// @return whether anything but the usual was asked for.
  bool given() const { return delimiter != "auto" || skip > 0; }
};

}  // namespace knotfit
