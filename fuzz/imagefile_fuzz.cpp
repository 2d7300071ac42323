// Passes picture files through the image-file layer: pixels, thumbnail, metadata, and back into a file.
#include "core/codec.h"
#include "formats.h"
#include "gfl.h"

#include <cstdint>
#include <cstdlib>

using namespace imagefile;

namespace {

void Require(bool condition)
{
    if (!condition)
        std::abort();
}

// Checks invariants of every returned bitmap; reads all pixels.
void Check(const GFL_BITMAP &bitmap)
{
    const int channels = ChannelsOfType(bitmap.Type);
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
    constexpr int kMaxSide = 200; // the target is the metadata writer, not the pixel writer
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

void TryThumbnail(const std::uint8_t *data, std::size_t size, const GFL_LOAD_PARAMS &params)
{
    const Source source(data, size);
    const Codec *codec = nullptr;
    std::int32_t index = 0;
    if (!FindCodec(source, &codec, &index))
        return;
    const Box box = {16, 16};
    ReducedRows rows(params, box);
    const bool good = bool(codec->ReadThumbnail(source, params, box, &rows));
    GFL_BITMAP *bitmap = rows.Take();
    Require(!good || (bitmap && bitmap->Width <= box.width && bitmap->Height <= box.height));
    gflFreeBitmap(bitmap);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 16)
        return 0;
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    // The options come from the last byte, which most formats ignore, so that seeds are ordinary files.
    const unsigned options = data[size - 1];
    params.Flags = GFL_LOAD_METADATA | ((options & 1) != 0 ? GFL_LOAD_ORIGINAL_DEPTH : 0u)
        | ((options & 2) != 0 ? GFL_LOAD_FORCE_COLOR_MODEL : 0u);
    params.ColorModel = (options & 4) != 0 ? GFL_RGBA : GFL_GREY;
    GFL_BITMAP *bitmap = nullptr;
    GFL_FILE_INFORMATION info;
    const int error = gflLoadBitmapFromMemory(data, static_cast<std::uint32_t>(size), &bitmap, &params, &info);
    Require((error == GFL_NO_ERROR) == (bitmap != nullptr));
    if (bitmap) {
        Check(*bitmap);
        TryMetadata(bitmap);
        static const char *const kFormats[] = {"tiff", "jpeg", "png", "psd"}; // those that carry metadata
        TrySaving(*bitmap, kFormats[(options >> 3) & 3]);
        TryThumbnail(data, size, params);
    }
    gflFreeBitmap(bitmap);
    return 0;
}
