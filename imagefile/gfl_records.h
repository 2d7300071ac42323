// Records and constants of the image-file layer's interface; gfl.h, which includes this, has the functions.
#pragma once

#include <cstddef>
#include <cstdint>

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

/// Pixel forms: values of GFL_BITMAP::Type. The layer delivers and accepts only GFL_GREY, GFL_RGB and GFL_RGBA, with
/// interleaved channels.
enum GflType : std::uint16_t {
    GFL_BINARY = 1,
    GFL_GREY = 2,
    GFL_COLORS = 4,
    GFL_RGB = 16,
    GFL_RGBA = 32,
};

/// Returns the number of channels of a pixel form: 1, 3 or 4; 0 if it is unknown. The masks include forms that only
/// hosts use.
constexpr int gflChannelsOfType(unsigned type)
{
    return (type & 0x0007) != 0 ? 1 : (type & 0x1050) != 0 ? 3 : (type & 0x27A0) != 0 ? 4 : 0;
}

/// One picture. BitsPerComponent is 8 or 16 (unsigned, native byte order) or 32 (IEEE float, nominally 0 to 1). Alpha
/// is straight. The record owns Data, ColorMap, Comment, MetaData and Name; gflFreeBitmap releases all of them.
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
    void *MetaData; // blocks read with or attached to the picture; only the gflBitmap* functions access them
    std::int32_t XOffset;
    std::int32_t YOffset;
    char *Name;
};
static_assert(sizeof(GFL_BITMAP) == 88 && offsetof(GFL_BITMAP, Data) == 48, "layout shared with hosts");

/// Bits of GFL_LOAD_PARAMS::Flags.
enum GflLoadFlag : std::uint32_t {
    GFL_LOAD_FORCE_COLOR_MODEL = 0x0010, // deliver pixels of type ColorModel
    GFL_LOAD_ORIGINAL_DEPTH = 0x0200,    // keep the file's depth; without this flag, deliver 8 bits
    GFL_LOAD_METADATA = 0x0400,          // read ICC, IPTC, EXIF and XMP along with the pixels
    GFL_LOAD_FULL = 0x8000,              // set on every full read; has no effect
    GFL_LOAD_PENDING = 0x10000,          // may return before all rows are decoded: see gflWaitForRows
};

struct GFL_LOAD_PARAMS {
    std::uint32_t Flags;
    std::uint8_t Unused1[10];
    std::uint16_t ColorModel;  // a GflType
    std::uint8_t DefaultAlpha; // 0 to 255: alpha of an opaque file that is delivered as GFL_RGBA
    std::uint8_t Unused2[55];
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
    GFL_SAVE_THUMBNAIL = 0x0010,   // JPEG: add a new thumbnail to the EXIF, if there is EXIF with room for it
    GFL_SAVE_HALF_FLOATS = 0x0020, // OpenEXR: 16-bit floats, regardless of the bitmap's depth
    GFL_SAVE_FAST = 0x0040, // TIFF deflate: use ISA-L instead of libdeflate, and generate rows on several threads
};

/// Rows that gflSaveRowsUTF8 requests at once with GFL_SAVE_FAST and deflate, starting at multiples of this; the last
/// request may be shorter. A power of two.
constexpr int GFL_FAST_ROWS = 64;

/// GFL_SAVE_PARAMS::Compression: the format's default (TIFF: none, OpenEXR: PIZ).
constexpr std::uint16_t GFL_COMPRESSION_DEFAULT = 0xFFFF;

/// Numbers of Compression by format:
///
///   | format    | numbers                                                             |
///   |-----------|---------------------------------------------------------------------|
///   | tiff      | 0 none, 2 LZW, 4 deflate, 50000 Zstandard (libtiff's number);       |
///   |           | others are GFL_ERROR_BAD_PARAMETERS                                 |
///   | png       | zlib level, 0 to 9; higher numbers count as 9                       |
///   | exr       | OpenEXR's: 0 none, 1 RLE, 2 ZIPS, 3 ZIP, 4 PIZ (default), 5 PXR24,  |
///   |           | 6 B44, 7 B44A, 8 DWAA, 9 DWAB; others are GFL_ERROR_BAD_PARAMETERS  |
///   | hdri, psd | 0 none; others: run-length encoded rows                             |
///   | jpeg      | has no effect; see Quality                                          |
struct GFL_SAVE_PARAMS {
    std::uint32_t Flags;
    std::int32_t FormatIndex;  // from gflGetFormatIndexByName
    std::uint16_t Compression; // by format
    std::uint16_t Quality;     // JPEG, 0 to 100
};
static_assert(offsetof(GFL_SAVE_PARAMS, Compression) == 8 && offsetof(GFL_SAVE_PARAMS, Quality) == 10,
              "layout shared with hosts");

