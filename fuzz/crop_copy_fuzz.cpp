// Copies arbitrary rectangles between small images of any type and depth. Nothing outside the target
// rectangle may change.
#include "Images.h"

#include <algorithm>

namespace {

/// Returns a number in or near the range of the images' coordinates, or an arbitrary number.
int AnyPlace(Input &input)
{
    return input.Below(8) == 0 ? input.Next<std::int32_t>() : input.Below(16) - 2;
}

struct Rectangle {
    int x, y, width, height;

    bool Contains(int column, int row) const
    {
        return column >= x && column - x < width && row >= y && row - y < height;
    }
};

bool IsUnchanged(const KImage &image, int x, int y)
{
    const unsigned char *pixel = image.getData(x, y);
    return std::all_of(pixel, pixel + image.m_bitmap->BytesPerPixel, [](unsigned char byte) { return byte == 0; });
}

/// Fills the pixels with bytes from the input, so that all kinds of floats occur.
void Fill(Input &input, KImage &image)
{
    const QByteArray bytes = input.Bytes(64);
    for (int y = 0; y < image.height() && !bytes.isEmpty(); ++y)
        for (unsigned i = 0; i < image.bytesPerLine(); ++i)
            image.getData(0, y)[i] = static_cast<unsigned char>(bytes[(y + int(i)) % bytes.size()]);
}

} // namespace

FUZZ_TARGET(crop_copy)
{
    StartKernel();
    Input input(data, size);
    KImage source = AnyImage(input), target = AnyImage(input);
    const int x = AnyPlace(input), y = AnyPlace(input);
    const Rectangle to = {AnyPlace(input), AnyPlace(input), AnyPlace(input), AnyPlace(input)};
    const bool isClipped = input.Below(2) == 0;
    Fill(input, source);
    try {
        if (isClipped)
            source.CopyTo(target, to.x, to.y);
        else
            source.CropCopyTo(x, y, to.width, to.height, target, to.x, to.y);
    } catch (const KException &) {
        return;
    }
    const Rectangle changed = isClipped ? Rectangle{to.x, to.y, source.width(), source.height()} : to;
    for (int row = 0; row < target.height(); ++row)
        for (int column = 0; column < target.width(); ++column)
            Require(changed.Contains(column, row) || IsUnchanged(target, column, row));
}
