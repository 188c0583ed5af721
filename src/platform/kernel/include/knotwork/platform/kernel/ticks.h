// SPDX-License-Identifier: MIT
// Kernel stand-in: progress of the kernel's long operations.
#pragma once

#include "knotwork/platform/kernel/export.h"

extern "C" {

/// Callback that is told the step and the number of steps; a result other than 0 asks to stop.
using ag_tick_function = int (*)(int step, int maximum);

/// Installs the callback of the process; null takes it away.
KNOTWORK_KERNEL_API void ag_register_tick_function(ag_tick_function function);

/// Reports a step of a kernel operation. @return the callback's result; 0 without one.
KNOTWORK_KERNEL_API int ag_tick(int step, int maximum);

}  // extern "C"
