// A box of the source as planes, for sharp sampling.
#pragma once

#include "SharpLimits_p.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace {

/// Columns and rows of the source, ends included. They may lie outside the picture, where its edges are repeated.
struct Bounds {
    int left, top, right, bottom;
};

struct BoxShape {
    static constexpr int kPadding = 16; // sampling and limits read and write full vectors

    explicit BoxShape(const Bounds &within)
        : bounds(within),
          width(within.right - within.left + 1),
          height(within.bottom - within.top + 1),
          stride((width + 2 * kPadding) / kPadding * kPadding)
    {
    }

    size_t Samples() const { return static_cast<size_t>(stride) * static_cast<size_t>(height); }
    size_t Row(int y) const { return static_cast<size_t>(stride) * static_cast<size_t>(y); }

    Bounds bounds;
    int width, height, stride;
};

/// Stored 16-bit values minus 32768. Sampling reads each value paired with the one below it, because processors
/// multiply and add such pairs in one instruction. Limits are pairs too, with the lower limit in the lower half.
struct CodePlane {
    std::vector<std::int16_t> values, halves; // rounded down
    std::vector<std::int32_t> pairs, limits;  // limits of halves

    void Grow(size_t samples)
    {
        if (values.size() >= samples)
            return;
        values.resize(samples);
        halves.resize(samples);
        pairs.resize(samples);
        limits.resize(samples);
    }
};

struct FloatPlane {
    std::vector<float> values, lowest, highest;

    void Grow(size_t samples)
    {
        if (values.size() >= samples)
            return;
        values.resize(samples);
        lowest.resize(samples);
        highest.resize(samples);
    }
};

/// The columns of a box that lie inside the picture; if none do, the one nearest to it.
struct Inside {
    Inside(const BoxShape &shape, int pictureWidth)
        : first(std::clamp(-shape.bounds.left, 0, shape.width - 1)),
          end(std::clamp(pictureWidth - shape.bounds.left, first + 1, shape.width))
    {
    }

    int first, end;
};

template <typename Value> VITRELUX_INLINE void RepeatEdges(Value *row, const Inside &inside, int width)
{
    std::fill(row, row + inside.first, row[inside.first]);
    std::fill(row + inside.end, row + width, row[inside.end - 1]);
}

/// Returns row @p y of the source, clamped to the picture, at column @p x; null if it isn't in memory.
inline const unsigned char *SourceRow(const FittedWarp::Band &band, int x, int y)
{
    const int row = std::clamp(y, 0, band.height - 1);
    if (row < band.heldFirst || row >= band.heldEnd)
        return nullptr;
    return band.source + row * band.sourceStride + std::int64_t(x) * band.pixelBytes;
}

VITRELUX_INLINE float LoadChannel(const unsigned char *pixel, int channel)
{
    float value;
    std::memcpy(&value, pixel + channel * int(sizeof value), sizeof value); // may be unaligned
    return value;
}

VITRELUX_INLINE std::int16_t CodeOf(float value)
{
    constexpr float kLowest = -32768.0F, kHighest = 32767.0F;
    float code = value * 65535.0F - 32768.0F;
    code = code > kLowest ? code : kLowest; // also for NaN
    code = code < kHighest ? code : kHighest;
    return static_cast<std::int16_t>(std::lrint(code));
}

VITRELUX_INLINE std::int32_t PairOf(std::int16_t low, std::int16_t high)
{
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(high) << 16)
                                     | (static_cast<std::uint32_t>(low) & 0xffffU));
}

#if VITRELUX_FITTED_VECTORS

/// Returns the codes of two pixels, eight including alpha's.
VITRELUX_INLINE __m128i CodesOfTwo(const unsigned char *pixels)
{
    const __m128 scale = _mm_set1_ps(65535.0F), lowest = _mm_set1_ps(-32768.0F);
    const __m128 first = _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(reinterpret_cast<const float *>(pixels)), scale), lowest);
    const __m128 second =
        _mm_add_ps(_mm_mul_ps(_mm_loadu_ps(reinterpret_cast<const float *>(pixels + kPixelBytes)), scale), lowest);
    return _mm_packs_epi32(_mm_cvtps_epi32(first), _mm_cvtps_epi32(second)); // saturates to 16 bits
}

VITRELUX_INLINE void StoreEight(std::int16_t *to, __m128i codes)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), codes);
}

