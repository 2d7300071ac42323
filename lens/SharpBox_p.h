// Box of source pixels as planes, for sharp sampling.
#pragma once

#include "SharpSplit_p.h"

#include <algorithm>
#include <vector>

namespace {

/// Columns and rows of the source, ends included. They may lie outside the picture, where its edges are repeated.
struct Bounds {
    int left, top, right, bottom;
};

/// Size of a box, and of its planes, whose pixels have @p step values each.
struct BoxShape {
    static constexpr int kPadding = 16; // sampling and limits read and write full vectors

    BoxShape(const Bounds &within, int step)
        : bounds(within),
          width(within.right - within.left + 1),
          height(within.bottom - within.top + 1),
          stride((width * step + 2 * kPadding) / kPadding * kPadding)
    {
    }

    size_t Samples() const { return static_cast<size_t>(stride) * static_cast<size_t>(height); }
    size_t Row(int y) const { return static_cast<size_t>(stride) * static_cast<size_t>(y); }

    Bounds bounds;
    int width, height; // pixels
    int stride;        // values
};

/// Stored 16-bit values minus 32768. Sampling reads each value paired with the one below it, because processors
/// multiply and add such pairs in one instruction. Limits are pairs, too, with the lower limit in the lower half.
struct CodePlane {
    std::vector<std::int16_t> values, halves; // halves are rounded down
    std::vector<std::int32_t> pairs, limits;  // limits of the halved values

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

/// Columns of a box inside the picture; the nearest one if there are none.
struct Inside {
    Inside(const BoxShape &shape, int pictureWidth)
        : first(std::clamp(-shape.bounds.left, 0, shape.width - 1)),
          end(std::clamp(pictureWidth - shape.bounds.left, first + 1, shape.width))
    {
    }

    int first, end;
};

template <int kStep, typename Value> VITRELUX_INLINE void RepeatEdges(Value *row, const Inside &inside, int width)
{
    const auto copy = [&](int from, int to)
                          VITRELUX_INLINED { std::copy_n(row + from * kStep, kStep, row + to * kStep); };
    for (int x = 0; x < inside.first; ++x)
        copy(inside.first, x);
    for (int x = inside.end; x < width; ++x)
        copy(inside.end - 1, x);
}

/// Returns row @p y of the source, clamped to the picture, at column @p x; null if it isn't in memory.
inline const unsigned char *SourceRow(const FittedWarp::Band &band, int x, int y)
{
    const int row = std::clamp(y, 0, band.height - 1);
    if (row < band.heldFirst || row >= band.heldEnd)
        return nullptr;
    return band.source + row * band.sourceStride + std::int64_t(x) * band.pixelBytes;
}

/// Function object that stores the lowest and highest allowed samples of cells as pairs.
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

/// Computes the pairs of all rows except the last, and the limits of rows with one row before and two after them.
template <typename Shorts, int kStep>
VITRELUX_INLINE void Complete(const BoxShape &shape, CodePlane *plane, AllowanceRows<std::int16_t, kStep> *rows)
{
    for (size_t i = 0; i < shape.Samples(); ++i)
        plane->halves[i] = static_cast<std::int16_t>(plane->values[i] >> 1);
    rows->template Start<Shorts>(plane->halves.data() + shape.Row(1), shape.stride, shape.width);
    for (int y = 0; y + 1 < shape.height; ++y) {
        const std::int16_t *above = plane->values.data() + shape.Row(y);
        std::int32_t *pairs = plane->pairs.data() + shape.Row(y);
        for (int x = 0; x < shape.stride; x += 8)
            PairEight(above + x, above + shape.stride + x, pairs + x);
        if (y > 0 && y + 2 < shape.height)
            rows->template Advance<Shorts>(plane->halves.data() + shape.Row(y), shape.stride, shape.width,
                                           StorePairs<Shorts>{plane->limits.data() + shape.Row(y)});
    }
}

template <typename Floats>
VITRELUX_INLINE void Complete(const BoxShape &shape, FloatPlane *plane, AllowanceRows<float, 1> *rows)
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

/// Fills the first plane with pixels of three codes. Returns false if a source row isn't in memory.
template <typename Shorts>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, CodePlane (&planes)[4],
                             AllowanceRows<std::int16_t, kTogether> *allowances)
{
    CodePlane &plane = planes[0];
    plane.Grow(shape.Samples());
    const Inside inside(shape, band.width);
    for (int y = 0; y < shape.height; ++y) {
        const unsigned char *source = SourceRow(band, shape.bounds.left + inside.first, shape.bounds.top + y);
        if (!source)
            return false;
        std::int16_t *const row = plane.values.data() + shape.Row(y), *const to = row + inside.first * kTogether;
        const int count = inside.end - inside.first;
        if (band.pixelBytes == kPixelBytes)
            PackRow(source, band.sourceStride, count, to);
        else if (band.pixelBytes == 3 * sizeof(std::uint8_t))
            PackStored<std::uint8_t>(source, count, to);
        else
            PackStored<std::uint16_t>(source, count, to);
        RepeatEdges<kTogether>(row, inside, shape.width);
    }
    Complete<Shorts>(shape, &plane, allowances);
    return true;
}

/// Fills three planes with codes, one per color. Returns false if a source row isn't in memory.
template <typename Shorts>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, CodePlane (&planes)[4],
                             AllowanceRows<std::int16_t, 1> *allowances)
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
            RepeatEdges<1>(row, inside, shape.width);
    }
    for (int color = 0; color < 3; ++color)
        Complete<Shorts>(shape, &planes[color], allowances);
    return true;
}

/// Fills three planes with colors or, with @p kAlpha, four planes with premultiplied colors and alpha. Returns false if
/// a source row isn't in memory.
template <typename Floats, bool kAlpha>
VITRELUX_INLINE bool FillBox(const FittedWarp::Band &band, const BoxShape &shape, FloatPlane (&planes)[4],
                             AllowanceRows<float, 1> *allowances)
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
            RepeatEdges<1>(row, inside, shape.width);
        }
    }
    for (int i = 0; i < kPlanes; ++i)
        Complete<Floats>(shape, &planes[i], allowances);
    return true;
}

} // namespace
