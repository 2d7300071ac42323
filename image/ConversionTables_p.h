// The 81 conversions of KImage::CropCopyTo: two tables, one rule, and the three cases that deviate.
#pragma once

#include "ippi.h"

#include "gfl.h"

/// A run is a stretch of pixels of one row. Conversions of two steps work run by run, with the form in between in a
/// block of the first cache: no conversion passes over memory twice or allocates.
constexpr int kRunPixels = 512;
constexpr int kMaxBytesPerPixel = 16;
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

/// The form of a record whose type and depth are among the nine.
inline Form FormOf(const GFL_BITMAP &bitmap)
{
    return {bitmap.BitsPerComponent == 8        ? kDepth8u
                : bitmap.BitsPerComponent == 16 ? kDepth16u
                                                : kDepth32f,
            bitmap.Type == GFL_GREY      ? kGrey
                : bitmap.Type == GFL_RGB ? kRgb
                                         : kRgba};
}

constexpr int kChannels[] = {1, 3, 4};

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

/// 65,535 of 16 bits as exactly 1.0, and back with values beyond saturated.
template <int C> void Scale16To32(const void *src, void *dst, int pixels)
{
    Ipp32f *samples = static_cast<Ipp32f *>(dst);
    ippiConvert_16u32f_C1R(static_cast<const Ipp16u *>(src), 0, samples, 0, {C * pixels, 1});
    ippiDivC_32f_C1R(samples, 0, 65535.0f, samples, 0, {C * pixels, 1});
}

template <int C> void Scale32To16(const void *src, void *dst, int pixels)
{
    Ipp32f scaled[C * kRunPixels];
    ippiMulC_32f_C1R(static_cast<const Ipp32f *>(src), 0, 65535.0f, scaled, 0, {C * pixels, 1});
    ippiConvert_32f16u_C1R(scaled, 0, static_cast<Ipp16u *>(dst), 0, {C * pixels, 1}, primitives::kRoundNear);
}

} // namespace steps

// clang-format off

/// Depth step, [from][to][layout]; one depth to itself needs none.
constexpr RunStep kDepthSteps[3][3][3] = {
    {{},
     {steps::Run<ippiScale_8u16u_C1R>, steps::Run<ippiScale_8u16u_C3R>, steps::Run<ippiScale_8u16u_C4R>},
     {steps::Run<ippiScale_8u32f_C1R, 0, 1>, steps::Run<ippiScale_8u32f_C3R, 0, 1>,
      steps::Run<ippiScale_8u32f_C4R, 0, 1>}},
    {{steps::Run<ippiScale_16u8u_C1R, 1>, steps::Run<ippiScale_16u8u_C3R, 1>, steps::Run<ippiScale_16u8u_C4R, 1>},
     {},
     {steps::Scale16To32<1>, steps::Scale16To32<3>, steps::Scale16To32<4>}},
    {{steps::Run<ippiScale_32f8u_C1R, 0, 1>, steps::Run<ippiScale_32f8u_C3R, 0, 1>,
      steps::Run<ippiScale_32f8u_C4R, 0, 1>},
     {steps::Scale32To16<1>, steps::Scale32To16<3>, steps::Scale32To16<4>},
     {}}};

/// Channel step, [depth][from][to]; one layout to itself needs none. A source without alpha leaves the target's.
constexpr RunStep kChannelSteps[3][3][3] = {
    {{nullptr, steps::Spread<ippiCopy_8u_C1C3R, ippiSwapChannels_8u_C3R>,
      steps::Spread<ippiCopy_8u_C1C4R, ippiSwapChannels_8u_AC4R>},
     {steps::Run<ippiRGBToGray_8u_C3C1R>, nullptr, steps::Run<ippiCopy_8u_C3AC4R>},
     {steps::Run<ippiRGBToGray_8u_AC4C1R>, steps::Run<ippiCopy_8u_AC4C3R>, nullptr}},
    {{nullptr, steps::Spread<ippiCopy_16u_C1C3R, ippiSwapChannels_16u_C3R>,
      steps::Spread<ippiCopy_16u_C1C4R, ippiSwapChannels_16u_AC4R>},
     {steps::Run<ippiRGBToGray_16u_C3C1R>, nullptr, steps::Run<ippiCopy_16u_C3AC4R>},
     {steps::Run<ippiRGBToGray_16u_AC4C1R>, steps::Run<ippiCopy_16u_AC4C3R>, nullptr}},
    {{nullptr, steps::Spread<ippiCopy_32f_C1C3R, ippiSwapChannels_32f_C3R>,
      steps::Spread<ippiCopy_32f_C1C4R, ippiSwapChannels_32f_AC4R>},
     {steps::Run<ippiRGBToGray_32f_C3C1R>, nullptr, steps::Run<ippiCopy_32f_C3AC4R>},
     {steps::Run<ippiRGBToGray_32f_AC4C1R>, steps::Run<ippiCopy_32f_AC4C3R>, nullptr}}};

// clang-format on

/// What the alpha of an RGBA target is set to before colours arrive from a source without alpha.
struct AlphaRule {
    bool set;       // false: the target's alpha stays what it was
    int value8or16; // 8u and 16u; a float alpha is always 1.0
};

/// The cases that deviate from "opaque"; hosts rely on them.
struct AlphaException {
    Form from;
    Form to;
    AlphaRule rule;
};

constexpr AlphaException kAlphaExceptions[] = {
    {{kDepth16u, kGrey}, {kDepth16u, kRgba}, {false, 0}},
    {{kDepth16u, kGrey}, {kDepth32f, kRgba}, {false, 0}},
    {{kDepth32f, kGrey}, {kDepth16u, kRgba}, {true, 255}}, // not 65,535
};

constexpr AlphaRule AlphaRuleOf(Form from, Form to)
{
    for (const AlphaException &exception : kAlphaExceptions) {
        if (exception.from == from && exception.to == to)
            return exception.rule;
    }
    return {to.layout == kRgba && from.layout != kRgba, to.depth == kDepth8u ? 255 : 65535};
}
