// Reads arbitrary bytes as an ICC profile and converts values with its tone curves.
#include "Target.h"
#include "TransferCurve.h"
#include "gfl.h"

#include <cmath>

namespace {

/// Stored values of float pictures: black, very dark, midtones, near white, highlights.
constexpr float kValues[] = {0.0F, 1e-30F, 0.001F, 0.3F, 0.999F, 1.0F, 2.5F, 1e6F, 3e38F};

void Convert(const TransferCurve &curve)
{
    if (curve.IsLinear())
        return;
    for (int channel = 0; channel < 3; ++channel) {
        double before = 0.0;
        for (const float value : kValues) {
            const double light = curve.Light(channel, static_cast<double>(value));
            Require(light >= before && curve.Stored(channel, light) >= 0.0);
            before = light;
            Require(!std::isnan(curve.LightTable(channel).At(value))
                    && !std::isnan(curve.StoredTable(channel).At(value)));
        }
    }
}

} // namespace

FUZZ_TARGET(tone_curves)
{
    constexpr int kPoints[] = {2, 3, 256, 4096};
    Input input(data, size);
    // The last byte, which is also part of the profile's last tag, selects the number of points, so seeds can be
    // ordinary profiles.
    const int points = size ? kPoints[data[size - 1] & 3] : 2;
    const QByteArray profile = input.Rest();
    std::vector<double> light(std::size_t(3) * points);
    const int count =
        gflToneCurves(profile.constData(), static_cast<std::uint32_t>(profile.size()), points, light.data());
    Require(count == 0 || count == 1 || count == 3);
    std::vector<std::vector<double>> curves;
    for (int i = 0; i < count; ++i)
        curves.emplace_back(light.begin() + i * points, light.begin() + (i + 1) * points);
    if (const std::optional<TransferCurve> curve = TransferCurve::FromSamples(curves))
        Convert(*curve);
}
