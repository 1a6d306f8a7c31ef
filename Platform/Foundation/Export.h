#pragma once

/// Marks what a shared library of ours offers to others; all else is hidden.
#define VEL_EXPORT __attribute__((visibility("default")))
