// Measures straight edges and even patches in a picture, to a fraction of a pixel.
#pragma once

#include <functional>

#include "TiffRaster.h"
#include "scene.h"

/// Maps a point of the corrected picture to the measured picture.
using Placement = std::function<Samples::Point(Samples::Point)>;

struct EdgeFigures {
    double bend = 0;       ///< pixels: the largest distance from the straight line that fits the edge best; green
    double fringe[3] = {}; ///< pixels: distance of red, green, blue from green, mean over the edge's part near a corner
};

/// Follows an edge: every few pixels, finds the center of the change across it near its expected position.
///
/// @p placement only gives these positions. Those where the edge is interrupted are left out.
EdgeFigures MeasureEdge(const TiffRaster &picture, const Samples::StraightEdge &edge, const Placement &placement);

/// Returns the mean of the three colors over a square, 0 to 255.
double MeanLevel(const TiffRaster &picture, Samples::Point center, double halfSize);
