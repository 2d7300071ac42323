// Helpers shared by KImage's source files: messages, tests of the pixel form, the allocator.
#pragma once

#include "KImage.h"

constexpr char kInvalidBitmap[] = "Invalid Bitmap";
constexpr char kInvalidParameter[] = "Invalid Parameter";
constexpr char kNotEnoughMemory[] = "Not enough memory";

/// Return whether a type is one of the three working types, or a depth is one of the three working depths.
constexpr bool IsWorkingType(int type)
{
    return type == GFL_GREY || type == GFL_RGB || type == GFL_RGBA;
}
constexpr bool IsWorkingDepth(int bitsPerComponent)
{
    return bitsPerComponent == 8 || bitsPerComponent == 16 || bitsPerComponent == 32;
}

/// Returns whether an image has no pixels: no record, or one whose allocation failed.
inline bool IsEmpty(const KImage &image)
{
    return !image.m_bitmap || !image.m_bitmap->Data;
}

/// Returns whether an image has pixels in one of the nine working forms.
inline bool HasWorkingPixels(const KImage &image)
{
    return !IsEmpty(image) && image.width() > 0 && image.height() > 0 && IsWorkingType(image.type())
        && IsWorkingDepth(image.bitsPerComponent());
}

/// Throws unless an image has pixels in one of the nine working forms.
inline void CheckWorkingPixels(const KImage &image, const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    if (!HasWorkingPixels(image))
        KThrow(kInvalidBitmap, file, line);
}

/// Returns the luma of ITU-R BT.601 of a pixel with 1, 3 or 4 channels.
inline float Luma(const float *pixel, int channels)
{
    return channels == 1 ? pixel[0] : 0.299f * pixel[0] + 0.587f * pixel[1] + 0.114f * pixel[2];
}

/// Returns whether AllocBitmap with these arguments would keep the record's block.
inline bool HasShape(const GFL_BITMAP &bitmap, int width, int height, int type, int bitsPerComponent)
{
    return bitmap.Data && bitmap.Width == width && bitmap.Height == height && bitmap.Type == type
        && bitmap.BitsPerComponent == bitsPerComponent;
}

/// The image-file layer's record about a file, freed when the scope ends.
struct FileInformation : GFL_FILE_INFORMATION {
    FileInformation() : GFL_FILE_INFORMATION() { }
    ~FileInformation() { gflFreeFileInformation(this); }
    FileInformation(const FileInformation &) = delete;
    FileInformation &operator=(const FileInformation &) = delete;
};

/// Returns whether @p name ends with @p extension; ignores the case of ASCII letters unless @p caseSensitive.
bool IsExtention(const std::string &name, const std::string &extension, bool caseSensitive);

/// The allocator that the image module passes to the image-file layer, so that each side can free what the other
/// allocated. The last argument is a tag for a debugging allocator and is ignored.
void *alloc_callback(unsigned long size, void *userData);
void *realloc_callback(void *pointer, unsigned long size, void *userData);
void free_callback(void *pointer, void *userData);
