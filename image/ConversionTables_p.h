// The 81 conversions of KImage::CropCopyTo: two tables, one rule, and the three cases that deviate.
#pragma once

#include "PixelRuns_p.h"

#include "ippi.h"

#include "gfl.h"

#include <utility>

/// Turns a run of pixels into another form. Conversions of two steps work run by run, with the run between them in the
/// first cache: none passes over memory twice or allocates.
using RunStep = void (*)(const void *src, void *dst, int pixels);

/// Rows and columns of the tables below.
enum Depth { kDepth8u, kDepth16u, kDepth32f };
enum Layout { kGrey, kRgb, kRgba };

struct Form {
    Depth depth;
    Layout layout;
};

constexpr bool operator==(Form a, Form b)
{
    return a.depth == b.depth && a.layout == b.layout;
}

constexpr Depth DepthOf(int bitsPerComponent)
{
    return bitsPerComponent == 8 ? kDepth8u : bitsPerComponent == 16 ? kDepth16u : kDepth32f;
}

/// By channels rather than type, which serves the forms of other channel orders too.
constexpr Layout LayoutOf(int channels)
{
    return channels == 1 ? kGrey : channels == 3 ? kRgb : kRgba;
}

/// The form of an image whose type and depth are among the nine.
inline Form FormOf(const KImage &image)
{
    return {DepthOf(image.bitsPerComponent()), LayoutOf(image.m_bitmap->ComponentsPerPixel)};
}

namespace steps {

using primitives::Size;
using primitives::Status;
using primitives::Step;

template <typename S, typename D, typename... Extra, typename... Given>
void Call(Status (&primitive)(const S *, Step, D *, Step, Size, Extra...), const void *src, void *dst, int pixels,
          Given... given)
{
    primitive(static_cast<const S *>(src), 0, static_cast<D *>(dst), 0, {pixels, 1}, static_cast<Extra>(given)...);
}

/// A primitive as a step, with the arguments that follow its size.
template <auto &Primitive, int... Arguments> void Run(const void *src, void *dst, int pixels)
{
    Call(Primitive, src, dst, pixels, Arguments...);
}

/// Grey into the first channel, and from there into all three.
template <auto &CopyToFirst, auto &Swap> void Spread(const void *src, void *dst, int pixels)
{
    constexpr int kFirstOnly[] = {0, 0, 0};
    Call(CopyToFirst, src, dst, pixels);
    Call(Swap, dst, dst, pixels, kFirstOnly);
}

/// Grey or RGB into RGBA with this alpha.
template <typename T, int S, int Alpha> void Opaque(const void *src, void *dst, int pixels)
{
    Call(primitives::CopyOpaque<T, S>, src, dst, pixels, Alpha);
}

} // namespace steps

/// Depth step, [from][to][layout]; one depth to itself needs none.
constexpr RunStep kDepthSteps[3][3][3] = {
    // from 8u
    {{},
     {steps::Run<ippiScale_8u16u_C1R>, steps::Run<ippiScale_8u16u_C3R>, steps::Run<ippiScale_8u16u_C4R>},
     {steps::Run<ippiScale_8u32f_C1R, 0, 1>, steps::Run<ippiScale_8u32f_C3R, 0, 1>,
      steps::Run<ippiScale_8u32f_C4R, 0, 1>}},
    // from 16u
    {{steps::Run<ippiScale_16u8u_C1R, 1>, steps::Run<ippiScale_16u8u_C3R, 1>, steps::Run<ippiScale_16u8u_C4R, 1>},
     {},
     {steps::Run<primitives::Scale16ToFloat<1>>, steps::Run<primitives::Scale16ToFloat<3>>,
      steps::Run<primitives::Scale16ToFloat<4>>}},
    // from 32f
    {{steps::Run<ippiScale_32f8u_C1R, 0, 1>, steps::Run<ippiScale_32f8u_C3R, 0, 1>,
      steps::Run<ippiScale_32f8u_C4R, 0, 1>},
     {steps::Run<primitives::ScaleFloatTo16<1>>, steps::Run<primitives::ScaleFloatTo16<3>>,
      steps::Run<primitives::ScaleFloatTo16<4>>},
     {}}};

