// The 81 conversions of KImage::CropCopyTo: two tables of steps, a rule for their order, a shortcut for the warp, and
// three exceptions.
#pragma once

#include "PixelRuns_p.h"

#include "ippi.h"

#include "gfl.h"

#include <utility>

/// Function that converts a run of pixels to another form. Two-step conversions go run by run, with the intermediate
/// run in the L1 cache: no conversion passes over memory twice or allocates.
using RunStep = void (*)(const void *src, void *dst, int pixels);

/// Indexes of the tables below.
enum Depth { kDepth8u, kDepth16u, kDepth32f };
enum Layout { kGray, kRgb, kRgba };

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

/// Returns the layout for a channel count. Unlike the image's type, the count also covers other channel orders.
constexpr Layout LayoutOf(int channels)
{
    return channels == 1 ? kGray : channels == 3 ? kRgb : kRgba;
}

/// Returns the form of an image whose type and depth are one of the nine working forms.
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

/// Calls a primitive as a step; @p Arguments follow the primitive's size argument.
template <auto &Primitive, int... Arguments> void Run(const void *src, void *dst, int pixels)
{
    Call(Primitive, src, dst, pixels, Arguments...);
}

/// Copies gray to the first channel, and from there to all three.
template <auto &CopyToFirst, auto &Swap> void Spread(const void *src, void *dst, int pixels)
{
    constexpr int kFirstOnly[] = {0, 0, 0};
    Call(CopyToFirst, src, dst, pixels);
    Call(Swap, dst, dst, pixels, kFirstOnly);
}

/// Converts gray or RGB to RGBA with the given alpha.
template <typename T, int S, int Alpha> void Opaque(const void *src, void *dst, int pixels)
{
    Call(primitives::CopyOpaque<T, S>, src, dst, pixels, Alpha);
}

/// Converts integer RGB to float RGBA.
template <typename T> void OpaqueFloats(const void *src, void *dst, int pixels)
{
    primitives::OpaqueFloats(static_cast<const T *>(src), static_cast<Ipp32f *>(dst), pixels);
}

} // namespace steps

/// Depth steps, [from][to][layout]; none for equal depths.
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

/// Channel steps, [depth][from][to]; none for equal layouts. New alpha is opaque.
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

/// RGB to float RGBA in one step, because the warp converts its source this way.
constexpr RunStep kToOpaqueFloats[] = {steps::OpaqueFloats<Ipp8u>, steps::OpaqueFloats<Ipp16u>,
                                       steps::Opaque<Ipp32f, 3, 1>};

/// The exceptions to the rule that new alpha is opaque, all from gray to RGBA; hosts rely on them.
struct AlphaException {
    Form from;
    Form to;
    RunStep channelStep; // used instead of kChannelSteps
    bool leavesAlpha;    // the target's alpha stays unchanged
};

constexpr AlphaException kAlphaExceptions[] = {
    {{kDepth16u, kGray}, {kDepth16u, kRgba}, steps::Spread<ippiCopy_16u_C1C4R, ippiSwapChannels_16u_AC4R>, true},
    {{kDepth16u, kGray}, {kDepth32f, kRgba}, steps::Spread<ippiCopy_32f_C1C4R, ippiSwapChannels_32f_AC4R>, true},
    // Alpha becomes 255, although 65,535 would be opaque.
    {{kDepth32f, kGray}, {kDepth16u, kRgba}, steps::Opaque<Ipp16u, 1, 255>, false},
};

/// Returns the exception for a pair of forms, or null.
inline const AlphaException *FindAlphaException(Form from, Form to)
{
    for (const AlphaException &exception : kAlphaExceptions) {
        if (exception.from == from && exception.to == to)
            return &exception;
    }
    return nullptr;
}

/// Conversion of runs from one form to another: no step for the same form, otherwise one step, or two with
/// an intermediate run.
class Conversion {
public:
    Conversion(Form from, Form to)
    {
        const bool colorsFirst = to.depth < from.depth && to.layout < from.layout; // computes gray at the finer depth
        const RunStep toDepth = kDepthSteps[from.depth][to.depth][colorsFirst ? to.layout : from.layout];
        const RunStep toLayout = ChannelStep(from, to, colorsFirst ? from.depth : to.depth);
        m_first = colorsFirst ? toLayout : toDepth;
        m_last = colorsFirst ? toDepth : toLayout;
        if (!m_last)
            std::swap(m_first, m_last);
        if (from.layout == kRgb && to == Form{kDepth32f, kRgba}) {
            m_first = nullptr;
            m_last = kToOpaqueFloats[from.depth];
        }
    }

    bool IsIdentity() const { return !m_last; }

    /// Converts a run to a different form. @p pixels is at most kRunPixels.
    void ConvertRun(const void *src, void *dst, int pixels) const
    {
        RunBlock between;
        if (m_first)
            m_first(src, between.bytes, pixels);
        m_last(m_first ? between.bytes : src, dst, pixels);
    }

    /// Returns the converted run, which is in @p block, or @p src itself if both forms are the same.
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

    RunStep m_first; // null if one step suffices
    RunStep m_last;
};
