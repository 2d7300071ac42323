// Functions of the radius as the maps of a correction.
#pragma once

#include "Correction.h"
#include "PictureFrame.h"

#include <functional>

constexpr double kLeastLight = 1.0 / 16; // 4 EV are the most that is made up for

/// What a map has besides its curve. Both in the picture's axes.
struct MapMiddle {
    PictureVector center;     // pixels
    PictureVector tangential; // 1 / pixel
};

/// From the center to the farthest corner of the picture after it was made smaller about its middle, in pixels.
double FarthestRadius(const QSize &pixels, const PictureVector &center, double shrink);

/// @param factor  a place's radius over the radius, by the radius in pixels.
/// @param reach   radii up to this are asked for.
/// @param end     ... and beyond this mean nothing; may be infinite.
/// @param amount  share of the displacement.
RadialMap TabulateMap(const MapMiddle &middle, const std::function<double(double)> &factor, double reach, double end,
                      double amount);

/// @param stops   light at a radius in EV, 0 in the middle.
/// @param amount  share of the exposure values.
GainMap TabulateGain(const PictureVector &center, const std::function<double(double)> &stops, double reach,
                     double amount);
