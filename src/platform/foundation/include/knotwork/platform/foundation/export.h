// SPDX-License-Identifier: MIT
// Export macro of the foundation stand-in.
#pragma once

#if !defined(_WIN32)
#define KNOTWORK_FOUNDATION_API __attribute__((visibility("default")))
#elif defined(KNOTWORK_FOUNDATION_BUILDING)
#define KNOTWORK_FOUNDATION_API __declspec(dllexport)
#else
#define KNOTWORK_FOUNDATION_API __declspec(dllimport)
#endif

// A member defined in its header is open to inlining, yet the library keeps an exported copy of it.
// (On Windows the class's own attribute does that already.)
#if !defined(_WIN32) && defined(KNOTWORK_FOUNDATION_BUILDING)
#define KNOTWORK_FOUNDATION_INLINE_API __attribute__((used, visibility("default")))
#else
#define KNOTWORK_FOUNDATION_INLINE_API
#endif
