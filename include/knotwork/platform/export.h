// SPDX-License-Identifier: MIT
// Export macros of the two stand-in libraries, and of members that headers define inline.
#pragma once

#if defined(_WIN32)
#if defined(KNOTWORK_FOUNDATION_BUILDING)
#define KNOTWORK_FOUNDATION_API __declspec(dllexport)
#else
#define KNOTWORK_FOUNDATION_API __declspec(dllimport)
#endif
#if defined(KNOTWORK_KERNEL_BUILDING)
#define KNOTWORK_KERNEL_API __declspec(dllexport)
#else
#define KNOTWORK_KERNEL_API __declspec(dllimport)
#endif
#else
#define KNOTWORK_FOUNDATION_API __attribute__((visibility("default")))
#define KNOTWORK_KERNEL_API __attribute__((visibility("default")))
#endif

// A member defined in its header is open to inlining, yet the library keeps an exported copy of it.
// (On Windows the class's own attribute does that already.)
#if !defined(_WIN32) && defined(KNOTWORK_BUILDING)
#define KNOTWORK_INLINE_API __attribute__((used, visibility("default")))
#else
#define KNOTWORK_INLINE_API
#endif
#if !defined(_WIN32) && defined(KNOTWORK_FOUNDATION_BUILDING)
#define KNOTWORK_FOUNDATION_INLINE_API __attribute__((used, visibility("default")))
#else
#define KNOTWORK_FOUNDATION_INLINE_API
#endif
