// SPDX-License-Identifier: MIT
// Where messages and progress of the solvers and of the host's spline kernel go.
#pragma once

#include "knotwork/export.h"

class Tstring;

/// A sink of messages and progress. Unless it is silent it writes lines to the standard error
/// stream; a host derives from it to show them elsewhere.
///
/// The order of the virtual operations is part of the interface.
class KNOTWORK_API TbaseReporter {
 public:
  /// @param silent  whether nothing is to be written.
  explicit TbaseReporter(bool silent);
  TbaseReporter(const TbaseReporter& other);
  TbaseReporter& operator=(const TbaseReporter& other);
  /// Takes the reporter out of the host's spline kernel's reporting, if it is the one in use there.
  virtual ~TbaseReporter();

  /// Passes the text, formatted as by printf and cut at 1023 characters, to `reportMessage`; a null
  /// format does nothing.
  virtual void reportFormatted(const char* format, ...);
  /// Passes the characters of `text` to `reportMessage`.
  virtual void reportString(const Tstring& text);
  /// @return false; for the host to override and to consult.
  virtual bool stopRequested() const;
  /// Writes "Report: Step 3 out of maximum 10" and a line end, unless silent. @return 0.
  virtual int reportStep(int step, int maximum);
  /// Writes "Report: (text)" and a line end, unless silent.
  virtual void reportMessage(const char* text);

  /// @return whether the reporter writes.
  bool isVerbose() const;
  /// @return whether the reporter does not write.
  bool isSilent() const;
  /// The switch itself, writes through.
  bool& silent();

  /// On: the progress of the host's spline kernel goes to `reportStep` of this reporter, instead of
  /// any other one. Off: if it goes to this one, it goes nowhere any more.
  void enableTicks(bool on);

 private:
  bool silent_;
};
