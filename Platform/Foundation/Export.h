#pragma once

/// Marks the classes, functions and variables that the shared library exports. All other symbols
/// are hidden. On Windows, CMake defines VEL_DLL_EXPORTS when it builds the DLL, and VEL_DLL when
/// it builds a program that uses the DLL.
#if defined(VEL_DLL_EXPORTS)
#define VEL_EXPORT __declspec(dllexport)
#elif defined(VEL_DLL)
#define VEL_EXPORT __declspec(dllimport)
#elif defined(__GNUC__)
#define VEL_EXPORT __attribute__((visibility("default")))
#else
#define VEL_EXPORT
#endif
