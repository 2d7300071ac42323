// Bilinear sampling between the pixels of an image at any depth, for remapping and measuring.
#pragma once

#include "KImage_p.h"
#include "types.h"

#include <cmath>
#include <cstring>

/// Reads one component of a pixel, at any alignment: a wrapped block may have any stride.
template <typename T> float LoadComponent(const unsigned char *at)
{
    T value;
    std::memcpy(&value, at, sizeof(T));
    return static_cast<float>(value);
}
template <typename T> void StoreComponent(unsigned char *at, float value)
{
    const T stored = primitives::Saturate<T>(value);
    std::memcpy(at, &stored, sizeof(T));
}

/// Value that represents 1.0 at a depth.
template <typename T>
constexpr float kFullValue = std::is_floating_point_v<T> ? 1.0f : float(std::numeric_limits<T>::max());

/// Sampler for an image with components of type @p T. Pixel centers are at integers; in the outer half of an edge
/// pixel, samples repeat the edge. Must not outlive the image's pixels.
template <typename T> class PixelSampler {
public:
    using Component = T;

    explicit PixelSampler(const KImage &image)
        : m_image(image), m_right(NotAbove(image.width() - 1)), m_bottom(NotAbove(image.height() - 1))
    {
    }

    int Channels() const { return m_image.m_bitmap->ComponentsPerPixel; }

    /// Returns whether a position is inside; NaN is not.
    bool Contains(float x, float y) const
    {
        return x >= -0.5f && y >= -0.5f && x <= m_right + 0.5f && y <= m_bottom + 0.5f;
    }

    /// Reads the channels [first, end) at a position into @p values, starting at index 0; positions outside are clamped
    /// to the nearest inside.
    void Read(float x, float y, int first, int end, float *values) const
    {
        const float left = qBound(0.0f, x, m_right), top = qBound(0.0f, y, m_bottom);
        const int x0 = static_cast<int>(left), y0 = static_cast<int>(top);
        const int x1 = qMin(x0 + 1, m_image.width() - 1), y1 = qMin(y0 + 1, m_image.height() - 1);
        const float toRight = left - static_cast<float>(x0), toBottom = top - static_cast<float>(y0);
        const unsigned char *corners[4] = {m_image.getData(x0, y0), m_image.getData(x1, y0), m_image.getData(x0, y1),
                                           m_image.getData(x1, y1)};
        for (int c = first; c < end; ++c) {
            const auto at = [&](int i) { return LoadComponent<T>(corners[i] + size_t(c) * sizeof(T)); };
            const float above = at(0) + (at(1) - at(0)) * toRight, below = at(2) + (at(3) - at(2)) * toRight;
            values[c - first] = above + (below - above) * toBottom;
        }
    }

private:
    /// Returns the nearest float not above @p position: floats represent all integers only up to 2^24.
    static float NotAbove(int position)
    {
        const auto nearest = static_cast<float>(position);
        return static_cast<double>(nearest) > position ? std::nextafter(nearest, 0.0f) : nearest;
    }

    const KImage &m_image;
    float m_right;
    float m_bottom;
};

/// Calls use(sampler) with the sampler for an image's depth.
template <typename Use> void WithSampler(const KImage &image, Use use)
{
    if (image.bitsPerComponent() == 8)
        use(PixelSampler<quint8>(image));
    else if (image.bitsPerComponent() == 16)
        use(PixelSampler<quint16>(image));
    else
        use(PixelSampler<float>(image));
}
