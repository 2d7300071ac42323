#include "FittedWarpTwin.h"

#include "KImage.h"

#include <algorithm>
#include <cmath>

std::array<double, 2> FittedWarpTwin::Sample(const KImage &source, SourcePlaces::Point place, int color) const
{
    const double left = std::floor(place.x), above = std::floor(place.y);
    const double wx[2] = {1.0 - (place.x - left), place.x - left};
    const double wy[2] = {1.0 - (place.y - above), place.y - above};
    double sum = 0.0, alphaSum = 0.0;
    for (int j = 0; j < 2; ++j) {
        for (int i = 0; i < 2; ++i) {
            const int x = std::clamp(static_cast<int>(left) + i, 0, source.width() - 1);
            const int y = std::clamp(static_cast<int>(above) + j, 0, source.height() - 1);
            float pixel[4];
            std::copy_n(reinterpret_cast<const float *>(source.getData(x, y)), 4, pixel);
            const double alpha = m_form.hasAlpha ? double(pixel[3]) : 1.0;
            sum += wx[i] * wy[j] * alpha * pixel[color];
            alphaSum += wx[i] * wy[j] * alpha;
        }
    }
    return {alphaSum > 0.0 ? sum / alphaSum : 0.0, alphaSum};
}

FittedWarpTwin::Pixel FittedWarpTwin::At(const KImage &source, int x, int y) const
{
    const SourcePlaces places = m_twin.At(x, y);
    if (m_twin.IsEmpty(places))
        return {};
    const auto red = Sample(source, places.red, 0), green = Sample(source, places.green, 1),
               blue = Sample(source, places.blue, 2);
    Pixel pixel = {red[0], green[0], blue[0], green[1]};
    for (int color = 0; color < 3; ++color) {
        pixel[color] *= places.gain;
        if (!m_form.isFloat)
            pixel[color] = std::clamp(pixel[color], 0.0, 1.0);
    }
    return pixel;
}
