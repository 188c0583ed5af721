// SPDX-License-Identifier: MIT
// The parameter directions of a surface.
#pragma once

/// One of the two parameter directions of a surface.
enum class TsurfaceDirection : int { u = 0, v = 1 };
