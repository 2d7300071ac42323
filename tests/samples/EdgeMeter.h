// Finds straight edges and even patches in a picture from its pixels, to a fraction of a pixel.
#pragma once

#include <functional>
#include <vector>

#include "TiffRaster.h"
#include "scene.h"

/// Places to look at: where the point of the corrected picture lies in the picture that is measured.
using Placement = std::function<Samples::Point(Samples::Point)>;

struct EdgePoint {
    Samples::Point at[3];  ///< where red, green and blue change
    Samples::Point normal; ///< of length 1
    double contrast;       ///< of green, in steps of the picture
};

/// Follows an edge by looking, every few pixels, across it for the steepest change near its expected place.
///
/// Only where to look comes from @p placement; the position is the centre of the change within a few pixels. Places
/// where the edge is interrupted are left out.
std::vector<EdgePoint> FollowEdge(const TiffRaster &picture, const Samples::StraightEdge &edge,
                                  const Placement &placement);

/// The largest distance of a point from the straight line that fits them all best; channel green.
double LargestBend(const std::vector<EdgePoint> &points);

/// How far @p channel lies from green across the edge, mean over the points that lie within @p reach of @p corner;
/// 0 if there are fewer than five.
double Fringe(const std::vector<EdgePoint> &points, int channel, Samples::Point corner, double reach);

/// Mean of the three colours over a square.
Samples::Rgb MeanColor(const TiffRaster &picture, Samples::Point center, double halfSize);
