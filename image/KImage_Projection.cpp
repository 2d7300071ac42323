#include "KImage.h"

#include "KImage_p.h"
#include "PixelSampler_p.h"

#include <QRgb>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

struct Position {
    float x, y;
};

// --- Sphere ---

/// The image circle of a frame, and half its angle of view.
struct FisheyeCircle {
    double radius, offsetX, offsetY;
    double halfAngleRad;
};

/// Mapping from directions to positions in an equidistant fisheye frame: the distance from the circle's center is
/// proportional to the angle from the axis.
class EquidistantLens {
public:
    EquidistantLens(const KImage &frame, const FisheyeCircle &circle)
        : m_centerX(static_cast<float>((frame.width() - 1) / 2.0 + circle.offsetX)),
          m_centerY(static_cast<float>((frame.height() - 1) / 2.0 + circle.offsetY)),
          m_pixelsPerRadian(static_cast<float>(circle.radius / circle.halfAngleRad)),
          m_halfAngleRad(static_cast<float>(circle.halfAngleRad))
    {
    }

    /// Returns the position for a direction (x to the right, y up, z along the axis); NaN outside the lens's view.
    Position PositionOf(float x, float y, float z) const
    {
        const float fromAxis = std::sqrt(x * x + y * y), angle = atan2f(fromAxis, z);
        if (!(angle <= m_halfAngleRad))
            return {NAN, NAN};
        const float scale = fromAxis > 0 ? m_pixelsPerRadian * angle / fromAxis : 0;
        return {m_centerX + scale * x, m_centerY - scale * y};
    }

private:
    float m_centerX, m_centerY, m_pixelsPerRadian, m_halfAngleRad;
};

/// Fills row @p y of the sphere, at @p latitudeRad, from an RGBA frame.
template <typename T>
void ProjectRow(const PixelSampler<T> &frame, const EquidistantLens &lens, float latitudeRad, KImage &sphere, int y)
{
    float sinLatitude, cosLatitude, sinLongitude, cosLongitude;
    sincosf(latitudeRad, &sinLatitude, &cosLatitude);
    const int width = sphere.width();
    for (int x = 0; x < width; ++x) {
        sincosf(static_cast<float>(((x + 0.5) / width - 0.5) * 2 * M_PI), &sinLongitude, &cosLongitude);
        const Position from = lens.PositionOf(cosLatitude * sinLongitude, sinLatitude, cosLatitude * cosLongitude);
        float rgba[4] = {};
        if (frame.Contains(from.x, from.y))
            frame.Read(from.x, from.y, 0, 4, rgba);
        for (size_t c = 0; c < 4; ++c)
            StoreComponent<T>(sphere.getData(x, y) + c * sizeof(T), rgba[c]);
    }
}

void ProjectToSphere(const KImage &frame, const FisheyeCircle &circle, int width, KImage &sphere)
{
    const int bits = frame.bitsPerComponent() == 8 ? 8 : 32;
    if (frame.type() != GFL_RGBA || frame.bitsPerComponent() != bits) {
        KImage rgba;
        frame.Convert(rgba, GFL_RGBA, bits);
        ProjectToSphere(rgba, circle, width, sphere);
        return;
    }
    const EquidistantLens lens(frame, circle);
    const int height = width / 2;
    sphere.AllocBitmap(width, height, GFL_RGBA, bits, /*clear=*/false, nullptr, 0);
    WithSampler(frame, [&](const auto &sampler) {
        for (int y = 0; y < height; ++y)
            ProjectRow(sampler, lens, static_cast<float>((0.5 - (y + 0.5) / height) * M_PI), sphere, y);
    });
}

// --- Radial model ---

/// Mapping from radius r to scale * r (1 + k1 r^2 + k2 r^4 + k3 r^6) about a center, or its inverse.
class RadialModel {
public:
    RadialModel(const KImage &image, const float (&k)[3], float scale, Position offset, bool isInverse)
        : m_k1(k[0]),
          m_k2(k[1]),
          m_k3(k[2]),
          m_scale(scale),
          m_isInverse(isInverse),
          m_center({static_cast<float>(image.width() - 1) / 2 + offset.x,
                    static_cast<float>(image.height() - 1) / 2 + offset.y}),
          m_unitPx(static_cast<float>(std::hypot(image.width(), image.height()) / 2))
    {
    }

    /// Returns NaN where the model has no inverse.
    Position PositionOf(float x, float y) const
    {
        const float dx = x - m_center.x, dy = y - m_center.y, r = std::sqrt(dx * dx + dy * dy) / m_unitPx;
        const float factor = m_isInverse ? 1 / (m_scale * InverseFactor(r / m_scale))
                                         : m_scale * static_cast<float>(Factor(double(r * r)));
        return {m_center.x + factor * dx, m_center.y + factor * dy};
    }

private:
    double Factor(double r2) const { return 1 + r2 * (m_k1 + r2 * (m_k2 + r2 * m_k3)); }

    /// Returns the factor at the radius r that maps to @p radius, found by Newton's method starting from @p radius.
    /// Beyond a fold of the model, the method finds wrong or negative radii, which are rejected.
    float InverseFactor(float radius) const
    {
        double r = static_cast<double>(radius);
        for (int i = 0; i < 20; ++i) {
            const double r2 = r * r, factor = Factor(r2);
            const double slope = 1 + r2 * (3 * m_k1 + r2 * (5 * m_k2 + r2 * 7 * m_k3));
            const double excess = r * factor - static_cast<double>(radius);
            if (std::fabs(excess) <= 1e-6 * static_cast<double>(radius))
                return r >= 0 && slope > 0 ? static_cast<float>(factor) : NAN;
            r -= excess / slope;
        }
        return NAN;
    }

