// Pixels of a TIFF file as numbers, for tests that write a source picture or check a result with only libtiff.
#pragma once

#include <QString>
#include <vector>

struct TiffRaster {
    int width = 0;
    int height = 0;
    int channels = 3;
    int bits = 8; // per channel; 32 means float
    int compression = 1;
    std::vector<float> values = {}; // as stored: 0 to 255, 0 to 65535, or float; channels interleaved, no padding

    float At(int x, int y, int channel) const { return values[Index(x, y, channel)]; }
    float &At(int x, int y, int channel) { return values[Index(x, y, channel)]; }

private:
    size_t Index(int x, int y, int channel) const
    {
        return (size_t(y) * size_t(width) + size_t(x)) * size_t(channels) + size_t(channel);
    }
};

/// Returns a black picture.
TiffRaster BlankRaster(int width, int height, int channels, int bits);

/// Reads a TIFF with interleaved 8-bit, 16-bit or float samples in strips. Throws std::runtime_error for any other
/// file.
TiffRaster ReadTiff(const QString &path);

/// Writes an uncompressed file; values are rounded to the depth. Throws std::runtime_error on failure.
void WriteTiff(const QString &path, const TiffRaster &raster);
