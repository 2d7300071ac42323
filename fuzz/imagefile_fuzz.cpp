// Passes picture files through the image-file layer: reads information, pixels, thumbnail and metadata, and writes a
// file.
#include "Target.h"
#include "gfl.h"

#include <cstdlib>

namespace {

/// Checks the invariants of every returned bitmap, and reads all of its pixels.
void Check(const GFL_BITMAP &bitmap)
{
    const int channels = bitmap.Type == GFL_GREY ? 1 : bitmap.Type == GFL_RGB ? 3 : 4;
    Require(bitmap.Width >= 1 && bitmap.Height >= 1 && bitmap.Data != nullptr);
    Require(bitmap.BitsPerComponent == 8 || bitmap.BitsPerComponent == 16 || bitmap.BitsPerComponent == 32);
    Require(bitmap.ComponentsPerPixel == channels && bitmap.BytesPerPixel == channels * bitmap.BitsPerComponent / 8);
    Require(bitmap.BytesPerLine >= std::uint64_t(bitmap.BytesPerPixel) * static_cast<unsigned>(bitmap.Width));
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < std::size_t(bitmap.BytesPerLine) * static_cast<std::size_t>(bitmap.Height); ++i)
        sum += bitmap.Data[i];
    volatile std::uint64_t sink = sum; // keeps the compiler from removing the sum
    static_cast<void>(sink);
}

void TryMetadata(GFL_BITMAP *bitmap)
{
    gflFreeEXIF(gflBitmapGetEXIF(bitmap, 1));
    GFL_EXIF_DATAEX *exif = gflBitmapGetEXIF2(bitmap);
    gflBitmapSetEXIF2(bitmap, exif);
    gflFreeEXIF2(exif);
    GFL_IPTC_DATA *iptc = gflBitmapGetIPTC(bitmap);
    gflBitmapSetIPTC(bitmap, iptc);
    gflFreeIPTC(iptc);
    gflFreeICCProfile(gflBitmapGetICCProfileEx(bitmap));
    gflFreeXMP(gflBitmapGetXMPEx(bitmap));
}

void TrySaving(const GFL_BITMAP &bitmap, const char *format)
{
    constexpr int kMaxSide = 200; // more pixels would only slow down the test of the metadata writers
    if (bitmap.Width > kMaxSide || bitmap.Height > kMaxSide)
        return;
    GFL_SAVE_PARAMS params;
    gflGetDefaultSaveParams(&params);
    params.Flags = GFL_SAVE_ICC_PROFILE;
    params.FormatIndex = gflGetFormatIndexByName(format);
    std::uint8_t *file = nullptr;
    std::uint32_t size = 0;
    if (gflSaveBitmapIntoMemory(&file, &size, &bitmap, &params) == GFL_NO_ERROR)
        Require(size > 0);
    std::free(file);
}

/// Reads a thumbnail, even of pictures with damaged pixels.
void TryThumbnail(const char *path, const GFL_LOAD_PARAMS &params)
{
    constexpr int kSide = 16;
    GFL_BITMAP *bitmap = nullptr;
    GFL_FILE_INFORMATION info;
    const int error = gflLoadThumbnailUTF8(path, kSide, kSide, &bitmap, &params, &info);
    Require((error == GFL_NO_ERROR) == (bitmap != nullptr));
    if (bitmap) {
        Check(*bitmap);
        Require(bitmap->Width <= kSide && bitmap->Height <= kSide);
        gflFreeFileInformation(&info);
    }
    gflFreeBitmap(bitmap);
}

/// Compares the file information with the loaded picture.
void TryInformation(const char *path, const GFL_BITMAP *bitmap)
{
    GFL_FILE_INFORMATION info;
    const int error = gflGetFileInformationExUTF8(path, -1, &info, 0);
    if (error == GFL_NO_ERROR && bitmap)
        Require(info.Width == bitmap->Width && info.Height == bitmap->Height);
    Require(error == GFL_NO_ERROR || !bitmap);
    if (error == GFL_NO_ERROR)
        gflFreeFileInformation(&info);
}

GFL_LOAD_PARAMS ParamsOf(unsigned options)
{
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    params.Flags = GFL_LOAD_METADATA | ((options & 1) != 0 ? GFL_LOAD_ORIGINAL_DEPTH : 0u)
        | ((options & 2) != 0 ? GFL_LOAD_FORCE_COLOR_MODEL : 0u);
    params.ColorModel = (options & 4) != 0 ? GFL_RGBA : GFL_GREY;
    return params;
}

} // namespace

FUZZ_TARGET(imagefile)
{
    if (size < 16)
        return;
    StartKernel();
    // The options come from the last byte, which most formats ignore, so that seeds are ordinary files.
    const unsigned options = data[size - 1];
    const GFL_LOAD_PARAMS params = ParamsOf(options);
    GFL_BITMAP *bitmap = nullptr;
    GFL_FILE_INFORMATION info;
    const int error = gflLoadBitmapFromMemory(data, static_cast<std::uint32_t>(size), &bitmap, &params, &info);
    Require((error == GFL_NO_ERROR) == (bitmap != nullptr));
    const MemoryFile file(AsBytes(data, size));
    const QByteArray path = file.Path().toUtf8();
    TryInformation(path.constData(), bitmap);
    TryThumbnail(path.constData(), params);
    if (bitmap) {
        Check(*bitmap);
        TryMetadata(bitmap);
        static const char *const kFormats[] = {"tiff", "jpeg", "png", "psd"}; // formats that store metadata
        TrySaving(*bitmap, kFormats[(options >> 3) & 3]);
    }
    gflFreeBitmap(bitmap);
}
