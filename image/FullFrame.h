// The frame of 35 mm film, the reference for other frame sizes.
#pragma once

/// Diagonal of a frame of 36 x 24 mm. A frame's crop factor is this diagonal divided by the frame's.
constexpr double kFullFrameDiagonalMm = 43.266615305567875; // sqrt(36^2 + 24^2)
