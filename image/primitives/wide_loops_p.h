// Loops that are bound by arithmetic, compiled for wider vectors too.
#pragma once

#include "vectors.h"

// Before a function: it is compiled a second time for processors with AVX2 and chosen when the program is loaded.
// Without fused multiply-add, so that the bits are the same. What it calls has to be inlined. The thread sanitizer and
// clang 14 don't take such functions.
#if VITRELUX_VECTORS && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__)
#define PRIMITIVES_WIDE __attribute__((target_clones("default", "avx2")))
#else
#define PRIMITIVES_WIDE
#endif
