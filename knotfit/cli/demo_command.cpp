// SPDX-License-Identifier: MIT
// The command demo: small data sets and what to try on them, one of each kind: a closed outline, a
// space curve, a grid of heights, a calibration. They are computed, so the program needs no data
// files.
#include <cmath>
#include <filesystem>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "io/output.h"

namespace knotfit {
namespace {

constexpr double kPi = 3.14159265358979323846;

// Three places: the same on every machine, whatever its mathematical functions.
std::string place(double x) { return decimals(std::round(x * 1000) / 1000 + 0.0, 3); }

// A closed plane outline: an egg, in mm.
std::string eggPoints() {
  std::string out = "x,y\n";
  for (int i = 0; i < 60; ++i) {
    const double t = 2 * kPi * i / 60;
    out += cat(place(30 * std::cos(t) + 4 * std::cos(2 * t)), ",", place(22 * std::sin(t)), "\n");
  }
  return out;
}

// A spring of three turns that gets narrower.
std::string springPoints() {
  std::string out = "x,y,z\n";
  for (int i = 0; i <= 120; ++i) {
    const double t = 6 * kPi * i / 120, r = 20 - 0.08 * i;
    out += cat(place(r * std::cos(t)), ",", place(r * std::sin(t)), ",", place(0.4 * i), "\n");
  }
  return out;
}

// Heights of a ridge with a hollow, 25 rows and 20 columns.
std::string hillHeights() {
  std::string out;
  for (int i = 0; i < 25; ++i) {
    for (int j = 0; j < 20; ++j) {
      const double x = (i - 12) / 6.0, y = (j - 10) / 5.0;
      const double z =
          12 * std::exp(-x * x - 0.5 * y * y) - 5 * std::exp(-2 * (x - 1) * (x - 1) - y * y);
      out += (j ? "," : "") + place(z);
    }
    out += "\n";
  }
  return out;
}

// A calibration: response first, slightly bent.
std::string calibrationData() {
  std::string out = "y,x\n";
  for (int i = 0; i <= 20; ++i) {
    const double x = 5.0 * i;
    out +=
        cat(place(0.3 + 1.02 * x - 0.001 * x * x + 0.2 * std::sin(7.0 * i)), ",", place(x), "\n");
  }
  return out;
}

int demoCommand(const std::string& folder, bool force, const Streams& streams) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw Fault(kOutput, cat(shownName(folder), ": cannot be made: ", error.message()));
  const auto path = [&](const char* name) { return (fs::path(folder) / name).string(); };
  const std::pair<const char*, std::string> files[] = {{"egg.csv", eggPoints()},
                                                       {"spring.csv", springPoints()},
                                                       {"hill.csv", hillHeights()},
                                                       {"calibration.csv", calibrationData()}};
  OutputSet outputs(force);
  // All names first: either every file is written or none.
  for (const auto& [name, text] : files) outputs.announce(path(name));
  for (const auto& [name, text] : files) outputs.add(path(name), text);
  const std::string shown = shownName(folder);
  outputs.commit([&] {
    deliver(streams.out,
            cat("wrote egg.csv, spring.csv, hill.csv and calibration.csv to ", shown,
                "\n\nTry\n  cd ", shown,
                "\n  knotfit curve egg.csv --closed --controls 16 -o egg.json -o egg.svg\n"
                "  knotfit curve spring.csv --tol 0.05 -o spring.svg -o spring.igs\n"
                "  knotfit surface hill.csv --height --controls 12,10 -o hill.json -o hill.png\n"
                "  knotfit eval hill.json --at 0.5,0.5 --normals\n"
                "  knotfit insert egg.json --knot 0.5 -o egg2.json\n"
                "  knotfit check egg2.json egg.csv --nearest\n"
                "  knotfit lsq calibration.csv --model poly:2\n"));
  });
  return kDone;
}

}  // namespace

void addDemoCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("demo", "write small data sets and the commands to try");
  const auto folder = std::make_shared<std::string>("knotfit-demo");
  const auto force = std::make_shared<bool>(false);
  command->add_option("DIR", *folder, "folder to write to [knotfit-demo]");
  command->add_flag("--force", *force, "overwrite files that exist");
  command->footer("\nExample: knotfit demo try && cd try");
  command->callback([folder, force, &chosen] {
    chosen = [folder, force](const Streams& s) { return demoCommand(*folder, *force, s); };
  });
}

}  // namespace knotfit
