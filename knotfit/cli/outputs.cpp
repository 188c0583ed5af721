// SPDX-License-Identifier: MIT
// The output options that several commands share. All is checked when the set is made, before any
// input is read; contents come when the work is done.
#include "cli/outputs.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"

namespace knotfit {
namespace {

std::string contentsOf(const StoredFit& fit, const PictureData& data, Format format,
                       const Tessellation& tessellation) {
  const Spline& s = fit.spline;
  switch (format) {
    case Format::kJson:
      return fitJson(fit);
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
      return pictureOf(s, data, PictureFormat::kSvg);
    case Format::kPng:
      return pictureOf(s, data, PictureFormat::kPng);
    case Format::kPdf:
      break;
  }
  return pictureOf(s, data, PictureFormat::kPdf);
}

}  // namespace

void OutputOptions::addTo(CLI::App& app) {
  app.add_option("-o,--output", files, "file to write; the suffix chooses the format; may repeat")
      ->type_name("FILE")
      ->allow_extra_args(false)  // the word behind the file is not another one
      ->take_all();
  app.add_option("--format", format, "format of all files: json igs stp obj csv ply svg png pdf")
      ->type_name("NAME");
  addCount(app, "--tess", perSpan, 1, 1000, "straight pieces per knot span in CSV and PLY [8]");
  app.add_flag("--force", force, "overwrite files that exist");
}

void checkSuffix(const std::string& path, Format contents) {
  if (suffixFormat(path).value_or(contents) == contents) return;
  const bool json = contents == Format::kJson;
  throw Fault(kUsage, cat(shownName(path), ": what goes there is ", json ? "JSON" : "CSV",
                          "; give a name that ends in ", json ? ".json" : ".csv"));
}

bool OutputOptions::takesStandardOutput() const {
  return std::find(files.begin(), files.end(), "-") != files.end();
}

FitOutputs::FitOutputs(const OutputOptions& o, const std::vector<std::string>& inputs)
    : options_(o), set_(o.force) {
  if (!o.format.empty() && o.files.empty()) {
    throw Fault(kUsage, "--format: names the format of files, and no -o names one");
  }
  for (const std::string& file : o.files) formats_.push_back(formatOf(file, o.format));
  // An option that nothing here obeys would leave its user waiting for an effect.
  const bool sampled = std::any_of(formats_.begin(), formats_.end(),
                                   [](Format f) { return f == Format::kCsv || f == Format::kPly; });
  if (o.perSpan > 0 && !sampled) {
    throw Fault(kUsage, "--tess: is for CSV and PLY files, and no -o names one");
  }
  for (const std::string& input : inputs) set_.protect(input);
  for (const std::string& file : o.files) set_.announce(file);
}

void FitOutputs::addFit(const StoredFit& fit, const PictureData& data) {
  Tessellation tessellation;
  if (options_.perSpan > 0) tessellation.perSpan = static_cast<int>(options_.perSpan);
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    set_.add(options_.files[i], contentsOf(fit, data, formats_[i], tessellation));
  }
}

std::string FitOutputs::list(const Spline& spline) const {
  std::string out;
  for (std::size_t i = 0; i < formats_.size(); ++i) {
    out += (i ? ", " : "") + shownName(options_.files[i]);
    if (!isPicture(formats_[i])) out += cat(" (", describe(formats_[i], spline), ")");
  }
  return out;
}

}  // namespace knotfit
