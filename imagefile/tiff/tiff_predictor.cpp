#include "tiff_predictor.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

template <class T> void DifferenceRow(const T *src, T *dst, std::size_t width, std::size_t channels)
{
    std::copy_n(src, std::min(channels, width * channels), dst);
    for (std::size_t i = channels; i < width * channels; ++i)
        dst[i] = static_cast<T>(src[i] - src[i - channels]);
}

template void DifferenceRow(const std::uint8_t *, std::uint8_t *, std::size_t, std::size_t);
template void DifferenceRow(const std::uint16_t *, std::uint16_t *, std::size_t, std::size_t);

void DifferenceFloatRow(const float *src, std::uint8_t *dst, std::size_t width, std::size_t channels)
{
    const std::size_t samples = width * channels;
    for (std::size_t i = 0; i < samples; ++i) {
        std::uint32_t bits;
        std::memcpy(&bits, src + i, sizeof bits);
        for (std::size_t byte = 0; byte < 4; ++byte)
            dst[byte * samples + i] = static_cast<std::uint8_t>(bits >> (24 - 8 * byte));
    }
    for (std::size_t i = samples * 4; i-- > channels;) // from the end: subtract bytes that are still unchanged
        dst[i] = static_cast<std::uint8_t>(dst[i] - dst[i - channels]);
}

} // namespace imagefile