    double m_k1, m_k2, m_k3;
    float m_scale;
    bool m_isInverse;
    Position m_center;
    float m_unitPx;
};

enum class Outside { Zero, NearestEdge };

/// Remaps the channels [first, end) of @p image.
void Remap(KImage &image, const RadialModel &model, int first, int end, Outside outside)
{
    const KImage source(image);
    WithSampler(source, [&](const auto &sampler) {
        using T = typename std::decay_t<decltype(sampler)>::Component;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const Position from = model.PositionOf(static_cast<float>(x), static_cast<float>(y));
                float values[4] = {};
                if (sampler.Contains(from.x, from.y) || (outside == Outside::NearestEdge && from.x == from.x))
                    sampler.Read(from.x, from.y, first, end, values);
                for (int c = first; c < end; ++c)
                    StoreComponent<T>(image.getData(x, y) + size_t(c) * sizeof(T), values[c - first]);
            }
        }
    });
}

bool AllFinite(std::initializer_list<float> values)
{
    return std::all_of(values.begin(), values.end(), [](float value) { return std::isfinite(value); });
}

// --- Discs ---

/// Blends a pixel's channels toward a color with components from 0 to 1; a gray pixel toward the color's luma.
template <typename T> void PaintPixel(unsigned char *pixel, int channels, const float rgba[4], float share)
{
    const float luma = Luma(rgba, 4);
    for (int c = 0; c < channels; ++c) {
        unsigned char *at = pixel + size_t(c) * sizeof(T);
        const float old = LoadComponent<T>(at), full = kFullValue<T>;
        // As in "over" compositing, painting makes covered pixels more opaque.
        const float wanted = c == 3 ? full : full * (channels == 1 ? luma : rgba[c]);
        StoreComponent<T>(at, share < 1 ? old + (wanted - old) * share : wanted); // overwrites even NaN
    }
}

} // namespace

void KImage::CircularFiskeyeToSpherical(int width, float degrees, KImage &target) const
{
    CheckWorkingPixels(*this);
    if (width < 2 || !(degrees > 0 && degrees <= 360) || &target == this)
        KThrow(kInvalidParameter);
    FisheyeCircle circle;
    circle.halfAngleRad = static_cast<double>(degrees) * M_PI / 360;
    GetFisheyeRadiusOffset(circle.radius, circle.offsetX, circle.offsetY);
    if (!(circle.radius > 0))
        KThrow(kInvalidBitmap);
    ProjectToSphere(*this, circle, width, target);
}

void KImage::CircularCateyeToSpherical(int width, double radius, double offsetX, double offsetY, KImage &target) const
{
    CheckWorkingPixels(*this);
    if (width < 2 || !(radius > 0) || !std::isfinite(radius) || !std::isfinite(offsetX) || !std::isfinite(offsetY)
        || &target == this)
        KThrow(kInvalidParameter);
    ProjectToSphere(*this, {radius, offsetX, offsetY, M_PI / 2}, width, target);
}

void KImage::PutPoint(float x, float y, float radius, int color)
{
    CheckWorkingPixels(*this);
    if (!AllFinite({x, y, radius}) || radius < 0)
        KThrow(kInvalidParameter);
    const QRgb paint = static_cast<QRgb>(color);
    const float rgba[4] = {static_cast<float>(qRed(paint)) / 255, static_cast<float>(qGreen(paint)) / 255,
                           static_cast<float>(qBlue(paint)) / 255, static_cast<float>(qAlpha(paint)) / 255};
    const auto put = bitsPerComponent() == 8 ? PaintPixel<quint8>
        : bitsPerComponent() == 16           ? PaintPixel<quint16>
                                             : PaintPixel<float>;
    // Clamp before the conversion to integers.
    const auto within = [](float value, int size) {
        return static_cast<int>(qBound(0.0, static_cast<double>(value), static_cast<double>(size)));
    };
    for (int row = within(y - radius, height()); row < within(y + radius + 2, height()); ++row) {
        for (int column = within(x - radius, width()); column < within(x + radius + 2, width()); ++column) {
            const float distance = std::hypot(static_cast<float>(column) - x, static_cast<float>(row) - y);
            const float cover = qBound(0.0f, radius + 0.5f - distance, 1.0f); // antialiased: the edge is one pixel wide
            if (cover > 0)
                put(getData(column, row), m_bitmap->ComponentsPerPixel, rgba, cover * rgba[3]);
        }
    }
}

void KImage::Optical(float k1, float k2, float k3, float offsetX, float offsetY, int direction)
{
    CheckWorkingPixels(*this);
    if (!AllFinite({k1, k2, k3, offsetX, offsetY}))
        KThrow(kInvalidParameter);
    const RadialModel model(*this, {k1, k2, k3}, /*scale=*/1, {offsetX, offsetY}, direction != 0);
    Remap(*this, model, 0, m_bitmap->ComponentsPerPixel, Outside::Zero);
}

void KImage::Optical2(float k1, float k2, float k3, char channel, float scale, int direction)
{
    CheckWorkingPixels(*this);
    constexpr char kNames[] = "RGBA";
    const char *name = channel ? std::strchr(kNames, channel) : nullptr;
    const int index = name ? static_cast<int>(name - kNames) : -1;
    if (!AllFinite({k1, k2, k3, scale}) || !(scale > 0) || index < 0 || index >= m_bitmap->ComponentsPerPixel)
        KThrow(kInvalidParameter);
    const RadialModel model(*this, {k1, k2, k3}, scale, {0, 0}, direction != 0);
    Remap(*this, model, index, index + 1, Outside::NearestEdge);
}
