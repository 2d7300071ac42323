// All limits on what a picture file may claim or contain, with their reasons. Not here: properties of the formats
// themselves, such as the longest run or the largest segment, which stay with their codecs.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imagefile {

// ---- Pixels ----

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

// ---- Unpacked bytes per byte of the file ----

/// Maximum for Huffman-coded JPEG, 512 pixels per byte: one bit for each block of 8 by 8.
constexpr std::int64_t kJpegPixelsPerByte = 512;

/// Deflate encodes at most 258 bytes in 2 bits; the rest is headers.
constexpr std::int64_t kDeflateRatio = 1040;

/// PackBits encodes 128 bytes in 2.
constexpr std::int64_t kPackBitsRatio = 64;

/// Sensor values of 16 bits; lossy DNG is JPEG.
constexpr std::int64_t kRawRatio = kJpegPixelsPerByte * 2;

/// Compressions without a bound (fax, Zstandard, repeated pixels): 8 times what photographs reach. Above the ratio of
/// OpenEXR's PIZ and ZIP for a picture of a single color.
constexpr std::int64_t kUnboundedRatio = 4096;

// ---- Counts. Those without a higher reason end loops over damaged files, whose offsets can form cycles. ----

/// Scans in one JPEG: a progressive file needs about 10, at most about 60. Each scan covers the whole picture, so a
/// small file with thousands of them would keep a processor busy for minutes.
constexpr int kMaxJpegScans = 100;

/// Segments and fill bytes of a JPEG in search of metadata: bounds the time for a file of only fill bytes.
constexpr int kMaxJpegSteps = 10000;

/// Segments of a JPEG up to its EXIF data, which is the first one or follows JFIF's.
constexpr int kMaxSegmentsBeforeExif = 4;

/// Samples per pixel of a TIFF. Pictures have up to 5, or some more with masks.
constexpr int kMaxTiffSamples = 64;

/// Directories of a TIFF: pages, reduced versions, and those with metadata.
constexpr int kMaxTiffDirectories = 64;

/// Directories with sensor values that the first one of a TIFF may list. Cameras write up to 4.
constexpr std::size_t kMaxRawDirectories = 16;

/// Directories with metadata of a BigTIFF. There are four: first, EXIF, GPS, interoperability.
constexpr int kMaxMetadataDirectories = 8;

/// Fields of a TIFF directory. Pictures have at most a few hundred.
constexpr std::uint64_t kMaxTiffFields = 4096;

/// Fields of a maker note. Notes have at most a few hundred.
constexpr std::size_t kMaxNoteFields = 1000;

/// Chunks of a PNG or WebP. Animations have a few thousand.
constexpr std::size_t kMaxChunks = 100000;

/// Boxes in one box of HEIF, JPEG XL and JPEG 2000. HEIF has one for each property of each tile.
constexpr std::size_t kMaxIsoBoxes = 10000;

/// Parts of an OpenEXR file: a view, layer or depth each.
constexpr int kMaxExrParts = 1000;

/// Channels of a PSD, of the picture or a layer, as in the format's description.
constexpr int kMaxPsdChannels = 56;

/// Channels of a JPEG XL in addition to color and opacity. Each takes as much memory as a gray picture; files from
/// cameras have at most a depth map.
constexpr std::uint32_t kMaxJxlExtraChannels = 16;

/// Precincts of a JPEG 2000 that are accepted regardless of the file's size; OpenJPEG takes some 100 bytes for each.
constexpr std::uint64_t kHarmlessPrecincts = std::uint64_t(1) << 18;

// ---- Bytes ----

/// Largest block of metadata that is read, such as XMP, EXIF or an ICC profile, also after it is unpacked; the largest
/// profiles and packets have a few megabytes.
constexpr std::size_t kMaxMetadataBytes = std::size_t(64) << 20;

/// Bytes of a TIFF, all in all, that are read for its metadata. Raw files with large previews have about 100 MB.
constexpr std::uint64_t kMaxMappedBytes = std::uint64_t(1) << 30;

/// Bytes of one value in a BigTIFF. Profiles, and previews in maker notes, are smaller.
constexpr std::uint64_t kMaxBigTiffValueBytes = std::uint64_t(16) << 20;

/// Bytes of all values in a BigTIFF that aren't pixels.
constexpr std::size_t kMaxBigTiffViewBytes = std::size_t(64) << 20;

/// Bytes of a Radiance header: each program that edits a picture adds a line with its call.
constexpr std::size_t kMaxHdrHeaderBytes = std::size_t(1) << 20;

/// Bytes of the box with the brands of a HEIF file. Files list about ten brands, of 4 bytes.
constexpr std::uint64_t kMaxBrandBytes = 1024;

/// Bytes of one pixel in OpenEXR, of all layers: 1,024 channels.
constexpr std::int64_t kMaxExrPixelBytes = 4096;

/// Largest chunk of a PNG that libpng may keep in memory. Of those that aren't skipped, the palette is the largest,
/// with 768 bytes.
constexpr std::size_t kMaxPngChunkBytes = 65536;

} // namespace imagefile
