// Tabulates a correction's maps from functions of the radius.
#pragma once

#include "Correction.h"
#include "PictureFrame.h"

#include <functional>

constexpr double kMinLight = 1.0 / kMaxGain; // light below this share is not fully corrected

/// Center and tangential terms of a map, both in the picture's axes.
struct MapMiddle {
    PictureVector center;     // pixels
    PictureVector tangential; // 1 / pixel
};

/// Returns the distance, in pixels, from @p center to the farthest corner of the picture enlarged around its
/// middle by 1 / @p shrink, plus a margin.
double FarthestRadius(const QSize &pixels, const PictureVector &center, double shrink);

/// Tabulates a map.
/// @param factor  source radius divided by result radius, as a function of the result radius in pixels.
/// @param reach   the largest radius used.
/// @param end     the radius where the map ends; may be infinite.
/// @param amount  factor that scales the displacement.
RadialMap TabulateMap(const MapMiddle &middle, const std::function<double(double)> &factor, double reach, double end,
                      double amount);

/// Tabulates a gain.
/// @param stops   light in EV at a radius in pixels, 0 at the center and negative where it is darker.
/// @param amount  factor that scales the exposure values.
GainMap TabulateGain(const PictureVector &center, const std::function<double(double)> &stops, double reach,
                     double amount);
