#include "FittedWarpTwin.h"

#include "KImage.h"
#include "SharpKernel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

namespace {

using Function = std::function<double(int x, int y)>; // pixel values

/// Coordinate of a position: the pixel at or before it, and the distance from that pixel.
struct Side {
    explicit Side(double place) : first(static_cast<int>(std::floor(place))), rest(place - first) { }

    int first;
    double rest;
};

double Bilinear(const Function &at, SourcePlaces::Point place)
{
    const Side x(place.x), y(place.y);
    const double above = at(x.first, y.first) * (1.0 - x.rest) + at(x.first + 1, y.first) * x.rest;
    const double below = at(x.first, y.first + 1) * (1.0 - x.rest) + at(x.first + 1, y.first + 1) * x.rest;
    return above * (1.0 - y.rest) + below * y.rest;
}

/// Returns how far a sample between the middle two of four consecutive values may exceed both.
double Rise(double v0, double v1, double v2, double v3)
{
    const double turn = std::min(v1 + (v1 - v0) / 2.0, v2 + (v2 - v3) / 2.0) - std::max(v1, v2);
    const double top = std::max(std::min(v1 - v0, v1 - v2), std::min(v2 - v1, v2 - v3)) / 2.0;
    return std::max({turn, top, 0.0});
}

/// Returns the maximum value that a sample between four pixels, the first at (@p x, @p y), may have.
double Highest(const Function &at, int x, int y)
{
    const auto row = [&](int j) { return Rise(at(x - 1, j), at(x, j), at(x + 1, j), at(x + 2, j)); };
    const auto column = [&](int i) { return Rise(at(i, y - 1), at(i, y), at(i, y + 1), at(i, y + 2)); };
    return std::max({at(x, y), at(x + 1, y), at(x, y + 1), at(x + 1, y + 1)}) + std::max(row(y), row(y + 1))
        + std::max(column(x), column(x + 1));
}

double Sharp(const Function &at, SourcePlaces::Point place)
{
    constexpr double kPhases = SharpKernel::kPhases;
    const Side x(std::floor(place.x * kPhases + 0.5) / kPhases), y(std::floor(place.y * kPhases + 0.5) / kPhases);
    const std::int16_t *const wx =
        SharpKernel::Get().Weights() + static_cast<int>(x.rest * kPhases) * SharpKernel::kPadded;
    const std::int16_t *const wy =
        SharpKernel::Get().Weights() + static_cast<int>(y.rest * kPhases) * SharpKernel::kPadded;
    double sum = 0.0;
    for (int j = 0; j < SharpKernel::kTaps; ++j)
        for (int i = 0; i < SharpKernel::kTaps; ++i)
            sum += double(wx[i]) * wy[j] * at(x.first + i - SharpKernel::kBefore, y.first + j - SharpKernel::kBefore);
    sum /= double(SharpKernel::kOne) * SharpKernel::kOne;
    const Function negative = [&](int i, int j) { return -at(i, j); };
    return std::clamp(sum, -Highest(negative, x.first, y.first), Highest(at, x.first, y.first));
}

} // namespace

FittedWarpTwin::Sampled FittedWarpTwin::Sample(const KImage &source, SourcePlaces::Point place, int color) const
{
    const auto channel = [&](int x, int y, int index) {
        float pixel[4];
        std::memcpy(pixel, source.getData(std::clamp(x, 0, source.width() - 1), std::clamp(y, 0, source.height() - 1)),
                    sizeof pixel);
        return double(pixel[index]);
    };
    const auto sample = m_sampling == FittedWarp::Sampling::Sharp ? Sharp : Bilinear;
    if (!m_form.hasAlpha)
        return {sample([&](int x, int y) { return channel(x, y, color); }, place), 1.0};
    const double alpha = sample([&](int x, int y) { return channel(x, y, 3); }, place);
    const double sum = sample([&](int x, int y) { return channel(x, y, color) * channel(x, y, 3); }, place);
    return {alpha > 0.0 ? sum / alpha : 0.0, alpha};
}

FittedWarpTwin::Pixel FittedWarpTwin::At(const KImage &source, double x, double y) const
{
    const SourcePlaces places = m_twin.At(x, y);
    if (m_twin.IsEmpty(places))
        return {};
    const Sampled green = Sample(source, places.green, 1);
    Pixel pixel = {Sample(source, places.red, 0).value, green.value, Sample(source, places.blue, 2).value, green.alpha};
    for (int color = 0; color < 3; ++color) {
        pixel[color] = m_light.Stored(color, m_light.Light(color, pixel[color]) * places.gain);
        if (!m_form.isFloat)
            pixel[color] = std::clamp(pixel[color], 0.0, 1.0);
    }
    return pixel;
}
