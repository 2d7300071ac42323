// Correction of one picture as maps in pixels: the input of the fitted warp, independent of profiles and XML.
#pragma once

#include "RadialCurve.h"

#include <limits>
#include <optional>

/// Radial map, with tangential terms, from one position to another. With d = position - center and r = |d|, in pixels,
///
///     result.x = center.x + factor(r) dx + (2 dx^2 + r^2) tangential2 + 2 dx dy tangential1
///     result.y = center.y + factor(r) dy + (2 dy^2 + r^2) tangential1 + 2 dx dy tangential2
///
/// Beyond endRadius the map folds back or ends: positions there have no result, and their pixels stay empty.
struct RadialMap {
    double centerX = 0.0, centerY = 0.0;         // position (0, 0) is the center of the top left pixel
    RadialCurve factor;                          // for lateral color, includes the model's ScaleFactor
    double tangential1 = 0.0, tangential2 = 0.0; // 1 / pixel: the model's terms / its focal length; scaled as `factor`
    double endRadius = std::numeric_limits<double>::infinity();
};

constexpr double kMaxGain = 16.0; // 4 EV

/// Gain in linear light, a factor from 1 to kMaxGain, as a function of the distance of green's sampling position from
/// the center.
struct GainMap {
    double centerX = 0.0, centerY = 0.0;
    RadialCurve gain;
};

/// Correction of one picture. For an output pixel p and the picture's middle m = ((width - 1) / 2, (height - 1) / 2):
///
///     a = m + (p - m) / zoom
///     g = geometry(a)
///     red is sampled at red(g), green at g, blue at blue(g)
///     gain(g) multiplies all three, in linear light
///
/// Absent maps change nothing. A pixel is empty if it lies beyond the endRadius of a map, or if the sampling position
/// of any channel lies outside [-0.5 - 1/256, side - 0.5 + 1/256]. The curves include the requested strength and the
/// projection of fisheyes.
struct Correction {
    int width = 0, height = 0; // of source and result, in the stored orientation
    double zoom = 1.0;         // above 1 enlarges
    std::optional<RadialMap> geometry, red, blue;
    std::optional<GainMap> light;

    bool ChangesPositions() const { return geometry || red || blue || zoom != 1.0; }
    bool ChangesAnything() const { return ChangesPositions() || light; }
};
