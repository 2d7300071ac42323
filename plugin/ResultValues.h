// Conversion of rendered pixels to the values of the output format.
#pragma once

#include "TransferCurve.h"

class KImage;

/// In-place conversions of float RGBA pixels, applied in this order; none by default.
struct ResultValues {
    bool toLight = false;  // stored values to linear light, with the curve `light`
    bool encodes = false;  // linear light to sRGB values
    bool flattens = false; // composites onto black, for formats without alpha
    TransferCurve light = {};

    void Apply(KImage *image) const;
};
