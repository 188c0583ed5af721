// SPDX-License-Identifier: MIT
// A tour of the vectors: ramps, views, picks, mathematics, sums in index order, text and reports.
#include <knotwork/knotwork.h>

#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

void keepGoing(MathErrorRecord record, va_list) {
  std::cout << "reported: code 0x" << std::hex << record.code << std::dec << '\n';
}

void showViews() {
  DoubleVec samples(8, 0.0, 0.25);  // 0, 0.25, ... 1.75
  DoubleVec every3rd = samples.slice(0, 3, 3);
  every3rd *= 10;  // writes through
  std::cout << "every third times ten: " << samples << '\n';
  std::cout << "backwards:             " << reverse(samples) << '\n';
  samples.vecPick(samples.nonZeroIndex(1.0)) = 1.0;
  std::cout << "above one set to one:  " << samples << '\n';
}

void showMathematics() {
  const DoubleVec angles(6, 0.0, 0.1);
  const DoubleVec one = sin(angles) * sin(angles) + cos(angles) * cos(angles);
  std::cout << "sin^2 + cos^2:         " << one << '\n';
  std::cout << "sum of 0.1 ten times:  " << std::setprecision(17) << sum(DoubleVec(10, 0.1))
            << " (added in index order, everywhere)\n";
}

void showTextAndReports() {
  IntVec read;
  std::istringstream("[ 3 1 4 1 5 ]") >> read;
  std::cout << "read: " << read << " largest: " << maxValue(read) << '\n';
  setMathErrorHandler(keepGoing);  // the default handler prints, and aborts on errors
  read += IntVec(2, 1);
}

}  // namespace

int main() {
  DoubleVec::setFormatting(8);  // elements on a line
  showViews();
  showMathematics();
  showTextAndReports();
}
