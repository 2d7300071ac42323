// A plain grey plane, for analysis outside of KImage.
#pragma once

#include <vector>

/// Luma of an image, 0 to 1 and above for float images: row by row without gaps, (x, y) at samples[y * width + x].
struct ImageSt {
    int width = 0;
    int height = 0;
    std::vector<float> samples;
};
