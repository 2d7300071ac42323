// Rotates float RGBA images.
#pragma once

#include "types.h"

namespace primitives {

/// Cubic interpolation; the value is part of the interface.
enum Interpolation { kCubic = 4 };

/// Rotates @p srcRect of an image counterclockwise (rows run downward) by @p angleDegrees about the center of its
/// pixel (0, 0), then shifts it:
///
///     dstX =  cos(angle) * srcX + sin(angle) * srcY + shiftX
///     dstY = -sin(angle) * srcX + cos(angle) * srcY + shiftY
///
/// So 90 degrees with the shift (0, width - 1) fills a target with width and height swapped, whose top row is the
/// source's right-hand column; -90 degrees with (width - 1, 0), for the same width, is the inverse.
///
/// @param src      Pixel (0, 0) of the whole source image of @p srcSize; only @p srcRect of it is read.
/// @param dst      Pixel (0, 0) of the target image; only pixels of @p dstRect that come from within srcRect are
///                 written. Must not overlap the source.
/// @param interpolation  Cubic (Catmull-Rom), edge pixels replicated. Multiples of 90 degrees with whole shifts move
///                 pixels and interpolate nothing, so they are exact.
Status RotateFloat4(const Ipp32f *src, Size srcSize, Step srcStep, Rect srcRect, Ipp32f *dst, Step dstStep,
                    Rect dstRect, double angleDegrees, double shiftX, double shiftY, Interpolation interpolation);

} // namespace primitives
