// Checks the sizes that a picture file claims, before memory is allocated.
#pragma once

#include "limits.h"
#include "status.h"

#include <cstdint>

namespace imagefile {

/// TIFF files of this size or more are written as BigTIFF: offsets of classic TIFF have only 32 bits.
constexpr std::uint64_t kBigTiffFromBytes = std::uint64_t(1) << 32;

/// Sets the maximum number of pixels that CheckImageSize accepts; 0 (the default) means no limit. Thread-safe.
void SetMaxPixels(std::int64_t pixels);

/// Checks the sides, the number of pixels and the delivered bytes. @p channels 1 to 4, @p bits 8, 16 or 32 as
/// delivered.
Status CheckImageSize(std::int64_t width, std::int64_t height, int channels, int bits);

/// Checks a file's claims against its size; claims up to kHarmlessBytes pass. @p storedBytes: unpacked size of the
/// pixels, before conversion; @p deliveredBytes: size that the caller gets; @p maxRatio: maximum unpacked bytes per
/// byte of the file that the format allows.
Status CheckClaim(std::int64_t storedBytes, std::int64_t deliveredBytes, std::uint64_t fileBytes,
                  std::int64_t maxRatio);

} // namespace imagefile
