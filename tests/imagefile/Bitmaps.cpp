#include "Bitmaps.h"

#include <QFile>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <lcms2.h>
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

BitmapPtr FilledBitmap(int width, int height, int type, int bits, const Samples &value)
{
    BitmapPtr bitmap = NewBitmap(width, height, type, bits);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < bitmap->ComponentsPerPixel; ++c)
                SetSample(*bitmap, x, y, c, value(x, y, c));
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
        return QString::asprintf("got type %d, %d bits, %d x %d; expected type %d, %d bits, %d x %d", got.Type,
                                 got.BitsPerComponent, got.Width, got.Height, expected.Type, expected.BitsPerComponent,
                                 expected.Width, expected.Height);
    return Difference(
        got, [&](int x, int y, int c) { return SampleAt(expected, x, y, c); }, tolerance);
}

QString Difference(const GFL_BITMAP &got, const Samples &expected, double tolerance)
{
    QString worst;
    double largest = tolerance;
    for (int y = 0; y < got.Height; ++y)
        for (int x = 0; x < got.Width; ++x)
            for (int c = 0; c < got.ComponentsPerPixel; ++c) {
                const double have = SampleAt(got, x, y, c), want = expected(x, y, c),
                             difference = std::abs(have - want);
                if (difference <= largest)
                    continue;
                largest = difference;
                worst = QString::asprintf("(%d, %d) channel %d: got %g, expected %g, the largest difference is %g", x,
                                          y, c, have, want, difference);
            }
    return worst;
}

