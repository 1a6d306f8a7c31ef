#pragma once

/// Marks what the shared library exports. All other symbols are hidden. Two macros matter only on
/// Windows: the build of a DLL defines VEL_DLL_EXPORTS, and a program that uses the DLL defines
/// VEL_DLL. CMake defines both.
#if defined(VEL_DLL_EXPORTS)
#define VEL_EXPORT __declspec(dllexport)
#elif defined(VEL_DLL)
#define VEL_EXPORT __declspec(dllimport)
#elif defined(__GNUC__)
#define VEL_EXPORT __attribute__((visibility("default")))
#else
#define VEL_EXPORT
#endif