/// Modes of gflChangeColorDepth, with the meaning of its last argument.
enum GflColorDepth : std::uint16_t {
    GFL_DEPTH_GREY = 1,            // GFL_GREY: luma of ITU-R BT.601
    GFL_DEPTH_RGB = 2,             // GFL_RGB: drops opacity
    GFL_DEPTH_RGBA = 3,            // GFL_RGBA: opacity, if added, is full
    GFL_DEPTH_BLACK_AND_WHITE = 4, // GFL_GREY of 0 and 255; argument: lowest luma that becomes white, 0 means 128
    GFL_DEPTH_LEVELS = 5,          // keeps the type; argument: number of evenly spaced values per color, 2 to 256
};

/// How a file stores color: values of GFL_FILE_INFORMATION::ColorModel. Hosts rely on the numbers of CMYK and Lab.
enum GflColorModel : std::uint16_t {
    GFL_CM_RGB = 0,
    GFL_CM_GREY = 1,
    GFL_CM_PALETTE = 2,
    GFL_CM_CMYK = 3,
    GFL_CM_YCBCR = 4,
    GFL_CM_OTHER = 5,
    GFL_CM_LAB = 6,
};

/// Description of a file, without pixels. Texts are zero-terminated ASCII.
struct GFL_FILE_INFORMATION {
    char FormatName[8];   // for gflGetFormatIndexByName
    char Description[64]; // "TIFF", "TIFF tiled", "JPEG progressive", "PSD LAB", "JPEG CMYK" and so on
    std::int32_t FormatIndex;
    std::int32_t Width;
    std::int32_t Height;
    std::uint16_t BitsPerComponent;   // as a load with GFL_LOAD_ORIGINAL_DEPTH delivers them: 8, 16 or 32
    std::uint16_t ComponentsPerPixel; // as stored in the file, alpha included; a palette counts as its 3 colors
    std::uint16_t ColorModel;         // a GflColorModel
    std::uint16_t Xdpi;               // 0: unknown
    std::uint16_t Ydpi;
    std::uint16_t Reserved;
};

/// An ICC profile.
struct GFL_ICCPROFILE_DATA {
    std::uint8_t *Data;
    std::uint32_t Length; // bytes
};
static_assert(sizeof(GFL_ICCPROFILE_DATA) == 16 && offsetof(GFL_ICCPROFILE_DATA, Length) == 8,
              "layout shared with hosts");

/// An XMP packet, UTF-8 text of Length bytes. Not zero-terminated.
struct GFL_XMP_DATA {
    std::uint8_t *Data;
    std::uint32_t Length; // bytes
};
static_assert(sizeof(GFL_XMP_DATA) == 16 && offsetof(GFL_XMP_DATA, Length) == 8, "layout shared with hosts");

/// Bit of GFL_IPTC_ENTRY::Id: Value holds hexadecimal digits, because the bytes contain a zero.
constexpr std::uint32_t GFL_IPTC_HEXADECIMAL = 0x80000000;

struct GFL_IPTC_ENTRY {
    std::uint32_t Id; // record << 8 | data set, possibly with GFL_IPTC_HEXADECIMAL
    char *Name;       // "Caption"
    char *Value;      // the bytes of the data set
};
static_assert(sizeof(GFL_IPTC_ENTRY) == 24 && offsetof(GFL_IPTC_ENTRY, Name) == 8, "layout shared with hosts");

/// The IPTC data sets of a picture in file order. Setting the block on a bitmap restores the same bytes.
struct GFL_IPTC_DATA {
    std::uint32_t NumberOfItems;
    GFL_IPTC_ENTRY *ItemsList;
};
static_assert(sizeof(GFL_IPTC_DATA) == 16 && offsetof(GFL_IPTC_DATA, ItemsList) == 8, "layout shared with hosts");

