#include "photograph.h"

#include "jpeg_error.h"

#include <cstdio>
#include <memory>
#include <stdexcept>

#include <exiv2/exiv2.hpp>
#include <lcms2.h>

namespace Samples {
namespace {

constexpr int kSubsamples = 2;    // per side
constexpr double kSoftness = 1.5; // width of an edge in sub-samples: the blur of a good lens
constexpr double kNoise = 0.0045;

/// Path of one channel from the photograph back to the scene.
class ChannelPath {
public:
    ChannelPath(const LensProfile &profile, const std::optional<LensModel> &fromGreen)
        : m_profile(profile), m_fromGreen(fromGreen)
    {
    }

    /// Traces @p source, a position in the profile's landscape frame. @p green receives the position at which the
    /// photograph shows the green light of the same point.
    Inverse Trace(Point source, Point *green) const
    {
        *green = source;
        Inverse first = {source, {{1, 0}, {0, 1}}};
        if (m_fromGreen) {
            first = ToCorrected(m_profile, *m_fromGreen, Projection::Perspective, source);
            *green = first.corrected;
        }
        Inverse second = ToCorrected(m_profile, *m_profile.green, MainProjection(m_profile), *green);
        Inverse both = second;
        for (int i = 0; i < 2; ++i)
            for (int j = 0; j < 2; ++j)
                both.derivative[i][j] =
                    second.derivative[i][0] * first.derivative[0][j] + second.derivative[i][1] * first.derivative[1][j];
        return both;
    }

private:
    const LensProfile &m_profile;
    const std::optional<LensModel> &m_fromGreen;
};

double ChannelOf(Rgb color, int channel)
{
    return channel == 0 ? color.r : channel == 1 ? color.g : color.b;
}

/// Returns repeatable noise, approximately normal, with mean 0 and standard deviation 1.
double Grain(int x, int y, int channel)
{
    double sum = 0;
    for (uint32_t i = 0; i < 3; ++i)
        sum += Hash(x, y, 500 + 3 * static_cast<uint32_t>(channel) + i);
    return 2 * sum - 3;
}

/// Returns the offset of a sub-sample from the middle of its pixel.
double Offset(int index)
{
    return (index + 0.5) / kSubsamples - 0.5;
}

struct Camera {
    const Scene &scene;
    const LensProfile &profile;
    Hold hold;
    int width; ///< of the upright picture

    /// Returns one channel of the scene at one point of the photograph, darkened by the lens.
    double Sample(const ChannelPath &path, int channel, Point at) const
    {
        Point green;
        const Inverse inverse = path.Trace(Turned(at, width, hold), &green);
        const auto &d = inverse.derivative;
        const double cell = kSoftness / kSubsamples;
        const double along = cell * (std::abs(d[0][0]) + std::abs(d[0][1]));
        const double down = cell * (std::abs(d[1][0]) + std::abs(d[1][1]));
        const Point corrected = Upright(inverse.corrected, width, hold);
        const bool turned = hold == Hold::Portrait;
        const Rgb color = scene.At({corrected, turned ? down : along, turned ? along : down});
        return ChannelOf(color, channel) / Gain(profile, green);
    }

    unsigned char Pixel(const ChannelPath &path, int channel, int x, int y) const
    {
        double sum = 0;
        for (int row = 0; row < kSubsamples; ++row)
            for (int column = 0; column < kSubsamples; ++column)
                sum += Sample(path, channel, {x + Offset(column), y + Offset(row)});
        const double value = sum / (kSubsamples * kSubsamples) + kNoise * (Grain(x, y, 3) + 0.4 * Grain(x, y, channel));
        return static_cast<unsigned char>(std::lround(255 * Clamp01(value)));
    }
};

/// Returns the sRGB profile with a fixed date, so that recreated pictures are identical.
std::vector<unsigned char> ColorProfile()
{
    const std::unique_ptr<void, decltype(&cmsCloseProfile)> profile(cmsCreate_sRGBProfile(), &cmsCloseProfile);
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size))
        throw std::runtime_error("the sRGB profile can't be made");
    std::vector<unsigned char> bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size))
        throw std::runtime_error("the sRGB profile can't be made");
    const unsigned char date[12] = {0x07, 0xE5, 0, 6, 0, 12, 0, 0, 0, 0, 0, 0}; // header bytes 24 to 35
    std::copy(std::begin(date), std::end(date), bytes.begin() + 24);
    return bytes;
}

void EncodeJpeg(FILE *file, const Picture &picture)
{
    jpeg_compress_struct info = {};
    jpeg_error_mgr errors = {};
    info.err = ThrowJpegErrors(&errors);
    jpeg_create_compress(&info);
    const std::unique_ptr<jpeg_compress_struct, decltype(&jpeg_destroy_compress)> guard(&info, &jpeg_destroy_compress);
    jpeg_stdio_dest(&info, file);
    info.image_width = static_cast<JDIMENSION>(picture.width);
    info.image_height = static_cast<JDIMENSION>(picture.height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 90, TRUE);
    info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = 1; // keeps color fringes sharp
    info.optimize_coding = TRUE;
    jpeg_start_compress(&info, TRUE);
    const std::vector<unsigned char> profile = ColorProfile();
    jpeg_write_icc_profile(&info, profile.data(), static_cast<unsigned>(profile.size()));
    while (info.next_scanline < info.image_height) {
        const size_t row = size_t(info.next_scanline) * size_t(picture.width) * 3;
        JSAMPROW line = const_cast<JSAMPROW>(picture.rgb.data() + row);
        jpeg_write_scanlines(&info, &line, 1);
    }
    jpeg_finish_compress(&info);
}

