// Converts rendered values to those of the result's format.
#pragma once

#include "TransferCurve.h"

class KImage;

/// Conversions of float RGBA pixels in place, made in this order; none by default.
struct ResultValues {
    bool toLight = false;  // stored values to light, by `light`
    bool encodes = false;  // light to sRGB values
    bool flattens = false; // onto black, for formats without opacity
    TransferCurve light = {};

    void Apply(KImage *image) const;
};
