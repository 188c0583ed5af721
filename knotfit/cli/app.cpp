// SPDX-License-Identifier: MIT
// The command line of knotfit: subcommands, help, faults to exit codes. Everything that ends the
// program passes through run(): one line of error, escaped so that it is one line whatever names it
// holds, and the exit code that belongs to it.
#include "cli/app.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <system_error>

#include <knotwork/knotwork.h>
#include <knotwork/platform/foundation/memory_exception.h>
#include <CLI/CLI.hpp>

#include "base/fault.h"
#include "base/text.h"

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

knotfit COMMAND --help, or knotfit help COMMAND, tells the options of a command.
)";

constexpr char kMemoryLine[] = "memory is exhausted; use fewer --controls or --thin N";

// The library reports misuse and lack of memory here; its default would abort. Warnings are let go.
void endOnReport(MathErrorRecord record, va_list) {
  const MathMessageEntry* message = findMathMessage(record.code);
  const unsigned severity =
      record.severity == 1 && message ? message->defaultSeverity : record.severity;
  if (severity == 0) return;
  // _Exit: nothing may be thrown through the library, and destructors might report once more.
  if (record.code == knotwork::kOutOfMemory) {
    std::cerr << kMemoryLine << std::endl;
    std::_Exit(kUsage);
  }
  std::cerr << "internal fault: the library reports code " << record.code << std::endl;
  std::_Exit(kInternal);
}

// Memory that runs out where nothing may be thrown, as in destructors of the JSON library.
[[noreturn]] void endOnTerminate() {
  try {
    if (std::current_exception()) throw;
  } catch (const std::bad_alloc&) {
    std::cerr << kMemoryLine << std::endl;
    std::_Exit(kUsage);
  } catch (...) {
    std::cerr << "internal fault: an exception where none may be" << std::endl;
  }
  std::_Exit(kInternal);
}

// The command at work, or nothing: its name in messages and the help that tells more.
std::string commandName(const CLI::App& app) {
  const auto asked = app.get_subcommands();
  return asked.empty() ? "knotfit" : "knotfit " + asked.front()->get_name();
}

int usage(const std::string& message, const CLI::App& app, const Streams& streams) {
  streams.err << escaped(message) << " (see " << commandName(app) << " --help)\n";
  return kUsage;
}

// The parser only notes the command: it runs once all words are understood, so that a mistake in
// the last one costs no fit.
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

// "help COMMAND" is "COMMAND --help", and "help" alone the overview.
std::vector<std::string> withoutHelpWord(std::vector<std::string> arguments) {
  if (arguments.empty() || arguments.front() != "help") return arguments;
  arguments.erase(arguments.begin());
  arguments.emplace_back("--help");
  return arguments;
}

// What to say of the first word that nothing takes. An option comes first: the words behind it are
// left over only because it was.
std::string extraWord(const CLI::App& app) {
  const auto asked = app.get_subcommands();
  const std::vector<std::string> left = app.remaining(true);
  const auto option = std::find_if(left.begin(), left.end(), [](const std::string& word) {
    return word.size() > 1 && word.front() == '-';
  });
  if (option == left.end()) {
    const std::string word = left.empty() ? "" : inQuotes(left.back());
    if (asked.empty()) return cat("there is no command ", word);
    return cat(asked.front()->get_name(), " takes no further word: ", word,
               "; each option takes one");
  }
  const std::string name = option->substr(0, option->find('='));
  std::string others;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_option_no_throw(name)) {
      others += (others.empty() ? "" : ", ") + command->get_name();
    }
  }
  const std::string here = asked.empty() ? "knotfit" : asked.front()->get_name();
  return cat(here, " has no option ", name, others.empty() ? "" : cat("; it belongs to ", others));
}

// The parser's words on the number of values, in ours.
std::string mismatch(const std::string& message) {
  const std::string option = message.substr(0, message.find(':'));
  const bool missing = message.find("missing") != std::string::npos;
  return cat(option, missing ? ": wants a value" : ": is given more than once");
}

// An empty value is a variable that was not set in somebody's script; it would count as not given.
void refuseEmptyValues(const CLI::App& app) {
  for (const CLI::App* command : app.get_subcommands()) {
    for (const CLI::Option* option : command->get_options()) {
      const auto& values = option->results();
      if (std::find(values.begin(), values.end(), "") == values.end()) continue;
      throw Fault(kUsage,
                  cat(option->get_name(), ": the value is empty; give one, or leave it out"));
    }
  }
}

