// The whole face of the image-file layer: bitmap and parameter records, and the functions on them.
//
// C-style, and re-entrant: any thread may call any function, on different bitmaps and different files. Rules for all:
//  - Paths and texts are UTF-8. Null pointers are GFL_ERROR_BAD_PARAMETERS, or the neutral answer where no error number
//    is returned; freeing null does nothing.
//  - Functions that can fail return a number of GflError, and gflLastErrorText() then says what was wrong. No exception
//    leaves the layer, whatever its type; memory that runs out anywhere is GFL_ERROR_NO_MEMORY.
//  - Bitmaps and blocks come from the allocator given to gflLibraryInitEx, and go back by their gflFree* function.
//  - What a failed load would have filled is left empty: null pointers, zeroed records.
#pragma once

#include "gfl_records.h"

#define GFL_API __attribute__((visibility("default")))

extern "C" {

// ---- The library ----

/// Allocator of bitmaps and blocks; the contracts of malloc, realloc and free. Called from any thread.
typedef void *(*GFL_ALLOC_CALLBACK)(unsigned long size, void *userData);
typedef void *(*GFL_REALLOC_CALLBACK)(void *pointer, unsigned long size, void *userData);
typedef void (*GFL_FREE_CALLBACK)(void *pointer, void *userData);

/// Starts the layer. Without a start, or with null callbacks, malloc, realloc and free serve. A second start while
/// started is only counted: the first allocator stays until the last gflLibraryExit. Not to be called while bitmaps or
/// blocks of another allocator are alive.
GFL_API int gflLibraryInitEx(GFL_ALLOC_CALLBACK alloc, GFL_REALLOC_CALLBACK realloc, GFL_FREE_CALLBACK free,
                             void *userData);
GFL_API void gflLibraryExit();

/// Allows (not 0) or refuses (0, the default) LZW when saving; a refused save is GFL_ERROR_BAD_PARAMETERS.
GFL_API void gflEnableLZW(int enable);

/// Threads that one save may use, from 1; 0 (the default) means one a processor. The file is the same for any number.
GFL_API void gflSetThreads(int threads);

/// What was wrong with the last failed call of this thread: what was read, expected, found. Never null; valid until the
/// thread's next call that fails.
GFL_API const char *gflLastErrorText();

/// What calls of this thread left out of files without failing, such as damaged metadata. The first such text since
/// gflClearWarningText; empty when there was none. Never null.
GFL_API const char *gflLastWarningText();
GFL_API void gflClearWarningText();

/// A block that the layer can later free as part of a record. Null when memory is short.
GFL_API void *gflMemoryAlloc(std::uint32_t size);

// ---- Formats ----

/// What is known of a format by its index, from 0; null behind the last one. Valid as long as the library is loaded.
GFL_API const GFL_FORMAT *gflGetFormat(std::int32_t index);

/// Index of a format by its lower-case name ("tiff", "jpeg"), or -1, which a save answers with
/// GFL_ERROR_BAD_FORMAT_INDEX.
GFL_API std::int32_t gflGetFormatIndexByName(const char *name);

/// Name of the format at an index: from 0 without gaps. Null beyond the last.
GFL_API const char *gflGetFormatNameByIndex(std::int32_t index);

/// True when the layer reads files with this suffix, given with its dot, in any case.
GFL_API bool gflHasGoodExtension(const char *suffix);

// ---- Reading ----

GFL_API void gflGetDefaultLoadParams(GFL_LOAD_PARAMS *params);

/// Size, depth and format without decoding pixels. @p index is -1 for any format; @p flags are ignored.
GFL_API int gflGetFileInformationExUTF8(const char *path, std::int32_t index, GFL_FILE_INFORMATION *info,
                                        std::uint32_t flags);
GFL_API void gflFreeFileInformation(GFL_FILE_INFORMATION *info);

/// Reads a whole picture into a new record, pixels as stored (orientation is not applied). Delivered are GFL_GREY,
/// GFL_RGB and GFL_RGBA at 8, 16 or 32 bits, as GFL_LOAD_PARAMS asks. A file that ends early is GFL_ERROR_FILE_READ.
/// @p info, which may be null, tells the file as gflGetFileInformationExUTF8 does.
GFL_API int gflLoadBitmapUTF8(const char *path, GFL_BITMAP **bitmap, const GFL_LOAD_PARAMS *params,
                              GFL_FILE_INFORMATION *info);

/// As gflLoadBitmapUTF8, from a block of @p size bytes that stays the caller's.
GFL_API int gflLoadBitmapFromMemory(const std::uint8_t *data, std::uint32_t size, GFL_BITMAP **bitmap,
                                    const GFL_LOAD_PARAMS *params, GFL_FILE_INFORMATION *info);

/// The picture reduced to fit into a box of @p width by @p height pixels, sides in proportion, never enlarged; a box of
/// 0 by 0 stands for 256 by 256. Decodes no more than that needs. Otherwise as gflLoadBitmapUTF8; @p info tells the
/// size of the file, not of the thumbnail.
GFL_API int gflLoadThumbnailUTF8(const char *path, int width, int height, GFL_BITMAP **bitmap,
                                 const GFL_LOAD_PARAMS *params, GFL_FILE_INFORMATION *info);

/// A record that carries the metadata of a picture file and no pixels (Data is null; size and form are the file's).
/// A file that could not be read as a picture gives the error that reading it would. Damaged metadata is left out with
/// a warning (gflLastWarningText), here and in every function that reads metadata.
GFL_API int gflLoadMetadataUTF8(const char *path, GFL_BITMAP **bitmap);

GFL_API void gflFreeBitmap(GFL_BITMAP *bitmap);

// ---- Writing ----

GFL_API void gflGetDefaultSaveParams(GFL_SAVE_PARAMS *params);

/// Writes a GFL_GREY, GFL_RGB or GFL_RGBA bitmap with the EXIF, IPTC and XMP that it carries, and its ICC profile with
/// GFL_SAVE_ICC_PROFILE, unless that is of another colour space than the pixels. OpenEXR and Radiance files have no
/// place for metadata and are written without. Depth and alpha are converted to what the format holds. The file is
/// written beside the target and renamed when whole: a failed save leaves an existing file as it was. Symbolic links
/// are followed.
GFL_API int gflSaveBitmapUTF8(const char *path, const GFL_BITMAP *bitmap, const GFL_SAVE_PARAMS *params);

/// Makes rows @p firstRow to @p firstRow + @p rows - 1 of a picture in @p data, one every @p bytesPerLine bytes. Must
/// not throw; returns a number of GflError, and any but 0 ends the save with that number.
typedef int (*GFL_ROWS_CALLBACK)(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine,
                                 void *userData);

/// As gflSaveBitmapUTF8, the same file, for a picture that never lies whole in memory: @p bitmap tells its size and
/// form and carries the metadata, its Data is not looked at. All rows are asked for once and in order, some at a time,
/// on the calling thread, while others pack what is there. For "tiff" alone; other formats are
/// GFL_ERROR_BAD_PARAMETERS.
GFL_API int gflSaveRowsUTF8(const char *path, const GFL_BITMAP *bitmap, GFL_ROWS_CALLBACK rows, void *userData,
                            const GFL_SAVE_PARAMS *params);

/// As gflSaveBitmapUTF8, into a block of the layer's allocator that is the caller's to free.
GFL_API int gflSaveBitmapIntoMemory(std::uint8_t **data, std::uint32_t *size, const GFL_BITMAP *bitmap,
                                    const GFL_SAVE_PARAMS *params);

// ---- Colours of a bitmap ----

/// Changes form or colours of a bitmap of 8 bits in place; @p mode is a GflColorDepth, which tells what @p parameters
/// is for. @p result is null. The pixels may move to another block. GFL_ERROR_BAD_BITMAP for other depths,
/// GFL_ERROR_BAD_PARAMETERS for other numbers; a failure leaves the bitmap as it was.
GFL_API int gflChangeColorDepth(GFL_BITMAP *bitmap, GFL_BITMAP **result, std::uint16_t mode, std::uint16_t parameters);

// ---- Metadata of a bitmap: copies go out, copies come in ----

GFL_API bool gflBitmapHasICCProfile(const GFL_BITMAP *bitmap);
GFL_API bool gflBitmapHasIPTC(const GFL_BITMAP *bitmap);
GFL_API bool gflBitmapHasEXIF(const GFL_BITMAP *bitmap);
GFL_API bool gflBitmapHasXMP(const GFL_BITMAP *bitmap);

/// A copy of the block, the caller's to free; null when there is none or memory is short.
GFL_API GFL_ICCPROFILE_DATA *gflBitmapGetICCProfileEx(const GFL_BITMAP *bitmap);
GFL_API GFL_IPTC_DATA *gflBitmapGetIPTC(const GFL_BITMAP *bitmap);
GFL_API GFL_EXIF_DATA *gflBitmapGetEXIF(const GFL_BITMAP *bitmap, std::uint32_t flags);
GFL_API GFL_EXIF_DATAEX *gflBitmapGetEXIF2(const GFL_BITMAP *bitmap);
GFL_API GFL_XMP_DATA *gflBitmapGetXMPEx(const GFL_BITMAP *bitmap);

/// Copies ICC profile, IPTC and EXIF as far as @p source has them; @p target keeps what it lacks. XMP is not copied.
GFL_API int gflBitmapCopyMetadata(const GFL_BITMAP *source, GFL_BITMAP *target);
/// Replaces the profile of @p target by the one of @p source, or by none.
GFL_API int gflBitmapCopyICCProfile(const GFL_BITMAP *source, GFL_BITMAP *target);
/// Replaces the block of @p target by a copy of @p data; null takes it away.
GFL_API int gflBitmapSetIPTC(GFL_BITMAP *target, const GFL_IPTC_DATA *data);
GFL_API int gflBitmapSetEXIF2(GFL_BITMAP *target, const GFL_EXIF_DATAEX *data);

// ---- Metadata of a file ----

GFL_API bool gflHasICCProfileUTF8(const char *path);
GFL_API bool gflHasIPTCUTF8(const char *path);
GFL_API bool gflHasEXIFUTF8(const char *path);
GFL_API bool gflHasXMPUTF8(const char *path);

/// The block of a picture file, the caller's to free; null when there is none or the file can't be read.
GFL_API GFL_ICCPROFILE_DATA *gflLoadICCProfileUTF8(const char *path);
GFL_API GFL_IPTC_DATA *gflLoadIPTCUTF8(const char *path);
GFL_API GFL_EXIF_DATA *gflLoadEXIFUTF8(const char *path, std::uint32_t flags);
GFL_API GFL_EXIF_DATAEX *gflLoadEXIF2UTF8(const char *path, std::uint32_t flags);
GFL_API GFL_XMP_DATA *gflLoadXMPUTF8(const char *path);

/// All metadata of a picture file as one flat list, the caller's to free. Reads no pixels. A picture without metadata
/// gives an empty list.
GFL_API int gflLoadMetadataListUTF8(const char *path, GFL_METADATA_LIST **list);

/// The light that stored values mean by an ICC profile of RGB or grey, each curve at @p points values evenly spaced
/// from 0 to 1, one curve after the other.
/// @param points  At least 2. Tables of profiles have up to 4,096.
/// @param light   Room for 3 * @p points values; those of the curves that there are get filled.
/// @return 3, or 1 for grey; 0 if the bytes are another profile or none, or if it has look-up tables alone.
GFL_API int gflToneCurves(const void *profile, std::uint32_t bytes, int points, double *light);

GFL_API void gflFreeICCProfile(GFL_ICCPROFILE_DATA *data);
GFL_API void gflFreeIPTC(GFL_IPTC_DATA *data);
GFL_API void gflFreeEXIF(GFL_EXIF_DATA *data);
GFL_API void gflFreeEXIF2(GFL_EXIF_DATAEX *data);
GFL_API void gflFreeXMP(GFL_XMP_DATA *data);
GFL_API void gflFreeMetadataList(GFL_METADATA_LIST *list);

} // extern "C"
