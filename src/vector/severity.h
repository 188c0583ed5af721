// SPDX-License-Identifier: MIT
// The severities that reports and messages carry.
#pragma once

namespace knotwork::detail {

inline constexpr unsigned kWarning = 0;         // anything else ends the process
inline constexpr unsigned kMessageDefault = 1;  // the severity that the message's catalogue gives
inline constexpr unsigned kFatal = 2;

}  // namespace knotwork::detail
