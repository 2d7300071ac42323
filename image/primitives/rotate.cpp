#include "rotate.h"

#include "vectors.h"

#include <algorithm>
#include <cmath>

#if VITRELUX_VECTORS
#include <emmintrin.h>
#endif

namespace primitives {

namespace {

struct Pixel {
    Ipp32f channel[4];
};

/// Pixels per block side: this many source rows, each on a different page, are accessed at a time, and all four pixels
/// of a source cache line are used while the line is in the first-level cache.
constexpr std::int64_t kBlockSide = 16;

/// Targets of this size or more, 4 MiB, exceed the caches anyway, so writes bypass the caches.
constexpr std::int64_t kStreamedPixels = (std::int64_t(4) << 20) / std::int64_t(sizeof(Pixel));

void Store(Pixel *to, const Pixel &pixel)
{
    *to = pixel;
}

/// @p to must be aligned to 16 bytes.
void StorePastCache(Pixel *to, const Pixel &pixel)
{
#if VITRELUX_VECTORS
    _mm_stream_ps(to->channel, _mm_loadu_ps(pixel.channel));
#else
    Store(to, pixel);
#endif
}

/// Makes stores that bypass the caches visible to other threads.
void FinishStoresPastCache()
{
#if VITRELUX_VECTORS
    _mm_sfence();
#endif
}

/// Half-open: first <= position < end.
struct Range {
    std::int64_t first;
    std::int64_t end;
};

Range Intersect(Range a, Range b)
{
    return {std::max(a.first, b.first), std::min(a.end, b.end)};
}

/// Returns the target positions whose source position sign * (position - shift) lies in @p source.
Range ImageOf(Range source, int sign, std::int64_t shift)
{
    if (sign > 0)
        return {source.first + shift, source.end + shift};
    return {shift - source.end + 1, shift - source.first + 1};
}

/// Mapping from target positions back to source positions.
template <typename T> struct Turn {
    T cosine;
    T sine;
    T shiftX;
    T shiftY;

    T SourceX(T x, T y) const { return cosine * (x - shiftX) - sine * (y - shiftY); }
    T SourceY(T x, T y) const { return sine * (x - shiftX) + cosine * (y - shiftY); }
};

/// A rectangle of pixels, as ranges of columns and rows.
struct Region {
    Range x;
    Range y;
};

Region RegionOf(Rect rect)
{
    return {{rect.x, std::int64_t(rect.x) + rect.width}, {rect.y, std::int64_t(rect.y) + rect.height}};
}

/// Returns the part of @p dstRect that comes from @p srcRect under a rotation by a multiple of 90 degrees.
Region TargetRegion(Rect srcRect, Rect dstRect, const Turn<std::int64_t> &turn)
{
    const Region src = RegionOf(srcRect), wanted = RegionOf(dstRect);
    const int cosine = static_cast<int>(turn.cosine), sine = static_cast<int>(turn.sine);
    if (cosine == 0) // source rows become target columns
        return {Intersect(wanted.x, ImageOf(src.y, sine, turn.shiftX)),
                Intersect(wanted.y, ImageOf(src.x, -sine, turn.shiftY))};
    return {Intersect(wanted.x, ImageOf(src.x, cosine, turn.shiftX)),
            Intersect(wanted.y, ImageOf(src.y, cosine, turn.shiftY))};
}

/// Returns the first column at or after @p x, at most @p end, whose pixel starts a cache line. A partial line that
/// bypasses the caches costs a read and a write.
std::int64_t LineStart(const Pixel *row, std::int64_t x, std::int64_t end)
{
    constexpr std::uintptr_t kLineBytes = 64;
    const std::uintptr_t beyond = reinterpret_cast<std::uintptr_t>(row + x) % kLineBytes;
    return std::min<std::int64_t>(x + static_cast<std::int64_t>((kLineBytes - beyond) % kLineBytes / sizeof(Pixel)),
                                  end);
}

/// Rotates exactly by multiples of 90 degrees: moves pixels block by block.
template <void StorePixel(Pixel *, const Pixel &)>
void MovePixels(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, const Region &region,
                const Turn<std::int64_t> &turn)
{
    // Distance in bytes between the source pixels of adjacent target columns.
    const Step acrossStep = turn.cosine * std::int64_t(sizeof(Pixel)) + turn.sine * srcStep;
    for (std::int64_t blockX = region.x.first; blockX < region.x.end; blockX += kBlockSide) {
        // Blocks go down the target, along the same few source rows.
        for (std::int64_t y = region.y.first; y < region.y.end; ++y) {
            Pixel *to = reinterpret_cast<Pixel *>(RowAt(dst, dstStep, y));
            std::int64_t x = blockX == region.x.first ? blockX : LineStart(to, blockX, region.x.end);
            const std::int64_t endX = LineStart(to, std::min(blockX + kBlockSide, region.x.end), region.x.end);
            const auto *srcRow = reinterpret_cast<const Pixel *>(RowAt(src, srcStep, turn.SourceY(x, y)));
            const Pixel *from = srcRow + turn.SourceX(x, y);
            for (; x < endX; ++x, from = RowAt(from, acrossStep, 1))
                StorePixel(to + x, *from);
        }
    }
}

void RotateExactly(const Ipp32f *src, Step srcStep, Rect srcRect, Ipp32f *dst, Step dstStep, Rect dstRect,
                   const Turn<std::int64_t> &turn)
{
    const Region region = TargetRegion(srcRect, dstRect, turn);
    const std::int64_t columns = region.x.end - region.x.first, rows = region.y.end - region.y.first;
    if (columns < 1 || rows < 1)
        return;
    const bool aligned = (reinterpret_cast<std::uintptr_t>(dst) | static_cast<std::uint64_t>(dstStep)) % 16 == 0;
    if (aligned && columns * rows >= kStreamedPixels) { // < 2^62, because sides are below 2^31
        MovePixels<StorePastCache>(src, srcStep, dst, dstStep, region, turn);
        FinishStoresPastCache();
    } else {
        MovePixels<Store>(src, srcStep, dst, dstStep, region, turn);
    }
}

/// Computes Catmull-Rom weights of the four neighbors at -1, 0, 1 and 2 for a position @p t from 0 to 1 (Keys 1981, a =
/// -0.5).
void CubicWeights(float t, float weights[4])
{
    const float t2 = t * t, t3 = t2 * t;
    weights[0] = -0.5f * t3 + t2 - 0.5f * t;
    weights[1] = 1.5f * t3 - 2.5f * t2 + 1.0f;
    weights[2] = -1.5f * t3 + 2.0f * t2 + 0.5f * t;
    weights[3] = 0.5f * t3 - 0.5f * t2;
}

/// Interpolates the source at a position within half a pixel of @p rect.
Pixel SampleCubic(const Ipp32f *src, Step srcStep, Rect rect, double x, double y)
{
    const double floorX = std::floor(x), floorY = std::floor(y);
    float weightsX[4], weightsY[4];
    CubicWeights(static_cast<float>(x - floorX), weightsX);
    CubicWeights(static_cast<float>(y - floorY), weightsY);
    Pixel sum = {};
    for (int j = 0; j < 4; ++j) {
        const int row = std::clamp(static_cast<int>(floorY) + j - 1, rect.y, rect.y + rect.height - 1);
        const Pixel *srcRow = reinterpret_cast<const Pixel *>(RowAt(src, srcStep, row));
        for (int i = 0; i < 4; ++i) {
            const int column = std::clamp(static_cast<int>(floorX) + i - 1, rect.x, rect.x + rect.width - 1);
            const float weight = weightsX[i] * weightsY[j];
            for (int c = 0; c < 4; ++c)
                sum.channel[c] += weight * srcRow[column].channel[c];
        }
    }
    return sum;
}

/// Returns whether a position belongs to one of @p count pixels, the first centered on @p first.
bool IsWithin(double position, int first, int count)
{
    return position >= first - 0.5 && position < double(first) + count - 0.5;
}

void InterpolatePixels(const Ipp32f *src, Step srcStep, Rect srcRect, Ipp32f *dst, Step dstStep, Rect dstRect,
                       const Turn<double> &turn)
{
    for (int y = dstRect.y; y < dstRect.y + dstRect.height; ++y) {
        Pixel *dstRow = reinterpret_cast<Pixel *>(RowAt(dst, dstStep, y));
        for (int x = dstRect.x; x < dstRect.x + dstRect.width; ++x) {
            const double srcX = turn.SourceX(x, y), srcY = turn.SourceY(x, y);
            if (IsWithin(srcX, srcRect.x, srcRect.width) && IsWithin(srcY, srcRect.y, srcRect.height))
                dstRow[x] = SampleCubic(src, srcStep, srcRect, srcX, srcY);
        }
    }
}

bool IsWholeNumber(double shift)
{
    return std::floor(shift) == shift && std::fabs(shift) < 0x1p40; // far beyond any image, far below 2^63
}

Rect ClipTo(Rect rect, Size size)
{
    const int left = std::max(rect.x, 0), top = std::max(rect.y, 0);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t(rect.x) + rect.width, size.width);
    const std::int64_t bottom = std::min<std::int64_t>(std::int64_t(rect.y) + rect.height, size.height);
    return {left, top, static_cast<int>(std::max<std::int64_t>(right - left, 0)),
            static_cast<int>(std::max<std::int64_t>(bottom - top, 0))};
}

} // namespace

