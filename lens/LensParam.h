// One model of a lens profile: where a point is in the uncorrected picture, and how much light the lens lost there.
#pragma once

#include <QVector>

/// Formula by which a model maps positions.
enum class LensModel { Perspective, Fisheye };

/// Radial polynomial around a center, with a scale.
///
/// Positions are in pixels: the origin is the center of the top left pixel, x points right and y down. Warps map the
/// corrected picture to the uncorrected one, so that callers iterate over destination pixels. Coordinates are computed
/// in single precision. @p scale is the size of the current picture divided by that of the profile's picture.
///
/// Positions and gains may be infinite or NaN, for example at the center of a fisheye or with a focal length of 0.
/// Callers must check `found` first, and must check positions before converting them to integers.
///
/// Any thread may call the const functions of one object at the same time; they allocate nothing.
class LensParam {
public:
    LensParam();
    LensParam(const LensParam &other) = default;
    LensParam &operator=(const LensParam &other) = default;

    /// Sets scaleFactor to 1, focalPixels to 0 and found to false. Centers, focal lengths as fractions and coefficients
    /// stay, so reading a model again appends to its old coefficients.
    void Init();
    void Reset() { Init(); }
    /// Marks the model as present in the profile.
    void Found() { found = true; }

    /// Maps (x, y) with the model of the given kind.
    void Warp(LensModel kind, float x, float y, float &outX, float &outY, float scale) const;
    /// Maps (x, y) with the perspective model: radial polynomial and, unless both are 0, tangential terms.
    void ComputeDistortion(float x, float y, float &outX, float &outY, float scale) const;
    /// Maps (x, y) with the fisheye model, for one or two coefficients. With any other number, every position maps to
    /// the center.
    void WarpFisheye(float x, float y, float &outX, float &outY, float scale) const;
    /// Returns 1 + c0 r^2 + c1 r^4 + c2 r^6 for one to three coefficients, at the squared radius @p r2 in focal
    /// lengths; 1 for any other number.
    float ComputeRadialDistortion(float r2) const;
    /// Returns the gain at the squared radius x = @p r2. The share of the light that remains there is
    /// 1 + c0 x + c1 x^2 + c2 x^3; the gain is its reciprocal, as a power series truncated after x^4. Missing
    /// coefficients count as 0.
    float ComputeFalloff(float r2) const;

    // Keep this order; hosts that share kernels rely on it.
    float scaleFactor;
    double focalLengthX = 0.0; // as a fraction of the width minus one
    double focalLengthY = 0.0;
    double imageXCenter = 0.0; // optical center as a fraction of the width minus one
    double imageYCenter = 0.0; // as a fraction of the height minus one
    double centerX = 0.0;      // optical center in pixels of the profile's picture
    double centerY = 0.0;
    double tangential1 = 0.0;
    double tangential2 = 0.0;
    QVector<float> coefficients; // radial or vignetting, in the order of the file
    float focalPixels;           // for both axes
    bool found;
};
