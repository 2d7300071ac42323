/// One window of a facade with its surround, glass, sill, hood and shutters.
#pragma once

#include "shading.h"

namespace Samples {

struct Window {
    double x; ///< of the footprint, relative to the window's axis
    double top;
    double bottom;
    double half; ///< half its width
    bool hood;
    bool shutters;
    Rgb shutter;
    uint32_t seed; ///< chooses the content behind the glass
};

void PaintWindow(Brush &brush, const Window &window);

} // namespace Samples
