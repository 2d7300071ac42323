// Reference implementation of the positions of a fitted correction, in double precision.
#pragma once

#include "Correction.h"

/// Sampling positions of an output pixel, in pixels of the source.
struct SourcePlaces {
    struct Point {
        double x, y;
    };
    Point red, green, blue;
    double gain = 1.0;
    bool folded = false; ///< The pixel is beyond the end of a map: the positions are invalid.
    /// Distance to the nearest end of a map or of its table, in pixels of the map's input; negative beyond the end. Up
    /// to the end, sampling positions are smooth functions of the pixel's position.
    double toEnd = std::numeric_limits<double>::infinity();
};

/// Evaluator of a correction at single pixels: the plain twin of FittedWarp. Any thread may call const functions.
class CorrectionTwin {
public:
    explicit CorrectionTwin(const Correction &correction);

    /// Maximum distance of a sampling position beyond the centers of the outermost pixels, in pixels: half a pixel to
    /// the picture's edge, and 1/256 for rounding.
    static constexpr double kBorderPixels = 0.5 + 1.0 / 256.0;

    const Correction &Maps() const { return m_correction; }
    /// Returns whether red or blue is sampled at a different position from green.
    bool SplitsColors() const { return m_correction.red || m_correction.blue; }

    /// Returns the sampling positions of the output pixel at (@p x, @p y), which may be anywhere, even between pixels.
    SourcePlaces At(double x, double y) const;
    /// Returns whether the pixel with these sampling positions stays empty: a position is outside the picture, or the
    /// pixel is beyond the end of a map.
    bool IsEmpty(const SourcePlaces &places) const;
    /// Returns whether any pixel of the result stays empty. Checks only the edges: maps are continuous and increase
    /// outward up to their ends, so if any pixel is empty, one at an edge is empty, too.
    bool LeavesEmpty() const;

private:
    bool Contains(const SourcePlaces::Point &place) const;

    Correction m_correction;
    double m_geometryEnd, m_redEnd, m_blueEnd, m_lightEnd; // radii where maps and their tables end
};
