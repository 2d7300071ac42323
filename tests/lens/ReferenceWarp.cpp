#include "ReferenceWarp.h"

#include "newLCP.h"

#include <QDomDocument>
#include <QRandomGenerator>

#include <cmath>

namespace {

TestForm FormOf(const Pixels &pixels)
{
    const unsigned short type = pixels.channels == 1 ? GFL_GREY : pixels.channels == 3 ? GFL_RGB : GFL_RGBA;
    return {"", type, pixels.bits, pixels.channels};
}

float LargestValue(int bits)
{
    return bits == 8 ? 255.0F : bits == 16 ? 65535.0F : 1.0F;
}

/// Returns @p value as read back from a channel of @p bits bits: integers keep only their low bits.
float Stored(float value, int bits)
{
    if (bits == 32)
        return value;
    const double whole = std::isfinite(value) && std::abs(value) < 2e9F ? std::trunc(double(value)) : 0.0;
    const double range = bits == 8 ? 256.0 : 65536.0;
    return float(whole - range * std::floor(whole / range));
}

float Smaller(float limit, float value)
{
    return value < limit ? value : limit;
}

/// Reference warp, computed one pixel at a time.
struct ReferenceWarp {
    const newLCP &lcp;
    const Pixels &source;
    WarpSwitches switches;
    Pixels &destination;

    bool HasVignette() const { return switches.falloff && lcp.vignetteModel.found; }

    float Gain(float x, float y) const
    {
        if (!HasVignette())
            return 1.0F;
        const LensParam &model = lcp.vignetteModel;
        const double longSide = std::max(source.width, source.height);
        const float u = (x - float(double(lcp.scale) * model.centerX)) / float(longSide * model.focalLengthX);
        const float v = (y - float(double(lcp.scale) * model.centerY)) / float(longSide * model.focalLengthY);
        return model.ComputeFalloff(u * u + v * v);
    }

    /// Returns whether the position is inside. If so, @p value is the sample in the range 0..1; bilinear sampling
    /// leaves it unchanged in the last column and row.
    bool Sample(float x, float y, int channel, float &value) const
    {
        const double column = switches.mode == 0 ? std::floor(double(x)) : std::trunc(double(x));
        const double row = switches.mode == 0 ? std::floor(double(y)) : std::trunc(double(y));
        if (!(column >= 0 && column < source.width && row >= 0 && row < source.height))
            return false;
        const int ix = int(column), iy = int(row);
        const float inScale = 1.0F / LargestValue(source.bits);
        if (switches.mode == 0) {
            value = source.At(ix, iy, channel) * inScale;
        } else if (ix + 1 < source.width && iy + 1 < source.height) {
            const float fx = x - float(ix), fy = y - float(iy);
            const float top = source.At(ix, iy, channel) * (1.0F - fx) + source.At(ix + 1, iy, channel) * fx;
            const float bottom = source.At(ix, iy + 1, channel) * (1.0F - fx) + source.At(ix + 1, iy + 1, channel) * fx;
            value = Stored(top * (1.0F - fy) + bottom * fy, source.bits) * inScale;
        }
        return true;
    }

    void Store(int x, int y, int channel, float value)
    {
        destination.At(x, y, channel) = Stored(Smaller(LargestValue(destination.bits), value), destination.bits);
    }

    void StoreAlpha(int x, int y, bool opaque)
    {
        if (source.channels > 3)
            destination.At(x, y, 3) = opaque ? 1.0F : 0.0F;
    }

    void StoreAlphaOfSum(int x, int y)
    {
        StoreAlpha(x, y, destination.At(x, y, 0) + destination.At(x, y, 1) + destination.At(x, y, 2) > 0.0F);
    }

    /// Samples one color and stores it with the gain, or 0 outside.
    bool Move(int x, int y, int channel, float fromX, float fromY, float gain)
    {
        float value = 0.0F;
        const bool inside = Sample(fromX, fromY, channel, value);
        Store(x, y, channel, inside ? gain * value * LargestValue(destination.bits) : 0.0F);
        return inside;
    }

    void Main(const LensParam &model, int x, int y, float &outX, float &outY) const
    {
        if (lcp.modelKind != 0)
            model.WarpFisheye(float(x), float(y), outX, outY, lcp.scale);
        else
            model.ComputeDistortion(float(x), float(y), outX, outY, lcp.scale);
    }

    void PixelOfGainOnly(int x, int y)
    {
        for (int c = 0; c < source.channels; ++c) {
            const float value = Gain(float(x), float(y)) * source.At(x, y, c);
            Store(x, y, c, value > 0.0F ? value : 0.0F);
        }
        StoreAlpha(x, y, true);
    }

    void PixelOfOneWarp(int x, int y)
    {
        float fromX, fromY;
        Main(lcp.distortionModel, x, y, fromX, fromY);
        bool inside = false;
        for (int c = 0; c < 3; ++c)
            inside = Move(x, y, c, fromX, fromY, Gain(fromX, fromY));
        StoreAlpha(x, y, inside);
    }

    void PixelOfShift(int x, int y)
    {
        float redX, redY, blueX, blueY;
        lcp.redGreenModel.ComputeDistortion(float(x), float(y), redX, redY, lcp.scale);
        lcp.blueGreenModel.ComputeDistortion(float(x), float(y), blueX, blueY, lcp.scale);
        const float gain = Gain(redX, redY);
        if (!Move(x, y, 0, redX, redY, gain))
            return;
        Store(x, y, 1, gain * source.At(x, y, 1));
        if (Move(x, y, 2, blueX, blueY, gain))
            StoreAlphaOfSum(x, y);
    }

