// SPDX-License-Identifier: MIT
// Fronts are reduced from the cells up. Ranks ascend within a front and agree from front to front,
// so that what the halves have left are two staircases, and their rows by turns are one.
#include "solvers/dissected_triangle.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "solvers/at.h"

namespace knotwork::detail {
namespace {

constexpr int kProgressSteps = 100;

// The places of some of a front's columns in it; both ascend.
std::vector<int> placesOf(std::vector<int>::const_iterator column,
                          std::vector<int>::const_iterator end, const std::vector<int>& front) {
  std::vector<int> places;
  places.reserve(static_cast<std::size_t>(end - column));
  for (std::size_t place = 0; column != end; ++place) {
    if (front[place] != *column) continue;
    places.push_back(static_cast<int>(place));
    ++column;
  }
  return places;
}

}  // namespace

DissectedTriangle::DissectedTriangle(const Dissection& dissection, int dimension,
                                     const std::vector<double>& lengths, double tolerance)
    : dissection_(dissection),
      dimension_(dimension),
      lengths_(lengths),
      tolerance_(tolerance),
      pivots_(at(dissection.unknowns())),
      residuals_(dissection.nodes().size() * at(dimension)),
      noSides_(at(dimension)) {}

// One run over the tree. Threads take subtrees; each node's result is its own.
class DissectedTriangle::Reduction {
 public:
  Reduction(DissectedTriangle& triangle, const AddCellRows& addCellRows,
            const OnProgress& onProgress)
      : t_(triangle),
        addCellRows_(addCellRows),
        onProgress_(onProgress),
        caller_(std::this_thread::get_id()),
        nodes_(triangle.dissection_.nodes()) {}

  Rest run(int index, int threads) {
    const Dissection::Node& node = nodes_[at(index)];
    Staircase matrix;
    if (node.cell >= 0) {
      matrix.begin(static_cast<int>(node.columns.size()), t_.dimension_);
      addCellRows_(node.cell, node.columns, matrix);
      report();
    } else {
      const auto [left, right] = runHalves(node, threads);
      matrix.begin(static_cast<int>(node.columns.size()), t_.dimension_);
      stack(node, left, right, matrix);
    }
    return reduce(index, matrix);
  }

 private:
  std::pair<Rest, Rest> runHalves(const Dissection::Node& node, int threads) {
    std::pair<Rest, Rest> rests;
    std::exception_ptr failure;
    const auto runLeft = [&]() noexcept {
      try {
        rests.first = run(node.left, std::max(threads / 2, 1));
      } catch (...) {
        failure = std::current_exception();
      }
    };
    {
      std::jthread helper;
      try {
        if (threads > 1) helper = std::jthread(runLeft);
      } catch (const std::system_error&) {  // as many threads as the system gives
      }
      if (!helper.joinable()) runLeft();
      if (helper.joinable() || !failure) rests.second = run(node.right, threads - threads / 2);
    }
    if (failure) std::rethrow_exception(failure);
    return rests;
  }

  // The rows of both halves in the order of their first columns.
  void stack(const Dissection::Node& node, const Rest& left, const Rest& right,
             Staircase& matrix) const {
    const Rest* const rests[] = {&left, &right};
    std::vector<int> places[2];
    for (const int half : {0, 1}) {
      const Dissection::Node& from = nodes_[at(half == 0 ? node.left : node.right)];
      places[half] =
          placesOf(from.columns.begin() + from.interior, from.columns.end(), node.columns);
    }
    const auto leadOf = [&](int half, std::size_t row) {
      return places[half][at(rests[half]->leads[row])];
    };
    std::size_t next[2] = {0, 0};
    for (;;) {
      const bool hasLeft = next[0] < left.leads.size(), hasRight = next[1] < right.leads.size();
      if (!hasLeft && !hasRight) return;
      const int half = hasLeft && (!hasRight || leadOf(0, next[0]) <= leadOf(1, next[1])) ? 0 : 1;
      const std::size_t row = next[half]++;
      const std::vector<int>& place = places[half];
      const double* const values =
          rests[half]->values.data() + row * (place.size() + at(t_.dimension_));
      double* const to = matrix.addRow(leadOf(half, row));
      for (std::size_t k = 0; k < place.size(); ++k) to[place[k]] = values[k];
      std::copy_n(values + place.size(), t_.dimension_, to + matrix.columns());
    }
  }

