#include "Bitmaps.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

namespace {

void SetSample(GFL_BITMAP &bitmap, int x, int y, int c, double value)
{
    std::uint8_t *row = bitmap.Data + std::size_t(y) * bitmap.BytesPerLine;
    const int i = x * bitmap.ComponentsPerPixel + c;
    if (bitmap.BitsPerComponent == 8)
        row[i] = static_cast<std::uint8_t>(std::lround(value * 255));
    else if (bitmap.BitsPerComponent == 16)
        reinterpret_cast<std::uint16_t *>(row)[i] = static_cast<std::uint16_t>(std::lround(value * 65535));
    else
        reinterpret_cast<float *>(row)[i] = static_cast<float>(value);
}

template <class Value> BitmapPtr FilledBitmap(int width, int height, int type, int bits, Value value)
{
    BitmapPtr bitmap = NewBitmap(width, height, type, bits);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < bitmap->ComponentsPerPixel; ++c)
                SetSample(*bitmap, x, y, c, value(x, y, c));
    return bitmap;
}

} // namespace

int ChannelsOf(int type)
{
    return type == GFL_GREY ? 1 : type == GFL_RGB ? 3 : 4;
}

BitmapPtr NewBitmap(int width, int height, int type, int bits, unsigned rowAlignment)
{
    BitmapPtr bitmap(static_cast<GFL_BITMAP *>(gflMemoryAlloc(sizeof(GFL_BITMAP))));
    std::memset(bitmap.get(), 0, sizeof(GFL_BITMAP));
    bitmap->Type = static_cast<std::uint16_t>(type);
    bitmap->Width = width;
    bitmap->Height = height;
    bitmap->BitsPerComponent = static_cast<std::uint16_t>(bits);
    bitmap->ComponentsPerPixel = static_cast<std::uint16_t>(ChannelsOf(type));
    bitmap->BytesPerPixel = static_cast<std::uint16_t>(bits / 8 * bitmap->ComponentsPerPixel);
    bitmap->BytesPerLine =
        (static_cast<unsigned>(width) * bitmap->BytesPerPixel + rowAlignment - 1) / rowAlignment * rowAlignment;
    bitmap->TransparentIndex = -1;
    bitmap->Data = static_cast<std::uint8_t *>(gflMemoryAlloc(bitmap->BytesPerLine * static_cast<unsigned>(height)));
    return bitmap;
}

BitmapPtr RandomBitmap(int width, int height, int type, int bits, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> share(0.0, 1.0);
    return FilledBitmap(width, height, type, bits, [&](int, int, int) { return share(random); });
}

BitmapPtr SmoothBitmap(int width, int height, int type, int bits)
{
    return FilledBitmap(width, height, type, bits, [&](int x, int y, int c) {
        return 0.2 + 0.5 * x / width * (c == 1 ? 0.5 : 1.0) + 0.2 * y / height * (c == 2 ? 0.3 : 1.0);
    });
}

BitmapPtr Converted(const GFL_BITMAP &bitmap, int type, int bits)
{
    return FilledBitmap(bitmap.Width, bitmap.Height, type, bits, [&](int x, int y, int c) {
        return c < bitmap.ComponentsPerPixel ? SampleAt(bitmap, x, y, c) : c == 3 ? 1.0 : SampleAt(bitmap, x, y, 0);
    });
}

double SampleAt(const GFL_BITMAP &bitmap, int x, int y, int c)
{
    const std::uint8_t *row = bitmap.Data + std::size_t(y) * bitmap.BytesPerLine;
    const int i = x * bitmap.ComponentsPerPixel + c;
    if (bitmap.BitsPerComponent == 8)
        return row[i] / 255.0;
    if (bitmap.BitsPerComponent == 16)
        return reinterpret_cast<const std::uint16_t *>(row)[i] / 65535.0;
    return static_cast<double>(reinterpret_cast<const float *>(row)[i]);
}

QByteArray PackedPixels(const GFL_BITMAP &bitmap)
{
    QByteArray pixels;
    for (int y = 0; y < bitmap.Height; ++y)
        pixels.append(reinterpret_cast<const char *>(bitmap.Data + std::size_t(y) * bitmap.BytesPerLine),
                      bitmap.Width * bitmap.BytesPerPixel);
    return pixels;
}

QString Difference(const GFL_BITMAP &got, const GFL_BITMAP &expected, double tolerance)
{
    if (got.Type != expected.Type || got.BitsPerComponent != expected.BitsPerComponent || got.Width != expected.Width
        || got.Height != expected.Height)
        return QStringLiteral("got type %1, %2 bits, %3 x %4; expected type %5, %6 bits, %7 x %8")
            .arg(got.Type)
            .arg(got.BitsPerComponent)
            .arg(got.Width)
            .arg(got.Height)
            .arg(expected.Type)
            .arg(expected.BitsPerComponent)
            .arg(expected.Width)
            .arg(expected.Height);
    QString worst;
    double largest = tolerance;
    for (int y = 0; y < got.Height; ++y)
        for (int x = 0; x < got.Width; ++x)
            for (int c = 0; c < got.ComponentsPerPixel; ++c) {
                const double difference = std::abs(SampleAt(got, x, y, c) - SampleAt(expected, x, y, c));
                if (difference <= largest)
                    continue;
                largest = difference;
                worst = QStringLiteral("(%1, %2) channel %3: got %4, expected %5, the largest difference is %6")
                            .arg(x)
                            .arg(y)
                            .arg(c)
                            .arg(SampleAt(got, x, y, c))
                            .arg(SampleAt(expected, x, y, c))
                            .arg(difference);
            }
    return worst;
}

GFL_SAVE_PARAMS SaveParams(const char *format, int compression, int quality)
{
    GFL_SAVE_PARAMS params;
    gflGetDefaultSaveParams(&params);
    params.Flags = GFL_SAVE_ICC_PROFILE;
    params.FormatIndex = gflGetFormatIndexByName(format);
    if (compression >= 0)
        params.Compression = static_cast<std::uint16_t>(compression);
    if (quality >= 0)
        params.Quality = static_cast<std::uint16_t>(quality);
    return params;
}

GFL_LOAD_PARAMS LoadParams(unsigned flags, int type)
{
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    params.Flags |= flags;
    if (type != 0) {
        params.Flags |= GFL_LOAD_FORCE_COLOR_MODEL;
        params.ColorModel = static_cast<std::uint16_t>(type);
    }
    return params;
}

BitmapPtr Load(const QString &path, int *error, const GFL_LOAD_PARAMS &params)
{
    GFL_BITMAP *bitmap = nullptr;
    *error = gflLoadBitmapUTF8(path.toUtf8().constData(), &bitmap, &params, nullptr);
    return BitmapPtr(bitmap);
}

BitmapPtr LoadFromMemory(const QByteArray &file, int *error, const GFL_LOAD_PARAMS &params)
{
    GFL_BITMAP *bitmap = nullptr;
    *error = gflLoadBitmapFromMemory(reinterpret_cast<const std::uint8_t *>(file.constData()),
                                     static_cast<std::uint32_t>(file.size()), &bitmap, &params, nullptr);
    return BitmapPtr(bitmap);
}

QByteArray SavedBytes(const GFL_BITMAP &bitmap, const GFL_SAVE_PARAMS &params)
{
    std::uint8_t *data = nullptr;
    std::uint32_t size = 0;
    if (gflSaveBitmapIntoMemory(&data, &size, &bitmap, &params) != GFL_NO_ERROR)
        return QByteArray();
    QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    std::free(data); // the layer's plain allocator
    return bytes;
}
