// Reference for the lens models: their formulas in long double, without tables, for a blend of entries and one picture.
#pragma once

#include "FitOptions.h"
#include "LensProfile.h"

struct OraclePoint {
    long double x, y;
};

/// Position of a picture in the profile's frame. All values are in the sensor's orientation; applying @p turn gives the
/// current picture.
struct OraclePicture {
    int width, height;                   // in pixels; possibly those of a crop
    long double left = 0.0L, top = 0.0L; // position in the whole picture, in pixels
    long double wholeWidth, wholeHeight; // size before the crop, in pixels
    long double ratio = 1.0L; // q: long side of the whole picture over that of the profile's frame, both in mm
    bool ownCenter = true;    // false: all models are centered in the whole picture
    int turn = 1;             // EXIF orientation
};

struct OraclePlaces {
    OraclePoint red, green, blue;
    long double gain;
};

/// An entry with all models, and its weight. Each entry maps the offset from the blended center, and the results are
/// averaged; light is averaged in stops.
struct OraclePart {
    ProfileEntry entry;
    long double weight;
};
using OracleBlend = QVector<OraclePart>;

/// Returns the sampling positions of pixel (@p x, @p y) of the current picture. The gain is not limited.
OraclePlaces OracleAt(const OracleBlend &blend, const OraclePicture &picture, Projection projection, double zoom,
                      long double x, long double y);
