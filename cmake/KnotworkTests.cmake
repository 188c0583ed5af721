# SPDX-License-Identifier: MIT
# Tests: one program per folder of the library, each run once for every set of element kernels.
