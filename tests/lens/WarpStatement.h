// What a warp must write, stated pixel by pixel without regard to speed; and images to check it on.
#pragma once

#include "KImage.h"
#include "newLCP.h"

#include <QString>
#include <QVector>

/// Pixel values apart from any image: what an image holds, widened to float, interleaved.
struct Pixels {
    int width = 0, height = 0, channels = 0;
    int bits = 0; // 8, 16 or 32
    QVector<float> values;

    float &At(int x, int y, int channel) { return values[(y * width + x) * channels + channel]; }
    float At(int x, int y, int channel) const { return values[(y * width + x) * channels + channel]; }
};

/// An image on a block of its own: rows @p padding bytes longer than their pixels, and guard bytes in that padding and
/// around the block that nobody may change.
class GuardedImage {
public:
    GuardedImage(const Pixels &pixels, int padding);
    GuardedImage(const GuardedImage &) = delete;
    GuardedImage &operator=(const GuardedImage &) = delete;

    Pixels Read() const;
    bool GuardsAreWhole() const;

    KImage image;

private:
    unsigned char *Pixel(int x, int y);

    Pixels m_shape;
    int m_pixelBytes;
    int m_strideBytes;
    QVector<unsigned char> m_block;
};

struct WarpSwitches {
    bool distortion = false, chromatic = false, falloff = false;
    int mode = 1;
};

/// Changes @p destination as newLCP::Render must for images that go together.
void StateWarp(const newLCP &lcp, const Pixels &source, WarpSwitches switches, Pixels &destination);

/// Where two pictures differ first, with both values; empty if nowhere. Values that are no numbers are equal.
QString FirstDifference(const Pixels &got, const Pixels &want);

/// Values over the whole range of the depth; floats go below 0 and above 1 too.
Pixels RandomPixels(int width, int height, int channels, int bits, quint32 seed);

/// A profile without any model, scale 1.
newLCP NoModels();

/// All five models for a picture of that size, strong enough to cross every border.
newLCP StrongModels(int width, int height, int kind, quint32 seed);