int parseAndRun(const std::vector<std::string>& given, const Streams& streams) {
  CLI::App app("fits B-spline curves and surfaces to measured points", "knotfit");
  Command chosen;
  build(app, chosen);
  if (given.size() > 2 && given.front() == "help") {
    return usage(cat("help takes one command, not also ", inQuotes(given[2])), app, streams);
  }
  std::vector<std::string> arguments = withoutHelpWord(given);
  std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
  try {
    app.parse(arguments);
  } catch (const CLI::CallForHelp&) {
    const auto asked = app.get_subcommands();
    if (asked.empty() && given.front() == "help" && given.size() > 1) {
      return usage(cat("there is no command ", inQuotes(given[1])), app, streams);
    }
    deliver(streams.out, asked.empty() ? kOverview : asked.front()->help("knotfit"));
    return kDone;
  } catch (const CLI::CallForVersion& e) {
    deliver(streams.out, cat(e.what(), "\n"));
    return kDone;
  } catch (const CLI::ExtrasError&) {
    return usage(extraWord(app), app, streams);
  } catch (const CLI::ArgumentMismatch& e) {
    return usage(mismatch(e.what()), app, streams);
  } catch (const CLI::ParseError& e) {
    return usage(e.what(), app, streams);
  }
  if (!chosen) {
    deliver(streams.out, kOverview);
    return kDone;
  }
  refuseEmptyValues(app);
  return chosen(streams);
}

int memoryIsOut(const Streams& streams) {
  streams.err << kMemoryLine << std::endl;
  return kUsage;
}

}  // namespace

// Both handlers are put back, for whoever runs commands in a process of his own.
int run(const std::vector<std::string>& arguments, const Streams& streams) {
  const MathErrorHandler before = setMathErrorHandler(endOnReport);
  const std::terminate_handler terminate = std::set_terminate(endOnTerminate);
  int code = kInternal;
  try {
    code = parseAndRun(arguments, streams);
  } catch (const Fault& fault) {
    streams.err << escaped(fault.what()) << "\n";
    code = fault.code();
  } catch (const std::bad_alloc&) {
    code = memoryIsOut(streams);
  } catch (const TmemoryException&) {  // from the spline objects
    code = memoryIsOut(streams);
  } catch (const TagException& e) {
    streams.err << "internal fault: the kernel reports code " << e.errorCode() << "\n";
  } catch (const std::exception& e) {
    streams.err << "internal fault: " << escaped(e.what()) << "\n";
  }
  std::set_terminate(terminate);
  setMathErrorHandler(before);
  return code;
}

void deliver(std::ostream& out, const std::string& text) {
  errno = 0;  // streams tell that writing failed, and leave the cause there
  if (out << text << std::flush) return;
  const int cause = errno ? errno : EIO;
  throw Fault(kOutput,
              cat("standard output: cannot be written: ", std::generic_category().message(cause)));
}

CLI::Option* addNumber(CLI::App& app, const std::string& name, double& value, Least least,
                       const std::string& help) {
  // Taken as text: the parser's own reading of numbers follows the locale and takes "nan".
  const auto read = [&value, name, least](const std::string& text) {
    if (parseNumber(text, value) != NumberFault::kNone) {
      throw Fault(kUsage, cat(name, ": not a number: ", inQuotes(text)));
    }
    const bool fits = least == Least::kZero ? value >= 0 : value > 0;
    if (fits) return;
    throw Fault(kUsage, cat(name, ": wants a number ", least == Least::kZero ? "from 0" : "above 0",
                            ", not ", inQuotes(text)));
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

std::size_t countOf(const std::string& option, const std::string& text) {
  long long n = 0;
  if (parseInteger(text, n) && n >= 1 && n < 1LL << 31) return static_cast<std::size_t>(n);
  throw Fault(kUsage, cat(option, ": wants a whole number from 1, not ", inQuotes(text)));
}

std::vector<std::size_t> countList(const std::string& option, const std::string& text) {
  std::vector<std::size_t> out;
  for (const std::string& part : commaList(text)) out.push_back(countOf(option, part));
  return out;
}

}  // namespace knotfit
