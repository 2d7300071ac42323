// Warp of one picture with a profile, for all channel types of source and destination.
#pragma once

class KImage;
class newLCP;

/// One run of newLCP::Render, with channels of type S in the source and D in the destination: unsigned char,
/// unsigned short or float each. The caller fills the fields and calls Do.
///
/// Four paths, by `distortion` and `chromatic`; each runs only if its condition holds, and otherwise leaves the
/// destination unchanged and returns true. "Gain" is that of the vignetting model; 1 without `falloff` or that model.
///
///   | distortion | chromatic | path             | condition           | gain at             |
///   |------------|-----------|------------------|---------------------|---------------------|
///   | off        | off       | A gain only      | a vignetting model  | the pixel itself    |
///   | on         | off       | B one warp       | distortion model    | sampled position    |
///   | off        | on        | C red, blue move | green model         | red position        |
///   | on         | on        | D three warps    | green model         | green position      |
///
/// Samples are scaled to 0..1 by `inScale`, multiplied by the gain, scaled to the destination's range by `outScale`,
/// clamped to its maximum, and stored; integer destinations truncate, nothing is rounded. Traps for callers:
/// - Path A, and green in path C, use the unscaled channel value: `inScale` and `outScale` are not applied, though
///   values are still limited to `outScale`. Between images of different depths the result is in the source's range.
/// - Alpha is written for sources with more than three channels, and "opaque" is 1 in the integer types, too. A:
///   opaque. B: opaque inside, 0 outside. C and D: opaque where the sum of the three colors is above 0, otherwise 0, so
///   black pixels become transparent.
/// - C and D stop at the first channel of a pixel that falls outside: it gets 0, and the following channels of the
///   destination keep their values.
/// - Only path A clamps to 0. In the others, a negative value wraps around in an integer destination.
///
/// A position that is NaN or too large for an integer counts as outside.
///
/// Do returns false and leaves the destination untouched if a byte outside an image would be read or written: fewer
/// than three channels in either image on paths B, C and D; more than four channels in either image; a destination
/// with fewer channels than the source; a destination larger than the source on paths A and C, which read the source at
/// the pixel's own position; pixels or rows too short for the channel types.
///
/// Runs on the calling thread and allocates nothing per pixel. Source and destination must be different images.
template <typename S, typename D> class InterpolatorKim {
public:
    using Sample = bool (InterpolatorKim::*)(float *out, float x, float y, int &ix, int &iy);
    using SampleChannel = bool (InterpolatorKim::*)(float &out, int channel, float x, float y, int &ix, int &iy);

    /// Runs FloatWarp if it supports the images, otherwise DoPlainly.
    bool Do();
    /// Runs pixel by pixel, as the models are defined. Supports every form and defines the result of FloatWarp.
    bool DoPlainly();

    // The samplers fill @p out with values of 0..1, one for each channel of the source or the one for @p channel, and
    // return the integer position. They return false only for a position outside the image.

    /// Take the pixel at the position rounded down.
    bool Interpolate0(float *out, float x, float y, int &ix, int &iy);
    bool Interpolate0c(float &out, int channel, float x, float y, int &ix, int &iy);
    /// Interpolate bilinearly. Positions are truncated toward zero: those between -1 and 0 belong to column or row 0,
    /// and are extrapolated. In the last column and the last row, there is no neighbor: @p out keeps the caller's
    /// value. For an integer S, the value is truncated to an integer and wrapped to the width of S.
    bool InterpolateN(float *out, float x, float y, int &ix, int &iy);
    bool InterpolateNc(float &out, int channel, float x, float y, int &ix, int &iy);

    // Keep this order; hosts that share kernels rely on it.
    Sample sample = nullptr;
    SampleChannel sampleChannel = nullptr;
    int order = 0; // 2 with the bilinear samplers; unused
    KImage *source = nullptr;
    newLCP *lcp = nullptr;
    bool distortion = false;
    bool chromatic = false;
    bool falloff = false;
    KImage *destination = nullptr;
    float inScale = 0.0F;  // from channel values of the source to 0..1
    float outScale = 0.0F; // from 0..1 to channel values of the destination
    int width = 0;         // of the source
    int height = 0;
    int channels = 0;

private:
    struct Models;
    struct Corners;

    bool GainOnly(const Models &models);
    bool WarpOnce(const Models &models);
    bool ShiftRedAndBlue(const Models &models);
    bool WarpThrice(const Models &models);

    template <typename Pixel> void ForEachPixel(Pixel pixel);
    void StoreColor(unsigned char *target, int channel, float value) const;
    void StoreAlphaOfSum(unsigned char *target) const;
    bool FloatWarpServes() const;
    bool ImagesAreWhole() const;
    bool HaveThreeChannels() const;
    bool SourceCoversDestination() const;
    bool IsInside(int ix, int iy) const { return ix >= 0 && ix < width && iy >= 0 && iy < height; }
    Corners CornersAt(float x, float y, int ix, int iy) const;
};
