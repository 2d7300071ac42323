// A lens from lensfun's database at one setting, as functions of the radius in pixels.
#pragma once

#include <functional>
#include <optional>

struct lfLens;

/// The frame to which a lens's models are applied.
struct LensfunFrame {
    double width = 0.0, height = 0.0; // of the whole picture that the camera took, in pixels
    double cropFactor = 0.0;          // of the sensor area that the picture shows
};

/// The setting that the picture was taken at. 0: unknown.
struct LensfunSetting {
    double focalMm = 0.0, aperture = 0.0, distanceM = 0.0;
};

/// Factors as functions of the radius, in pixels from the center; nullopt if the database has no model. All are pure
/// functions.
struct LensfunCurves {
    using Curve = std::function<double(double radiusPx)>;

    double centerX = 0.0, centerY = 0.0; // from the middle of the whole picture, in pixels
    std::optional<Curve> distortion;     // source radius divided by that in an ideal picture of the lens's projection
    std::optional<Curve> red, blue;      // source radius divided by green's
    std::optional<Curve> light;          // share of the light at the source radius, linear
    /// Only for fisheyes: the image height, in focal lengths, of a ray at an angle (radians) from the axis.
    std::optional<Curve> imageHeight;
    double focalPx = 0.0; // for fisheyes; the real focal length if the database has it
};

/// Returns the curves that the library interpolates at @p setting. Formulas and units are lensfun's (its manual, "Lens
/// distortion", "Lateral chromatic aberration", "Vignetting"): the unit of radii is half the short side of the
/// calibrated frame for distortion and color, and half its diagonal for light. Sizes are measured between pixel
/// centers, so they are one less than the pixel count.
LensfunCurves CurvesOf(const lfLens &lens, const LensfunFrame &frame, const LensfunSetting &setting);
