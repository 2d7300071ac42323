// A plain gray plane for analysis outside KImage.
#pragma once

#include <vector>

/// Luma of an image: 0 to 1, or above 1 for float images. Rows have no gaps: (x, y) is samples[y * width + x].
struct ImageSt {
    int width = 0;
    int height = 0;
    std::vector<float> samples;
};