QByteArray ProfileBytes(void *profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(int(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

QByteArray InkProfile()
{
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1); // encodes L* = 100 as 65,280 and a* = b* = 0 as 32,768
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline *pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage *table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number *in, cmsUInt16Number *out, void *) -> cmsInt32Number {
            const double colors = (in[0] + in[1] + in[2]) / 3.0 / 65535.0;
            out[0] = cmsUInt16Number(std::lround((1.0 - in[3] / 65535.0) * (1.0 - colors) * 65280.0));
            out[1] = out[2] = 32768;
            return 1;
        },
        nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsWriteTag(profile, cmsSigAToB1Tag, pipeline);
    cmsPipelineFree(pipeline);
    return ProfileBytes(profile);
}

double GrayOfCyan(double cyan)
{
    const double light = std::pow((100.0 * (1.0 - cyan / 3.0) + 16.0) / 116.0, 3); // CIE 15
    return 1.055 * std::pow(light, 1 / 2.4) - 0.055;                               // sRGB's curve
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

BitmapPtr Load(const QString &path, int *error, const GFL_LOAD_PARAMS &params, GFL_FILE_INFORMATION *info)
{
    GFL_BITMAP former = {}, *bitmap = &former; // replaced even after a failure
    const int result = gflLoadBitmapUTF8(path.toUtf8().constData(), &bitmap, &params, info);
    if (error)
        *error = result;
    return BitmapPtr(bitmap);
}

BitmapPtr LoadFromMemory(const QByteArray &file, int *error, const GFL_LOAD_PARAMS &params, GFL_FILE_INFORMATION *info)
{
    GFL_BITMAP former = {}, *bitmap = &former; // replaced even after a failure
    const int result = gflLoadBitmapFromMemory(reinterpret_cast<const std::uint8_t *>(file.constData()),
                                               static_cast<std::uint32_t>(file.size()), &bitmap, &params, info);
    if (error)
        *error = result;
    return BitmapPtr(bitmap);
}

BitmapPtr LoadThumbnail(const QString &path, QSize box, const GFL_LOAD_PARAMS &params, GFL_FILE_INFORMATION *info)
{
    GFL_BITMAP *bitmap = nullptr;
    gflLoadThumbnailUTF8(path.toUtf8().constData(), box.width(), box.height(), &bitmap, &params, info);
    return BitmapPtr(bitmap);
}

int Describe(const QString &path, GFL_FILE_INFORMATION *info)
{
    return gflGetFileInformationExUTF8(path.toUtf8().constData(), -1, info, 4);
}

int Save(const QString &path, const GFL_BITMAP &bitmap, const GFL_SAVE_PARAMS &params)
{
    return gflSaveBitmapUTF8(path.toUtf8().constData(), &bitmap, &params);
}

QByteArray SavedBytes(const GFL_BITMAP &bitmap, const GFL_SAVE_PARAMS &params)
{
    std::uint8_t former = 0, *data = &former; // replaced even after a failure
    std::uint32_t size = 0;
    if (gflSaveBitmapIntoMemory(&data, &size, &bitmap, &params) != GFL_NO_ERROR)
        return data ? "data isn't null" : QByteArray();
    QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    std::free(data); // the layer allocates it with malloc()
    return bytes;
}

QByteArray InfoText(const char *format, const QByteArray &description, QSize size, int components, int bits, int model,
                    QSize dpi)
{
    return QByteArray(format) + " (" + description + ')'
        + QString::asprintf(" %d x %d, %d x %d bits, model %d, %d x %d dpi", size.width(), size.height(), components,
                            bits, model, dpi.width(), dpi.height())
              .toUtf8();
}

QByteArray InfoText(const GFL_FILE_INFORMATION &info)
{
    const GFL_FORMAT *format = gflGetFormat(info.FormatIndex);
    return InfoText(format && qstrcmp(format->Name, info.FormatName) == 0 ? info.FormatName : "names don't match",
                    info.Description, {info.Width, info.Height}, info.ComponentsPerPixel, info.BitsPerComponent,
                    info.ColorModel, {info.Xdpi, info.Ydpi});
}

QString BadRead(const QByteArray &file, const QByteArray &info, int type, const Samples &expected, double tolerance)
{
    GFL_FILE_INFORMATION got;
    const BitmapPtr read = LoadFromMemory(file, nullptr, LoadParams(GFL_LOAD_ORIGINAL_DEPTH), &got);
    if (!read)
        return QString::fromUtf8(gflLastErrorText());
    if (InfoText(got) != info || read->Type != type || read->Width != got.Width || read->Height != got.Height
        || read->BitsPerComponent != got.BitsPerComponent)
        return QString::asprintf("got %s; expected %s, type %d; the picture is %d x %d, %d bits, type %d",
                                 InfoText(got).constData(), info.constData(), type, read->Width, read->Height,
                                 read->BitsPerComponent, read->Type);
    gflLibraryInitEx([](unsigned long, void *) -> void * { return nullptr; },
                     [](void *, unsigned long, void *) -> void * { return nullptr; }, [](void *, void *) {}, nullptr);
    int error = 0;
    const bool isReadWithoutMemory = LoadFromMemory(file, &error) != nullptr;
    gflLibraryExit();
    if (isReadWithoutMemory || error != GFL_ERROR_NO_MEMORY)
        return QString::asprintf("error %d without memory", error);
    return Difference(*read, expected, tolerance);
}

QString BadRead(const QByteArray &file, const QByteArray &info, const GFL_BITMAP &expected, double tolerance)
{
    const auto sample = [&](int x, int y, int c) { return SampleAt(expected, x, y, c); };
    return BadRead(file, info, expected.Type, sample, tolerance);
}

QByteArray WarningOf(const QByteArray &file)
{
    gflClearWarningText();
    const BitmapPtr read = LoadFromMemory(file, nullptr, LoadParams(GFL_LOAD_METADATA));
    return read ? gflLastWarningText() : "not read";
}

QString BadCut(const QByteArray &file, int end, int begin)
{
    for (int size = begin; size < end; ++size) {
        int error = 0;
        const bool read = LoadFromMemory(file.left(size), &error) != nullptr;
        if (read || (error != GFL_ERROR_FILE_READ && (error != GFL_ERROR_UNKNOWN_FORMAT || size > 16)))
            return QString::asprintf("%d of %d bytes: error %d", size, file.size(), error);
    }
    return QString();
}

QByteArray BigEndian(quint64 number, int bytes)
{
    QByteArray out;
    for (int i = bytes; i-- > 0;)
        out.append(i < 8 ? char(number >> (8 * i)) : char(0));
    return out;
}
