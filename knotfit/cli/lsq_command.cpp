// SPDX-License-Identifier: MIT
// The command lsq: linear regression. The model is turned into named columns here, B0 for the
// intercept, Bk for the k-th power or column; scaling and refinement belong to the solver.
#include <cmath>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "base/fault.h"
#include "base/text.h"
#include "cli/app.h"
#include "cli/inputs.h"
#include "cli/outputs.h"
#include "cli/report.h"
#include "fit/regression.h"
#include "io/fit_json.h"
#include "io/output.h"
#include "io/readers.h"

namespace knotfit {
namespace {

struct LsqArguments {
  std::string input, model, solver = "householder", columns, report;
  bool force = false, quiet = false;
  TableArguments table;
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
  constexpr int kHighest = 30;  // far above what data bear: more is a slip
  if (!model.starts_with("poly:")) return -1;
  long long k = 0;
  if (!parseInteger(model.substr(5), k) || k < 1 || k > kHighest) {
    throw Fault(kUsage, cat("--model: wants poly:1 to poly:", kHighest, ", not ", inQuotes(model)));
  }
  return static_cast<int>(k);
}

Table readData(const LsqArguments& a) {
  ByteSource source(a.input);
  return readTable(source, a.table.options(), [&](const TableHead& head) {
    std::vector<std::size_t> columns;
    if (a.columns.empty()) {
      for (std::size_t i = 0; i < head.width; ++i) columns.push_back(i);
    } else {
      columns = namedColumns(a.columns, head.names, head.width);
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
  std::vector<std::vector<double>> columns(table.columns);
  for (std::size_t k = 0; k < table.values.size(); ++k) {
    columns[k % table.columns].push_back(table.values[k]);
  }
  const std::vector<double> response = std::move(columns.front());
  columns.erase(columns.begin());
  if (degree >= 0) return polynomialProblem(columns.front(), response, degree);
  return linearProblem(columns, response, model == "linear");
}

// At least one blank behind the text, for columns that line up.
std::string columnText(const std::string& text, std::size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text + " ";
}

Report reportOf(const LsqArguments& a, const RegressionProblem& p, const RegressionResult& r) {
  Report report;
  report.line("lsq", cat(p.response.size(), " rows, ", p.names.size(), " parameters, model ",
                         a.model, ", ", a.solver));
  nlohmann::ordered_json j;
  j["kind"] = "lsq";
  j["model"] = a.model;
  j["solver"] = a.solver;
  j["rows"] = p.response.size();
  j["parameters"] = nlohmann::ordered_json::array();
  for (std::size_t k = 0; k < p.names.size(); ++k) {
    report.line(p.names[k], cat(columnText(shortest(r.estimates[k]), 26), "standard error ",
                                significant(r.errors[k], 15)));
    j["parameters"].push_back(
        {{"name", p.names[k]}, {"estimate", r.estimates[k]}, {"error", r.errors[k]}});
  }
  // Squares leave the range of numbers where the deviation does not: no infinity or false zero.
  const bool squaresHold =
      std::isnormal(r.sumOfSquares) || (r.sumOfSquares == 0 && r.residualDeviation == 0);
  report.line("residual",
              cat("standard deviation ", significant(r.residualDeviation, 15), ", sum of squares ",
                  squaresHold ? significant(r.sumOfSquares, 15) : "beyond the range of numbers"));
  report.line(
      "", cat("R squared ", significant(r.rSquared, 15), ", ", r.freedom, " degrees of freedom"));
  j["residual_standard_deviation"] = r.residualDeviation;
  if (squaresHold) j["sum_of_squares"] = r.sumOfSquares;
  j["r_squared"] = r.rSquared;
  j["degrees_of_freedom"] = r.freedom;
  report.json = laidOutJson(j.dump());
  return report;
}

int lsqCommand(const LsqArguments& a, const Streams& streams) {
  OutputSet outputs(a.force);
  outputs.protect(a.input);
  if (!a.report.empty()) {
    outputs.announce(a.report);
    checkSuffix(a.report, Format::kJson);
  }
  const RegressionProblem problem = problemOf(readData(a), a.model);
  const Report report = reportOf(a, problem, regression(problem, methodOf(a.solver)));
  if (!a.report.empty()) outputs.add(a.report, report.json);
  outputs.commit([&] {
    if (!a.quiet) print(report, a.report == "-", streams);
  });
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
  a->table.addTo(*command);
  command->add_option("--report", a->report, "also write the report as JSON")
      ->type_name("FILE.json");
  command->add_flag("--force", a->force, "overwrite files that exist");
  command->add_flag("-q,--quiet", a->quiet, "print nothing but errors");
  command->footer("\nExample: knotfit lsq norris.csv --model linear --solver qr");
  command->callback([a, &chosen] { chosen = [a](const Streams& s) { return lsqCommand(*a, s); }; });
}

}  // namespace knotfit
