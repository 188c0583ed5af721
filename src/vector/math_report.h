// SPDX-License-Identifier: MIT
// Included by every source that reports: the record of a class's own check, and the catalogues,
// kept registered from before that source's first static object to after its last one.
#pragma once

#include "knotwork/vector/math_error.h"
#include "knotwork/vector/math_messages.h"
#include "vector/severity.h"

namespace knotwork::detail {

/// The record of a check of class `C`, with the severity that the message has by itself.
template <class C>
MathErrorRecord recordOf(int code) {
  return MathErrorRecord(static_cast<unsigned short>(code), kMessageDefault, C::origin);
}

}  // namespace knotwork::detail

namespace {

[[maybe_unused]] const VectorMessagesInit vectorMessagesInUse;
[[maybe_unused]] const RWMATXInit matrixMessagesInUse;
[[maybe_unused]] const FactorMessagesInit factorMessagesInUse;

}  // namespace
