// SPDX-License-Identifier: MIT
// Storage blocks, and the cache that recycles the block objects.
#include "knotwork/vector/rw_block.h"

#include <atomic>
#include <new>

#include "knotwork/vector/math_codes.h"
#include "vector/math_report.h"
#include "vector/memory_watch.h"
#include "vector/severity.h"
#include "vector/shared_block.h"

namespace {

constexpr unsigned short kOrigin = 0x901A;

// A stack of up to five freed objects of one size.
class FreeObjects {
 public:
  bool empty() const { return count_ == 0; }
  bool full() const { return count_ == kCapacity; }
  void push(void* object) { objects_[count_++] = object; }
  void* pop() { return objects_[--count_]; }

 private:
  static constexpr unsigned short kCapacity = 5;
  void* objects_[kCapacity] = {};
  unsigned short count_ = 0;
};

// Size classes are the even sizes 2 to 10 bytes, and one more for a block object that is larger, so
// that blocks are recycled on targets with wide pointers too. The cache is never drained.
constexpr std::size_t kEvenClasses = 5;
constinit FreeObjects evenClasses[kEvenClasses];
constinit FreeObjects blockSized;

FreeObjects* classOfSize(std::size_t evenSize) {
  if (evenSize > 2 * kEvenClasses) return evenSize == sizeof(RWBlock) ? &blockSized : nullptr;
  return evenSize == 0 ? nullptr : &evenClasses[evenSize / 2 - 1];
}

std::atomic<unsigned> failures = 0;

// Stands in for a block whose object could not be allocated; it is never freed.
RWBlock& blockWithoutStorage() {
  static RWBlock block(0, 1);
  return block;
}

}  // namespace

const char RWBlock::className[] = "RWBlock";

RWBlock::RWBlock(unsigned count, unsigned elementSize) : refCount(1), storage(nullptr) {
  if (count == 0) return;
  storage = ::operator new (std::size_t{count} * elementSize, std::nothrow);
  if (storage == nullptr) knotwork::detail::reportOutOfMemory();
}

RWBlock::~RWBlock() { ::operator delete(storage); }

void* RWBlock::operator new(std::size_t size) noexcept {
  const std::size_t evenSize = (size + 1) / 2 * 2;
  FreeObjects* cached = classOfSize(evenSize);
  if (cached != nullptr && !cached->empty()) return cached->pop();
  return ::operator new(evenSize, std::nothrow);
}

void RWBlock::operator delete(void* object, std::size_t size) noexcept {
  if (object == nullptr) return;
  FreeObjects* cached = classOfSize(size / 2 * 2);
  if (cached != nullptr && !cached->full()) {
    cached->push(object);
  } else {
    ::operator delete(object);
  }
}

namespace knotwork::detail {

unsigned failedRequests() { return failures.load(std::memory_order_relaxed); }

void reportOutOfMemory() {
  failures.fetch_add(1, std::memory_order_relaxed);
  raiseMathError(MathErrorRecord(kOutOfMemory, knotwork::detail::kFatal, kOrigin),
                 RWBlock::className);
}

RWBlock* newBlock(unsigned count, unsigned elementSize) {
  RWBlock* block = new RWBlock(count, elementSize);
  if (block != nullptr) return block;
  reportOutOfMemory();
  return shareBlock(&blockWithoutStorage());
}

void releaseBlock(RWBlock* block) {
  if (--block->refCount == 0 && block != &blockWithoutStorage()) delete block;
}

}  // namespace knotwork::detail
