// SPDX-License-Identifier: MIT
// The input options that several commands share: what fits a file must be able to read it again.
#include "cli/inputs.h"

#include <CLI/CLI.hpp>

#include "cli/app.h"

namespace knotfit {
namespace {

char delimiterOf(const std::string& name) {
  if (name == "comma") return ',';
  if (name == "semicolon") return ';';
  if (name == "tab") return '\t';
  if (name == "space") return ' ';
  return name == "auto" ? '\0' : name.front();
}

}  // namespace

void TableArguments::addTo(CLI::App& app) {
  constexpr std::size_t kMost = 1000000000;
  app.add_option("--delimiter", delimiter, "auto|comma|semicolon|tab|space [auto]")
      ->check(CLI::IsMember({"auto", "comma", "semicolon", "tab", "space", ",", ";"}))
      ->type_name("NAME");
  addCount(app, "--skip", skip, 0, kMost, "lines to leave out at the top [0]");
}

TableOptions TableArguments::options() const {
  TableOptions t;
  t.delimiter = delimiterOf(delimiter);
  t.skip = skip;
  return t;
}

}  // namespace knotfit
