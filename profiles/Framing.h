// The framing of a corrected picture: a zoom about its center.
#pragma once

#include "Correction.h"
#include "FitOptions.h"

struct FramingZoom {
    double zoom = 1.0;
    bool isBounded = false; // the requested framing would need a zoom beyond the bounds
    bool isFull = false;    // every pixel on the edges is known to have a source; false: unknown
};

/// Returns the zoom that frames @p correction (its `zoom` is ignored):
///
/// | framing | zoom |
/// |---|---|
/// | Fill | the smallest that leaves no pixel empty in any color |
/// | Keep | 1 |
/// | All | the largest that keeps the whole photographed field in the picture |
/// | Factor | @p factor |
///
/// Without a geometric map, only Factor has an effect, because lateral color moves edges by just a pixel or two.
FramingZoom ZoomFor(const Correction &correction, Framing framing, double factor);

/// Returns whether some pixels of the result have no source. If so, the result needs alpha.
bool LeavesEmpty(const Correction &correction);

/// Returns the share of the photographed field that the result shows, 0 to 1.
double FieldShare(const Correction &correction);
