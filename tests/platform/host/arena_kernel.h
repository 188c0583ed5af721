// SPDX-License-Identifier: MIT
// What the tests may ask of the second kernel beside the functions that every kernel has.
#pragma once

#include "knotwork/platform/kernel/builders.h"

extern "C" {

/// @return records handed out and not yet released.
KNOTWORK_KERNEL_API int arena_records();

/// @return bytes taken from the arena since the start.
KNOTWORK_KERNEL_API unsigned arena_bytes();

/// Tells the registered function of a step. @return its result.
KNOTWORK_KERNEL_API int arena_tick(int step, int maximum);
}
