// SPDX-License-Identifier: MIT
// The output options that several commands share.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "draw/pictures.h"
#include "io/fit_json.h"
#include "io/output.h"
#include "io/writers.h"

namespace CLI {
class App;
}

namespace knotfit {

struct OutputOptions {
  std::vector<std::string> files;
  std::string format;
  std::size_t perSpan = 0;  ///< 0: not given
  bool force = false;

  /// Adds -o, --format, --tess and --force.
  void addTo(CLI::App& app);
  /// @return whether standard output is taken by a file.
  bool takesStandardOutput() const;
};

/// Faults (exit code 2) when a file's suffix stands for another format than what goes into it.
void checkSuffix(const std::string& path, Format contents);

/// The files of one fit in the making.
class FitOutputs {
 public:
  /// Faults before any work is done when a file could not be written, is one of the inputs, or an
  /// option speaks of files that are not written.
  FitOutputs(const OutputOptions& options, const std::vector<std::string>& inputs);
  /// Announces one more file, for a report.
  void announce(const std::string& path) {
    set_.announce(path);
    checkSuffix(path, Format::kJson);
  }
  void add(const std::string& path, std::string text) { set_.add(path, std::move(text)); }
  /// Adds the fit in all formats asked for.
  void addFit(const StoredFit& fit, const PictureData& data);
  /// @return "out.igs (IGES 126), out.svg", empty without files.
  std::string list(const Spline& spline) const;
  /// Writes all; `last` is called when nothing but renaming is left, to print the report.
  void commit(const std::function<void()>& last) { set_.commit(last); }

 private:
  const OutputOptions& options_;
  std::vector<Format> formats_;
  OutputSet set_;
};

}  // namespace knotfit
