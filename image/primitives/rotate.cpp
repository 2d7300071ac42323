#include "rotate.h"

#include <algorithm>
#include <cmath>

namespace primitives {

namespace {

struct Pixel {
    Ipp32f channel[4];
};

/// Pixels of a block's side: a block reads as many source rows, each in another page, and both sides stay in the cache.
constexpr std::int64_t kBlockSide = 32;

/// first <= position < end.
struct Range {
    std::int64_t first;
    std::int64_t end;
};

Range Intersect(Range a, Range b)
{
    return {std::max(a.first, b.first), std::min(a.end, b.end)};
}

/// The target positions whose source position sign * (position - shift) lies in @p source.
Range ImageOf(Range source, int sign, std::int64_t shift)
{
    if (sign > 0)
        return {source.first + shift, source.end + shift};
    return {shift - source.end + 1, shift - source.first + 1};
}

/// The source position of target position (x, y) is (cosine * (x - shiftX) - sine * (y - shiftY),
/// sine * (x - shiftX) + cosine * (y - shiftY)).
template <typename T> struct Turn {
    T cosine;
    T sine;
    T shiftX;
    T shiftY;

    T SourceX(T x, T y) const { return cosine * (x - shiftX) - sine * (y - shiftY); }
    T SourceY(T x, T y) const { return sine * (x - shiftX) + cosine * (y - shiftY); }
};

/// The exact way for multiples of 90 degrees: moves pixels, in square blocks so that neither side leaves the cache.
void MovePixels(const Ipp32f *src, Step srcStep, Rect srcRect, Ipp32f *dst, Step dstStep, Rect dstRect,
                const Turn<std::int64_t> &turn)
{
    const Range srcX = {srcRect.x, std::int64_t(srcRect.x) + srcRect.width};
    const Range srcY = {srcRect.y, std::int64_t(srcRect.y) + srcRect.height};
    const Range wantedX = {dstRect.x, std::int64_t(dstRect.x) + dstRect.width};
    const Range wantedY = {dstRect.y, std::int64_t(dstRect.y) + dstRect.height};
    const bool exchanged = turn.cosine == 0; // source rows become target columns
    const Range dstX = Intersect(wantedX,
                                 exchanged ? ImageOf(srcY, turn.sine > 0 ? 1 : -1, turn.shiftX)
                                           : ImageOf(srcX, turn.cosine > 0 ? 1 : -1, turn.shiftX));
    const Range dstY = Intersect(wantedY,
                                 exchanged ? ImageOf(srcX, turn.sine > 0 ? -1 : 1, turn.shiftY)
                                           : ImageOf(srcY, turn.cosine > 0 ? 1 : -1, turn.shiftY));

    // Source bytes from one target column, and from one target row, to the next.
    constexpr std::int64_t kPixelBytes = sizeof(Pixel);
    const std::int64_t acrossBytes = turn.cosine * kPixelBytes + turn.sine * srcStep;
    for (std::int64_t blockY = dstY.first; blockY < dstY.end; blockY += kBlockSide) {
        for (std::int64_t blockX = dstX.first; blockX < dstX.end; blockX += kBlockSide) {
            const std::int64_t endX = std::min(blockX + kBlockSide, dstX.end);
            for (std::int64_t y = blockY; y < std::min(blockY + kBlockSide, dstY.end); ++y) {
                const Ipp32f *srcRow = RowAt(src, srcStep, turn.SourceY(blockX, y));
                const Pixel *from = reinterpret_cast<const Pixel *>(srcRow) + turn.SourceX(blockX, y);
                Pixel *to = reinterpret_cast<Pixel *>(RowAt(dst, dstStep, y));
                for (std::int64_t x = blockX; x < endX; ++x)
                    to[x] = *RowAt(from, acrossBytes, x - blockX);
            }
        }
    }
}

/// Catmull-Rom weights of the four neighbours at -1, 0, 1 and 2 for a position @p t from 0 to 1 (Keys 1981, a = -0.5).
void CubicWeights(float t, float weights[4])
{
    const float t2 = t * t, t3 = t2 * t;
    weights[0] = -0.5f * t3 + t2 - 0.5f * t;
    weights[1] = 1.5f * t3 - 2.5f * t2 + 1.0f;
    weights[2] = -1.5f * t3 + 2.0f * t2 + 0.5f * t;
    weights[3] = 0.5f * t3 - 0.5f * t2;
}

/// The source interpolated at a position within half a pixel of @p rect.
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

/// Whether a position belongs to one of @p count pixels from @p first on, centres at whole numbers.
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

bool IsWhole(double shift)
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
    if (std::floor(quarters) == quarters && IsWhole(shiftX) && IsWhole(shiftY)) {
        constexpr int kCosine[4] = {1, 0, -1, 0};
        const int quarter = static_cast<int>(quarters) % 4;
        MovePixels(src, srcStep, readRect, dst, dstStep, dstRect,
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
