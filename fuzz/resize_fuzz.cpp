// Resizes small images of any type and depth to any size.
#include "Images.h"

namespace {

/// Returns a side length near those of the images, a long one, or an arbitrary number.
int AnySide(Input &input)
{
    switch (input.Below(8)) {
    case 0:
        return input.Next<std::int32_t>();
    case 1:
        return input.Next<std::uint16_t>();
    default:
        return input.Below(40) - 2;
    }
}

} // namespace

FUZZ_TARGET(resize)
{
    constexpr qint64 kMostPixels = 1 << 18; // larger sizes only take longer
    StartKernel();
    Input input(data, size);
    KImage image = AnyImage(input);
    const int width = AnySide(input), height = AnySide(input);
    if (width > 0 && height > 0 && qint64(width) * height > kMostPixels)
        return;
    try {
        KImage target;
        image.Resize(target, width, height);
        Require(target.width() == width && target.height() == height && target.type() == image.type());
        image.Resize(width, height);
        Require(image.width() == width && image.height() == height);
    } catch (const KException &) {
    }
}
