// Runs one file through the whole program, with chosen corrections of a profile.
#pragma once

#include <QString>

#include "LensOracle.h"
#include "TiffRaster.h"

/// Corrects @p source with exactly @p corrections enabled and returns the path of the result. Result and profile are
/// written next to the source. Throws std::runtime_error with the program's message if the program fails.
QString CorrectFile(const QString &source, const Samples::LensProfile &profile, int corrections);

/// Corrects the pixels of a picture like CorrectFile. Sets the size of @p profile to the picture's in landscape
/// orientation. Throws if the result's size or depth differs.
TiffRaster Corrected(const TiffRaster &source, Samples::LensProfile *profile, int corrections);
