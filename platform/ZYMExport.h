#pragma once

/// Marks what a shared library offers to others; everything else stays hidden inside it.
#define ZYM_EXPORT __attribute__((visibility("default")))
