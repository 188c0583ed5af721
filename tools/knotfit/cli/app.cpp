// SPDX-License-Identifier: MIT
// The command line of knotfit: subcommands, help, faults to exit codes.
#include "cli/app.h"

#include <cstdlib>
#include <iostream>
#include <new>

#include <knotwork/knotwork.h>

#include "base/fault.h"
#include "base/text.h"
#include "io/table.h"

namespace knotfit {
namespace {

constexpr char kOverview[] = R"(knotfit fits B-spline curves and surfaces to measured points.

  knotfit curve   POINTS [fit options] [-o FILE]...     fit a curve
  knotfit surface GRID   [fit options] [-o FILE]...     fit a surface to a rows x columns grid
  knotfit eval    FIT.json [--at U[,V] | --n N | --grid NxM] [--deriv K] [--normals] [-o FILE]
  knotfit check   FIT.json POINTS [--nearest] [--tol T] residuals of any points against a fit
  knotfit insert  FIT.json --knot T[:MULT] [--dir u|v] -o FILE    knot insertion, same shape
  knotfit convert FIT.json -o FILE...                   write other formats
  knotfit info    FILE                                  count, bounds, spacing; or a fit's data
  knotfit lsq     DATA.csv --model poly:K|linear|noint [--solver NAME]   regression
  knotfit demo    [DIR]                                 write small data sets to try

Examples
  knotfit curve section.csv --controls 40 -o section.json -o section.svg
  knotfit surface heights.csv --height --spacing 10,10 --controls 30,21 -o hill.igs
  knotfit convert section.json -o section.stp

knotfit COMMAND --help tells the options of a command.
)";

// The library reports misuse and lack of memory here; its default would abort. Warnings are let go.
void endOnReport(MathErrorRecord record, va_list) {
  const MathMessageEntry* message = findMathMessage(record.code);
  const unsigned severity =
      record.severity == 1 && message ? message->defaultSeverity : record.severity;
  if (severity == 0) return;
  if (record.code == knotwork::kOutOfMemory) {
    std::cerr << "memory is exhausted; use fewer --controls or --thin N" << std::endl;
    std::_Exit(kUsage);
  }
  std::cerr << "internal fault: the library reports code " << record.code << std::endl;
  std::_Exit(kInternal);
}

int usage(const std::string& message, const Streams& streams) {
  streams.err << message << " (see knotfit --help)\n";
  return kUsage;
}

void build(CLI::App& app, Command& chosen) {
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", "knotfit " KNOTFIT_VERSION);
  app.footer([] { return std::string(); });
  addCurveCommand(app, chosen);
  addSurfaceCommand(app, chosen);
  addEvalCommand(app, chosen);
  addCheckCommand(app, chosen);
  addInsertCommand(app, chosen);
  addConvertCommand(app, chosen);
  addInfoCommand(app, chosen);
  addLsqCommand(app, chosen);
  addDemoCommand(app, chosen);
}

int parseAndRun(std::vector<std::string> arguments, const Streams& streams) {
  CLI::App app("fits B-spline curves and surfaces to measured points", "knotfit");
  Command chosen;
  build(app, chosen);
  std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
  try {
    app.parse(arguments);
  } catch (const CLI::CallForHelp&) {
    const auto asked = app.get_subcommands();
    if (asked.empty())
      streams.out << kOverview;
    else
      streams.out << asked.front()->help();
    return kDone;
  } catch (const CLI::CallForVersion& e) {
    streams.out << e.what() << "\n";
    return kDone;
  } catch (const CLI::ParseError& e) {
    return usage(e.what(), streams);
  }
  if (!chosen) {
    streams.out << kOverview;
    return kDone;
  }
  return chosen(streams);
}

}  // namespace

int run(const std::vector<std::string>& arguments, const Streams& streams) {
  const MathErrorHandler before = setMathErrorHandler(endOnReport);
  int code = kInternal;
  try {
    code = parseAndRun(arguments, streams);
  } catch (const Fault& fault) {
    streams.err << fault.what() << "\n";
    code = fault.code();
  } catch (const std::bad_alloc&) {
    streams.err << "memory is exhausted; use fewer --controls or --thin N\n";
    code = kUsage;
  } catch (const std::exception& e) {
    streams.err << "internal fault: " << e.what() << "\n";
  }
  setMathErrorHandler(before);
  return code;
}

CLI::Option* addNumber(CLI::App& app, const std::string& name, double& value,
                       const std::string& help) {
  const auto read = [&value, name](const std::string& text) {
    if (parseNumber(text, value) != NumberFault::kNone) {
      throw Fault(kUsage, cat(name, ": not a number: ", inQuotes(text)));
    }
  };
  return app.add_option_function<std::string>(name, read, help)->type_name("NUMBER");
}

CLI::Option* addCount(CLI::App& app, const std::string& name, std::size_t& value, std::size_t least,
                      std::size_t most, const std::string& help) {
  const auto read = [&value, name, least, most](const std::string& text) {
    long long n = 0;
    if (!parseInteger(text, n) || n < static_cast<long long>(least) ||
        n > static_cast<long long>(most)) {
      throw Fault(kUsage, cat(name, ": wants a whole number from ", least, " to ", most, ", not ",
                              inQuotes(text)));
    }
    value = static_cast<std::size_t>(n);
  };
  return app.add_option_function<std::string>(name, read, help)->type_name("N");
}

std::vector<double> numberList(const std::string& option, const std::string& text) {
  std::vector<double> out;
  for (const std::string& part : commaList(text)) {
    out.emplace_back();
    if (parseNumber(part, out.back()) != NumberFault::kNone) {
      throw Fault(kUsage, cat(option, ": not a number: ", inQuotes(part)));
    }
  }
  return out;
}

std::vector<std::size_t> countList(const std::string& option, const std::string& text) {
  std::vector<std::size_t> out;
  for (const std::string& part : commaList(text)) {
    long long n = 0;
    if (!parseInteger(part, n) || n < 1 || n > (1LL << 31) - 1) {
      throw Fault(kUsage, cat(option, ": wants whole numbers from 1, not ", inQuotes(part)));
    }
    out.push_back(static_cast<std::size_t>(n));
  }
  return out;
}

}  // namespace knotfit
