// Unpacks the samples of TIFF rows and converts them to delivered pixels.
#pragma once

#include "core/color_transform.h"
#include "tiff_layout.h"

namespace imagefile {

/// Copies samples from a stored row, as 8 or 16 bits or floats, as given by layout.unpacked. Integers are scaled to the
/// full range; palette indexes are unchanged.
///
/// @param src    A row as libtiff returns it: native byte order, or bits from the highest down.
/// @param first  Index of the first sample in the row; each following one is @p srcStep samples farther on.
/// @param dst    @p count samples, each @p dstStep samples after the previous one.
void UnpackSamples(const TiffLayout &layout, const std::uint8_t *src, std::size_t first, std::size_t srcStep,
                   std::size_t count, void *dst, std::size_t dstStep);

/// Returns whether unpacked rows have the delivered form, so that they can be unpacked and finished in place.
bool UnpacksInPlace(const TiffLayout &layout);

/// Makes a delivered row in @p row from the unpacked samples in @p unpacked, which is @p row itself if UnpacksInPlace,
/// and may be overwritten. @p transform: started for CMYK and Lab.
void FinishRow(const TiffLayout &layout, ColorTransform *transform, void *unpacked, void *row);

} // namespace imagefile
