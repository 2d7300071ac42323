// Images for benchmarks: a source with 24 megapixels of noise, and a target.
#pragma once

#include "KImage.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

inline constexpr int kWidth = 6000;
inline constexpr int kHeight = 4000;
inline constexpr std::int64_t kPixels = std::int64_t(kWidth) * kHeight;

struct PixelForm {
    unsigned short type;
    int bits;

    std::int64_t BytesPerPixel() const { return (type == GFL_GREY ? 1 : type == GFL_RGB ? 3 : 4) * bits / 8; }
};

/// A source, filled with noise, and a target; both are in one block of memory.
class ImagePair {
public:
    /// @param turned  gives the source portrait orientation.
    ImagePair(PixelForm from, PixelForm to, int targetWidth, int targetHeight, bool turned = false)
        : block(
            static_cast<std::size_t>(kPixels * from.BytesPerPixel() + to.BytesPerPixel() * targetWidth * targetHeight))
    {
        Wrap(source, from, turned ? kHeight : kWidth, turned ? kWidth : kHeight, block.data());
        Wrap(target, to, targetWidth, targetHeight, block.data() + kPixels * from.BytesPerPixel());
        // Noise everywhere, so that branches cannot be predicted; floats are 0 to 1.
        std::mt19937 random(1);
        if (from.bits == 32) {
            float *samples = reinterpret_cast<float *>(block.data());
            std::generate(samples, samples + block.size() / 4, [&] { return static_cast<float>(random()) * 0x1p-32f; });
        } else {
            std::generate(block.begin(), block.end(), [&] { return static_cast<unsigned char>(random()); });
        }
    }

    std::vector<unsigned char> block;
    KImage source;
    KImage target;

private:
    static void Wrap(KImage &image, PixelForm form, int width, int height, unsigned char *data)
    {
        image.AllocBitmap(width, height, form.type, form.bits, /*clear=*/false, data,
                          static_cast<int>(width * form.BytesPerPixel()));
    }
};
