// Configures whether vector code is compiled in.
#pragma once

/// 1 on x86-64; 0 on other architectures or with CMake's VITRELUX_SCALAR, where every loop has only its plain form,
/// which gives the same bits.
#if defined(__x86_64__) && !defined(VITRELUX_SCALAR)
#define VITRELUX_VECTORS 1
#else
#define VITRELUX_VECTORS 0
#endif
