#include "InterpolatorKim.h"

#include "FloatWarp.h"
#include "KImage.h"
#include "newLCP.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace {

constexpr float kTwoTo31 = 2147483648.0F;
constexpr int kMaxChannels = 4;

/// Truncates toward zero; NaN and values out of range give the smallest int.
inline int Truncate(float value)
{
    const bool fits = value >= -kTwoTo31 && value < kTwoTo31; // false for NaN
    return fits ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

// Channels are accessed through memcpy, because rows of a caller's block may start at any address.

template <typename T> inline T Value(const unsigned char *pixel, int channel)
{
    T value;
    std::memcpy(&value, pixel + static_cast<size_t>(channel) * sizeof(T), sizeof(T));
    return value;
}

template <typename T> inline void SetValue(unsigned char *pixel, int channel, T value)
{
    std::memcpy(pixel + static_cast<size_t>(channel) * sizeof(T), &value, sizeof(T));
}

/// Stores a channel; integer types get the low bits of the truncated value.
template <typename T> inline void Store(unsigned char *pixel, int channel, float value)
{
    if constexpr (std::is_floating_point_v<T>)
        SetValue<T>(pixel, channel, value);
    else
        SetValue<T>(pixel, channel, static_cast<T>(Truncate(value)));
}

/// Returns whether rows and pixels of @p image are long enough for its channels of type T.
template <typename T> bool HasCompleteRows(const KImage &image)
{
    const GFL_BITMAP &bitmap = *image.m_bitmap;
    return bitmap.Data && bitmap.ComponentsPerPixel <= kMaxChannels
        && bitmap.BytesPerPixel >= bitmap.ComponentsPerPixel * sizeof(T)
        && bitmap.BytesPerLine >= static_cast<qint64>(bitmap.Width) * bitmap.BytesPerPixel;
}

/// Vignetting gain by position, scaled by the actual image's size, not the profile's.
class Vignette {
public:
    Vignette(const LensParam &model, float scale, int longSide)
        : m_model(model),
          m_cx(static_cast<float>(scale * model.centerX)),
          m_cy(static_cast<float>(scale * model.centerY)),
          m_fx(static_cast<float>(longSide * model.focalLengthX)),
          m_fy(static_cast<float>(longSide * model.focalLengthY))
    {
    }
    float GainAt(float x, float y) const
    {
        const float u = (x - m_cx) / m_fx;
        const float v = (y - m_cy) / m_fy;
        return m_model.ComputeFalloff(u * u + v * v);
    }

private:
    LensParam m_model;
    float m_cx, m_cy, m_fx, m_fy;
};

} // namespace

/// Copies of the models, made once per run, so that the pixel loops access neither the profile nor shared vectors.
template <typename S, typename D> struct InterpolatorKim<S, D>::Models {
    explicit Models(const InterpolatorKim &run)
        : distortion(run.lcp->distortionModel),
          green(run.lcp->greenModel),
          redGreen(run.lcp->redGreenModel),
          blueGreen(run.lcp->blueGreenModel),
          vignette(run.lcp->vignetteModel, run.lcp->scale, std::max(run.width, run.height)),
          scale(run.lcp->scale),
          kind(run.lcp->Kind()),
          hasVignette(run.lcp->vignetteModel.found && run.falloff)
    {
    }

    float GainAt(float x, float y) const { return hasVignette ? vignette.GainAt(x, y) : 1.0F; }
    /// Applies the distortion or green model, according to the profile's kind.
    void Warp(const LensParam &model, float x, float y, float &outX, float &outY) const
    {
        model.Warp(kind, x, y, outX, outY, scale);
    }
    /// Applies the red or blue model, which is perspective in every profile.
    void Shift(const LensParam &model, float x, float y, float &outX, float &outY) const
    {
        model.ComputeDistortion(x, y, outX, outY, scale);
    }

    const LensParam distortion, green, redGreen, blueGreen;
    const Vignette vignette;
    const float scale;
    const LensModel kind;
    const bool hasVignette;
};

/// Four pixels around a position, and the position between them.
template <typename S, typename D> struct InterpolatorKim<S, D>::Corners {
    /// Interpolates one channel, in the range of S.
    float Blend(int channel) const
    {
        const float top = Value<S>(p00, channel) * (1.0F - fx) + Value<S>(p10, channel) * fx;
        const float bottom = Value<S>(p01, channel) * (1.0F - fx) + Value<S>(p11, channel) * fx;
        const float value = top * (1.0F - fy) + bottom * fy;
        if constexpr (std::is_floating_point_v<S>)
            return value;
        else
            return static_cast<S>(Truncate(value));
    }

    const unsigned char *p00, *p10, *p01, *p11;
    float fx, fy;
};

