#include "PictureLight.h"

#include "gfl.h"

#include <cmath>
#include <memory>

namespace {

constexpr int kPoints = 4096;                    // a common table size in ICC profiles
constexpr double kAdobeRgbGamma = 563.0 / 256.0; // Adobe RGB (1998) Color Image Encoding, 4.3.1.2

std::optional<TransferCurve> CurveOfProfile(const QString &path)
{
    const std::unique_ptr<GFL_ICCPROFILE_DATA, void (*)(GFL_ICCPROFILE_DATA *)> profile(
        gflLoadICCProfileUTF8(path.toUtf8().constData()), gflFreeICCProfile);
    if (!profile)
        return std::nullopt;
    std::vector<double> light(size_t(3) * kPoints);
    const int count = gflToneCurves(profile->Data, profile->Length, kPoints, light.data());
    std::vector<std::vector<double>> curves;
    for (int i = 0; i < count; ++i)
        curves.emplace_back(light.begin() + i * kPoints, light.begin() + (i + 1) * kPoints);
    return TransferCurve::FromSamples(curves);
}

} // namespace

PictureLight LightOf(const PictureFacts &facts, bool isFloat, double rawGamma)
{
    if (facts.raw)
        return {TransferCurve::Power(std::isfinite(rawGamma) && rawGamma > 0.0 ? rawGamma : 1.0), QString()};
    if (const std::optional<TransferCurve> curve = CurveOfProfile(facts.path))
        return {*curve, QString()};
    if (isFloat)
        return {TransferCurve::Linear(), QString()};
    switch (facts.encoding.value) {
    case ColorEncoding::Srgb:
        return {TransferCurve::Srgb(), QString()};
    case ColorEncoding::AdobeRgb:
        return {TransferCurve::Power(kAdobeRgbGamma), QString()};
    case ColorEncoding::Unknown:
        break;
    }
    return {TransferCurve::Srgb(), QStringLiteral("no color profile with curves: treated as sRGB")};
}
