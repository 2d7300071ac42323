#include "KImage.h"

#include "ConversionTables_p.h"
#include "KImage_p.h"
#include "PixelRuns_p.h"

namespace {

constexpr int kAlphaChannel = 3;

/// Functions that copy one channel of an interleaved run to a plane, and back: [depth][layout]. The interleaved pointer
/// points to the channel's first sample.
constexpr RunStep kExtractSteps[3][3] = {
    {nullptr, steps::Run<ippiCopy_8u_C3C1R>, steps::Run<ippiCopy_8u_C4C1R>},
    {nullptr, steps::Run<ippiCopy_16u_C3C1R>, steps::Run<ippiCopy_16u_C4C1R>},
    {nullptr, steps::Run<ippiCopy_32f_C3C1R>, steps::Run<ippiCopy_32f_C4C1R>},
};
constexpr RunStep kInsertSteps[3][3] = {
    {nullptr, steps::Run<ippiCopy_8u_C1C3R>, steps::Run<ippiCopy_8u_C1C4R>},
    {nullptr, steps::Run<ippiCopy_16u_C1C3R>, steps::Run<ippiCopy_16u_C1C4R>},
    {nullptr, steps::Run<ippiCopy_32f_C1C3R>, steps::Run<ippiCopy_32f_C1C4R>},
};

bool HasChannel(const KImage &image, int channel)
{
    return channel >= 0 && channel < image.m_bitmap->ComponentsPerPixel;
}

int ChannelOffsetBytes(const KImage &image, int channel)
{
    return channel * (image.bitsPerComponent() >> 3);
}

} // namespace

void KImage::ExtractChannel(KImage &target, int bitsPerComponent, int channel) const
{
    if (IsEmpty(*this) || !IsWorkingDepth(this->bitsPerComponent()))
        KThrow(kInvalidBitmap);
    if (!HasChannel(*this, channel) || !IsWorkingDepth(bitsPerComponent))
        KThrow(kInvalidParameter);

    KImage plane(width(), height(), GFL_GREY, bitsPerComponent, /*clear=*/false, nullptr, 0);
    if (m_bitmap->ComponentsPerPixel == 1) {
        CopyTo(plane, 0, 0);
    } else {
        const Form form = FormOf(*this);
        const RunStep extract = kExtractSteps[form.depth][form.layout];
        const Conversion toDepth({form.depth, kGray}, FormOf(plane));
        const int offset = ChannelOffsetBytes(*this, channel);
        ForRuns(*this, 0, 0, width(), height(), plane, 0, 0, [&](const unsigned char *src, void *dst, int pixels) {
            RunBlock samples;
            extract(src + offset, toDepth.IsIdentity() ? dst : samples.bytes, pixels);
            if (!toDepth.IsIdentity())
                toDepth.ConvertRun(samples.bytes, dst, pixels);
        });
    }
    target = plane;
}

void KImage::ExtractAlpha(KImage &target, int bitsPerComponent) const
{
    ExtractChannel(target, bitsPerComponent, kAlphaChannel);
}

void KImage::SetChannel(KImage &source, int channel)
{
    if (IsEmpty(*this) || !IsWorkingDepth(bitsPerComponent()))
        KThrow(kInvalidBitmap);
    if (!HasChannel(*this, channel))
        KThrow(kInvalidParameter);
    if (IsEmpty(source) || source.type() != GFL_GREY || !IsWorkingDepth(source.bitsPerComponent()))
        KThrow(kInvalidBitmap);
    if (source.width() != width() || source.height() != height())
        KThrow(kInvalidParameter);

    if (m_bitmap->ComponentsPerPixel == 1) {
        source.CopyTo(*this, 0, 0);
        return;
    }
    const Form form = FormOf(*this);
    const RunStep insert = kInsertSteps[form.depth][form.layout];
    const Conversion toDepth(FormOf(source), {form.depth, kGray});
    const int offset = ChannelOffsetBytes(*this, channel);
    ForRuns(source, 0, 0, width(), height(), *this, 0, 0, [&](const void *src, unsigned char *dst, int pixels) {
        RunBlock samples;
        insert(toDepth.Converted(src, samples, pixels), dst + offset, pixels);
    });
}

void KImage::SetAlpha(KImage &source)
{
    SetChannel(source, kAlphaChannel);
}