template <typename S, typename D>
typename InterpolatorKim<S, D>::Corners InterpolatorKim<S, D>::CornersAt(float x, float y, int ix, int iy) const
{
    const unsigned char *top = source->getData(ix, iy);
    const unsigned char *bottom = top + source->bytesPerLine();
    const unsigned pixelBytes = source->m_bitmap->BytesPerPixel;
    return {top, top + pixelBytes, bottom, bottom + pixelBytes, x - static_cast<float>(ix), y - static_cast<float>(iy)};
}

// --- Sampling ---

template <typename S, typename D>
bool InterpolatorKim<S, D>::Interpolate0(float *out, float x, float y, int &ix, int &iy)
{
    ix = Truncate(std::floor(x));
    iy = Truncate(std::floor(y));
    if (!IsInside(ix, iy))
        return false;
    const unsigned char *pixel = source->getData(ix, iy);
    for (int c = 0; c < channels; ++c)
        out[c] = Value<S>(pixel, c) * inScale;
    return true;
}

template <typename S, typename D>
bool InterpolatorKim<S, D>::Interpolate0c(float &out, int channel, float x, float y, int &ix, int &iy)
{
    ix = Truncate(std::floor(x));
    iy = Truncate(std::floor(y));
    if (!IsInside(ix, iy))
        return false;
    out = Value<S>(source->getData(ix, iy), channel) * inScale;
    return true;
}

template <typename S, typename D>
bool InterpolatorKim<S, D>::InterpolateN(float *out, float x, float y, int &ix, int &iy)
{
    ix = Truncate(x);
    iy = Truncate(y);
    if (!IsInside(ix, iy))
        return false;
    if (!IsInside(ix + 1, iy + 1))
        return true;
    const Corners corners = CornersAt(x, y, ix, iy);
    for (int c = 0; c < channels; ++c)
        out[c] = corners.Blend(c) * inScale;
    return true;
}

template <typename S, typename D>
bool InterpolatorKim<S, D>::InterpolateNc(float &out, int channel, float x, float y, int &ix, int &iy)
{
    ix = Truncate(x);
    iy = Truncate(y);
    if (!IsInside(ix, iy))
        return false;
    if (IsInside(ix + 1, iy + 1))
        out = CornersAt(x, y, ix, iy).Blend(channel) * inScale;
    return true;
}

// --- Shared by the paths ---

template <typename S, typename D> bool InterpolatorKim<S, D>::ImagesAreWhole() const
{
    return HasCompleteRows<S>(*source) && HasCompleteRows<D>(*destination)
        && destination->m_bitmap->ComponentsPerPixel >= source->m_bitmap->ComponentsPerPixel;
}

template <typename S, typename D> bool InterpolatorKim<S, D>::HaveThreeChannels() const
{
    return channels >= 3; // the destination has at least as many channels
}

template <typename S, typename D> bool InterpolatorKim<S, D>::SourceCoversDestination() const
{
    return destination->width() <= width && destination->height() <= height;
}

/// Calls pixel(x, y, target) for each pixel of the destination, row by row.
template <typename S, typename D> template <typename Pixel> void InterpolatorKim<S, D>::ForEachPixel(Pixel pixel)
{
    const int columns = destination->width();
    const int rows = destination->height();
    const unsigned pixelBytes = destination->m_bitmap->BytesPerPixel;
    for (int y = 0; y < rows; ++y) {
        unsigned char *target = destination->getData(0, y);
        for (int x = 0; x < columns; ++x, target += pixelBytes)
            pixel(x, y, target);
    }
}

/// Clamps only to the upper limit, which also replaces NaN.
template <typename S, typename D>
void InterpolatorKim<S, D>::StoreColor(unsigned char *target, int channel, float value) const
{
    Store<D>(target, channel, std::min(outScale, value));
}

template <typename S, typename D> void InterpolatorKim<S, D>::StoreAlphaOfSum(unsigned char *target) const
{
    if (channels > 3) {
        const auto sum = Value<D>(target, 0) + Value<D>(target, 1) + Value<D>(target, 2);
        SetValue<D>(target, 3, static_cast<D>(sum > 0 ? 1 : 0));
    }
}

// --- The four paths ---

template <typename S, typename D> bool InterpolatorKim<S, D>::GainOnly(const Models &models)
{
    if (!models.hasVignette)
        return true;
    if (!SourceCoversDestination())
        return false;
    ForEachPixel([&](int x, int y, unsigned char *target) {
        const float gain = models.GainAt(static_cast<float>(x), static_cast<float>(y));
        const unsigned char *pixel = source->getData(x, y);
        for (int c = 0; c < channels; ++c)
            StoreColor(target, c, std::max(0.0F, gain * Value<S>(pixel, c)));
        if (channels > 3)
            SetValue<D>(target, 3, D(1));
    });
    return true;
}

