// SPDX-License-Identifier: MIT
// The output options that several commands share.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "draw/pictures.h"
#include "io/output.h"
#include "io/writers.h"

namespace knotfit {

struct OutputOptions {
  std::vector<std::string> files;
  std::string format;
  std::size_t perSpan = 8;
  bool force = false;

  /// Adds -o, --format, --tess and --force.
  void addTo(CLI::App& app);
  /// @return whether standard output is taken by a file.
  bool takesStandardOutput() const;
};

/// The files of one fit in the making.
class FitOutputs {
 public:
  /// Faults before any work is done when a file could not be written.
  explicit FitOutputs(const OutputOptions& options);
  /// Announces one more file, for a report.
  void announce(const std::string& path) { set_.announce(path); }
  void add(const std::string& path, std::string text) { set_.add(path, std::move(text)); }
  /// Adds the fit in all formats asked for.
  void addFit(const Spline& spline, const PictureData& data);
  /// @return "out.igs (IGES 126), out.svg", empty without files.
  std::string list(const Spline& spline) const;
  void commit() { set_.commit(); }

 private:
  const OutputOptions& options_;
  std::vector<Format> formats_;
  OutputSet set_;
};

}  // namespace knotfit
