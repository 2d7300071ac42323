#include "color.h"

#include <algorithm>
#include <cmath>

namespace primitives {

namespace {

constexpr float kHueSteps = 255.0f / 6.0f; // codes per sector of the hexcone

void ToHsv(Ipp8u &r, Ipp8u &g, Ipp8u &b)
{
    const int max = std::max({r, g, b}), min = std::min({r, g, b}), range = max - min;
    float sector = 0; // 0 red, 1 yellow, 2 green, 3 cyan, 4 blue, 5 magenta
    if (range > 0) {
        const float unit = 1.0f / static_cast<float>(range);
        if (max == r)
            sector = static_cast<float>(g - b) * unit + (g < b ? 6.0f : 0.0f);
        else if (max == g)
            sector = static_cast<float>(b - r) * unit + 2.0f;
        else
            sector = static_cast<float>(r - g) * unit + 4.0f;
    }
    r = Saturate<Ipp8u>(sector * kHueSteps);
    g = max > 0 ? Saturate<Ipp8u>(255.0f * static_cast<float>(range) / static_cast<float>(max)) : Ipp8u(0);
    b = static_cast<Ipp8u>(max);
}

void ToRgbFromHsv(Ipp8u &h, Ipp8u &s, Ipp8u &v)
{
    const float sector = static_cast<float>(h) / kHueSteps; // 255 is red again
    const float value = v, chroma = value * static_cast<float>(s) / 255.0f;
    // A channel is full within one sector of its corner, and falls off over the next.
    const auto channel = [=](float corner) {
        const float distance = std::fabs(sector - corner);
        const float around = std::min(distance, 6.0f - distance);
        return Saturate<Ipp8u>(value - chroma * std::clamp(around - 1.0f, 0.0f, 1.0f));
    };
    h = channel(0.0f);
    s = channel(2.0f);
    v = channel(4.0f);
}

/// Value that represents 1.0 in a type.
template <typename T> constexpr float kFull = std::is_floating_point_v<T> ? 1.0f : float(std::numeric_limits<T>::max());

constexpr float kLumaGain = 1.0f / 1.402f;
constexpr float kChroma1Gain = 111.40f / 255.0f, kChroma1Zero = 156.0f / 255.0f;
constexpr float kChroma2Gain = 135.64f / 255.0f, kChroma2Zero = 137.0f / 255.0f;

} // namespace

Status RgbToHsv8(const Ipp8u *src, Step srcStep, Ipp8u *dst, Step dstStep, Size size)
{
    return ConvertColors<Ipp8u, 4>(src, srcStep, dst, dstStep, size, ToHsv);
}

Status HsvToRgb8(const Ipp8u *src, Step srcStep, Ipp8u *dst, Step dstStep, Size size)
{
    return ConvertColors<Ipp8u, 4>(src, srcStep, dst, dstStep, size, ToRgbFromHsv);
}

template <typename T, int C> Status RgbToYcc(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    return ConvertColors<T, C>(src, srcStep, dst, dstStep, size, [](T &first, T &second, T &third) {
        const float r = first, g = second, b = third;
        const float luma = 0.299f * r + 0.587f * g + 0.114f * b;
        first = Saturate<T>(luma * kLumaGain);
        second = Saturate<T>((b - luma) * kChroma1Gain + kChroma1Zero * kFull<T>);
        third = Saturate<T>((r - luma) * kChroma2Gain + kChroma2Zero * kFull<T>);
    });
}

template <typename T, int C> Status YccToRgb(const T *src, Step srcStep, T *dst, Step dstStep, Size size)
{
    return ConvertColors<T, C>(src, srcStep, dst, dstStep, size, [](T &first, T &second, T &third) {
        const float luma = static_cast<float>(first) / kLumaGain;
        const float b = luma + (static_cast<float>(second) - kChroma1Zero * kFull<T>) / kChroma1Gain;
        const float r = luma + (static_cast<float>(third) - kChroma2Zero * kFull<T>) / kChroma2Gain;
        first = Saturate<T>(r);
        second = Saturate<T>((luma - 0.299f * r - 0.114f * b) / 0.587f);
        third = Saturate<T>(b);
    });
}

#define INSTANTIATE(T, C)                                                                                              \
    template Status RgbToYcc<T, C>(const T *, Step, T *, Step, Size);                                                  \
    template Status YccToRgb<T, C>(const T *, Step, T *, Step, Size);
INSTANTIATE(Ipp8u, 3)
INSTANTIATE(Ipp8u, 4)
INSTANTIATE(Ipp16u, 3)
INSTANTIATE(Ipp16u, 4)
INSTANTIATE(Ipp32f, 3)
INSTANTIATE(Ipp32f, 4)
#undef INSTANTIATE

} // namespace primitives
