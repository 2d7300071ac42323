// Block of interleaved samples with gaps between its rows, for tests of primitives.
#pragma once

#include "types.h"

#include <QtTest>

#include <random>
#include <vector>

/// Plane of @p C channels. kGap samples after each row, and kGap whole rows before and after, lie outside the plane and
/// contain noise.
template <typename T, int C> class Plane {
public:
    static constexpr int kGap = 3;

    Plane(int width, int height, unsigned seed = 0)
        : m_width(width),
          m_height(height),
          m_samples(static_cast<std::size_t>((width * C + kGap) * (height + 2 * kGap)))
    {
        std::mt19937 random(seed);
        for (T &sample : m_samples)
            sample = std::is_floating_point_v<T> ? static_cast<T>(static_cast<double>(random()) * 0x1p-31 - 0.5)
                                                 : static_cast<T>(random());
    }

    T *Data() { return m_samples.data() + kGap * RowSamples(); }
    primitives::Step StepBytes() const { return RowSamples() * primitives::Step(sizeof(T)); }
    primitives::Size Size() const { return {m_width, m_height}; }
    T &At(int x, int y, int c = 0) { return Data()[y * RowSamples() + x * C + c]; }

    /// Returns whether everything outside the pixels is the same as in @p other.
    bool HasGapsOf(const Plane &other) const
    {
        const int rows = m_height + 2 * kGap;
        for (int row = 0; row < rows; ++row) {
            const bool inside = row >= kGap && row < rows - kGap;
            for (int i = inside ? m_width * C : 0; i < RowSamples(); ++i) {
                const auto at = static_cast<std::size_t>(row * RowSamples() + i);
                if (m_samples[at] != other.m_samples[at])
                    return false;
            }
        }
        return true;
    }

private:
    int RowSamples() const { return m_width * C + kGap; }

    int m_width;
    int m_height;
    std::vector<T> m_samples;
};

/// Returns a function that reads samples, for CompareSamples.
template <typename T, int C> auto Reader(Plane<T, C> &plane)
{
    return [&plane](int x, int y, int c) { return plane.At(x, y, c); };
}

/// Fails the running test unless got(x, y, c) is within @p tolerance of wanted(x, y, c) for all pixels.
template <typename Got, typename Wanted>
void CompareSamples(primitives::Size size, int channels, Got got, Wanted wanted, double tolerance)
{
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            for (int c = 0; c < channels; ++c) {
                const double actual = static_cast<double>(got(x, y, c)),
                             expected = static_cast<double>(wanted(x, y, c));
                if (!(std::fabs(actual - expected) <= tolerance))
                    QFAIL(qPrintable(QStringLiteral("(%1, %2), channel %3: expected %4, got %5")
                                         .arg(x)
                                         .arg(y)
                                         .arg(c)
                                         .arg(expected)
                                         .arg(actual)));
            }
        }
    }
}