/// Stores the codes of eight pixels by color.
VITRELUX_INLINE void SplitEight(const unsigned char *pixels, std::int16_t *red, std::int16_t *green, std::int16_t *blue)
{
    __m128i redGreen[2], blueAlpha[2]; // of four pixels each
    for (int half = 0; half < 2; ++half) {
        const __m128i first = CodesOfTwo(pixels + 4 * half * kPixelBytes),
                      second = CodesOfTwo(pixels + (4 * half + 2) * kPixelBytes);
        const __m128i even = _mm_unpacklo_epi16(first, second), odd = _mm_unpackhi_epi16(first, second);
        redGreen[half] = _mm_unpacklo_epi16(even, odd);
        blueAlpha[half] = _mm_unpackhi_epi16(even, odd);
    }
    StoreEight(red, _mm_unpacklo_epi64(redGreen[0], redGreen[1]));
    StoreEight(green, _mm_unpackhi_epi64(redGreen[0], redGreen[1]));
    StoreEight(blue, _mm_unpacklo_epi64(blueAlpha[0], blueAlpha[1]));
}

VITRELUX_INLINE void PairEight(const std::int16_t *low, const std::int16_t *high, std::int32_t *pairs)
{
    const __m128i lows = _mm_loadu_si128(reinterpret_cast<const __m128i *>(low));
    const __m128i highs = _mm_loadu_si128(reinterpret_cast<const __m128i *>(high));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs), _mm_unpacklo_epi16(lows, highs));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(pairs + 4), _mm_unpackhi_epi16(lows, highs));
}

#else

VITRELUX_INLINE void SplitEight(const unsigned char *pixels, std::int16_t *red, std::int16_t *green, std::int16_t *blue)
{
    for (int i = 0; i < 8; ++i) {
        red[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 0));
        green[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 1));
        blue[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 2));
    }
}

VITRELUX_INLINE void PairEight(const std::int16_t *low, const std::int16_t *high, std::int32_t *pairs)
{
    for (int i = 0; i < 8; ++i)
        pairs[i] = PairOf(low[i], high[i]);
}

#endif

/// Stores the codes of @p count pixels of RGB integers by color: those of the same values as floats.
template <typename Sample>
VITRELUX_INLINE void SplitStored(const unsigned char *pixels, int count, std::int16_t *__restrict red,
                                 std::int16_t *__restrict green, std::int16_t *__restrict blue)
{
    constexpr unsigned kScale = 65535U / std::numeric_limits<Sample>::max(), kHalf = 32768U;
    const auto *__restrict samples = reinterpret_cast<const Sample *>(pixels);
    for (int i = 0; i < count; ++i) {
        red[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(samples[3 * i] * kScale - kHalf));
        green[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(samples[3 * i + 1] * kScale - kHalf));
        blue[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(samples[3 * i + 2] * kScale - kHalf));
    }
}

/// Stores the codes of @p count pixels of float RGBA by color. Prefetches the next rows, @p stride bytes apart, which
/// the processor doesn't predict.
VITRELUX_INLINE void SplitRow(const unsigned char *pixels, std::int64_t stride, int count, std::int16_t *red,
                              std::int16_t *green, std::int16_t *blue)
{
    constexpr int kLineBytes = 64, kRowsAhead = 3;
    int i = 0;
    for (; i + 8 <= count; i += 8) {
        const unsigned char *ahead = pixels + i * kPixelBytes + kRowsAhead * stride;
        __builtin_prefetch(ahead);
        __builtin_prefetch(ahead + kLineBytes);
        SplitEight(pixels + i * kPixelBytes, red + i, green + i, blue + i);
    }
    for (; i < count; ++i) {
        red[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 0));
        green[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 1));
        blue[i] = CodeOf(LoadChannel(pixels + i * kPixelBytes, 2));
    }
}

/// Stores the lowest and highest allowed samples of cells as pairs.
template <typename Shorts> struct StorePairs {
    std::int32_t *limits;

    VITRELUX_INLINE void operator()(int x, const Limits<Shorts> &limit) const
    {
        constexpr int kLanes = sizeof(Shorts) / sizeof(std::int16_t);
        std::int16_t lowest[kLanes], highest[kLanes];
        std::memcpy(lowest, &limit.lowest, sizeof lowest);
        std::memcpy(highest, &limit.highest, sizeof highest);
        for (int i = 0; i < kLanes; i += 8)
            PairEight(lowest + i, highest + i, limits + x + i);
    }
};

