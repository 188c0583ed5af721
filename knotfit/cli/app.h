// SPDX-License-Identifier: MIT
// The command line of knotfit.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace knotfit {

/// Where a command writes: reports, and what is not for files.
struct Streams {
  std::ostream& out;
  std::ostream& err;
};

/// A command returns its exit code, or throws a Fault.
using Command = std::function<int(const Streams&)>;

/// Runs the program with the arguments behind its name. @return the exit code.
int run(const std::vector<std::string>& arguments, const Streams& streams);

// Each adds one subcommand to the command line and sets `chosen` when it was given.
void addCurveCommand(CLI::App& app, Command& chosen);
void addSurfaceCommand(CLI::App& app, Command& chosen);
void addEvalCommand(CLI::App& app, Command& chosen);
void addCheckCommand(CLI::App& app, Command& chosen);
void addInsertCommand(CLI::App& app, Command& chosen);
void addConvertCommand(CLI::App& app, Command& chosen);
void addInfoCommand(CLI::App& app, Command& chosen);
void addLsqCommand(CLI::App& app, Command& chosen);
void addDemoCommand(CLI::App& app, Command& chosen);

/// Prints all of a text. Faults (exit code 5) when the stream does not take it, as standard output
/// does not on a full disk or a closed pipe.
void deliver(std::ostream& out, const std::string& text);

/// The least number that an option takes.
enum class Least { kZero, kAboveZero };
/// Adds an option for a finite number, read without regard to any locale.
CLI::Option* addNumber(CLI::App& app, const std::string& name, double& value, Least least,
                       const std::string& help);
/// Adds an option for a whole number within least .. most.
CLI::Option* addCount(CLI::App& app, const std::string& name, std::size_t& value, std::size_t least,
                      std::size_t most, const std::string& help);
/// @return the numbers of a comma separated list. Faults (exit code 2) name the option.
std::vector<double> numberList(const std::string& option, const std::string& text);
/// @return the whole number that an option names, at least 1.
std::size_t countOf(const std::string& option, const std::string& text);
/// @return the whole numbers of a comma separated list, each at least 1.
std::vector<std::size_t> countList(const std::string& option, const std::string& text);

}  // namespace knotfit
