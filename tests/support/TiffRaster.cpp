#include "TiffRaster.h"

#include <QFile>
#include <cmath>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <tiffio.h>

namespace {

using TiffFile = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

TiffFile Open(const QString &path, const char *mode)
{
    TiffFile file(TIFFOpen(QFile::encodeName(path).constData(), mode), &TIFFClose);
    if (!file)
        throw std::runtime_error("can't open " + path.toStdString());
    return file;
}

template <typename T> T Field(TIFF *file, uint32_t tag)
{
    T value = {};
    TIFFGetFieldDefaulted(file, tag, &value);
    return value;
}

template <typename T> void FromRow(const std::vector<unsigned char> &row, float *out, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        T value;
        std::memcpy(&value, row.data() + i * sizeof(T), sizeof(T));
        out[i] = static_cast<float>(value);
    }
}

template <typename T> void ToRow(const float *values, std::vector<unsigned char> *row, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        T value;
        if constexpr (std::is_integral_v<T>)
            value = static_cast<T>(std::lround(values[i]));
        else
            value = values[i];
        std::memcpy(row->data() + i * sizeof(T), &value, sizeof(T));
    }
}

} // namespace

TiffRaster BlankRaster(int width, int height, int channels, int bits)
{
    TiffRaster raster = {width, height, channels, bits};
    raster.values.resize(size_t(width) * size_t(height) * size_t(channels));
    return raster;
}

TiffRaster ReadTiff(const QString &path)
{
    const TiffFile file = Open(path, "r");
    TiffRaster raster = BlankRaster(static_cast<int>(Field<uint32_t>(file.get(), TIFFTAG_IMAGEWIDTH)),
                                    static_cast<int>(Field<uint32_t>(file.get(), TIFFTAG_IMAGELENGTH)),
                                    Field<uint16_t>(file.get(), TIFFTAG_SAMPLESPERPIXEL),
                                    Field<uint16_t>(file.get(), TIFFTAG_BITSPERSAMPLE));
    raster.compression = Field<uint16_t>(file.get(), TIFFTAG_COMPRESSION);
    const bool isFloat = Field<uint16_t>(file.get(), TIFFTAG_SAMPLEFORMAT) == SAMPLEFORMAT_IEEEFP;
    if ((raster.bits == 32) != isFloat || Field<uint16_t>(file.get(), TIFFTAG_PLANARCONFIG) != PLANARCONFIG_CONTIG)
        throw std::runtime_error("unexpected layout of " + path.toStdString());
    const size_t count = size_t(raster.width) * size_t(raster.channels);
    std::vector<unsigned char> row(size_t(TIFFScanlineSize(file.get())));
    for (int y = 0; y < raster.height; ++y) {
        if (TIFFReadScanline(file.get(), row.data(), static_cast<uint32_t>(y)) < 0)
            throw std::runtime_error("can't read " + path.toStdString());
        float *out = &raster.At(0, y, 0);
        raster.bits == 8 ? FromRow<uint8_t>(row, out, count)
            : isFloat    ? FromRow<float>(row, out, count)
                         : FromRow<uint16_t>(row, out, count);
    }
    return raster;
}

void WriteTiff(const QString &path, const TiffRaster &raster)
{
    const TiffFile file = Open(path, "w");
    TIFFSetField(file.get(), TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(raster.width));
    TIFFSetField(file.get(), TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(raster.height));
    TIFFSetField(file.get(), TIFFTAG_SAMPLESPERPIXEL, raster.channels);
    TIFFSetField(file.get(), TIFFTAG_BITSPERSAMPLE, raster.bits);
    TIFFSetField(file.get(), TIFFTAG_SAMPLEFORMAT, raster.bits == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    TIFFSetField(file.get(), TIFFTAG_PHOTOMETRIC, raster.channels < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
    TIFFSetField(file.get(), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(file.get(), TIFFTAG_ROWSPERSTRIP, 16);
    if (raster.channels == 4) {
        const uint16_t alpha = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(file.get(), TIFFTAG_EXTRASAMPLES, 1, &alpha);
    }
    const size_t count = size_t(raster.width) * size_t(raster.channels);
    std::vector<unsigned char> row(count * size_t(raster.bits / 8));
    for (int y = 0; y < raster.height; ++y) {
        const float *values = raster.values.data() + size_t(y) * count;
        raster.bits == 8        ? ToRow<uint8_t>(values, &row, count)
            : raster.bits == 32 ? ToRow<float>(values, &row, count)
                                : ToRow<uint16_t>(values, &row, count);
        if (TIFFWriteScanline(file.get(), row.data(), static_cast<uint32_t>(y)) < 0)
            throw std::runtime_error("can't write " + path.toStdString());
    }
}
