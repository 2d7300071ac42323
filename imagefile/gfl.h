// The whole face of the image-file layer: bitmap and parameter records, and the functions on them.
//
// C-style, and re-entrant: any thread may call any function, on different bitmaps and different files. Paths are UTF-8.
// Every function that can fail returns an error number of GflError; no exception leaves the layer.
#pragma once

#include <cstddef>
#include <cstdint>

#define GFL_API __attribute__((visibility("default")))

extern "C" {

/// Errors, returned as numbers by every function that reads or writes.
enum GflError : std::uint16_t {
    GFL_NO_ERROR = 0,
    GFL_ERROR_FILE_OPEN = 1,
    GFL_ERROR_FILE_READ = 2,
    GFL_ERROR_FILE_CREATE = 3,
    GFL_ERROR_FILE_WRITE = 4,
    GFL_ERROR_NO_MEMORY = 5,
    GFL_ERROR_UNKNOWN_FORMAT = 6,
    GFL_ERROR_BAD_BITMAP = 7,
    GFL_ERROR_BAD_FORMAT_INDEX = 10,
    GFL_ERROR_BAD_PARAMETERS = 50,
};

/// Pixel forms, values of GFL_BITMAP::Type. The layer delivers and takes the last three; channels are interleaved.
enum GflType : std::uint16_t {
    GFL_BINARY = 1,
    GFL_GREY = 2,
    GFL_COLORS = 4,
    GFL_RGB = 16,
    GFL_RGBA = 32,
};

/// One picture. BitsPerComponent is 8 or 16 (unsigned, native byte order) or 32 (IEEE float, nominally 0 to 1). Alpha is
/// straight. The record owns Data, ColorMap, Comment, MetaData and Name; gflFreeBitmap releases all of them.
struct GFL_BITMAP {
    std::uint16_t Type;
    std::uint16_t Origin; // 0: first row on top
    std::int32_t Width;
    std::int32_t Height;
    std::uint32_t BytesPerLine; // stride; multiply in 64 bits
    std::int16_t LinePadding;
    std::uint16_t BitsPerComponent;
    std::uint16_t ComponentsPerPixel;
    std::uint16_t BytesPerPixel;
    std::uint16_t Xdpi;
    std::uint16_t Ydpi;
    std::int16_t TransparentIndex; // -1: none
    std::int16_t Reserved;
    std::int32_t ColorUsed;
    std::uint8_t *ColorMap; // 1,024 bytes, or null
    std::uint8_t *Data;
    char *Comment;
    void *MetaData; // the blocks read with or attached to the picture; only the gflBitmap* functions look inside
    std::int32_t XOffset;
    std::int32_t YOffset;
    char *Name;
};
static_assert(sizeof(GFL_BITMAP) == 88 && offsetof(GFL_BITMAP, Data) == 48, "layout shared with hosts");

/// Bits of GFL_LOAD_PARAMS::Flags.
enum GflLoadFlag : std::uint32_t {
    GFL_LOAD_FORCE_COLOR_MODEL = 0x0010, // deliver the form of ColorModel
    GFL_LOAD_ORIGINAL_DEPTH = 0x0200, // keep the file's own depth; without it everything becomes 8 bits
    GFL_LOAD_METADATA = 0x0400, // read ICC, IPTC, EXIF and XMP along with the pixels
    GFL_LOAD_FULL = 0x8000, // set on every full read; changes nothing
};

struct GFL_LOAD_PARAMS {
    std::uint32_t Flags;
    std::uint8_t Unused1[10];
    std::uint16_t ColorModel; // a GflType
    std::uint8_t Unused2[56];
    // Camera raw development.
    std::uint8_t RawUseAutomaticBalance;
    std::uint8_t RawUseCameraBalance;
    std::uint8_t RawHighlight;
    std::uint8_t RawAutoBright;
    float RawGamma;
    float RawBrightness;
    float RawRedScaling;
    float RawBlueScaling;
};
static_assert(offsetof(GFL_LOAD_PARAMS, ColorModel) == 14 && offsetof(GFL_LOAD_PARAMS, RawUseAutomaticBalance) == 72
                  && offsetof(GFL_LOAD_PARAMS, RawBlueScaling) == 88,
              "layout shared with hosts");

/// Bits of GFL_SAVE_PARAMS::Flags.
enum GflSaveFlag : std::uint32_t {
    GFL_SAVE_ICC_PROFILE = 0x0008, // write the bitmap's ICC profile
};

struct GFL_SAVE_PARAMS {
    std::uint32_t Flags;
    std::int32_t FormatIndex; // from gflGetFormatIndexByName
    std::uint16_t Compression; // by format; TIFF: 0 none, 2 LZW, 4 deflate
    std::uint16_t Quality; // JPEG, 0 to 100
};
static_assert(offsetof(GFL_SAVE_PARAMS, Compression) == 8 && offsetof(GFL_SAVE_PARAMS, Quality) == 10,
              "layout shared with hosts");

} // extern "C"
