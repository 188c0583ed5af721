// SPDX-License-Identifier: MIT
// A host's program at its smallest: uses the installed library, and `typeof` as a plain name.
#include <knotwork/knotwork.h>

struct HostRecord {
  int typeof = 1;
};

int main() {
  const DoubleVec samples(5, 1.0, 0.5);  // 1, 1.5, ... 3
  const bool works = sum(samples) == 10.0 && HostRecord().typeof == 1;
  return works ? 0 : 1;
}
