// The 35 mm film frame, the reference for other frame sizes.
#pragma once

/// Diagonal of a 36 x 24 mm frame. The crop factor of a sensor is this diagonal divided by the sensor's.
constexpr double kFullFrameDiagonalMm = 43.266615305567875; // sqrt(36^2 + 24^2)
