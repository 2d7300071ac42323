// How a corrected picture is framed: by a zoom about its middle.
#pragma once

#include "Correction.h"
#include "FitOptions.h"

constexpr double kLeastZoom = 0.5, kMostZoom = 2.0;

struct FramingZoom {
    double zoom = 1.0;
    bool isBounded = false; // the framing asked for would need a zoom beyond the bounds
};

/// The zoom that frames @p correction (whose own zoom doesn't count):
///
/// | framing | zoom |
/// |---|---|
/// | Fill | the least that leaves no pixel empty, in any color |
/// | Keep | 1 |
/// | All | the greatest that keeps everything photographed in the picture |
/// | Factor | @p factor |
///
/// Without a geometric step only a factor frames: lateral color alone moves edges by a pixel or two.
FramingZoom ZoomFor(const Correction &correction, Framing framing, double factor);

/// Whether some pixels of the result have no light, so that it needs alpha.
bool LeavesEmpty(const Correction &correction);

/// The share of the photographed field that the result shows, 0 to 1.
double FieldShare(const Correction &correction);
