// SPDX-License-Identifier: MIT
// Cholesky decomposition: columns moved, rows added and removed.
#include "decomp/arguments.h"
#include "decomp/linpack/linpack.h"
#include "knotwork/decomp/double_ch_decomp.h"

namespace detail = knotwork::detail;
namespace linpack = knotwork::linpack;
using detail::Places;

namespace {

/// The columns of Z, if it has all its elements and `rows` rows at least: 0 else.
unsigned columnsOf(const DoubleGenMat* Z, unsigned rows) {
  if (Z == nullptr || Z->rows() < rows) return 0;
  const auto count = static_cast<unsigned long long>(Z->rows()) * Z->cols();
  return Z->dataVec().length() < count ? 0 : Z->cols();
}

/// Z's elements for a routine, column after column.
class DataColumns {
 public:
  DataColumns(DoubleGenMat* Z, unsigned columns)
      : rows_(columns > 0 ? Z->rows() : 0),
        elements_(columns > 0 ? Z->dataVec() : DoubleVec()),
        places_(&elements_, rows_ * columns) {}

  bool ready() const { return places_.ready(); }
  double* data() { return places_.data(); }
  int rows() const { return static_cast<int>(rows_); }
  void store() const { places_.store(); }

 private:
  unsigned rows_;
  DoubleVec elements_;
  Places places_;
};

void checkHeight(const DoubleGenMat* Z, unsigned rows) {
  if (Z != nullptr && Z->rows() != rows)
    raiseMathErrorCode(knotwork::kDataHeightWrong, Z->rows(), rows);
}

void checkRotations(const DoubleVec* cosinesOrSines, unsigned n) {
  if (cosinesOrSines != nullptr && cosinesOrSines->length() != n)
    raiseMathErrorCode(knotwork::kRotationLengthWrong, cosinesOrSines->length(), n);
}

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
  if (!inPlace || k >= static_cast<int>(order())) return;

  const unsigned places = static_cast<unsigned>(k) + 1;  // the routine counts from 1
  const unsigned columns = columnsOf(Z, places);
  DataColumns data(Z, columns);
  Places cosines(c, count), sines(s, places);  // the sines double as work space
  if (!data.ready() || !cosines.ready() || !sines.ready()) return;
  const auto job = direction == 0 ? linpack::ChexJob::kLeftShift : linpack::ChexJob::kRightShift;
  linpack::dchex(factor_.data(), static_cast<int>(rows()), static_cast<int>(order()), l + 1, k + 1,
                 data.data(), data.rows(), static_cast<int>(columns), cosines.data(), sines.data(),
                 job);
  data.store();
  cosines.store();
  sines.store(count);
}

void DoubleChDecomp::checkRowChange(const DoubleVec& x, const DoubleGenMat* Z, const DoubleVec* y,
                                    const DoubleVec* rho, const DoubleVec* c,
                                    const DoubleVec* s) const {
  const unsigned columns = Z ? Z->cols() : 0;
  checkHeight(Z, rows());
  checkRotations(c, order());
  checkRotations(s, order());
  for (const DoubleVec* v : {&x, y, rho, c, s})
    if (v != nullptr && v->stride() != 1) raiseMathErrorCode(knotwork::kPointerStrideNotOne);
  for (const DoubleVec* v : {y, rho}) {
    if (const unsigned length = v ? v->length() : 0; length != columns)
      raiseMathErrorCode(knotwork::kResidualCountWrong, length, columns);
  }
  x.lengthCheck(order());
}

int DoubleChDecomp::changeRow(bool adding, const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y,
                              DoubleVec* rho, DoubleVec* c, DoubleVec* s) {
  checkRowChange(x, Z, y, rho, c, s);
  const bool hasData = y != nullptr && rho != nullptr;
  const unsigned columns =
      hasData ? std::min({columnsOf(Z, order()), y->length(), rho->length()}) : 0;
  const DoubleVec row = detail::ofLength(x, order());
  const DoubleVec values = hasData ? detail::ofLength(*y, columns) : DoubleVec();
  DataColumns data(Z, columns);
  Places norms(rho, columns), cosines(c, order()), sines(s, order());
  if (row.length() != order() || values.length() != columns || !data.ready() || !norms.ready() ||
      !cosines.ready() || !sines.ready())
    return -1;
  const auto call = [&](auto routine) {
    return routine(factor_.data(), static_cast<int>(rows()), static_cast<int>(order()), row.data(),
                   data.data(), data.rows(), static_cast<int>(columns), values.data(), norms.data(),
                   cosines.data(), sines.data());
  };
  int info = 0;
  if (adding) {
    call(linpack::dchud);
  } else {
    info = call(linpack::dchdd);
  }
  data.store();
  norms.store();
  cosines.store();
  sines.store();
  return info;
}

void DoubleChDecomp::update(const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y, DoubleVec* rho,
                            DoubleVec* c, DoubleVec* s) {
  changeRow(true, x, Z, y, rho, c, s);
}

int DoubleChDecomp::downdate(const DoubleVec& x, DoubleGenMat* Z, const DoubleVec* y,
                             DoubleVec* rho, DoubleVec* c, DoubleVec* s) {
  return changeRow(false, x, Z, y, rho, c, s);
}
