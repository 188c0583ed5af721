// SPDX-License-Identifier: MIT
// KnotRecord: storage, search and growth of the knots. Storage grows to twice its size at least, so
// that knots inserted one by one cost a constant number of copies each.
#include "knotwork/kernel/knot_record.h"

#include <algorithm>
#include <climits>
#include <new>

#include "kernel/span_search.h"
#include "kernel/storage.h"

namespace knotwork {

namespace {

// n + 2m - 1, the number of knots kept; none for degree 0 with fewer than two spans.
long long knotCount(long long degree, long long spans) {
  return std::max(spans + 2 * degree - 1, 0LL);
}

}  // namespace

KnotRecord::KnotRecord(int degree, int spans) : degree_(degree), spans_(spans), capacity_(0) {
  const long long n = knotCount(degree, spans);
  if (degree < 0 || spans < 0 || n > INT_MAX) {
    clear();
    return;
  }
  reserve(static_cast<int>(n));
  for (int k = first(); k <= last(); ++k) {
    values_[k - first()] = std::clamp(k, 0, spans);
  }
  mark(first(), last());
}

KnotRecord::KnotRecord(const KnotRecord& other) : KnotRecord(other.degree_, other.spans_) {
  assign(other.values_.get(), last() - first() + 1);
}

KnotRecord::~KnotRecord() = default;

void KnotRecord::clear() {
  degree_ = spans_ = capacity_ = 0;
  values_.reset();
  repeats_.reset();
}

int KnotRecord::first() const { return 1 - degree_; }

int KnotRecord::last() const { return spans_ + degree_ - 1; }

double KnotRecord::operator()(int k) const { return *at(k); }

bool KnotRecord::repeats(int k) const { return repeats_[k - first()] != 0; }

void KnotRecord::assign(const double* values, int n) {
  n = std::min(n, last() - first() + 1);
  if (!values || n < 1) return;
  std::copy_n(values, n, values_.get());
  mark(first(), last());
}

void KnotRecord::mark(int from, int to) {
  for (int i = std::max(from - first(), 0); i <= std::min(to, last()) - first(); ++i) {
    repeats_[i] = i > 0 && values_[i] == values_[i - 1];
  }
}

int KnotRecord::span(double t) const {
  if (spans_ < 2) return 0;
  return degree_ == 0 ? detail::knotsUpTo(at(1), spans_ - 1, t)
                      : detail::findSpan(at(0), spans_, t);
}

bool KnotRecord::contains(double t) const {
  if (spans_ < 1) return false;
  return degree_ == 0 ? t == t : *at(0) <= t && t <= *at(spans_);
}

void KnotRecord::reserve(int more) {
  const long long used = capacity_ == 0 ? 0 : knotCount(degree_, spans_);
  const long long needed = used + more;
  if (needed <= capacity_ && values_) return;
  if (needed > INT_MAX) throw std::bad_alloc();
  const long long grown = std::clamp(2LL * capacity_, needed, static_cast<long long>(INT_MAX));
  auto values = detail::newArray<double>(grown);
  auto repeats = detail::newArray<signed char>(grown);
  std::copy_n(values_.get(), used, values.get());
  std::copy_n(repeats_.get(), used, repeats.get());
  values_ = std::move(values);
  repeats_ = std::move(repeats);
  capacity_ = static_cast<int>(grown);
}

int KnotRecord::insert(double t) {
  const int s = span(t) + 1;
  const std::ptrdiff_t at = s - first();
  const std::ptrdiff_t used = last() - first() + 1;
  std::copy_backward(values_.get() + at, values_.get() + used, values_.get() + used + 1);
  std::copy_backward(repeats_.get() + at, repeats_.get() + used, repeats_.get() + used + 1);
  values_[at] = t;
  ++spans_;
  mark(s, s + 1);
  return s;
}

}  // namespace knotwork
