// SPDX-License-Identifier: MIT
// How views obtain, share and let go of storage blocks.
#pragma once

#include "knotwork/vector/rw_block.h"

namespace knotwork::detail {

/// A block for `count` elements, held by its one view. Never null: where not even the block object
/// can be had, that is reported as 0x3008 and a process-wide block without storage is shared
/// instead.
RWBlock* newBlock(unsigned count, unsigned elementSize);

inline RWBlock* shareBlock(RWBlock* block) {
  ++block->refCount;
  return block;
}

/// Reports 0x3008 in the name of RWBlock.
void reportOutOfMemory();

/// Gives up one view; the last one frees the block.
void releaseBlock(RWBlock* block);

}  // namespace knotwork::detail
