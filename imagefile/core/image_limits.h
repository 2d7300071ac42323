// What a picture file may ask for, checked before memory is: the limits, and their reasons.
#pragma once

#include "status.h"

#include <cstdint>

namespace imagefile {

/// Longest side. Stitched panoramas reach some 300,000 pixels; a float RGBA row of this length still is only 16 MiB,
/// and four of these factors multiply without overflow in 64 bits.
constexpr std::int64_t kMaxSidePixels = std::int64_t(1) << 20;

/// Pixels of one picture as delivered: 32 GiB, two gigapixels of float RGBA, beyond what a machine corrects in memory.
/// A float picture of 400 megapixels takes 4.8 to 6.4 GB.
constexpr std::int64_t kMaxImageBytes = std::int64_t(1) << 35;

/// Up to this many bytes a claim is believed whatever the file's size: no harm is done by allocating them, and a plain
/// picture of this size compresses to almost nothing.
constexpr std::int64_t kHarmlessBytes = std::int64_t(64) << 20;

/// Largest block a codec library may take for its own tables and one strip or tile.
constexpr std::int64_t kMaxCodecAllocation = std::int64_t(1) << 30;

/// Scans of one JPEG: a progressive file needs about 10, at most some 60. Each scan goes over the whole picture, so
/// that a small file with thousands of them would keep a processor busy for minutes.
constexpr int kMaxJpegScans = 100;

/// A picture of 512 pixels a byte is what Huffman-coded JPEG can reach: one bit for each block of 8 by 8.
constexpr std::int64_t kJpegPixelsPerByte = 512;

/// Deflate stands for at most 258 bytes in 2 bits; the rest is headers.
constexpr std::int64_t kDeflateRatio = 1040;

/// Packings without a bound of their own (fax, Zstandard, repeated pixels): 8 times beyond what photographs reach.
constexpr std::int64_t kUnboundedRatio = 4096;

/// Largest block of metadata that is looked at; the largest profiles and packets have some megabytes.
constexpr std::size_t kMaxMetadataBytes = std::size_t(64) << 20;

/// From this file size on, a TIFF is written as BigTIFF: offsets of the classic form have 32 bits.
constexpr std::uint64_t kBigTiffFromBytes = std::uint64_t(1) << 32;

/// Checks sides and delivered bytes. @p channels 1 to 4, @p bits 8, 16 or 32 as delivered.
Status CheckImageSize(std::int64_t width, std::int64_t height, int channels, int bits);

/// Checks what a file claims against what it holds. @p storedBytes: what its pixels unpack to, before conversion;
/// @p deliveredBytes: what the caller will get; @p maxRatio: unpacked bytes that one byte of the file can stand for at
/// most, by the format's own arithmetic.
Status CheckClaim(std::int64_t storedBytes, std::int64_t deliveredBytes, std::uint64_t fileBytes,
                  std::int64_t maxRatio);

} // namespace imagefile
