// All limits on what a picture file may claim or contain, with their reasons. Properties of the formats
// themselves, such as the longest run or the largest segment, are in the codecs.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imagefile {

// ---- Pixels ----

/// Longest side. Stitched panoramas reach about 300,000 pixels; a float RGBA row of this length takes only 16 MiB, and
/// the product of width, height, channels and bytes per sample fits in 64 bits.
constexpr std::int64_t kMaxSidePixels = std::int64_t(1) << 20;

/// Bytes of one delivered picture: 32 GiB, two gigapixels of float RGBA, more than common machines can correct in
/// memory. A float picture of 400 megapixels takes 4.8 to 6.4 GB.
constexpr std::int64_t kMaxImageBytes = std::int64_t(1) << 35;

/// Up to this many bytes, a claim is accepted regardless of the file's size: allocating them is harmless, and a
/// single-color picture of this size compresses to almost nothing.
constexpr std::int64_t kHarmlessBytes = std::int64_t(64) << 20;

/// Largest block that a codec library may allocate for its tables and one strip or tile.
constexpr std::int64_t kMaxCodecAllocation = std::int64_t(1) << 30;

// ---- Maximum compression ratios: unpacked bytes per byte in the file ----

/// Maximum for Huffman-coded JPEG, 512 pixels per byte: one bit per 8 x 8 block.
constexpr std::int64_t kJpegPixelsPerByte = 512;

/// Deflate encodes at most 258 bytes in 2 bits, 1,032 to 1; rounded up.
constexpr std::int64_t kDeflateRatio = 1040;

/// PackBits encodes 128 bytes in 2.
constexpr std::int64_t kPackBitsRatio = 64;

/// Camera raw: 16-bit sensor values; lossy DNG is JPEG.
constexpr std::int64_t kRawRatio = kJpegPixelsPerByte * 2;

/// Compression without a bound (fax, Zstandard, repeated pixels): far more than photographs reach, and more than
/// OpenEXR's PIZ and ZIP reach for a single-color picture.
constexpr std::int64_t kUnboundedRatio = 4096;

// ---- Counts. Unless another reason is given, these limits end loops in damaged files: offsets can form cycles. ----

/// Scans in one JPEG: a progressive file needs about 10, at most about 60. Each scan covers the whole picture, so a
/// small file with thousands of them would keep a processor busy for minutes.
constexpr int kMaxJpegScans = 100;

/// Segments and fill bytes skipped in a JPEG while searching for metadata; bounds the time for a file of fill bytes.
constexpr int kMaxJpegSteps = 10000;

/// Segments of a JPEG up to its EXIF, which comes first or right after the JFIF segment.
constexpr int kMaxSegmentsBeforeExif = 4;

/// Samples per pixel of a TIFF. Pictures have up to 5, a few more with masks.
constexpr int kMaxTiffSamples = 64;

/// Directories of a TIFF: pages, reduced versions, and those with metadata.
constexpr int kMaxTiffDirectories = 64;

/// Sensor-value directories that a TIFF's first directory may list. Cameras write up to 4.
constexpr std::size_t kMaxRawDirectories = 16;

/// Metadata directories of a BigTIFF. There are four: first, EXIF, GPS, interoperability.
constexpr int kMaxMetadataDirectories = 8;

/// Fields of a TIFF directory. Pictures have at most a few hundred.
constexpr std::uint64_t kMaxTiffFields = 4096;

/// Fields of a maker note. Notes have at most a few hundred.
constexpr std::size_t kMaxNoteFields = 1000;

/// Chunks of a PNG or WebP. Animations have a few thousand.
constexpr std::size_t kMaxChunks = 100000;

/// Boxes in one box of HEIF, JPEG XL or JPEG 2000. HEIF has one per property and tile.
constexpr std::size_t kMaxIsoBoxes = 10000;

/// Parts of an OpenEXR file. Each holds a view, a layer or the depth.
constexpr int kMaxExrParts = 1000;

/// Channels of a PSD's picture or layer, from the format specification.
constexpr int kMaxPsdChannels = 56;

/// Extra channels of a JPEG XL picture besides color and opacity. Each takes as much memory as a gray picture; files
/// from cameras have at most a depth map.
constexpr std::uint32_t kMaxJxlExtraChannels = 16;

/// JPEG 2000 precincts accepted regardless of the file's size; OpenJPEG allocates a few hundred bytes for each.
constexpr std::uint64_t kHarmlessPrecincts = std::uint64_t(1) << 18;

// ---- Bytes ----

/// Largest metadata block that is read, such as XMP, EXIF or an ICC profile, packed or unpacked; the largest
/// profiles and packets have a few megabytes.
constexpr std::size_t kMaxMetadataBytes = std::size_t(64) << 20;

/// Total bytes read from a TIFF for its metadata. Raw files with large previews need about 100 MB.
constexpr std::uint64_t kMaxMappedBytes = std::uint64_t(1) << 30;

/// Bytes of one value in a BigTIFF. Profiles and maker-note previews are smaller.
constexpr std::uint64_t kMaxBigTiffValueBytes = std::uint64_t(16) << 20;

/// Bytes of all non-pixel values in a BigTIFF.
constexpr std::size_t kMaxBigTiffViewBytes = std::size_t(64) << 20;

/// Bytes of a Radiance header: each program that edits a picture adds a line with its command.
constexpr std::size_t kMaxHdrHeaderBytes = std::size_t(1) << 20;

/// Bytes of a HEIF file's brand box. Files list about ten brands of 4 bytes.
constexpr std::uint64_t kMaxBrandBytes = 1024;

/// Bytes of one OpenEXR pixel over all layers: 1,024 channels.
constexpr std::int64_t kMaxExrPixelBytes = 4096;

/// Largest PNG chunk that libpng may keep in memory. Of those that aren't skipped, the palette is the largest,
/// with 768 bytes.
constexpr std::size_t kMaxPngChunkBytes = 65536;

} // namespace imagefile
