// Sampling quality: how well the correction of a wide-angle lens preserves waves and edges.
#pragma once

#include "CorrectionTwin.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

/// Function that renders a gray picture, stored row by row, with a correction of the same size.
using GrayRenderer = std::function<std::vector<double>(const std::vector<double> &, const Correction &)>;

struct SamplingQuality {
    double contrast;    // amplitude of the expected wave, relative to the source
    double falseDetail; // root mean square of the remainder, relative to the ideal wave
};

constexpr int kQualitySide = 256;
constexpr int kQualityBorder = 24; // pixels on each side that are not measured
constexpr double kPi = 3.14159265358979323846;

/// Returns a correction of 4 % barrel distortion with a slight enlargement, so that all sampling phases occur.
inline Correction QualityLens()
{
    Correction correction;
    correction.width = correction.height = kQualitySide;
    std::vector<double> factor;
    for (int i = 0; i <= 64; ++i) {
        const double u = i / 64.0; // the squared radius; 1 is at 200 pixels
        factor.push_back(0.98 * (1.0 - 0.09 * u + 0.03 * u * u));
    }
    correction.geometry = RadialMap{126.3, 128.9, RadialCurve(200.0 * 200.0 / 64.0, factor)};
    return correction;
}

template <typename Function> std::vector<double> QualityPicture(Function at)
{
    std::vector<double> gray;
    for (int i = 0; i < kQualitySide * kQualitySide; ++i)
        gray.push_back(at(i % kQualitySide, i / kQualitySide));
    return gray;
}

/// Least-squares fit of a + b cos + c sin to a block.
struct WaveFit {
    double matrix[3][4] = {};

    void Add(double phase, double value)
    {
        const double base[3] = {1.0, std::cos(phase), std::sin(phase)};
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                matrix[i][j] += base[i] * base[j];
            matrix[i][3] += base[i] * value;
        }
    }

    /// Solves for a, b and c, and leaves them in the last column. Call it only once.
    void Solve()
    {
        for (int i = 0; i < 3; ++i)
            for (int row = 0; row < 3; ++row) {
                const double times = row == i ? 0.0 : matrix[row][i] / matrix[i][i];
                for (int column = 0; column < 4; ++column)
                    matrix[row][column] -= times * matrix[i][column];
            }
        for (int i = 0; i < 3; ++i)
            matrix[i][3] /= matrix[i][i];
    }
};

/// Measures a wave of @p frequency cycles per pixel in the direction @p angle (radians from the x axis). Compares the
/// result, block by block, with the wave at the source positions of its pixels.
inline SamplingQuality QualityOf(const GrayRenderer &render, double frequency, double angle)
{
    constexpr double kAmplitude = 0.4;
    constexpr int kBlock = 16;
    const double alongX = 2.0 * kPi * frequency * std::cos(angle), alongY = 2.0 * kPi * frequency * std::sin(angle);
    const auto phaseAt = [&](double x, double y) { return alongX * x + alongY * y + 0.3; };
    const Correction lens = QualityLens();
    const CorrectionTwin twin(lens);
    const std::vector<double> result =
        render(QualityPicture([&](int x, int y) { return 0.5 + kAmplitude * std::cos(phaseAt(x, y)); }), lens);
    double contrast = 0.0, rest = 0.0, ideal = 0.0;
    int blocks = 0;
    const auto forPixels = [&](int blockX, int blockY, auto work) {
        for (int i = 0; i < kBlock * kBlock; ++i) {
            const int x = blockX + i % kBlock, y = blockY + i / kBlock;
            const SourcePlaces::Point place = twin.At(x, y).green;
            work(phaseAt(place.x, place.y), result[static_cast<size_t>(y * kQualitySide + x)]);
        }
    };
    for (int y = kQualityBorder; y + kBlock <= kQualitySide - kQualityBorder; y += kBlock) {
        for (int x = kQualityBorder; x + kBlock <= kQualitySide - kQualityBorder; x += kBlock) {
            WaveFit fit;
            forPixels(x, y, [&](double phase, double value) { fit.Add(phase, value); });
            fit.Solve();
            const double a = fit.matrix[0][3], b = fit.matrix[1][3], c = fit.matrix[2][3];
            contrast += std::hypot(b, c) / kAmplitude;
            ++blocks;
            forPixels(x, y, [&](double phase, double value) {
                rest += std::pow(value - (a + b * std::cos(phase) + c * std::sin(phase)), 2);
                ideal += std::pow(kAmplitude * std::cos(phase), 2);
            });
        }
    }
    return {contrast / blocks, std::sqrt(rest / ideal)};
}

/// Returns the largest overshoot on either side of an edge at @p angle, as a fraction of its height. @p soft is the
/// standard deviation of the edge's blur in pixels, 0 for an antialiased edge, negative for a hard one.
inline double OvershootOf(const GrayRenderer &render, double angle, double soft)
{
    const double c = std::cos(angle), s = std::sin(angle);
    const auto lightAt = [&](double x, double y) {
        const double distance = c * (x - 127.3) + s * (y - 126.8);
        return soft > 0.0 ? 0.5 * std::erfc(-distance / soft / std::sqrt(2.0)) : distance > 0.0 ? 1.0 : 0.0;
    };
    const std::vector<double> result =
        render(QualityPicture([&](int x, int y) {
                   double sum = 0.0;
                   const int points = soft == 0.0 ? 16 : 1;
                   for (int i = 0; i < points * points; ++i)
                       sum += lightAt(x + (i % points + 0.5) / points - 0.5, y + (i / points + 0.5) / points - 0.5);
                   return 0.2 + 0.6 * sum / (points * points);
               }),
               QualityLens());
    double most = 0.0;
    for (int y = kQualityBorder; y < kQualitySide - kQualityBorder; ++y)
        for (int x = kQualityBorder; x < kQualitySide - kQualityBorder; ++x) {
            const double value = result[static_cast<size_t>(y * kQualitySide + x)];
            most = std::max({most, value - 0.8, 0.2 - value});
        }
    return most / 0.6;
}
