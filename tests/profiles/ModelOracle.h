// Lens models straight from their formulas, in long double and without tables, for some entries on one picture.
#pragma once

#include "FitOptions.h"
#include "LensProfile.h"

struct OraclePoint {
    long double x, y;
};

/// Position of a picture in the profile's frame. All values are in the sensor's orientation; the current picture is
/// that picture after @p turn.
struct OraclePicture {
    int width, height;                   // of the sensor's picture, in pixels; a crop of the whole below
    long double left = 0.0L, top = 0.0L; // of the crop, in pixels
    long double wholeWidth, wholeHeight; // before it was cropped
    long double ratio = 1.0L;            // of the frames, q
    bool ownCenter = true;
    int turn = 1; // EXIF orientation
};

struct OraclePlaces {
    OraclePoint red, green, blue;
    long double gain;
};

/// An entry with all models, and its weight. Distances from the blended centers are mapped by each entry and averaged;
/// light is averaged in stops.
struct OraclePart {
    ProfileEntry entry;
    long double weight;
};
using OracleBlend = QVector<OraclePart>;

/// Returns the sampling positions of pixel (@p x, @p y) of the current picture. The gain is not limited.
OraclePlaces OracleAt(const OracleBlend &blend, const OraclePicture &picture, Projection projection, double zoom,
                      long double x, long double y);
