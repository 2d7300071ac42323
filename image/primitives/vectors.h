// Whether vector code is compiled in.
#pragma once

/// 1 on x86-64. With 0, as on other processors or by VITRELUX_SCALAR of CMake, every loop has its plain form alone,
/// which gives the same bits.
#if defined(__x86_64__) && !defined(VITRELUX_SCALAR)
#define VITRELUX_VECTORS 1
#else
#define VITRELUX_VECTORS 0
#endif
