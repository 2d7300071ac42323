// Arctangent for the fisheye model. Unlike std::atan, it vectorizes, and its result doesn't depend on the C library.
#pragma once

/// Returns the arctangent of @p r >= 0 in radians, within 1e-9 before rounding to float; NaN for NaN.
[[gnu::always_inline]] inline float Arctangent(float r)
{
    constexpr double kPi = 3.14159265358979323846;
    constexpr double kTanPi8 = 0.41421356237309504880, kTan3Pi8 = 2.41421356237309504880;
    // Reduce to -tan(pi/8)..tan(pi/8) by atan(r) = pi/4 + atan((r - 1) / (r + 1)) = pi/2 + atan(-1 / r).
    const double x = r;
    const double above = x > kTan3Pi8 ? -1.0 : x > kTanPi8 ? x - 1.0 : x;
    const double below = x > kTan3Pi8 ? x : x > kTanPi8 ? x + 1.0 : 1.0;
    const double base = x > kTan3Pi8 ? kPi / 2 : x > kTanPi8 ? kPi / 4 : 0.0;
    const double t = above / below, t2 = t * t;
    // The series t - t^3/3 + t^5/5 ... up to t^19; the next term is at most tan(pi/8)^20/21 = 1e-9 of the first.
    double sum = -1.0 / 19;
    sum = sum * t2 + 1.0 / 17;
    sum = sum * t2 - 1.0 / 15;
    sum = sum * t2 + 1.0 / 13;
    sum = sum * t2 - 1.0 / 11;
    sum = sum * t2 + 1.0 / 9;
    sum = sum * t2 - 1.0 / 7;
    sum = sum * t2 + 1.0 / 5;
    sum = sum * t2 - 1.0 / 3;
    sum = sum * t2 + 1.0;
    return static_cast<float>(base + t * sum);
}
