// SPDX-License-Identifier: MIT
// The export macro: marks what leaves the shared library.
#pragma once

#if defined(_WIN32)
#if defined(KNOTWORK_BUILDING)
#define KNOTWORK_API __declspec(dllexport)
#else
#define KNOTWORK_API __declspec(dllimport)
#endif
#else
#define KNOTWORK_API __attribute__((visibility("default")))
#endif
