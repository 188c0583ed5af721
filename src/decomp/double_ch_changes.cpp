// SPDX-License-Identifier: MIT
// Cholesky decomposition: columns moved, rows added and removed.
//
// A handler may return from the report of an argument that does not fit. The routines are then
// called with what all arguments have in common, so that nothing outside of their storage is met.
#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"
#include "knotwork/decomp/double_ch_decomp.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;
using detail::orderOf;
using detail::Places;

namespace {

void checkHeight(const DoubleGenMat* Z, unsigned rows) {
  if (Z != nullptr && Z->rows() != rows)
    raiseMathErrorCode(knotwork::kDataHeightWrong, Z->rows(), rows);
}

void checkRotations(const DoubleVec* cosinesOrSines, unsigned n) {
  if (cosinesOrSines != nullptr && cosinesOrSines->length() != n)
    raiseMathErrorCode(knotwork::kRotationLengthWrong, cosinesOrSines->length(), n);
}

// The data columns of which a change may rotate the first `rows` rows: none if Z has fewer, or
// fewer elements than its dimensions tell.
unsigned usableColumns(const DoubleGenMat* Z, unsigned rows) {
  if (Z == nullptr || Z->rows() < rows) return 0;
  const auto count = static_cast<unsigned long long>(Z->rows()) * Z->cols();
  return Z->dataVec().length() < count ? 0 : Z->cols();
}

Places placesOf(const DoubleGenMat* Z, unsigned columns) {
  return columns > 0 ? Places(Z->dataVec(), Z->rows() * columns) : Places(DoubleVec(), 0);
}

int heightOf(const DoubleGenMat* Z) { return Z ? static_cast<int>(Z->rows()) : 0; }

void checkRowChange(const DoubleGenMat& factor, const DoubleVec& x, const DoubleGenMat* Z,
                    const DoubleVec* y, const DoubleVec* rho, const DoubleVec* c,
                    const DoubleVec* s) {
  const unsigned columns = Z ? Z->cols() : 0;
  checkHeight(Z, factor.rows());
  checkRotations(c, orderOf(factor));
  checkRotations(s, orderOf(factor));
  for (const DoubleVec* v : {&x, y, rho, c, s})
    if (v != nullptr && v->stride() != 1) raiseMathErrorCode(knotwork::kPointerStrideNotOne);
  for (const DoubleVec* v : {y, rho}) {
    if (const unsigned length = v ? v->length() : 0; length != columns)
      raiseMathErrorCode(knotwork::kResidualCountWrong, length, columns);
  }
  x.lengthCheck(orderOf(factor));
}

// A row x that comes or goes, with a value of y and a residual norm for each data column.
class RowChange {
 public:
  RowChange(DoubleGenMat& factor, const DoubleVec& x, const DoubleGenMat* Z, const DoubleVec* y,
            const DoubleVec* rho, const DoubleVec* c, const DoubleVec* s)
      : R_(factor),
        order_(orderOf(factor)),
        columns_(y && rho ? std::min({usableColumns(Z, order_), y->length(), rho->length()}) : 0),
        dataHeight_(heightOf(Z)),
        row_(detail::ofLength(x, order_)),
        values_(detail::ofLength(y ? *y : DoubleVec(), columns_)),
        data_(placesOf(Z, columns_)),
        norms_(rho, columns_),
        cosines_(c, order_),
        sines_(s, order_) {}

  // @return whether there was memory.
  bool ready() const {
    return row_.length() == order_ && values_.length() == columns_ && data_.ready() &&
           norms_.ready() && cosines_.ready() && sines_.ready();
  }
  // Calls dchud or dchdd, and returns what it returns.
  template <class Routine>
  auto call(Routine routine) {
    return routine(R_.data(), static_cast<int>(R_.rows()), static_cast<int>(order_), row_.data(),
                   data_.data(), dataHeight_, static_cast<int>(columns_), values_.data(),
                   norms_.data(), cosines_.data(), sines_.data());
  }
  void store() {
    for (Places* const changed : {&data_, &norms_, &cosines_, &sines_}) changed->store();
  }

 private:
  DoubleGenMat& R_;
  unsigned order_, columns_;
  int dataHeight_;
  DoubleVec row_, values_;
  Places data_, norms_, cosines_, sines_;
};

}  // namespace

void DoubleChDecomp::shift(int l, int k, int direction, DoubleGenMat* Z, DoubleVec* c,
                           DoubleVec* s) {
  const bool inPlace = l >= 0 && k > l && k < static_cast<int>(rows());
  const unsigned count = static_cast<unsigned>(k) - static_cast<unsigned>(l);
  if (direction > 1) raiseMathErrorCode(knotwork::kBadShiftDirection);
  if (!inPlace) raiseMathErrorCode(knotwork::kBadShiftColumns, l, k);
  checkHeight(Z, rows());
  checkRotations(c, count);
  checkRotations(s, count);
  const unsigned order = orderOf(factor_);
  if (!inPlace || k >= static_cast<int>(order)) return;

  const unsigned turned = static_cast<unsigned>(k) + 1;  // rows, down to the k-th
  const unsigned columns = usableColumns(Z, turned);
  Places data = placesOf(Z, columns), cosines(c, count);
  Places sines(s, turned);  // more than asked for: they double as work space
  if (!data.ready() || !cosines.ready() || !sines.ready()) return;
  const auto job = direction == 0 ? linpack::ChexJob::kLeftShift : linpack::ChexJob::kRightShift;
  // The routine counts from 1, and calls the first column k and the last one l.
  linpack::dchex(factor_.data(), static_cast<int>(rows()), static_cast<int>(order), l + 1, k + 1,
                 data.data(), heightOf(Z), static_cast<int>(columns), cosines.data(), sines.data(),
                 job);
  data.store();
  cosines.store();
  sines.store(count);
}

void DoubleChDecomp::update(const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y, DoubleVec* rho,
                            DoubleVec* c, DoubleVec* s) {
  checkRowChange(factor_, x, Z, y, rho, c, s);
  RowChange change(factor_, x, Z, y, rho, c, s);
  if (!change.ready()) return;
  change.call(linpack::dchud);
  change.store();
}

int DoubleChDecomp::downdate(const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y,
                             DoubleVec* rho, DoubleVec* c, DoubleVec* s) {
  checkRowChange(factor_, x, Z, y, rho, c, s);
  RowChange change(factor_, x, Z, y, rho, c, s);
  if (!change.ready()) return -1;
  const int info = change.call(linpack::dchdd);
  change.store();
  return info;
}
