#include "tiff_samples.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

/// Reads one value of type T from possibly unaligned memory.
template <class T> T Load(const std::uint8_t *p)
{
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

// Converts an IEEE 754 binary16 number.
float HalfToFloat(std::uint16_t half)
{
    const std::uint32_t sign = (half & 0x8000u) << 16;
    const std::uint32_t exponent = (half >> 10) & 31u;
    const std::uint32_t mantissa = half & 0x3FFu;
    if (exponent == 0) { // zero and subnormal numbers
        const float magnitude = static_cast<float>(mantissa) * (1.0f / 16777216.0f);
        return sign != 0 ? -magnitude : magnitude;
    }
    const std::uint32_t bits = sign | (exponent == 31 ? 0x7F800000u : (exponent + 112) << 23) | mantissa << 13;
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template <class S, class D, class Convert>
void UnpackWhole(const std::uint8_t *src, std::size_t first, std::size_t srcStep, std::size_t count, void *dst,
                 std::size_t dstStep, Convert convert)
{
    D *out = static_cast<D *>(dst);
    src += first * sizeof(S);
    for (std::size_t i = 0; i < count; ++i, src += srcStep * sizeof(S), out += dstStep)
        *out = convert(Load<S>(src));
}

// Unpacks 24-bit numbers, which libtiff returns in native byte order, lowest byte first.
void Unpack24(const std::uint8_t *src, std::size_t first, std::size_t srcStep, std::size_t count, void *dst,
              std::size_t dstStep)
{
    float *out = static_cast<float *>(dst);
    for (std::size_t i = 0; i < count; ++i, out += dstStep) {
        const std::uint8_t *p = src + (first + i * srcStep) * 3;
        *out = static_cast<float>(p[0] | p[1] << 8 | p[2] << 16) / 16777215.0f;
    }
}

// Unpacks numbers of 1 to 15 bits, from the highest bit of each byte down.
template <class D>
void UnpackBits(const TiffLayout &layout, const std::uint8_t *src, std::size_t first, std::size_t srcStep,
                std::size_t count, D *dst, std::size_t dstStep)
{
    const auto bits = static_cast<unsigned>(layout.bits);
    const unsigned greatest = (1u << bits) - 1;
    const bool isIndex = layout.color == TiffColor::Palette;
    for (std::size_t i = 0; i < count; ++i, dst += dstStep) {
        std::size_t bit = (first + i * srcStep) * bits;
        unsigned value = 0;
        for (unsigned left = bits; left > 0;) {
            const unsigned here = std::min(left, 8u - static_cast<unsigned>(bit % 8));
            const unsigned byte = src[bit / 8];
            value = value << here | ((byte >> (8u - bit % 8 - here)) & ((1u << here) - 1));
            left -= here;
            bit += here;
        }
        // <= 2^15 * 65,535 + 2^14 < 2^32
        *dst = static_cast<D>(isIndex ? value : (value * FullScale<D>() + greatest / 2) / greatest);
    }
}

// ---- From unpacked samples to delivered pixels ----

template <class T> void Invert(const TiffLayout &layout, T *samples)
{
    const auto step = static_cast<std::size_t>(layout.unpacked.channels);
    for (std::size_t x = 0; x < static_cast<std::size_t>(layout.width); ++x)
        samples[x * step] = static_cast<T>(FullScale<T>() - samples[x * step]);
}

template <class T> void ExpandGray(const TiffLayout &layout, const T *samples, T *row)
{
    for (int x = 0; x < layout.width; ++x, samples += layout.unpacked.channels, row += layout.form.channels) {
        row[0] = row[1] = row[2] = samples[0];
        if (layout.form.channels == 4)
            row[3] = samples[1];
    }
}

// Converts to ICC version 4 Lab, whose 16-bit values go up to 65,535. In ICC version 2 Lab, all three values go up to
// 65,280; in CIE Lab, only a and b do, and these are signed.
template <class T> void ToIccLab(const TiffLayout &layout, T *samples)
{
    constexpr std::uint32_t kFull = FullScale<T>(), kFullV2 = sizeof(T) == 2 ? 65280 : 255;
    const bool isCie = layout.photometric == PHOTOMETRIC_CIELAB;
    const std::uint32_t sign = isCie ? (kFull + 1) / 2 : 0;
    for (int x = 0; x < layout.width; ++x, samples += layout.unpacked.channels)
        for (int c = isCie ? 1 : 0; c < 3; ++c) // <= 65,535 * 65,535 + 32,640 < 2^32
            samples[c] = static_cast<T>(std::min(((samples[c] ^ sign) * kFull + kFullV2 / 2) / kFullV2, kFull));
}

// Color maps have 16-bit values, but some writers store 8-bit ones in them.
bool IsEightBitMap(const TiffLayout &layout)
{
    const std::size_t colors = std::size_t(1) << layout.bits;
    return std::all_of(std::begin(layout.palette), std::end(layout.palette), [colors](const std::uint16_t *map) {
        return std::all_of(map, map + colors, [](std::uint16_t value) { return value < 256; });
    });
}

template <class T> void LookUp(const TiffLayout &layout, const T *indexes, std::uint8_t *row)
{
    const int shift = IsEightBitMap(layout) ? 0 : 8;
    for (int x = 0; x < layout.width; ++x, ++indexes)
        for (int c = 0; c < 3; ++c)
            *row++ = static_cast<std::uint8_t>(layout.palette[c][*indexes] >> shift);
}

template <class T> void Unpremultiply(const TiffLayout &layout, T *row)
{
    constexpr auto kFull = static_cast<float>(FullScale<T>());
    for (int x = 0; x < layout.width; ++x, row += 4) {
        const float factor = row[3] > T(0) ? kFull / static_cast<float>(row[3]) : 0.0f;
        for (int c = 0; c < 3 && factor > 1.0f; ++c)
            row[c] = ToSample<T>(static_cast<float>(row[c]) * factor);
    }
}

template <class T> void Finish(const TiffLayout &layout, ColorTransform *transform, T *unpacked, void *rowBytes)
{
    T *row = static_cast<T *>(rowBytes);
    if (layout.minIsWhite)
        Invert(layout, unpacked);
    if constexpr (!std::is_floating_point_v<T>) {
        if (layout.color == TiffColor::Palette)
            return LookUp(layout, unpacked, static_cast<std::uint8_t *>(rowBytes));
        if (layout.color == TiffColor::Lab)
            ToIccLab(layout, unpacked);
    }
    if (layout.color == TiffColor::Cmyk || layout.color == TiffColor::Lab)
        transform->Row(unpacked, row, static_cast<std::size_t>(layout.width));
    else if (!UnpacksInPlace(layout))
        ExpandGray(layout, unpacked, row);
    if (layout.premultiplied)
        Unpremultiply(layout, row);
}

} // namespace

void UnpackSamples(const TiffLayout &layout, const std::uint8_t *src, std::size_t first, std::size_t srcStep,
                   std::size_t count, void *dst, std::size_t dstStep)
{
    using u8 = std::uint8_t;
    using u16 = std::uint16_t;
    using u32 = std::uint32_t;
    const int bits = layout.bits;
    if (layout.isFloat && bits == 16)
        UnpackWhole<u16, float>(src, first, srcStep, count, dst, dstStep, HalfToFloat);
    else if (layout.isFloat && bits == 64)
        UnpackWhole<double, float>(src, first, srcStep, count, dst, dstStep,
                                   [](double v) { return static_cast<float>(v); });
    else if (layout.isFloat)
        UnpackWhole<float, float>(src, first, srcStep, count, dst, dstStep, [](float v) { return v; });
    else if (bits == 32)
        UnpackWhole<u32, float>(src, first, srcStep, count, dst, dstStep,
                                [](u32 v) { return static_cast<float>(v / 4294967295.0); });
    else if (bits == 24)
        Unpack24(src, first, srcStep, count, dst, dstStep);
    else if (bits == 16)
        UnpackWhole<u16, u16>(src, first, srcStep, count, dst, dstStep, [](u16 v) { return v; });
    else if (bits == 8)
        UnpackWhole<u8, u8>(src, first, srcStep, count, dst, dstStep, [](u8 v) { return v; });
    else if (bits > 8)
        UnpackBits(layout, src, first, srcStep, count, static_cast<u16 *>(dst), dstStep);
    else
        UnpackBits(layout, src, first, srcStep, count, static_cast<u8 *>(dst), dstStep);
}

bool UnpacksInPlace(const TiffLayout &layout)
{
    return (layout.color == TiffColor::Gray || layout.color == TiffColor::Rgb) && layout.unpacked == layout.form;
}

void FinishRow(const TiffLayout &layout, ColorTransform *transform, void *unpacked, void *row)
{
    if (layout.unpacked.bits == 8)
        Finish(layout, transform, static_cast<std::uint8_t *>(unpacked), row);
    else if (layout.unpacked.bits == 16)
        Finish(layout, transform, static_cast<std::uint16_t *>(unpacked), row);
    else
        Finish(layout, transform, static_cast<float *>(unpacked), row);
}

} // namespace imagefile
