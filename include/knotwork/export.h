// SPDX-License-Identifier: MIT
// The export macros: what leaves the shared library.
#pragma once

#if !defined(_WIN32)
#define KNOTWORK_API __attribute__((visibility("default")))
#elif defined(KNOTWORK_BUILDING)
#define KNOTWORK_API __declspec(dllexport)
#else
#define KNOTWORK_API __declspec(dllimport)
#endif

// A member defined in its header is open to inlining, yet the library keeps an exported copy of it:
// a host that is not optimised calls that one. Neither class nor class template passes its own
// attribute on to such members, on Windows; on Linux a template does, and what is not one keeps the
// copy only where it is said to be used.
#if !defined(KNOTWORK_BUILDING)
#define KNOTWORK_INLINE_API
#define KNOTWORK_TEMPLATE_API
#elif defined(_WIN32)
#define KNOTWORK_INLINE_API __attribute__((used, dllexport))
#define KNOTWORK_TEMPLATE_API __attribute__((dllexport))
#else
#define KNOTWORK_INLINE_API __attribute__((used, visibility("default")))
#define KNOTWORK_TEMPLATE_API
#endif

// A private member of an exported class that nothing outside the library calls. (Windows exports it
// with its class.)
#if !defined(_WIN32) && defined(KNOTWORK_BUILDING)
#define KNOTWORK_LOCAL __attribute__((visibility("hidden")))
#else
#define KNOTWORK_LOCAL
#endif