Status RotateFloat4(const Ipp32f *src, Size srcSize, Step srcStep, Rect srcRect, Ipp32f *dst, Step dstStep,
                    Rect dstRect, double angleDegrees, double shiftX, double shiftY, Interpolation interpolation)
{
    if (!src || !dst)
        return Status::NullPointer;
    const Rect readRect = ClipTo(srcRect, srcSize);
    if (CheckSize({readRect.width, readRect.height}) != Status::Ok || dstRect.width < 1 || dstRect.height < 1)
        return Status::BadSize;
    if (interpolation != kCubic || !std::isfinite(angleDegrees) || !std::isfinite(shiftX) || !std::isfinite(shiftY))
        return Status::BadArgument;

    const double turnDegrees = std::fmod(std::fmod(angleDegrees, 360.0) + 360.0, 360.0);
    const double quarters = turnDegrees / 90.0;
    if (std::floor(quarters) == quarters && IsWholeNumber(shiftX) && IsWholeNumber(shiftY)) {
        constexpr int kCosine[4] = {1, 0, -1, 0};
        const int quarter = static_cast<int>(quarters) % 4;
        RotateExactly(src, srcStep, readRect, dst, dstStep, dstRect,
                      {kCosine[quarter], kCosine[(quarter + 3) % 4], static_cast<std::int64_t>(shiftX),
                       static_cast<std::int64_t>(shiftY)});
        return Status::Ok;
    }
    constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;
    const double radians = turnDegrees * kRadiansPerDegree;
    InterpolatePixels(src, srcStep, readRect, dst, dstStep, dstRect,
                      {std::cos(radians), std::sin(radians), shiftX, shiftY});
    return Status::Ok;
}

} // namespace primitives
