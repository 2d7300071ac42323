// Measures straight edges to a fraction of a pixel, and the mean level of uniform patches.
#pragma once

#include <functional>

#include "TiffRaster.h"
#include "scene.h"

/// Maps a point of the corrected picture to the measured picture.
using Placement = std::function<Samples::Point(Samples::Point)>;

struct EdgeFigures {
    double bend = 0;       ///< largest distance of the green edge from its best-fit straight line, in pixels
    double fringe[3] = {}; ///< largest mean distance of red, green and blue from green near a corner, in pixels
};

/// Measures an edge from the centers of the change across it, found every few pixels near its expected position.
///
/// @p placement gives the expected positions. Points where the edge is interrupted are left out.
EdgeFigures MeasureEdge(const TiffRaster &picture, const Samples::StraightEdge &edge, const Placement &placement);

/// Returns the mean of the three colors over a square, 0 to 255.
double MeanLevel(const TiffRaster &picture, Samples::Point center, double halfSize);
