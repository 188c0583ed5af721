// SPDX-License-Identifier: MIT
// The one error path of vectors, matrices and factorisations: a check raises a coded record, the
// installed handler receives it with the message's arguments, and the default handler prints it.
#pragma once

#include <cstdarg>

#include "knotwork/export.h"

/// What a failed check hands to the installed handler.
struct KNOTWORK_API MathErrorRecord {
  /// @param errorCode       catalogue and message, a knotwork::MathCode; 0 means no error.
  /// @param errorSeverity   0 warning, 1 the message's own severity, anything else fatal.
  /// @param errorOrigin     tag of the reporting class, 0xF000 when it has none.
  KNOTWORK_INLINE_API constexpr MathErrorRecord(unsigned short errorCode, unsigned errorSeverity,
                                                unsigned short errorOrigin)
      : code(errorCode), severity(errorSeverity), origin(errorOrigin) {}

  unsigned short code;
  unsigned severity;
  unsigned short origin;
};

/// Receives every report. It may return: the reporting operation then carries on as its own
/// description tells.
using MathErrorHandler = void (*)(MathErrorRecord, va_list);

/// Installs `handler` for the whole process; a null one installs the default handler.
///
/// The default handler writes "** ", the formatted message and ".\n" to the standard error stream;
/// a warning then says that processing continues and returns, anything else says that it is
/// terminated and aborts.
/// @return the handler that was installed before.
KNOTWORK_API MathErrorHandler setMathErrorHandler(MathErrorHandler handler);

/// Reports `record` with the arguments of its message to the installed handler.
KNOTWORK_API void raiseMathError(MathErrorRecord record, ...);

/// Reports `code` with the message's own severity and no origin to the installed handler.
KNOTWORK_API void raiseMathErrorCode(int code, ...);

/// As the C variadic form behind it: with any arguments that this takes, promoted as it promotes
/// them. They must be what the message's placeholders ask for.
template <class... Args>
void raiseMathError(const MathErrorRecord& record, Args... args) {
  constexpr void (*raise)(MathErrorRecord, ...) = &raiseMathError;
  raise(record, args...);
}

/// As the C variadic form behind it: with any arguments that this takes, promoted as it promotes
/// them. They must be what the message's placeholders ask for.
template <class... Args>
void raiseMathErrorCode(int code, Args... args) {
  constexpr void (*raise)(int, ...) = &raiseMathErrorCode;
  raise(code, args...);
}
