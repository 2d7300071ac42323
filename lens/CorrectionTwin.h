// The definition of what a fitted correction does to positions, in double.
#pragma once

#include "Correction.h"

/// Where an output pixel comes from. Positions are in pixels of the source.
struct SourcePlaces {
    struct Point {
        double x, y;
    };
    Point red, green, blue;
    double gain = 1.0;
    bool folded = false; ///< A map ends before the pixel: the places mean nothing.
    /// Distance to the nearest end of a map or of its table, in pixels of the map's input; negative beyond it. Up to
    /// there the places are smooth functions of the pixel.
    double toEnd = std::numeric_limits<double>::infinity();
};

/// Evaluates a correction pixel by pixel: the plain twin of FittedWarp. Const functions may be called by any thread.
class CorrectionTwin {
public:
    explicit CorrectionTwin(const Correction &correction) : m_correction(correction) { }

    /// How far outside the picture a place may lie, in pixels from the centers of the outermost ones: these end half a
    /// pixel from there.
    static constexpr double kBorderPixels = 0.5 + 1.0 / 256.0;

    const Correction &Maps() const { return m_correction; }
    /// Whether red or blue has a place other than green's.
    bool SplitsColors() const { return m_correction.red || m_correction.blue; }

    /// For the output pixel at (@p x, @p y), which may lie anywhere, also between pixels.
    SourcePlaces At(double x, double y) const;
    /// Whether the pixel with these places stays empty: one is outside the picture, or a map is folded.
    bool IsEmpty(const SourcePlaces &places) const;
    /// Whether any pixel of the result stays empty. Looks at its edges only: maps are continuous and grow outwards up
    /// to their ends, so what is missing anywhere is missing there.
    bool LeavesEmpty() const;

private:
    bool Holds(const SourcePlaces::Point &place) const;

    Correction m_correction;
};
