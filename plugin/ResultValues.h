// Converts rendered values to those of the result's format.
#pragma once

#include "TransferCurve.h"

class KImage;

/// Conversion of float RGBA pixels in place, in this order. By default nothing is done.
struct ResultValues {
    bool toLight = false;  // stored values to light, by `light`
    bool encodes = false;  // light to sRGB values
    bool flattens = false; // onto black, for formats without opacity
    TransferCurve light = {};

    void Apply(KImage *image) const;
};
