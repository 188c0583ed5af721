// SPDX-License-Identifier: MIT
// Reference-counted element storage shared by vectors and matrices.
#pragma once

#include <cstddef>

#include "knotwork/export.h"

/// An element array and the number of views on it.
///
/// The elements are never initialised by the block. The count is 16 bits wide and unchecked: at
/// most 65535 views can share a block. Block objects are recycled through a small cache; there are
/// no locks, so views of one block belong to one thread at a time.
class KNOTWORK_API RWBlock {
 public:
  /// Storage for `count` elements of `elementSize` bytes, held by one view.
  ///
  /// A count of 0 gives null storage. Reports 0x3008 (fatal) if the memory cannot be had; the
  /// storage then stays null.
  RWBlock(unsigned count, unsigned elementSize);
  ~RWBlock();
  RWBlock(const RWBlock&) = delete;
  RWBlock& operator=(const RWBlock&) = delete;

  /// Takes an object of `size` bytes from the cache, or from the global allocator.
  /// @return null when there is no memory; nothing is reported or thrown.
  static void* operator new(std::size_t size) noexcept;

  /// Gives an object of `size` bytes back to the cache, or to the global allocator when five of its
  /// size are cached already.
  static void operator delete(void* object, std::size_t size) noexcept;

  static const char className[];

  unsigned short refCount;  ///< number of views
  void* storage;            ///< first element, or null
};
