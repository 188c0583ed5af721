// SPDX-License-Identifier: MIT
// The command lsq: linear regression.
#include <cmath>
#include <memory>
#include <ostream>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/report.h"
#include "fit/regression.h"
#include "io/fit_json.h"
#include "io/output.h"
#include "io/points.h"

namespace knotfit {
namespace {

struct LsqArguments {
  std::string input, model, solver = "householder", columns, report;
  bool force = false, quiet = false;
};

RegressionMethod methodOf(const std::string& name) {
  if (name == "qr") return RegressionMethod::kQr;
  if (name == "svd") return RegressionMethod::kSvd;
  if (name == "cholesky") return RegressionMethod::kCholesky;
  if (name == "lu") return RegressionMethod::kLu;
  return RegressionMethod::kHouseholder;
}

// The degree K of poly:K, or -1 for another model.
int polynomialDegree(const std::string& model) {
  constexpr int kHighest = 30;
  if (!model.starts_with("poly:")) return -1;
  long long k = 0;
  if (!parseInteger(model.substr(5), k) || k < 1 || k > kHighest) {
    throw Fault(kUsage, cat("--model: wants poly:1 to poly:", kHighest, ", not ", inQuotes(model)));
  }
  return static_cast<int>(k);
}

Table readData(const LsqArguments& a) {
  ByteSource source(a.input);
  return readTable(source, {}, [&](const auto& names, std::size_t width) {
    std::vector<std::size_t> columns;
    if (a.columns.empty()) {
      for (std::size_t i = 0; i < width; ++i) columns.push_back(i);
    } else {
      for (const std::string& c : commaList(a.columns))
        columns.push_back(findColumn(c, names, width));
    }
    if (columns.size() < 2) {
      throw Fault(kInput, cat(source.name(), ": one column; regression needs the response and ",
                              "another (choose them with --columns y,x)"));
    }
    return columns;
  });
}

RegressionProblem problemOf(const Table& table, const std::string& model) {
  const int degree = polynomialDegree(model);
  if (degree < 0 && model != "linear" && model != "noint") {
    throw Fault(kUsage, cat("--model: wants poly:K, linear or noint, not ", inQuotes(model)));
  }
  if (degree >= 0 && table.columns != 2) {
    throw Fault(kUsage, cat("a polynomial takes the response and one column, the file has ",
                            table.columns, "; choose them with --columns y,x"));
  }
  RegressionProblem p;
  const auto column = [&](std::size_t c) {
    std::vector<double> out;
    for (std::size_t i = 0; i < table.rows; ++i) out.push_back(table.values[i * table.columns + c]);
    return out;
  };
  p.response = column(0);
  if (model != "noint") {
    p.names.push_back("B0");
    p.columns.emplace_back(table.rows, 1.0);
  }
  for (int k = 1; k <= degree; ++k) {
    std::vector<double> power = column(1);
    for (double& x : power) x = std::pow(x, k);
    p.columns.push_back(std::move(power));
    p.names.push_back(cat("B", k));
  }
  for (std::size_t c = 1; degree < 0 && c < table.columns; ++c) {
    p.columns.push_back(column(c));
    p.names.push_back(cat("B", c));
  }
  return p;
}

std::string columnText(const std::string& text, std::size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text + " ";
}

Report reportOf(const LsqArguments& a, const RegressionProblem& p, const RegressionResult& r) {
  Report report;
  report.line("lsq", cat(p.response.size(), " rows, ", p.names.size(), " parameters, model ",
                         a.model, ", ", a.solver));
  report.json["kind"] = "lsq";
  report.json["model"] = a.model;
  report.json["solver"] = a.solver;
  report.json["rows"] = p.response.size();
  report.json["parameters"] = nlohmann::ordered_json::array();
  for (std::size_t j = 0; j < p.names.size(); ++j) {
    report.line(p.names[j], cat(columnText(shortest(r.estimates[j]), 26), "standard error ",
                                significant(r.errors[j], 15)));
    report.json["parameters"].push_back(
        {{"name", p.names[j]}, {"estimate", r.estimates[j]}, {"error", r.errors[j]}});
  }
  report.line("residual", cat("standard deviation ", significant(r.residualDeviation, 15),
                              ", sum of squares ", significant(r.sumOfSquares, 15)));
  report.line(
      "", cat("R squared ", significant(r.rSquared, 15), ", ", r.freedom, " degrees of freedom"));
  report.json["residual_standard_deviation"] = r.residualDeviation;
  report.json["sum_of_squares"] = r.sumOfSquares;
  report.json["r_squared"] = r.rSquared;
  report.json["degrees_of_freedom"] = r.freedom;
  return report;
}

int lsqCommand(const LsqArguments& a, const Streams& streams) {
  OutputSet outputs(a.force);
  if (!a.report.empty()) outputs.announce(a.report);
  const RegressionProblem problem = problemOf(readData(a), a.model);
  const Report report = reportOf(a, problem, regression(problem, methodOf(a.solver)));
  if (!a.report.empty()) outputs.add(a.report, jsonText(report.json));
  outputs.commit();
  if (!a.quiet) (a.report == "-" ? streams.err : streams.out) << report.text;
  return kDone;
}

}  // namespace

void addLsqCommand(CLI::App& app, Command& chosen) {
  CLI::App* command = app.add_subcommand("lsq", "linear regression with standard errors");
  const auto a = std::make_shared<LsqArguments>();
  command->add_option("DATA", a->input, "CSV, the response in its first column")->required();
  command->add_option("--model", a->model, "poly:K, linear, or noint: linear without intercept")
      ->required();
  command->add_option("--solver", a->solver, "householder|qr|svd|cholesky|lu [householder]")
      ->check(CLI::IsMember({"householder", "qr", "svd", "cholesky", "lu"}))
      ->type_name("NAME");
  command->add_option("--columns", a->columns, "response first, by name or number from 1")
      ->type_name("Y,X...");
  command->add_option("--report", a->report, "also write the report as JSON")
      ->type_name("FILE.json");
  command->add_flag("--force", a->force, "overwrite files that exist");
  command->add_flag("-q,--quiet", a->quiet, "print nothing but errors");
  command->footer("\nExample: knotfit lsq norris.csv --model linear --solver qr");
  command->callback([a, &chosen] { chosen = [a](const Streams& s) { return lsqCommand(*a, s); }; });
}

}  // namespace knotfit
