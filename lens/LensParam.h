// One model of a lens profile: where a point lies in the picture as taken, and how much light it lost there.
#pragma once

#include <QVector>

/// How a model maps positions.
enum class LensModel { Perspective, Fisheye };

/// A radial polynomial around a centre, with a scale.
///
/// Positions are in pixels, the origin at the centre of the top-left pixel, x to the right, y downwards. Warps go from
/// the corrected picture to the picture as taken, so that a caller walks over the pixels he writes. Coordinates are
/// computed in float. @p scale is the size of the picture at hand over the size that the profile was measured at.
///
/// Positions and gains may come out infinite or not a number, at the centre of a fisheye for instance, or with a focal
/// length of 0; callers test `found` first and positions before they convert them.
///
/// Any thread may call the const functions of one object at the same time; they allocate nothing.
class LensParam {
public:
    LensParam();
    LensParam(const LensParam &other) = default;
    LensParam &operator=(const LensParam &other) = default;

    /// Sets scaleFactor to 1, focalPixels to 0 and found to false. Centres, focal lengths as fractions and coefficients
    /// stay, so a model that is read again after this appends to its old coefficients.
    void Init();
    void Reset() { Init(); }
    /// Says that the profile holds this model.
    void Found() { found = true; }

    /// The model of that kind at (x, y).
    void Warp(LensModel kind, float x, float y, float &outX, float &outY, float scale) const;
    /// The perspective model at (x, y): radial polynomial and, unless both are 0, tangential terms.
    void ComputeDistortion(float x, float y, float &outX, float &outY, float scale) const;
    /// The fisheye model at (x, y), for one or two coefficients. With any other number every position is the centre.
    void WarpFisheye(float x, float y, float &outX, float &outY, float scale) const;
    /// 1 + c0 r^2 + c1 r^4 + c2 r^6 for one to three coefficients, at the squared radius @p r2 in focal lengths; 1 for
    /// any other number.
    float ComputeRadialDistortion(float r2) const;
    /// The gain that undoes the light loss 1 + c0 x + c1 x^2 + c2 x^3, at the squared radius @p r2 = x: its reciprocal
    /// as a power series cut after x^4. Missing coefficients count as 0.
    float ComputeFalloff(float r2) const;

    // In this order; hosts that share kernels rely on it.
    float scaleFactor;
    double focalLengthX = 0.0; // as a fraction of the width minus one
    double focalLengthY = 0.0;
    double imageXCenter = 0.0; // optical centre as a fraction of the width minus one
    double imageYCenter = 0.0; // ... of the height minus one
    double centerX = 0.0;      // optical centre in pixels of the profile's picture
    double centerY = 0.0;
    double tangential1 = 0.0;
    double tangential2 = 0.0;
    QVector<float> coefficients; // radial or vignette, in the order of the file
    float focalPixels;           // serves both axes
    bool found;
};