Exiv2::URationalValue Ratio(uint32_t numerator, uint32_t denominator)
{
    Exiv2::URationalValue value;
    value.value_.push_back({numerator, denominator});
    return value;
}

Exiv2::URational Tenths(double value)
{
    return {static_cast<uint32_t>(std::lround(value * 10)), 10};
}

void FillExif(Exiv2::ExifData *exif, const Picture &picture, const LensProfile &profile, const Caption &caption)
{
    Exiv2::ExifData &data = *exif;
    data["Exif.Image.ImageDescription"] = caption.title;
    data["Exif.Image.Make"] = profile.camera.substr(0, profile.camera.find(' '));
    data["Exif.Image.Model"] = profile.camera;
    data["Exif.Image.Orientation"] = uint16_t(1);
    data["Exif.Image.DateTime"] = caption.dateTime;
    data["Exif.Image.Copyright"] = "CC0 1.0";
    data["Exif.Photo.DateTimeOriginal"] = caption.dateTime;
    data["Exif.Photo.ExposureTime"] = Exiv2::URational(1, static_cast<uint32_t>(caption.exposureDenominator));
    data["Exif.Photo.FNumber"] = Tenths(caption.aperture);
    data["Exif.Photo.ISOSpeedRatings"] = static_cast<uint16_t>(caption.iso);
    data["Exif.Photo.FocalLength"] = Tenths(caption.focalMm);
    data["Exif.Photo.FocalLengthIn35mmFilm"] = static_cast<uint16_t>(std::lround(caption.focalMm * 1.5));
    data["Exif.Photo.LensModel"] = profile.lens;
    data["Exif.Photo.ColorSpace"] = uint16_t(1);
    data["Exif.Photo.PixelXDimension"] = static_cast<uint32_t>(picture.width);
    data["Exif.Photo.PixelYDimension"] = static_cast<uint32_t>(picture.height);
    data["Exif.GPSInfo.GPSLatitudeRef"] = "N";
    data["Exif.GPSInfo.GPSLatitude"] = "44/1 29/1 3732/100";
    data["Exif.GPSInfo.GPSLongitudeRef"] = "E";
    data["Exif.GPSInfo.GPSLongitude"] = "11/1 20/1 3408/100";
    const Exiv2::URationalValue altitude = Ratio(54, 1);
    data["Exif.GPSInfo.GPSAltitude"].setValue(&altitude);
}

void WriteMetadata(const std::string &path, const Picture &picture, const LensProfile &profile, const Caption &caption)
{
    const auto image = Exiv2::ImageFactory::open(path);
    image->readMetadata();
    Exiv2::ExifData exif;
    FillExif(&exif, picture, profile, caption);
    image->setExifData(exif);
    Exiv2::IptcData iptc;
    iptc["Iptc.Envelope.CharacterSet"] = "\x1b%G"; // UTF-8
    iptc["Iptc.Application2.ObjectName"] = caption.title;
    iptc["Iptc.Application2.Caption"] = caption.title + ", drawn by a program";
    iptc["Iptc.Application2.Keywords"] = caption.keyword;
    iptc["Iptc.Application2.Copyright"] = "CC0 1.0";
    image->setIptcData(iptc);
    image->writeMetadata();
}

} // namespace

Picture Photograph(const Scene &scene, const LensProfile &profile, Hold hold)
{
    const bool portrait = hold == Hold::Portrait;
    Picture picture = {portrait ? profile.height : profile.width, portrait ? profile.width : profile.height, {}};
    picture.rgb.resize(size_t(picture.width) * size_t(picture.height) * 3);
    const std::optional<LensModel> green;
    const ChannelPath paths[3] = {{profile, profile.redGreen}, {profile, green}, {profile, profile.blueGreen}};
    const Camera camera = {scene, profile, hold, picture.width};
#pragma omp parallel for schedule(dynamic, 8)
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                picture.rgb[(size_t(y) * size_t(picture.width) + size_t(x)) * 3 + size_t(channel)] =
                    camera.Pixel(paths[channel], channel, x, y);
    return picture;
}

void WriteJpeg(const std::string &path, const Picture &picture, const LensProfile &profile, const Caption &caption)
{
    FILE *file = std::fopen(path.c_str(), "wb");
    if (!file)
        throw std::runtime_error(path + ": can't be written");
    try {
        EncodeJpeg(file, picture);
    } catch (...) {
        std::fclose(file);
        throw;
    }
    if (std::fclose(file) != 0)
        throw std::runtime_error(path + ": can't be written");
    WriteMetadata(path, picture, profile, caption);
}

} // namespace Samples
