// A box of the source in planes, for sharp sampling.
#pragma once

#include "SharpLimits_p.h"

#include <algorithm>
#include <vector>

namespace {

/// Columns and rows of the source; both ends belong to it. They may lie outside the picture, whose edges repeat.
struct Bounds {
    int left, top, right, bottom;
};

struct BoxShape {
    static constexpr int kPadding = 16; // sampling and limits read and write whole vectors

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

/// Stored values of 16 bits, less 32768. Sampling reads them in pairs of a value and the one below, since processors
/// multiply and add such pairs at once. Limits are pairs too, the lowest value in the lower half.
struct CodePlane {
    std::vector<std::int16_t> values;
    std::vector<std::int32_t> pairs, limits;

    void Grow(size_t samples)
    {
        if (values.size() >= samples)
            return;
        values.resize(samples);
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

/// The columns of a box that the picture has too; at least one, at an edge, where it has none.
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

/// Row @p y of the source at column @p x, or the nearest row that the picture has; null if it isn't in memory.
inline const float *SourceRow(const FittedWarp::Band &band, int x, int y)
{
    const int row = std::clamp(y, 0, band.height - 1);
    if (row < band.heldFirst || row >= band.heldEnd)
        return nullptr;
    return reinterpret_cast<const float *>(band.source + row * band.sourceStride + std::int64_t(x) * kPixelBytes);
}

VITRELUX_INLINE std::int16_t CodeOf(float value)
{
    value = value > 0.0F ? value : 0.0F; // also what is not a number
    value = value < 1.0F ? value : 1.0F;
    return static_cast<std::int16_t>(static_cast<int>(value * 65535.0F + 0.5F) - 32768);
}

VITRELUX_INLINE std::int32_t PairOf(std::int16_t low, std::int16_t high)
{
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(high) << 16)
                                     | (static_cast<std::uint32_t>(low) & 0xffffU));
}

/// Makes pairs of rows, and limits where rows before and after are there.
template <typename Shorts> VITRELUX_INLINE void Complete(const BoxShape &shape, CodePlane *plane)
{
    constexpr int kLanes = sizeof(Shorts) / sizeof(std::int16_t);
    for (int y = 0; y + 1 < shape.height; ++y) {
        const std::int16_t *above = plane->values.data() + shape.Row(y), *below = above + shape.stride;
        std::int32_t *pairs = plane->pairs.data() + shape.Row(y), *limits = plane->limits.data() + shape.Row(y);
        for (int x = 0; x < shape.stride; ++x)
            pairs[x] = PairOf(above[x], below[x]);
        if (y < 1 || y + 2 >= shape.height)
            continue;
        for (int x = 1; x < shape.width - 2; x += kLanes) {
            const auto limit = LimitsAt<Shorts>(above + x, shape.stride);
            std::int16_t lowest[kLanes], highest[kLanes];
            std::memcpy(lowest, &limit.lowest, sizeof lowest);
            std::memcpy(highest, &limit.highest, sizeof highest);
            for (int i = 0; i < kLanes; ++i)
                limits[x + i] = PairOf(lowest[i], highest[i]);
        }
    }
}

template <typename Floats> VITRELUX_INLINE void Complete(const BoxShape &shape, FloatPlane *plane)
{
    constexpr int kLanes = sizeof(Floats) / sizeof(float);
    for (int y = 1; y + 2 < shape.height; ++y) {
        for (int x = 1; x < shape.width - 2; x += kLanes) {
            const size_t at = shape.Row(y) + static_cast<size_t>(x);
            const auto limit = LimitsAt<Floats>(plane->values.data() + at, shape.stride);
            std::memcpy(plane->lowest.data() + at, &limit.lowest, sizeof limit.lowest);
            std::memcpy(plane->highest.data() + at, &limit.highest, sizeof limit.highest);
        }
    }
}

/// Colors as codes. False if a row isn't in memory.
template <typename Shorts>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, CodePlane (&planes)[4])
{
    for (int color = 0; color < 3; ++color)
        planes[color].Grow(shape.Samples());
    const Inside inside(shape, band.width);
    for (int y = 0; y < shape.height; ++y) {
        const float *source = SourceRow(band, shape.bounds.left + inside.first, shape.bounds.top + y);
        if (!source)
            return false;
        std::int16_t *const rows[] = {planes[0].values.data() + shape.Row(y), planes[1].values.data() + shape.Row(y),
                                      planes[2].values.data() + shape.Row(y)};
        for (int i = inside.first; i < inside.end; ++i, source += 4)
            for (int color = 0; color < 3; ++color)
                rows[color][i] = CodeOf(source[color]);
        for (std::int16_t *row : rows)
            RepeatEdges(row, inside, shape.width);
    }
    for (int color = 0; color < 3; ++color)
        Complete<Shorts>(shape, &planes[color]);
    return true;
}

/// Colors, premultiplied if @p kAlpha and then followed by alpha. False if a row isn't in memory.
template <typename Floats, bool kAlpha>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, FloatPlane (&planes)[4])
{
    constexpr int kPlanes = kAlpha ? 4 : 3;
    for (int i = 0; i < kPlanes; ++i)
        planes[i].Grow(shape.Samples());
    const Inside inside(shape, band.width);
    for (int y = 0; y < shape.height; ++y) {
        const float *source = SourceRow(band, shape.bounds.left + inside.first, shape.bounds.top + y);
        if (!source)
            return false;
        for (int channel = 0; channel < kPlanes; ++channel) {
            float *row = planes[channel].values.data() + shape.Row(y);
            for (int i = inside.first; i < inside.end; ++i) {
                const float *pixel = source + 4 * (i - inside.first);
                row[i] = kAlpha && channel < 3 ? pixel[channel] * pixel[3] : pixel[channel];
            }
            RepeatEdges(row, inside, shape.width);
        }
    }
    for (int i = 0; i < kPlanes; ++i)
        Complete<Floats>(shape, &planes[i]);
    return true;
}

} // namespace
