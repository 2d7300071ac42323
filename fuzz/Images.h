// Small images of any type and depth.
#pragma once

#include "KImage.h"
#include "Target.h"

/// Returns a zero-filled image of up to 12 x 12 pixels, sometimes with a depth that no operation supports.
inline KImage AnyImage(Input &input)
{
    const unsigned short types[] = {GFL_GREY, GFL_RGB, GFL_RGBA};
    const int depths[] = {8, 12, 16, 32};
    const int width = 1 + input.Below(12), height = 1 + input.Below(12);
    const unsigned short type = types[input.Below(3)];
    return KImage(width, height, type, depths[input.Below(4)], /*clear=*/true, nullptr, 0);
}
