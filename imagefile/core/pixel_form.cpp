#include "pixel_form.h"

#include <cstring>

namespace imagefile {

namespace {

template <class S> S Luma(const S *rgb)
{
    return ToSample<S>(0.299f * static_cast<float>(rgb[0]) + 0.587f * static_cast<float>(rgb[1])
                       + 0.114f * static_cast<float>(rgb[2]));
}

template <class S, class D, int kSrcChannels, int kDstChannels>
void ConvertRow(const void *srcRow, void *dstRow, std::size_t width, std::uint8_t alpha)
{
    if constexpr (std::is_same_v<S, D> && kSrcChannels == kDstChannels) {
        std::memcpy(dstRow, srcRow, width * kSrcChannels * sizeof(S));
        return;
    }
    const S *src = static_cast<const S *>(srcRow);
    D *dst = static_cast<D *>(dstRow);
    const D opaque = ConvertSample<std::uint8_t, D>(alpha);
    for (std::size_t x = 0; x < width; ++x, src += kSrcChannels, dst += kDstChannels) {
        if constexpr (kDstChannels == 1) {
            dst[0] = ConvertSample<S, D>(kSrcChannels == 1 ? src[0] : Luma(src));
        } else {
            for (int c = 0; c < 3; ++c)
                dst[c] = ConvertSample<S, D>(src[kSrcChannels == 1 ? 0 : c]);
            if constexpr (kDstChannels == 4)
                dst[3] = kSrcChannels == 4 ? ConvertSample<S, D>(src[kSrcChannels - 1]) : opaque;
        }
    }
}

struct Converters {
    RowConverter byChannels[3][3]; // by source, then target: 1, 3, 4
};

template <class S, class D>
constexpr Converters kConverters = {{{ConvertRow<S, D, 1, 1>, ConvertRow<S, D, 1, 3>, ConvertRow<S, D, 1, 4>},
                                     {ConvertRow<S, D, 3, 1>, ConvertRow<S, D, 3, 3>, ConvertRow<S, D, 3, 4>},
                                     {ConvertRow<S, D, 4, 1>, ConvertRow<S, D, 4, 3>, ConvertRow<S, D, 4, 4>}}};

using u8 = std::uint8_t;
using u16 = std::uint16_t;

constexpr const Converters *kByDepth[3][3] = {
    {&kConverters<u8, u8>, &kConverters<u8, u16>, &kConverters<u8, float>},
    {&kConverters<u16, u8>, &kConverters<u16, u16>, &kConverters<u16, float>},
    {&kConverters<float, u8>, &kConverters<float, u16>, &kConverters<float, float>},
};

int DepthIndex(int bits)
{
    return bits == 8 ? 0 : bits == 16 ? 1 : 2;
}

int ChannelIndex(int channels)
{
    return channels == 1 ? 0 : channels - 2;
}

} // namespace

std::uint16_t TypeOfChannels(int channels)
{
    return channels == 1 ? GFL_GREY : channels == 3 ? GFL_RGB : GFL_RGBA;
}

RowConverter ChooseConverter(const PixelForm &src, const PixelForm &dst)
{
    const Converters &converters = *kByDepth[DepthIndex(src.bits)][DepthIndex(dst.bits)];
    return converters.byChannels[ChannelIndex(src.channels)][ChannelIndex(dst.channels)];
}

} // namespace imagefile
