// The complete interface of the image-file layer: bitmap and parameter records, and the functions on them.
//
// C-style and re-entrant: threads may call any functions at the same time, on different bitmaps and files. Rules:
//  - Paths and texts are UTF-8. Unless documented otherwise, null pointers give GFL_ERROR_BAD_PARAMETERS;
//    functions that return no error number then return null, false, 0 or -1. Freeing null does nothing.
//  - Functions that can fail return a GflError number, and gflLastErrorText() then explains it. No exception leaves the
//    layer, whatever its type; running out of memory gives GFL_ERROR_NO_MEMORY.
//  - Bitmaps and blocks come from the allocator given to gflLibraryInitEx; release them with their gflFree* function.
//  - A failed load leaves its outputs empty: null pointers, zeroed records.
#pragma once

#include "gfl_records.h"

#define GFL_API __attribute__((visibility("default")))

extern "C" {

// ---- The library ----

/// Allocator of bitmaps and blocks, with the contracts of malloc, realloc and free. May be called on any thread.
typedef void *(*GFL_ALLOC_CALLBACK)(unsigned long size, void *userData);
typedef void *(*GFL_REALLOC_CALLBACK)(void *pointer, unsigned long size, void *userData);
typedef void (*GFL_FREE_CALLBACK)(void *pointer, void *userData);

/// Starts the layer. Without this call, or with null callbacks, it uses malloc, realloc and free. Calls nest: the first
/// allocator stays in use until the last gflLibraryExit. Don't start the layer while bitmaps or blocks of another
/// allocator exist.
GFL_API int gflLibraryInitEx(GFL_ALLOC_CALLBACK alloc, GFL_REALLOC_CALLBACK realloc, GFL_FREE_CALLBACK free,
                             void *userData);
GFL_API void gflLibraryExit();

/// Allows (nonzero) or forbids (0, the default) saving with LZW, which gives GFL_ERROR_BAD_PARAMETERS while forbidden.
GFL_API void gflEnableLZW(int enable);

/// Sets how many threads one save or load may use; 0 (the default) means one per processor. The number doesn't affect
/// the resulting file or pixels.
GFL_API void gflSetThreads(int threads);

/// Sets the maximum number of pixels in a picture that is read; 0 (the default) means that only the limits on
/// sides and bytes apply. A larger picture is refused with GFL_ERROR_NO_MEMORY before memory is allocated for it.
GFL_API void gflSetMaxPixels(std::int64_t pixels);

/// Returns why the last failed call of this thread failed: what was read, expected and found. Never null; valid until
/// the thread's next call that fails.
GFL_API const char *gflLastErrorText();

/// Returns the first warning of this thread since gflClearWarningText about something that was left out, such as
/// damaged metadata; empty if there was none. Never null.
GFL_API const char *gflLastWarningText();
GFL_API void gflClearWarningText();

/// Allocates a block that the layer can later free as part of a record. Null when memory is short.
GFL_API void *gflMemoryAlloc(std::uint32_t size);

// ---- Formats ----

/// Returns the description of a format by its index, from 0; null after the last one. Valid while the library is
/// loaded.
GFL_API const GFL_FORMAT *gflGetFormat(std::int32_t index);

/// Returns the index of a format by its lowercase name ("tiff", "jpeg"), or -1, which a save rejects with
/// GFL_ERROR_BAD_FORMAT_INDEX.
GFL_API std::int32_t gflGetFormatIndexByName(const char *name);

/// Returns whether the layer reads files with this suffix, given with its dot; ignores case.
GFL_API bool gflHasGoodExtension(const char *suffix);

// ---- Reading ----

GFL_API void gflGetDefaultLoadParams(GFL_LOAD_PARAMS *params);

/// Reads size, depth and format without decoding pixels. @p index is -1 for any format; @p flags are ignored.
GFL_API int gflGetFileInformationExUTF8(const char *path, std::int32_t index, GFL_FILE_INFORMATION *info,
                                        std::uint32_t flags);
GFL_API void gflFreeFileInformation(GFL_FILE_INFORMATION *info);

/// Reads a whole picture into a new record, pixels as stored (orientation is not applied). Delivers GFL_GREY, GFL_RGB
/// or GFL_RGBA at 8, 16 or 32 bits, as GFL_LOAD_PARAMS requests. A file that ends early gives GFL_ERROR_FILE_READ. @p
/// info, which may be null, describes the file like gflGetFileInformationExUTF8.
GFL_API int gflLoadBitmapUTF8(const char *path, GFL_BITMAP **bitmap, const GFL_LOAD_PARAMS *params,
                              GFL_FILE_INFORMATION *info);

/// Like gflLoadBitmapUTF8, from a block of @p size bytes that the caller keeps.
GFL_API int gflLoadBitmapFromMemory(const std::uint8_t *data, std::uint32_t size, GFL_BITMAP **bitmap,
                                    const GFL_LOAD_PARAMS *params, GFL_FILE_INFORMATION *info);

/// Allows (nonzero) or forbids (0, the default) code that lends pictures to this thread, such as a host's image cache,
/// to load them with GFL_LOAD_PENDING. The thread must then call gflWaitForRows before it reads rows.
GFL_API void gflAcceptPendingRows(int accept);
GFL_API bool gflAcceptsPendingRows();

/// Waits until the first @p rows rows of a bitmap are decoded. @p ready, which may be null, is set to the number of
/// rows decoded so far, from the top. If decoding fails, returns its error, at the latest to a call that waits for all
/// rows. Returns at once for bitmaps that weren't loaded with GFL_LOAD_PENDING. Thread-safe.
GFL_API int gflWaitForRows(const GFL_BITMAP *bitmap, int rows, int *ready);

/// Reads the picture reduced to fit into a box of @p width by @p height pixels, keeping its proportions and never
/// enlarging it; a box of 0 by 0 means 256 by 256. Decodes no more than necessary. Otherwise like gflLoadBitmapUTF8; @p
/// info gives the size of the file's picture, not of the thumbnail.
GFL_API int gflLoadThumbnailUTF8(const char *path, int width, int height, GFL_BITMAP **bitmap,
                                 const GFL_LOAD_PARAMS *params, GFL_FILE_INFORMATION *info);

/// Reads a record with the metadata of a picture file and no pixels (Data is null; size, type and depth are those of
/// the file's picture). A file whose headers can't be read gives the same error as gflLoadBitmapUTF8. Damaged metadata
/// is left out with a warning (gflLastWarningText), here and in every function that reads metadata.
GFL_API int gflLoadMetadataUTF8(const char *path, GFL_BITMAP **bitmap);

GFL_API void gflFreeBitmap(GFL_BITMAP *bitmap);

// ---- Writing ----

GFL_API void gflGetDefaultSaveParams(GFL_SAVE_PARAMS *params);

/// Sets whether the caller will sync the files that this thread saves: nonzero for yes, 0 (the default) for no. If yes,
/// the system starts flushing a file to disk while it is being written, so that the sync is short. Files that replace
/// existing ones are flushed early in any case, because the save itself syncs them.
GFL_API void gflSetSyncedByCaller(int isSynced);

/// Writes a GFL_GREY, GFL_RGB or GFL_RGBA bitmap with its EXIF, IPTC and XMP. GFL_SAVE_ICC_PROFILE adds its ICC
/// profile, unless the profile is for a color space other than that of the pixels. Radiance files are written without
/// metadata; OpenEXR files keep what their header has attributes for. What a format can't store is left out with a
/// warning (gflLastWarningText). Depth and alpha are converted to what the format supports. The file is written next to
/// the target and renamed when complete: a failed save leaves an existing file unchanged. Follows symbolic links.
GFL_API int gflSaveBitmapUTF8(const char *path, const GFL_BITMAP *bitmap, const GFL_SAVE_PARAMS *params);

/// Fills @p data with rows @p firstRow to @p firstRow + @p rows - 1 of a picture, each @p bytesPerLine bytes after the
/// previous one. Must not throw. Returns a GflError number; any but 0 ends the save with that number.
typedef int (*GFL_ROWS_CALLBACK)(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine,
                                 void *userData);

/// Like gflSaveBitmapUTF8, with the same result, for a picture that is never completely in memory. @p bitmap gives its
/// size, pixel form and metadata; its Data is not used. Requests each row once, in order and several rows at a time, on
/// the calling thread, while other threads compress finished rows of a TIFF. With GFL_SAVE_FAST and deflate, several
/// threads at once request GFL_FAST_ROWS rows each, roughly in order. Only for "tiff", "jpeg", "png" and "exr"; other
/// formats give GFL_ERROR_BAD_PARAMETERS.
GFL_API int gflSaveRowsUTF8(const char *path, const GFL_BITMAP *bitmap, GFL_ROWS_CALLBACK rows, void *userData,
                            const GFL_SAVE_PARAMS *params);

/// Like gflSaveBitmapUTF8, into a block that the caller frees with the free callback of gflLibraryInitEx.
GFL_API int gflSaveBitmapIntoMemory(std::uint8_t **data, std::uint32_t *size, const GFL_BITMAP *bitmap,
                                    const GFL_SAVE_PARAMS *params);

// ---- Colors of a bitmap ----

/// Changes pixel form or colors of an 8-bit bitmap in place; @p mode is a GflColorDepth, which defines the meaning of
/// @p parameters. @p result must be null. The pixels may move to another block. Returns GFL_ERROR_BAD_BITMAP for other
/// depths and GFL_ERROR_BAD_PARAMETERS for invalid arguments; a failure leaves the bitmap unchanged.
GFL_API int gflChangeColorDepth(GFL_BITMAP *bitmap, GFL_BITMAP **result, std::uint16_t mode, std::uint16_t parameters);

// ---- Metadata of a bitmap: all functions copy ----

GFL_API bool gflBitmapHasICCProfile(const GFL_BITMAP *bitmap);
GFL_API bool gflBitmapHasIPTC(const GFL_BITMAP *bitmap);
GFL_API bool gflBitmapHasEXIF(const GFL_BITMAP *bitmap);
GFL_API bool gflBitmapHasXMP(const GFL_BITMAP *bitmap);

/// Returns a copy of the block, which the caller frees; null if there is none or memory is short.
GFL_API GFL_ICCPROFILE_DATA *gflBitmapGetICCProfileEx(const GFL_BITMAP *bitmap);
GFL_API GFL_IPTC_DATA *gflBitmapGetIPTC(const GFL_BITMAP *bitmap);
GFL_API GFL_EXIF_DATA *gflBitmapGetEXIF(const GFL_BITMAP *bitmap, std::uint32_t flags);
GFL_API GFL_EXIF_DATAEX *gflBitmapGetEXIF2(const GFL_BITMAP *bitmap);
GFL_API GFL_XMP_DATA *gflBitmapGetXMPEx(const GFL_BITMAP *bitmap);

/// Copies ICC profile, IPTC and EXIF if @p source has them; other blocks of @p target stay. XMP is not copied:
/// see gflBitmapMarkEdited.
GFL_API int gflBitmapCopyMetadata(const GFL_BITMAP *source, GFL_BITMAP *target);
/// Completes the metadata of @p target, which was edited from @p source: copies all XMP of @p source, sets @p items in
/// it, and updates EXIF and XMP to match the target's pixels. Call it after gflBitmapCopyMetadata, which copies the
/// EXIF.
///  - Sizes in EXIF and XMP are set to the target's, and the orientation in XMP to that in EXIF. An invalid orientation
///    in EXIF is removed.
///  - Thumbnails in XMP, and the properties that describe how the source's file stores pixels, are left out.
///  - Develop settings (prefixes crs and crss) are left out unless the source's XMP says that they were applied; an
///    earlier record of ours (prefix vitrelux) is replaced.
/// An XMP packet that can't be read, and the extended XMP of a JPEG, are left out with a warning. A key with an unknown
/// prefix gives GFL_ERROR_BAD_PARAMETERS.
GFL_API int gflBitmapMarkEdited(GFL_BITMAP *target, const GFL_BITMAP *source, const GFL_XMP_ITEM *items,
                                std::uint32_t count);
/// Replaces the profile of @p target with that of @p source; removes it if @p source has none.
GFL_API int gflBitmapCopyICCProfile(const GFL_BITMAP *source, GFL_BITMAP *target);
/// Replaces the block of @p target with a copy of @p data; null removes it. IPTC entries whose Id doesn't give a record
/// and a data set are left out with a warning.
GFL_API int gflBitmapSetIPTC(GFL_BITMAP *target, const GFL_IPTC_DATA *data);
GFL_API int gflBitmapSetEXIF2(GFL_BITMAP *target, const GFL_EXIF_DATAEX *data);

// ---- Metadata of a file ----

GFL_API bool gflHasICCProfileUTF8(const char *path);
GFL_API bool gflHasIPTCUTF8(const char *path);
GFL_API bool gflHasEXIFUTF8(const char *path);
GFL_API bool gflHasXMPUTF8(const char *path);

/// Returns the block of a picture file, which the caller frees; null if there is none or the file can't be read.
GFL_API GFL_ICCPROFILE_DATA *gflLoadICCProfileUTF8(const char *path);
GFL_API GFL_IPTC_DATA *gflLoadIPTCUTF8(const char *path);
GFL_API GFL_EXIF_DATA *gflLoadEXIFUTF8(const char *path, std::uint32_t flags);
GFL_API GFL_EXIF_DATAEX *gflLoadEXIF2UTF8(const char *path, std::uint32_t flags);
GFL_API GFL_XMP_DATA *gflLoadXMPUTF8(const char *path);

/// Returns all metadata of a picture file as one flat list, which the caller frees. Reads no pixels. A picture without
/// metadata gives an empty list.
GFL_API int gflLoadMetadataListUTF8(const char *path, GFL_METADATA_LIST **list);

/// Evaluates the tone curves of an RGB or gray ICC profile: the linear light of @p points pixel values, evenly
/// spaced from 0 to 1, one curve after the other.
/// @param points  At least 2. Tables in profiles have up to 4,096 entries.
/// @param light   Room for 3 * @p points values; those of existing curves are filled.
/// @return the number of curves: 3, or 1 for gray; 0 if the profile is damaged, of another color space, or has only
/// lookup tables.
GFL_API int gflToneCurves(const void *profile, std::uint32_t bytes, int points, double *light);

GFL_API void gflFreeICCProfile(GFL_ICCPROFILE_DATA *data);
GFL_API void gflFreeIPTC(GFL_IPTC_DATA *data);
GFL_API void gflFreeEXIF(GFL_EXIF_DATA *data);
GFL_API void gflFreeEXIF2(GFL_EXIF_DATAEX *data);
GFL_API void gflFreeXMP(GFL_XMP_DATA *data);
GFL_API void gflFreeMetadataList(GFL_METADATA_LIST *list);

} // extern "C"
