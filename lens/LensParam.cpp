#include "LensParam.h"

#include "Arctangent_p.h"

#include <cmath>

LensParam::LensParam()
{
    Init();
}

void LensParam::Init()
{
    scaleFactor = 1.0F;
    focalPixels = 0.0F;
    found = false;
}

void LensParam::Warp(LensModel kind, float x, float y, float &outX, float &outY, float scale) const
{
    switch (kind) {
    case LensModel::Perspective:
        return ComputeDistortion(x, y, outX, outY, scale);
    case LensModel::Fisheye:
        return WarpFisheye(x, y, outX, outY, scale);
    }
}

void LensParam::ComputeDistortion(float x, float y, float &outX, float &outY, float scale) const
{
    const float s = scale * scaleFactor;
    const float f = s * focalPixels;
    const float cx = static_cast<float>(centerX * s);
    const float cy = static_cast<float>(centerY * s);
    const float u = (x - cx) / f;
    const float v = (y - cy) / f;
    const float u2 = u * u;
    const float v2 = v * v;
    const float r2 = u2 + v2;
    const float k = ComputeRadialDistortion(r2);
    if (tangential1 == 0.0 && tangential2 == 0.0) {
        outX = cx + f * (k * u);
        outY = cy + f * (k * v);
        return;
    }
    const double t = (2.0 * u) * v;
    const float dx = static_cast<float>((2.0 * u2 + r2) * tangential2 + t * tangential1);
    const float dy = static_cast<float>((2.0 * v2 + r2) * tangential1 + t * tangential2);
    outX = cx + f * (k * u + dx);
    outY = cy + f * (k * v + dy);
}

void LensParam::WarpFisheye(float x, float y, float &outX, float &outY, float scale) const
{
    const float s = scale * scaleFactor;
    const float f = scale * focalPixels * scaleFactor; // not s * focalPixels: the last bit may differ
    const float cx = static_cast<float>(centerX * s);
    const float cy = static_cast<float>(centerY * s);
    const float u = (x - cx) / f;
    const float v = (y - cy) / f;
    const float r = std::sqrt(u * u + v * v);
    const float a = Arctangent(r);
    const float a3 = a * a * a;
    const float *c = coefficients.constData();
    float g = 0.0F;
    if (coefficients.size() == 1)
        g = (a + c[0] * a3) / r;
    else if (coefficients.size() == 2)
        g = (a + (c[0] + c[1] * (a * a)) * a3) / r;
    outX = cx + g * (f * u);
    outY = cy + g * (f * v);
}

float LensParam::ComputeRadialDistortion(float r2) const
{
    // Products in single precision, sums in double: the terms are far smaller than the 1 that they are added to.
    const float r4 = r2 * r2;
    const float *c = coefficients.constData();
    switch (coefficients.size()) {
    case 1:
        return static_cast<float>(1.0 + c[0] * r2);
    case 2:
        return static_cast<float>(1.0 + c[0] * r2 + c[1] * r4);
    case 3:
        return static_cast<float>(1.0 + c[0] * r2 + c[1] * r4 + c[2] * r2 * r4);
    default:
        return 1.0F;
    }
}

float LensParam::ComputeFalloff(float r2) const
{
    const float *c = coefficients.constData();
    const int count = coefficients.size();
    const float a = count > 0 ? c[0] : 0.0F;
    const float b = count > 1 ? c[1] : 0.0F;
    const float d = count > 2 ? c[2] : 0.0F;
    const float x2 = r2 * r2;
    const float a2 = a * a;
    return 1.0F - a * r2 + (a2 - b) * x2 - (a2 * a - 2.0F * a * b + d) * (x2 * r2)
        + (a2 * a2 - 3.0F * a2 * b + 2.0F * a * d + b * b) * (x2 * x2);
}
