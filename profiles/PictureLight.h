// What a picture's stored values mean as light.
#pragma once

#include "PictureFacts.h"
#include "TransferCurve.h"

struct PictureLight {
    TransferCurve curve;
    QString assumed; // for people; empty: the picture says so itself
};

/// Pictures with an ICC profile that has curves: these. Camera raw files: a power, since that is how they are
/// developed. Others: the color space that EXIF names. If that is missing too, values are taken as sRGB, or as light if
/// they are floats. Reads the file's profile; the image-file layer must have been started.
///
/// @param isFloat   of the file's values.
/// @param rawGamma  with which camera raw files are developed; counts as 1 if it is senseless, as it does there.
PictureLight LightOf(const PictureFacts &facts, bool isFloat, double rawGamma);
