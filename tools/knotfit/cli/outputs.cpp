// SPDX-License-Identifier: MIT
// The output options that several commands share.
#include "cli/outputs.h"

#include <algorithm>

#include "base/text.h"
#include "cli/app.h"
#include "io/fit_json.h"

namespace knotfit {
namespace {

std::string contentsOf(const Spline& s, const PictureData& data, Format format,
                       const Tessellation& tessellation) {
  switch (format) {
    case Format::kJson:
      return fitJson(s);
    case Format::kIges:
      return igesText(s);
    case Format::kStep:
      return stepText(s);
    case Format::kObj:
      return objText(s);
    case Format::kCsv:
      return csvText(s, tessellation);
    case Format::kPly:
      return plyText(s, tessellation);
    case Format::kSvg:
    case Format::kPng:
    case Format::kPdf:
      break;
  }
  return pictureOf(s, data, format);
}

}  // namespace

void OutputOptions::addTo(CLI::App& app) {
  app.add_option("-o,--output", files, "file to write; the suffix chooses the format; may repeat")
      ->type_name("FILE")
      ->take_all();
  app.add_option("--format", format, "format of all files: json igs stp obj csv ply svg png pdf")
      ->type_name("NAME");
  addCount(app, "--tess", perSpan, 1, 1000, "straight pieces per knot span in CSV and PLY [8]");
  app.add_flag("--force", force, "overwrite files that exist");
}

bool OutputOptions::takesStandardOutput() const {
  return std::find(files.begin(), files.end(), "-") != files.end();
}

FitOutputs::FitOutputs(const OutputOptions& options) : options_(options), set_(options.force) {
  for (const std::string& file : options.files) formats_.push_back(formatOf(file, options.format));
  for (const std::string& file : options.files) set_.announce(file);
}

void FitOutputs::addFit(const Spline& spline, const PictureData& data) {
  const Tessellation tessellation{static_cast<int>(options_.perSpan)};
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    set_.add(options_.files[i], contentsOf(spline, data, formats_[i], tessellation));
  }
}

std::string FitOutputs::list(const Spline& spline) const {
  std::string out;
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    out += (i ? ", " : "") + options_.files[i];
    if (!isPicture(formats_[i])) out += cat(" (", describe(formats_[i], spline), ")");
  }
  return out;
}

}  // namespace knotfit