template <typename S, typename D> bool InterpolatorKim<S, D>::WarpOnce(const Models &models)
{
    if (!models.distortion.found)
        return true;
    if (!HaveThreeChannels())
        return false;
    ForEachPixel([&](int x, int y, unsigned char *target) {
        float pixel[kMaxChannels] = {0.0F, 0.0F, 0.0F, 1.0F};
        float sx, sy;
        int ix, iy;
        models.Warp(models.distortion, static_cast<float>(x), static_cast<float>(y), sx, sy);
        const float gain = models.GainAt(sx, sy);
        const bool inside = (this->*sample)(pixel, sx, sy, ix, iy);
        for (int c = 0; c < 3; ++c)
            StoreColor(target, c, inside ? gain * pixel[c] * outScale : 0.0F);
        if (channels > 3)
            SetValue<D>(target, 3, D(inside ? 1 : 0));
    });
    return true;
}

template <typename S, typename D> bool InterpolatorKim<S, D>::ShiftRedAndBlue(const Models &models)
{
    if (!models.green.found)
        return true;
    if (!HaveThreeChannels() || !SourceCoversDestination())
        return false;
    ForEachPixel([&](int x, int y, unsigned char *target) {
        float red = 0.0F, blue = 0.0F;
        float rx, ry, bx, by;
        int ix, iy;
        models.Shift(models.redGreen, static_cast<float>(x), static_cast<float>(y), rx, ry);
        models.Shift(models.blueGreen, static_cast<float>(x), static_cast<float>(y), bx, by);
        const float gain = models.GainAt(rx, ry);
        if (!(this->*sampleChannel)(red, 0, rx, ry, ix, iy)) {
            SetValue<D>(target, 0, D(0));
            return;
        }
        StoreColor(target, 0, gain * red * outScale);
        StoreColor(target, 1, gain * Value<S>(source->getData(x, y), 1)); // unscaled
        if (!(this->*sampleChannel)(blue, 2, bx, by, ix, iy)) {
            SetValue<D>(target, 2, D(0));
            return;
        }
        StoreColor(target, 2, gain * blue * outScale);
        StoreAlphaOfSum(target);
    });
    return true;
}

template <typename S, typename D> bool InterpolatorKim<S, D>::WarpThrice(const Models &models)
{
    if (!models.green.found)
        return true;
    if (!HaveThreeChannels())
        return false;
    ForEachPixel([&](int x, int y, unsigned char *target) {
        float px[3], py[3]; // positions of red, green, blue
        models.Warp(models.green, static_cast<float>(x), static_cast<float>(y), px[1], py[1]);
        models.Shift(models.redGreen, px[1], py[1], px[0], py[0]);
        models.Shift(models.blueGreen, px[1], py[1], px[2], py[2]);
        const float gain = models.GainAt(px[1], py[1]);
        for (int c = 0; c < 3; ++c) {
            float value = 0.0F;
            int ix, iy;
            if (!(this->*sampleChannel)(value, c, px[c], py[c], ix, iy)) {
                SetValue<D>(target, c, D(0));
                return; // the following channels keep their values
            }
            StoreColor(target, c, gain * value * outScale);
        }
        StoreAlphaOfSum(target);
    });
    return true;
}

template <typename S, typename D> bool InterpolatorKim<S, D>::Do()
{
    if constexpr (std::is_same_v<S, float> && std::is_same_v<D, float>) {
        if (FloatWarpServes()) {
            const FloatWarp warp(*lcp, {distortion, chromatic, falloff}, FloatWarp::Frame::Landscape, *source);
            warp.Render(*destination, 0, FloatWarp::Unwritten::Stays);
            return true;
        }
    }
    return DoPlainly();
}

/// Returns whether FloatWarp supports this run.
template <typename S, typename D> bool InterpolatorKim<S, D>::FloatWarpServes() const
{
    return sample == &InterpolatorKim::InterpolateN && sampleChannel == &InterpolatorKim::InterpolateNc
        && FloatWarp::Serves(*source) && FloatWarp::Serves(*destination) && inScale == 1.0F && outScale == 1.0F
        && channels == 4 && width == source->width() && height == source->height()
        && (distortion || SourceCoversDestination());
}

template <typename S, typename D> bool InterpolatorKim<S, D>::DoPlainly()
{
    if (!ImagesAreWhole())
        return false;
    const Models models(*this);
    if (chromatic)
        return distortion ? WarpThrice(models) : ShiftRedAndBlue(models);
    return distortion ? WarpOnce(models) : GainOnly(models);
}

template class InterpolatorKim<unsigned char, unsigned char>;
template class InterpolatorKim<unsigned char, unsigned short>;
template class InterpolatorKim<unsigned char, float>;
template class InterpolatorKim<unsigned short, unsigned char>;
template class InterpolatorKim<unsigned short, unsigned short>;
template class InterpolatorKim<unsigned short, float>;
template class InterpolatorKim<float, unsigned char>;
template class InterpolatorKim<float, unsigned short>;
template class InterpolatorKim<float, float>;