/// Channel step, [depth][from][to]; one layout to itself needs none. New alpha is opaque.
constexpr RunStep kChannelSteps[3][3][3] = {
    {{nullptr, steps::Spread<ippiCopy_8u_C1C3R, ippiSwapChannels_8u_C3R>, steps::Opaque<Ipp8u, 1, 255>},
     {steps::Run<ippiRGBToGray_8u_C3C1R>, nullptr, steps::Opaque<Ipp8u, 3, 255>},
     {steps::Run<ippiRGBToGray_8u_AC4C1R>, steps::Run<ippiCopy_8u_AC4C3R>, nullptr}},
    {{nullptr, steps::Spread<ippiCopy_16u_C1C3R, ippiSwapChannels_16u_C3R>, steps::Opaque<Ipp16u, 1, 65535>},
     {steps::Run<ippiRGBToGray_16u_C3C1R>, nullptr, steps::Opaque<Ipp16u, 3, 65535>},
     {steps::Run<ippiRGBToGray_16u_AC4C1R>, steps::Run<ippiCopy_16u_AC4C3R>, nullptr}},
    {{nullptr, steps::Spread<ippiCopy_32f_C1C3R, ippiSwapChannels_32f_C3R>, steps::Opaque<Ipp32f, 1, 1>},
     {steps::Run<ippiRGBToGray_32f_C3C1R>, nullptr, steps::Opaque<Ipp32f, 3, 1>},
     {steps::Run<ippiRGBToGray_32f_AC4C1R>, steps::Run<ippiCopy_32f_AC4C3R>, nullptr}}};

/// The cases that deviate from an opaque alpha, all of grey to RGBA; hosts rely on them.
struct AlphaException {
    Form from;
    Form to;
    RunStep channelStep; // instead of the table's, at the target's depth
    bool leavesAlpha;    // the target's stays what it was
};

constexpr AlphaException kAlphaExceptions[] = {
    {{kDepth16u, kGrey}, {kDepth16u, kRgba}, steps::Spread<ippiCopy_16u_C1C4R, ippiSwapChannels_16u_AC4R>, true},
    {{kDepth16u, kGrey}, {kDepth32f, kRgba}, steps::Spread<ippiCopy_32f_C1C4R, ippiSwapChannels_32f_AC4R>, true},
    // Alpha is 255 of 65,535.
    {{kDepth32f, kGrey}, {kDepth16u, kRgba}, steps::Opaque<Ipp16u, 1, 255>, false},
};

/// The exception for a pair of forms, or null.
inline const AlphaException *FindAlphaException(Form from, Form to)
{
    for (const AlphaException &exception : kAlphaExceptions) {
        if (exception.from == from && exception.to == to)
            return &exception;
    }
    return nullptr;
}

/// How runs of one form become runs of another: no step for the same form, one, or two with a run in between.
class Conversion {
public:
    Conversion(Form from, Form to)
    {
        const bool colorsFirst = to.depth < from.depth && to.layout < from.layout; // grey at the finer of the depths
        const RunStep toDepth = kDepthSteps[from.depth][to.depth][colorsFirst ? to.layout : from.layout];
        const RunStep toLayout = ChannelStep(from, to, colorsFirst ? from.depth : to.depth);
        m_first = colorsFirst ? toLayout : toDepth;
        m_last = colorsFirst ? toDepth : toLayout;
        if (!m_last)
            std::swap(m_first, m_last);
    }

    bool IsIdentity() const { return !m_last; }

    /// Not for the same form. @p pixels is at most kRunPixels.
    void ConvertRun(const void *src, void *dst, int pixels) const
    {
        RunBlock between;
        if (m_first)
            m_first(src, between.bytes, pixels);
        m_last(m_first ? between.bytes : src, dst, pixels);
    }

    /// The run in the other form: in @p block, or where it is if the forms are the same.
    const void *Converted(const void *src, RunBlock &block, int pixels) const
    {
        if (IsIdentity())
            return src;
        ConvertRun(src, block.bytes, pixels);
        return block.bytes;
    }

private:
    static RunStep ChannelStep(Form from, Form to, Depth depth)
    {
        if (const AlphaException *exception = FindAlphaException(from, to))
            return exception->channelStep;
        return kChannelSteps[depth][from.layout][to.layout];
    }

    RunStep m_first; // null where one step does it
    RunStep m_last;
};
