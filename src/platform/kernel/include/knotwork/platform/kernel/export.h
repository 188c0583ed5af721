// SPDX-License-Identifier: MIT
// Export macro of the kernel stand-in.
#pragma once

#if !defined(_WIN32)
#define KNOTWORK_KERNEL_API __attribute__((visibility("default")))
#elif defined(KNOTWORK_KERNEL_BUILDING)
#define KNOTWORK_KERNEL_API __declspec(dllexport)
#else
#define KNOTWORK_KERNEL_API __declspec(dllimport)
#endif