  Rest reduce(int index, Staircase& matrix) {
    const Dissection::Node& node = nodes_[at(index)];
    std::vector<double> lengths;
    lengths.reserve(node.columns.size());
    for (const int rank : node.columns) lengths.push_back(t_.lengths_[at(rank)]);
    matrix.reduce(lengths.data(), t_.tolerance_);
    std::copy(matrix.residuals().begin(), matrix.residuals().end(),
              t_.residuals_.begin() + static_cast<std::ptrdiff_t>(index) * t_.dimension_);
    Rest rest;
    for (int i = 0; i < matrix.rows(); ++i) {
      const double* const row = matrix.row(i);
      const int lead = matrix.lead(i);
      if (lead < node.interior) {
        t_.pivots_[at(node.columns[at(lead)])] = {index, {row + lead, row + matrix.width()}};
      } else {
        rest.leads.push_back(lead - node.interior);
        rest.values.insert(rest.values.end(), row + node.interior, row + matrix.width());
      }
    }
    return rest;
  }

  void report() {
    const std::size_t cells = (nodes_.size() + 1) / 2, done = ++done_;
    if (std::this_thread::get_id() != caller_) return;
    const std::size_t step = done * kProgressSteps / cells;
    if (step == reported_) return;
    reported_ = step;
    onProgress_(static_cast<double>(done) / static_cast<double>(cells));
  }

  DissectedTriangle& t_;
  const AddCellRows& addCellRows_;
  const OnProgress& onProgress_;
  std::thread::id caller_;
  const std::vector<Dissection::Node>& nodes_;
  std::atomic<std::size_t> done_{0};
  std::size_t reported_ = 0;
};

void DissectedTriangle::reduce(const AddCellRows& addCellRows, const OnProgress& onProgress,
                               int threads) {
  Reduction(*this, addCellRows, onProgress).run(dissection_.root(), threads);
}

std::vector<double> DissectedTriangle::residuals() const {
  std::vector<double> sums(at(dimension_));
  for (std::size_t k = 0; k < residuals_.size(); ++k) sums[k % sums.size()] += residuals_[k];
  return sums;
}

const double* DissectedTriangle::rhs(int column) const {
  const Pivot& pivot = pivotOf(column);
  if (pivot.row.empty()) return noSides_.data();
  return pivot.row.data() + pivot.row.size() - at(dimension_);
}

// visit(element, rank) for the elements of a row of R behind the pivot, in order.
template <class Visit>
void DissectedTriangle::visitRow(int rank, Visit visit) const {
  const Pivot& pivot = pivots_[at(rank)];
  const std::vector<int>& columns = dissection_.nodes()[at(pivot.node)].columns;
  const std::size_t place = at(rank - columns[0]);
  for (std::size_t k = 1; place + k < columns.size(); ++k) visit(pivot.row[k], columns[place + k]);
}

void DissectedTriangle::solve(int count, double* y) const {
  std::vector<double> x(pivots_.size());
  for (int side = 0; side < count; ++side, y += columns()) {
    for (int rank = columns() - 1; rank >= 0; --rank) {
      const std::vector<double>& row = pivots_[at(rank)].row;
      double& result = x[at(rank)] = 0;
      if (!row.empty()) {
        double sum = y[dissection_.unknownOf(rank)];
        visitRow(rank, [&](double element, int k) { sum -= element * x[at(k)]; });
        result = sum / row[0];
      }
      y[dissection_.unknownOf(rank)] = result;
    }
  }
}

void DissectedTriangle::solveTransposed(int count, double* y) const {
  std::vector<double> x(pivots_.size());
  for (int side = 0; side < count; ++side, y += columns()) {
    for (int rank = 0; rank < columns(); ++rank) x[at(rank)] = y[dissection_.unknownOf(rank)];
    for (int rank = 0; rank < columns(); ++rank) {
      const std::vector<double>& row = pivots_[at(rank)].row;
      double& result = x[at(rank)];
      if (row.empty()) {
        result = 0;
      } else {
        result /= row[0];
        const double factor = result;
        visitRow(rank, [&](double element, int k) { x[at(k)] -= element * factor; });
      }
      y[dissection_.unknownOf(rank)] = result;
    }
  }
}

}  // namespace knotwork::detail
