#pragma once

/// Marks what the shared library exports. All other symbols are hidden.
#define VEL_EXPORT __attribute__((visibility("default")))
