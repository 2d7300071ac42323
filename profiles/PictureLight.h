// The conversion between a picture's stored values and linear light.
#pragma once

#include "PictureFacts.h"
#include "TransferCurve.h"

struct PictureLight {
    TransferCurve curve;
    QString assumed; // message for the user; empty: the picture specifies its encoding
};

/// Returns the first conversion that applies: for camera raw files, the gamma used to develop them; the curves of the
/// file's ICC profile; linear for floats; the color space in EXIF; sRGB. Reads the ICC profile, so the image-file layer
/// must have been started.
///
/// @param isFloat   whether the file's values are floats.
/// @param rawGamma  gamma used to develop camera raw files; invalid values count as 1, as they do for the decoder.
PictureLight LightOf(const PictureFacts &facts, bool isFloat, double rawGamma);
