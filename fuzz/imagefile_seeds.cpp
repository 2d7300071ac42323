// Makes the seeds of imagefile_fuzz in the folder that is given: a small file of each kind.
#include "codec.h"
#include "metadata.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <tiffio.h>

using namespace imagefile;

namespace {

constexpr int kSide = 19;

Metadata SomeMetadata()
{
    StartExiv2();
    Metadata metadata;
    metadata.exif["Exif.Image.Make"] = "Canon";
    metadata.exif["Exif.Image.Orientation"] = std::uint16_t(6);
    metadata.exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    metadata.exif["Exif.Photo.UserComment"] = "charset=Ascii FOV: 7 x 5";
    metadata.exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/2";
    metadata.exif["Exif.CanonCs.Lens"] = "22 10 1";
    metadata.icc.assign(200, 1);
    metadata.iptc = {0x1C, 2, 25, 0, 3, 'o', 'n', 'e'};
    const std::string xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'></x:xmpmeta>";
    metadata.xmp.assign(xmp.begin(), xmp.end());
    return metadata;
}

void WriteSeed(const std::string &folder, const char *name, const Codec &codec, PixelForm form, SaveOptions options)
{
    Owned<GFL_BITMAP> bitmap(nullptr, gflFreeBitmap);
    if (!NewBitmap(kSide, kSide, form, &bitmap))
        return;
    for (std::size_t i = 0; i < std::size_t(bitmap->BytesPerLine) * kSide; ++i)
        bitmap->Data[i] = static_cast<std::uint8_t>(i * i / 7 & 63);
    MemorySink sink;
    if (!codec.Write(*bitmap, options, &sink))
        return;
    std::vector<std::uint8_t> bytes(sink.Size());
    sink.ReadAt(0, bytes.data(), bytes.size());
    if (std::FILE *file = std::fopen((folder + '/' + name).c_str(), "wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

// The same file with another byte, by which the layer reads what it doesn't write.
void WriteVariant(const std::string &folder, const char *from, const char *to, long at, int byte)
{
    std::vector<char> bytes(1 << 20);
    std::FILE *file = std::fopen((folder + '/' + from).c_str(), "rb");
    bytes.resize(file ? std::fread(bytes.data(), 1, bytes.size(), file) : 0);
    if (file)
        std::fclose(file);
    if ((file = std::fopen((folder + '/' + to).c_str(), "wb")) == nullptr)
        return;
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fseek(file, at, SEEK_SET);
    std::fputc(byte, file);
    std::fclose(file);
}

// What the layer reads but doesn't write.
void WriteForeignTiff(const std::string &folder, const char *name, int photometric, int bits, int samples,
                      int compression, int tile, int planar)
{
    TIFF *tiff = TIFFOpen((folder + '/' + name).c_str(), planar == PLANARCONFIG_SEPARATE ? "wb" : "wl");
    if (!tiff)
        return;
    const int side = photometric == PHOTOMETRIC_CFA ? 32 : kSide; // smaller sensors are none to LibRaw
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planar);
    if (photometric == PHOTOMETRIC_PALETTE) {
        std::uint16_t map[256];
        for (int i = 0; i < 256; ++i)
            map[i] = static_cast<std::uint16_t>(i * 257);
        TIFFSetField(tiff, TIFFTAG_COLORMAP, map, map, map);
    }
    if (photometric == PHOTOMETRIC_CFA) {
        const std::uint8_t version[] = {1, 4, 0, 0}, pattern[] = {0, 1, 1, 2};
        const std::uint16_t size[] = {2, 2};
        TIFFSetField(tiff, TIFFTAG_DNGVERSION, version);
        TIFFSetField(tiff, TIFFTAG_CFAREPEATPATTERNDIM, size);
        TIFFSetField(tiff, TIFFTAG_CFAPATTERN, 4, pattern);
    }
    if (tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 8);
    }
    std::vector<std::uint8_t> block(64 * 64 * 8, 0x5A);
    const std::uint32_t count = tile > 0 ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    for (std::uint32_t i = 0; i < count; ++i)
        tile > 0 ? TIFFWriteEncodedTile(tiff, i, block.data(), TIFFTileSize(tiff))
                 : TIFFWriteEncodedStrip(tiff, i, block.data(), TIFFStripSize(tiff));
    TIFFClose(tiff);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2)
        return 2;
    const std::string folder = argv[1];
    const Metadata metadata = SomeMetadata();
    SaveOptions options;
    options.lzwAllowed = true;
    options.quality = 75;
    WriteSeed(folder, "grey.jpg", JpegCodec(), {8, 1}, options);
    options.compression = 0;
    WriteSeed(folder, "rgba16.tif", TiffCodec(), {16, 4}, options);
    options.compression = 2;
    WriteSeed(folder, "lzw.tif", TiffCodec(), {8, 3}, options);
    options.metadata = &metadata;
    WriteSeed(folder, "metadata.jpg", JpegCodec(), {8, 3}, options);
    options.compression = 4;
    WriteSeed(folder, "float.tif", TiffCodec(), {32, 3}, options);
    options.bigTiffFromBytes = 1;
    WriteSeed(folder, "big.tif", TiffCodec(), {8, 1}, options);
    for (int method = 0; method < 10; ++method) { // of OpenEXR
        options.compression = static_cast<std::uint16_t>(method);
        WriteSeed(folder, ("method" + std::to_string(method) + ".exr").c_str(), ExrCodec(), {16, method % 2 ? 4 : 3},
                  options);
    }
    options.compression = GFL_COMPRESSION_DEFAULT;
    WriteSeed(folder, "metadata.png", PngCodec(), {8, 3}, options);
    WriteSeed(folder, "metadata.psd", PsdCodec(), {8, 4}, options);
    WriteSeed(folder, "packed.hdr", HdrCodec(), {32, 3}, options);
    options.metadata = nullptr;
    WriteSeed(folder, "grey16.png", PngCodec(), {16, 1}, options);
    WriteSeed(folder, "packed.psd", PsdCodec(), {16, 3}, options);
    options.compression = 0;
    WriteSeed(folder, "float.psd", PsdCodec(), {32, 1}, options);
    WriteSeed(folder, "plain.hdr", HdrCodec(), {32, 3}, options);
    constexpr long kInterlaceAt = 28, kModeAt = 25; // of PNG; of PSD, where 4 is CMYK and 9 Lab
    WriteVariant(folder, "metadata.png", "interlaced.png", kInterlaceAt, 1);
    WriteVariant(folder, "metadata.psd", "cmyk.psd", kModeAt, 4);
    WriteVariant(folder, "packed.psd", "lab.psd", kModeAt, 9);
    constexpr int kContig = PLANARCONFIG_CONTIG, kPlanes = PLANARCONFIG_SEPARATE;
    WriteForeignTiff(folder, "tiles.tif", PHOTOMETRIC_RGB, 8, 4, COMPRESSION_PACKBITS, 16, kContig);
    WriteForeignTiff(folder, "planes.tif", PHOTOMETRIC_RGB, 16, 3, COMPRESSION_ADOBE_DEFLATE, 0, kPlanes);
    WriteForeignTiff(folder, "palette.tif", PHOTOMETRIC_PALETTE, 4, 1, COMPRESSION_NONE, 0, kContig);
    WriteForeignTiff(folder, "fax.tif", PHOTOMETRIC_MINISWHITE, 1, 1, COMPRESSION_CCITTFAX4, 0, kContig);
    WriteForeignTiff(folder, "lab.tif", PHOTOMETRIC_CIELAB, 8, 3, COMPRESSION_ZSTD, 0, kContig);
    WriteForeignTiff(folder, "cmyk.tif", PHOTOMETRIC_SEPARATED, 12, 4, COMPRESSION_LZMA, 0, kContig);
    WriteForeignTiff(folder, "jpeg.tif", PHOTOMETRIC_YCBCR, 8, 3, COMPRESSION_JPEG, 16, kContig);
    WriteForeignTiff(folder, "bayer.dng", PHOTOMETRIC_CFA, 16, 1, COMPRESSION_NONE, 0, kContig);
    return 0;
}
