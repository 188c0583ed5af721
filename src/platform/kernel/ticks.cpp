// SPDX-License-Identifier: MIT
// Kernel stand-in: the registered progress callback.
#include "knotwork/platform/kernel/ticks.h"

static ag_tick_function current = nullptr;

void ag_register_tick_function(ag_tick_function function) { current = function; }

int ag_tick(int step, int maximum) { return current ? current(step, maximum) : 0; }