/// Computes the pairs of all rows, and the limits of rows with a row before and two after them.
template <typename Shorts>
VITRELUX_INLINE void Complete(const BoxShape &shape, CodePlane *plane, AllowanceRows<std::int16_t> *rows)
{
    for (size_t i = 0; i < shape.Samples(); ++i)
        plane->halves[i] = static_cast<std::int16_t>(plane->values[i] >> 1);
    rows->Start<Shorts>(plane->halves.data() + shape.Row(1), shape.stride, shape.width);
    for (int y = 0; y + 1 < shape.height; ++y) {
        const std::int16_t *above = plane->values.data() + shape.Row(y);
        std::int32_t *pairs = plane->pairs.data() + shape.Row(y);
        for (int x = 0; x < shape.stride; x += 8)
            PairEight(above + x, above + shape.stride + x, pairs + x);
        if (y > 0 && y + 2 < shape.height)
            rows->Advance<Shorts>(plane->halves.data() + shape.Row(y), shape.stride, shape.width,
                                  StorePairs<Shorts>{plane->limits.data() + shape.Row(y)});
    }
}

template <typename Floats>
VITRELUX_INLINE void Complete(const BoxShape &shape, FloatPlane *plane, AllowanceRows<float> *rows)
{
    rows->Start<Floats>(plane->values.data() + shape.Row(1), shape.stride, shape.width);
    for (int y = 1; y + 2 < shape.height; ++y) {
        float *lowest = plane->lowest.data() + shape.Row(y), *highest = plane->highest.data() + shape.Row(y);
        rows->Advance<Floats>(plane->values.data() + shape.Row(y), shape.stride, shape.width,
                              [&](int x, const Limits<Floats> &limit) VITRELUX_INLINED {
                                  std::memcpy(lowest + x, &limit.lowest, sizeof limit.lowest);
                                  std::memcpy(highest + x, &limit.highest, sizeof limit.highest);
                              });
    }
}

/// Fills planes with colors as codes. Returns false if a row isn't in memory.
template <typename Shorts>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, CodePlane (&planes)[4],
                             AllowanceRows<std::int16_t> *allowances)
{
    for (int color = 0; color < 3; ++color)
        planes[color].Grow(shape.Samples());
    const Inside inside(shape, band.width);
    for (int y = 0; y < shape.height; ++y) {
        const unsigned char *source = SourceRow(band, shape.bounds.left + inside.first, shape.bounds.top + y);
        if (!source)
            return false;
        std::int16_t *const rows[] = {planes[0].values.data() + shape.Row(y), planes[1].values.data() + shape.Row(y),
                                      planes[2].values.data() + shape.Row(y)};
        std::int16_t *const red = rows[0] + inside.first, *const green = rows[1] + inside.first,
                            *const blue = rows[2] + inside.first;
        const int count = inside.end - inside.first;
        if (band.pixelBytes == kPixelBytes)
            SplitRow(source, band.sourceStride, count, red, green, blue);
        else if (band.pixelBytes == 3 * sizeof(std::uint8_t))
            SplitStored<std::uint8_t>(source, count, red, green, blue);
        else
            SplitStored<std::uint16_t>(source, count, red, green, blue);
        for (std::int16_t *row : rows)
            RepeatEdges(row, inside, shape.width);
    }
    for (int color = 0; color < 3; ++color)
        Complete<Shorts>(shape, &planes[color], allowances);
    return true;
}

/// Fills planes with colors; if @p kAlpha, these are premultiplied, and alpha is the fourth plane. Returns false if a
/// row isn't in memory.
template <typename Floats, bool kAlpha>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, FloatPlane (&planes)[4],
                             AllowanceRows<float> *allowances)
{
    constexpr int kPlanes = kAlpha ? 4 : 3;
    for (int i = 0; i < kPlanes; ++i)
        planes[i].Grow(shape.Samples());
    const Inside inside(shape, band.width);
    for (int y = 0; y < shape.height; ++y) {
        const unsigned char *source = SourceRow(band, shape.bounds.left + inside.first, shape.bounds.top + y);
        if (!source)
            return false;
        for (int channel = 0; channel < kPlanes; ++channel) {
            float *row = planes[channel].values.data() + shape.Row(y);
            for (int i = inside.first; i < inside.end; ++i) {
                const unsigned char *pixel = source + (i - inside.first) * kPixelBytes;
                const float value = LoadChannel(pixel, channel);
                row[i] = kAlpha && channel < 3 ? value * LoadChannel(pixel, 3) : value;
            }
            RepeatEdges(row, inside, shape.width);
        }
    }
    for (int i = 0; i < kPlanes; ++i)
        Complete<Floats>(shape, &planes[i], allowances);
    return true;
}

} // namespace
