// Reference implementation of the warp, one pixel at a time and without regard to speed, and test images for it.
#pragma once

#include "TestImages.h"
#include "newLCP.h"

#include <QString>
#include <QVector>

/// Pixel values without an image, interleaved, as floats.
struct Pixels {
    int width = 0, height = 0, channels = 0;
    int bits = 0; // 8, 16 or 32
    QVector<float> values;

    float &At(int x, int y, int channel) { return values[(y * width + x) * channels + channel]; }
    float At(int x, int y, int channel) const { return values[(y * width + x) * channels + channel]; }
};

/// Image of given pixels, with guard bytes between and after the rows that reveal stray writes.
class GuardedImage : private TestImage {
public:
    GuardedImage(const Pixels &pixels, int padding);

    Pixels Read() const;
    bool GuardsAreIntact() const;

    using TestImage::image;

private:
    Pixels m_shape;
    int m_padding;
};

struct WarpSwitches {
    bool distortion = false, chromatic = false, falloff = false;
    int mode = 1;
};

/// Changes @p destination as newLCP::Render must for images that it accepts.
void RenderReference(const newLCP &lcp, const Pixels &source, WarpSwitches switches, Pixels &destination);

/// Returns the first difference between two pictures, with both values; empty if there is none. NaNs compare equal.
QString FirstDifference(const Pixels &got, const Pixels &want);

/// Returns values over the whole range of the depth; floats also go below 0 and above 1.
Pixels RandomPixels(int width, int height, int channels, int bits, quint32 seed);

/// Returns a profile without models and with a scale of 1.
newLCP NoModels();

/// Returns a profile with all five models for a picture of that size, so strong that positions fall beyond every
/// border.
newLCP StrongModels(int width, int height, int kind, quint32 seed);
