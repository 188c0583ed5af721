# SPDX-License-Identifier: MIT
