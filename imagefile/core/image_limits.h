// Limits for the sizes that a picture file claims, checked before memory is allocated, with their reasons.
#pragma once

#include "status.h"

#include <cstdint>

namespace imagefile {

/// Longest side. Stitched panoramas reach about 300,000 pixels; a float RGBA row of this length takes only 16 MiB, and
/// the product of four such factors fits in 64 bits.
constexpr std::int64_t kMaxSidePixels = std::int64_t(1) << 20;

/// Bytes of one delivered picture: 32 GiB, two gigapixels of float RGBA, beyond what a machine corrects in memory.
/// A float picture of 400 megapixels takes 4.8 to 6.4 GB.
constexpr std::int64_t kMaxImageBytes = std::int64_t(1) << 35;

/// Up to this many bytes a claim is accepted regardless of the file's size: allocating them does no harm, and a picture
/// of a single color of this size compresses to almost nothing.
constexpr std::int64_t kHarmlessBytes = std::int64_t(64) << 20;

/// Largest block that a codec library may allocate for its tables and one strip or tile.
constexpr std::int64_t kMaxCodecAllocation = std::int64_t(1) << 30;

/// Scans in one JPEG: a progressive file needs about 10, at most about 60. Each scan covers the whole picture, so a
/// small file with thousands of them would keep a processor busy for minutes.
constexpr int kMaxJpegScans = 100;

/// Maximum for Huffman-coded JPEG, 512 pixels per byte: one bit for each block of 8 by 8.
constexpr std::int64_t kJpegPixelsPerByte = 512;

/// Deflate encodes at most 258 bytes in 2 bits; the rest is headers.
constexpr std::int64_t kDeflateRatio = 1040;

/// Compressions without a bound (fax, Zstandard, repeated pixels): 8 times what photographs reach.
constexpr std::int64_t kUnboundedRatio = 4096;

/// Largest metadata block that is read; the largest profiles and packets have a few megabytes.
constexpr std::size_t kMaxMetadataBytes = std::size_t(64) << 20;

/// From this file size on, TIFFs are written as BigTIFF: offsets of the classic form have 32 bits.
constexpr std::uint64_t kBigTiffFromBytes = std::uint64_t(1) << 32;

/// Checks sides and delivered bytes. @p channels 1 to 4, @p bits 8, 16 or 32 as delivered.
Status CheckImageSize(std::int64_t width, std::int64_t height, int channels, int bits);

/// Checks a file's claims against its size. @p storedBytes: unpacked size of its pixels, before conversion; @p
/// deliveredBytes: size that the caller gets; @p maxRatio: maximum unpacked bytes per byte of the file that the format
/// allows.
Status CheckClaim(std::int64_t storedBytes, std::int64_t deliveredBytes, std::uint64_t fileBytes,
                  std::int64_t maxRatio);

} // namespace imagefile
