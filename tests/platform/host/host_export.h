// SPDX-License-Identifier: MIT
#pragma once

#if !defined(_WIN32)
#define HOST_API __attribute__((visibility("default")))
#elif defined(HOST_BUILDING)
#define HOST_API __declspec(dllexport)
#else
#define HOST_API __declspec(dllimport)
#endif
