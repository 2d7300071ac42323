// One file through the whole program, with chosen corrections of a profile.
#pragma once

#include <QString>

#include "LensOracle.h"

/// Corrects @p source with exactly @p corrections switched on and returns the path of the result, which lies beside it,
/// as does the profile. Throws std::runtime_error with the program's message if it fails.
QString CorrectFile(const QString &source, const Samples::LensProfile &profile, int corrections);
