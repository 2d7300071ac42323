// Compiles a function for wider vectors, too; meant for loops that are limited by arithmetic.
#pragma once

#include "vectors.h"

// Attribute that compiles a function a second time, for processors with AVX2; the loader selects the version. Fused
// multiply-add is not used, so that results are bit-identical. Callees must be inlined. The thread sanitizer and clang
// 14 don't support such functions.
#if VITRELUX_VECTORS && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_THREAD__)
#define PRIMITIVES_WIDE __attribute__((target_clones("default", "avx2")))
#else
#define PRIMITIVES_WIDE
#endif
