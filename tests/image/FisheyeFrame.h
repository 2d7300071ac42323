// Circular fisheye frames like a camera's: a picture in an off-center circle, with noise, flare and a dark sky.
#pragma once

#include "KImage.h"

#include <algorithm>
#include <cmath>
#include <random>

/// Frame with random content, in 8-bit RGB, and its true circle.
struct FisheyeFrame {
    double radius, offsetX, offsetY;
    KImage image;

    FisheyeFrame(int width, int height, unsigned seed)
        : image(width, height, GFL_RGB, 8, true, nullptr, 0), m_random(seed)
    {
        const double side = std::min(width, height), away = Uniform(0, 0.08) * side, towards = Uniform(0, 2 * M_PI);
        radius = Uniform(0.40, 0.56) * side; // above 0.42, part of the circle may be cut off
        offsetX = away * std::cos(towards);
        offsetY = away * std::sin(towards);
        DrawScene();
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                PaintPixel((x - (width - 1) / 2.0 - offsetX) / radius, (y - (height - 1) / 2.0 - offsetY) / radius,
                           image.getData(x, y));
        }
    }

private:
    struct Box {
        double x, y, halfWidth, halfHeight, light;
    };

    double Uniform(double low, double high)
    {
        return low + (high - low) * static_cast<double>(m_random()) / 4294967296.0;
    }

    void DrawScene()
    {
        for (Box &box : m_boxes)
            box = {Uniform(-1, 1), Uniform(-1, 1), Uniform(0.02, 0.3), Uniform(0.02, 0.3), Uniform(-60, 70)};
        for (double &wave : m_waves)
            wave = Uniform(-9, 9);
        m_dark = Uniform(0, 2 * M_PI);
        m_sun = Uniform(0, 2 * M_PI);
    }

    /// Returns the scene's brightness at (x, y), in radii from the circle's center.
    double Scene(double x, double y) const
    {
        double light =
            110 + 30 * std::sin(m_waves[0] * x + m_waves[1] * y) + 20 * std::sin(m_waves[2] * x + m_waves[3] * y);
        for (const Box &box : m_boxes)
            light += std::abs(x - box.x) < box.halfWidth && std::abs(y - box.y) < box.halfHeight ? box.light : 0;
        const double night = std::clamp((x * std::cos(m_dark) + y * std::sin(m_dark) - 0.2) / 0.4, 0.0, 1.0);
        return std::max(light, 5.0) * (1 - 0.97 * night) * (1 - 0.3 * (x * x + y * y));
    }

    /// Returns the brightness of the sun's glow and of its ghosts on the opposite side, inside and outside the circle.
    double Flare(double x, double y) const
    {
        const double sunX = 0.8 * std::cos(m_sun), sunY = 0.8 * std::sin(m_sun);
        double light = 60 * std::exp(-std::hypot(x - sunX, y - sunY) / 0.15);
        for (const double ghost : {-0.5, -1.0, -1.4})
            light += std::hypot(x - ghost * sunX, y - ghost * sunY) < 0.12 ? 25 : 0;
        return light;
    }

    void PaintPixel(double x, double y, unsigned char *rgb)
    {
        const double inside = std::clamp((1 - std::hypot(x, y)) * radius + 0.5, 0.0, 1.0);
        const double light = inside * (inside > 0 ? Scene(x, y) : 0) + Flare(x, y) + 4;
        for (int c = 0; c < 3; ++c) {
            const double noise = Uniform(-6, 6) + Uniform(-6, 6); // standard deviation: 5
            rgb[c] = static_cast<unsigned char>(std::clamp(light * (1 - 0.1 * c) + noise, 0.0, 255.0));
        }
    }

    std::mt19937 m_random;
    Box m_boxes[12];
    double m_waves[4];
    double m_dark, m_sun;
};