/// Location of an EXIF entry: GFL_EXIF_ENTRY::Flag, GFL_EXIF_ENTRYEX::Block.
enum GflExifBlock : std::uint32_t {
    GFL_EXIF_MAIN = 1,   // first directory: maker, model, orientation ...
    GFL_EXIF_CAMERA = 2, // Exif directory
    GFL_EXIF_INTEROPERABILITY = 4,
    GFL_EXIF_GPS = 16,
    GFL_EXIF_OWN = 32,    // added by this layer, such as "LensID"
    GFL_EXIF_OTHER = 256, // this and higher numbers, in GFL_EXIF_DATAEX only: values of decoded maker notes
};

/// One EXIF value as text.
struct GFL_EXIF_ENTRY {
    std::uint32_t Flag; // a GflExifBlock below GFL_EXIF_OTHER
    std::uint32_t Tag;
    char *Name;  // "FocalLength"
    char *Value; // "50", "1/250", "Top-left (1)", "45° 30' 7.5\"" ...; never localized
};

/// EXIF as a flat list of texts, in the order of blocks and tags, without thumbnails and the values of maker notes.
struct GFL_EXIF_DATA {
    std::uint32_t NumberOfItems;
    GFL_EXIF_ENTRY *ItemsList;
};

/// One raw EXIF value: Length bytes, little-endian numbers, texts as stored. Data is null when Length is 0.
struct GFL_EXIF_ENTRYEX {
    std::uint16_t Tag;
    std::uint16_t Format; // TIFF field type, 1 to 13
    std::uint32_t Block;  // a GflExifBlock
    std::uint32_t Reserved1;
    std::uint32_t Reserved2;
    std::uint32_t Length; // bytes
    std::uint8_t *Data;
    GFL_EXIF_ENTRYEX *Next;
};
static_assert(sizeof(GFL_EXIF_ENTRYEX) == 40 && offsetof(GFL_EXIF_ENTRYEX, Length) == 16
                  && offsetof(GFL_EXIF_ENTRYEX, Data) == 24,
              "layout shared with hosts");

/// EXIF as a linked list of raw values, without thumbnails and without values that describe how the file stores pixels.
/// Setting the block on a bitmap restores the same values.
struct GFL_EXIF_DATAEX {
    GFL_EXIF_ENTRYEX *Root;
    std::uint32_t Flags;
};
static_assert(sizeof(GFL_EXIF_DATAEX) == 16 && offsetof(GFL_EXIF_DATAEX, Flags) == 8, "layout shared with hosts");

/// One metadata value under the key that Exiv2 gives it, zero-terminated UTF-8.
struct GFL_METADATA_ITEM {
    char *Key;     // "Exif.Photo.LensModel", "Exif.NikonLd3.LensIDNumber", "Xmp.aux.Lens", "LibRaw.LensID"
    char *Raw;     // as stored, the same in every locale: "147", "18/10"; "(40000 bytes)" for values over 1,024 bytes
    char *Printed; // as Exiv2 prints it in English: "Nikon AF-S Zoom-Nikkor 24-70mm f/2.8G ED", "F1.8"
};

/// The metadata of a file, for lookup by key: all EXIF with the values of decoded maker notes, in file order, where a
/// key may occur twice; then all XMP; then, for camera raw files, LibRaw's fields (imagefile/raw/raw_facts.h), whose
/// Printed equals Raw.
struct GFL_METADATA_LIST {
    std::uint32_t NumberOfItems;
    GFL_METADATA_ITEM *ItemsList;
};

/// One simple XMP property to set; UTF-8 texts owned by the caller.
struct GFL_XMP_ITEM {
    const char *Key;   // as Exiv2 spells it: "Xmp.crs.AlreadyApplied"; "vitrelux" is the prefix of our own record
    const char *Value; // empty: removes the property
};

/// An image file format. The layer owns the texts.
struct GFL_FORMAT {
    const char *Name;      // for gflGetFormatIndexByName: "tiff"
    const char *Label;     // for display, English: "TIFF", "Camera raw"
    const char *Suffixes;  // lowercase, the usual one first, separated by spaces: ".tif .tiff"
    const char *MimeTypes; // separated by spaces: "image/tiff"
    bool CanBeWritten;     // may be used to save; all formats can be read
};
