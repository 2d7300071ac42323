// The frame of 35 mm film, to which sizes of other frames are related.
#pragma once

/// Diagonal of a frame of 36 x 24 mm; a frame's factor is this over its diagonal.
constexpr double kFullFrameDiagonalMm = 43.266615305567875; // sqrt(36^2 + 24^2)