    void PixelOfThreeWarps(int x, int y)
    {
        float fromX[3], fromY[3];
        Main(lcp.greenModel, x, y, fromX[1], fromY[1]);
        lcp.redGreenModel.ComputeDistortion(fromX[1], fromY[1], fromX[0], fromY[0], lcp.scale);
        lcp.blueGreenModel.ComputeDistortion(fromX[1], fromY[1], fromX[2], fromY[2], lcp.scale);
        const float gain = Gain(fromX[1], fromY[1]);
        if (Move(x, y, 0, fromX[0], fromY[0], gain) && Move(x, y, 1, fromX[1], fromY[1], gain)
            && Move(x, y, 2, fromX[2], fromY[2], gain))
            StoreAlphaOfSum(x, y);
    }

    void Pixel(int x, int y)
    {
        if (switches.distortion && switches.chromatic)
            PixelOfThreeWarps(x, y);
        else if (switches.chromatic)
            PixelOfShift(x, y);
        else if (switches.distortion)
            PixelOfOneWarp(x, y);
        else
            PixelOfGainOnly(x, y);
    }

    bool Runs() const
    {
        if (switches.chromatic)
            return lcp.greenModel.found;
        return switches.distortion ? lcp.distortionModel.found : HasVignette();
    }
};

} // namespace

GuardedImage::GuardedImage(const Pixels &pixels, int padding)
    : TestImage(FormOf(pixels), pixels.width, pixels.height, padding), m_shape(pixels), m_padding(padding)
{
    FillWithNoise(1);
    for (int i = 0; i < pixels.values.size(); ++i) {
        const int pixel = i / pixels.channels;
        SetSample(pixel % pixels.width, pixel / pixels.width, i % pixels.channels, double(pixels.values[i]));
    }
}

Pixels GuardedImage::Read() const
{
    Pixels pixels = m_shape;
    for (int i = 0; i < pixels.values.size(); ++i) {
        const int pixel = i / pixels.channels;
        pixels.values[i] = float(Sample(pixel % pixels.width, pixel / pixels.width, i % pixels.channels));
    }
    return pixels;
}

bool GuardedImage::GuardsAreIntact() const
{
    return GuardedImage(Read(), m_padding).Bytes() == Bytes();
}

void RenderReference(const newLCP &lcp, const Pixels &source, WarpSwitches switches, Pixels &destination)
{
    ReferenceWarp warp{lcp, source, switches, destination};
    if (!warp.Runs())
        return;
    for (int x = 0; x < destination.width; ++x) {
        for (int y = 0; y < destination.height; ++y)
            warp.Pixel(x, y);
    }
}

QString FirstDifference(const Pixels &got, const Pixels &want)
{
    for (int i = 0; i < want.values.size(); ++i) {
        const float a = got.values[i], b = want.values[i];
        if (!(a == b || (std::isnan(a) && std::isnan(b)))) {
            const int pixel = i / want.channels;
            return QStringLiteral("pixel %1, %2, channel %3: got %4, want %5")
                .arg(pixel % want.width)
                .arg(pixel / want.width)
                .arg(i % want.channels)
                .arg(double(a), 0, 'g', 9)
                .arg(double(b), 0, 'g', 9);
        }
    }
    return QString();
}

Pixels RandomPixels(int width, int height, int channels, int bits, quint32 seed)
{
    QRandomGenerator random(seed);
    Pixels pixels{width, height, channels, bits, QVector<float>(width * height * channels)};
    for (float &value : pixels.values)
        value = bits == 32 ? float(random.bounded(1.4) - 0.2) : float(random.bounded(1 << bits));
    return pixels;
}

newLCP NoModels()
{
    bool ok = false;
    newLCP lcp((QDomElement()), ok);
    lcp.scale = 1.0F;
    return lcp;
}

newLCP StrongModels(int width, int height, int kind, quint32 seed)
{
    QRandomGenerator random(seed);
    const auto near = [&random](double middle, double range) { return middle + range * (random.bounded(2.0) - 1.0); };
    newLCP lcp = NoModels();
    lcp.scale = float(near(1.0, 0.1));
    lcp.modelKind = kind;
    for (LensParam *model :
         {&lcp.distortionModel, &lcp.greenModel, &lcp.redGreenModel, &lcp.blueGreenModel, &lcp.vignetteModel}) {
        const bool vignette = model == &lcp.vignetteModel;
        model->centerX = near(0.5, 0.1) * width;
        model->centerY = near(0.5, 0.1) * height;
        model->focalLengthX = near(0.9, 0.2);
        model->focalLengthY = near(0.9, 0.2);
        model->focalPixels = float(model->focalLengthX * width);
        for (int i = 0; i < (vignette ? 3 : 1 + int(seed % 2)); ++i)
            model->coefficients.append(float(near(0.0, vignette ? 2.0 : 0.4)));
        model->Found();
    }
    lcp.redGreenModel.scaleFactor = float(near(1.0, 0.1));
    lcp.blueGreenModel.scaleFactor = float(near(1.0, 0.1));
    lcp.distortionModel.tangential1 = near(0.0, 0.05);
    lcp.distortionModel.tangential2 = near(0.0, 0.05);
    return lcp;
}
