#include "LensfunCurves.h"

#include "PictureFrame.h"

#include <lensfun/lensfun.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kFarDistanceM = 1000.0; // lensfun's "far", for unknown distances

using Curve = LensfunCurves::Curve;

/// Pixels per unit of the models' radii.
struct Norms {
    double distortionPx; // half the short side of the calibrated frame
    double lightPx;      // half its diagonal
    double shiftPx;      // unit of the lens's center: half the short side of the picture's frame
};

Norms NormsOf(const lfLens &lens, const LensfunFrame &frame)
{
    const double width = std::max(frame.width - 1.0, 1.0), height = std::max(frame.height - 1.0, 1.0);
    const double half = std::min(width, height) / 2.0;
    const double aspect = std::max(width, height) / std::min(width, height);
    // Diagonal of the calibrated frame divided by its short side.
    const double calibrated = std::hypot(double(lens.AspectRatio), 1.0);
    const double scale = std::hypot(aspect, 1.0) * frame.cropFactor / double(lens.CropFactor) / calibrated;
    return {half * scale, half * scale * calibrated, half};
}

std::optional<Curve> Distortion(const lfLens &lens, double focalMm, double unitPx)
{
    lfLensCalibDistortion model;
    if (!lens.InterpolateDistortion(static_cast<float>(focalMm), model))
        return std::nullopt;
    const double a = double(model.Terms[0]), b = double(model.Terms[1]), c = double(model.Terms[2]);
    switch (model.Model) {
    case LF_DIST_MODEL_POLY3:
        return [=](double radius) { return 1.0 - a + a * std::pow(radius / unitPx, 2); };
    case LF_DIST_MODEL_POLY5:
        return [=](double radius) {
            const double x = std::pow(radius / unitPx, 2);
            return 1.0 + (a + b * x) * x;
        };
    case LF_DIST_MODEL_PTLENS:
        return [=](double radius) {
            const double r = radius / unitPx;
            return ((a * r + b) * r + c) * r + 1.0 - a - b - c;
        };
    default:
        return std::nullopt;
    }
}

/// Returns the curve of red or blue, whose terms lensfun stores in one array.
/// @param first  0 for red, 1 for blue.
std::optional<Curve> Color(const lfLensCalibTCA &model, int first, double unitPx)
{
    const double v = double(model.Terms[first]), c = double(model.Terms[first + 2]), b = double(model.Terms[first + 4]);
    switch (model.Model) {
    case LF_TCA_MODEL_LINEAR:
        return [=](double) { return v; };
    case LF_TCA_MODEL_POLY3:
        return [=](double radius) {
            const double r = radius / unitPx;
            return (b * r + c) * r + v;
        };
    default:
        return std::nullopt;
    }
}

std::optional<Curve> Light(const lfLens &lens, const LensfunSetting &setting, double unitPx)
{
    lfLensCalibVignetting model;
    const double distance = setting.distanceM > 0.0 ? std::min(setting.distanceM, kFarDistanceM) : kFarDistanceM;
    if (!(setting.aperture > 0.0)
        || !lens.InterpolateVignetting(static_cast<float>(setting.focalMm), static_cast<float>(setting.aperture),
                                       static_cast<float>(distance), model)
        || model.Model != LF_VIGNETTING_MODEL_PA)
        return std::nullopt;
    const double a = double(model.Terms[0]), b = double(model.Terms[1]), c = double(model.Terms[2]);
    return [=](double radius) {
        const double x = std::pow(radius / unitPx, 2);
        return 1.0 + ((c * x + b) * x + a) * x;
    };
}

/// Returns the image height, in focal lengths, of a ray at @p angle from the axis.
double ImageHeight(lfLensType type, double angle)
{
    switch (type) {
    case LF_FISHEYE_STEREOGRAPHIC:
        return 2.0 * std::tan(angle / 2.0);
    case LF_FISHEYE_EQUISOLID:
        return 2.0 * std::sin(angle / 2.0);
    case LF_FISHEYE_ORTHOGRAPHIC:
        return std::sin(angle);
    case LF_FISHEYE_THOBY: // M. Thoby, "Fisheye lens", on the AF DX 10.5 mm
        return 1.47 * std::sin(0.713 * angle);
    default: // LF_FISHEYE: equidistant
        return angle;
    }
}

bool IsFisheye(lfLensType type)
{
    return type == LF_FISHEYE || type == LF_FISHEYE_STEREOGRAPHIC || type == LF_FISHEYE_EQUISOLID
        || type == LF_FISHEYE_ORTHOGRAPHIC || type == LF_FISHEYE_THOBY;
}

/// Returns the focal length in pixels: the real one if the database has it.
double FocalPx(const lfLens &lens, const LensfunFrame &frame, double focalMm)
{
    lfLensCalibRealFocal real;
    const bool known = lens.InterpolateRealFocal(static_cast<float>(focalMm), real) && real.RealFocal > 0.0F;
    const double diagonalMm = kFullFrameDiagonalMm / frame.cropFactor;
    return (known ? double(real.RealFocal) : focalMm) * std::hypot(frame.width, frame.height) / diagonalMm;
}

} // namespace

LensfunCurves CurvesOf(const lfLens &lens, const LensfunFrame &frame, const LensfunSetting &setting)
{
    const Norms norms = NormsOf(lens, frame);
    LensfunCurves curves;
    curves.centerX = double(lens.CenterX) * norms.shiftPx;
    curves.centerY = double(lens.CenterY) * norms.shiftPx;
    curves.distortion = Distortion(lens, setting.focalMm, norms.distortionPx);
    lfLensCalibTCA color;
    if (lens.InterpolateTCA(static_cast<float>(setting.focalMm), color)) {
        curves.red = Color(color, 0, norms.distortionPx);
        curves.blue = Color(color, 1, norms.distortionPx);
    }
    curves.light = Light(lens, setting, norms.lightPx);
    if (IsFisheye(lens.Type)) {
        curves.focalPx = FocalPx(lens, frame, setting.focalMm);
        curves.imageHeight = [type = lens.Type](double angle) { return ImageHeight(type, angle); };
    }
    return curves;
}
