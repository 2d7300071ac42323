// Unpacks the samples of TIFF rows and converts them to delivered pixels.
#pragma once

#include "core/color_transform.h"
#include "tiff_layout.h"

namespace imagefile {

/// Copies samples of a stored row to 8- or 16-bit integers or floats, as layout.unpacked specifies. Integers are scaled
/// to the full range; palette indexes are unchanged.
///
/// @param src    Row as libtiff returns it: in native byte order, or packed from the highest bit down.
/// @param first  Index of the first sample in the row; the others follow at intervals of @p srcStep.
/// @param dst    Receives @p count samples at intervals of @p dstStep.
void UnpackSamples(const TiffLayout &layout, const std::uint8_t *src, std::size_t first, std::size_t srcStep,
                   std::size_t count, void *dst, std::size_t dstStep);

/// Returns whether unpacked rows have the delivered form, so that they can be unpacked and finished in place.
bool UnpacksInPlace(const TiffLayout &layout);

/// Converts the samples in @p unpacked to a delivered row in @p row. Overwrites @p unpacked, which must be @p row if
/// UnpacksInPlace returns true. @p transform must have been started for CMYK and Lab.
void FinishRow(const TiffLayout &layout, ColorTransform *transform, void *unpacked, void *row);

} // namespace imagefile
