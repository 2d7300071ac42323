/// The lens models of a profile in double precision, forward and inverse, for making and checking samples.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Samples {

struct Point {
    double x = 0;
    double y = 0;
};

/// One model of a profile. Lengths and positions are fractions of width - 1 or height - 1, as in profile files.
struct LensModel {
    double focalLength = 1; ///< fraction of width - 1 for both axes; for the vignetting model, see Gain
    double centerX = 0.5;
    double centerY = 0.5;
    std::vector<double> coefficients = {}; ///< radial terms, or the three terms of the vignetting model
    double tangential1 = 0;
    double tangential2 = 0;
    double scaleFactor = 1;                  ///< only in the red/green and blue/green models
    std::optional<double> focalLengthY = {}; ///< if it differs; only the vignetting model uses it
};

/// A complete profile. Positions are pixels of a landscape picture; the center of the top-left pixel is (0, 0).
struct LensProfile {
    std::string name;
    std::string camera;
    std::string lens;
    int width = 0;
    int height = 0;
    bool fisheye = false;
    LensModel distortion;
    std::optional<LensModel> green;
    std::optional<LensModel> redGreen; ///< always perspective, applied to green's position
    std::optional<LensModel> blueGreen;
    std::optional<LensModel> vignette;
};

enum class Projection { Perspective, Fisheye };

/// Returns the position in the photograph to which one model maps @p corrected.
///
/// Perspective: multiplies the radius r, in focal lengths, by 1 + c0 r^2 + c1 r^4 + c2 r^6, and adds the tangential
/// terms of Brown's model. Fisheye: r becomes atan(r) + c0 atan(r)^3 + c1 atan(r)^5 + c2 atan(r)^7. The scale factor
/// stretches center and focal length.
Point ToSource(const LensProfile &profile, const LensModel &model, Projection projection, Point corrected);

/// A position found by the inverse mapping, with the mapping's Jacobian matrix there.
struct Inverse {
    Point corrected;
    double derivative[2][2];
};

/// Returns the position that ToSource maps to @p source. Only for models without tangential terms, and only within the
/// radius up to which they are monotonic.
Inverse ToCorrected(const LensProfile &profile, const LensModel &model, Projection projection, Point source);

/// Returns the vignetting model's gain at a position of the photograph: the reciprocal of 1 + a x + b x^2 + d x^3, as a
/// power series truncated after x^4, where x is the squared radius in focal lengths. Here, focal lengths are fractions
/// of the longer side.
double Gain(const LensProfile &profile, Point source);

/// Camera orientation: a portrait is rotated counterclockwise by 90 degrees into the profile's landscape frame.
enum class Hold { Landscape, Portrait };

/// Converts from the upright picture to the profile's frame and back; @p uprightWidth in pixels.
Point Turned(Point upright, int uprightWidth, Hold hold);
Point Upright(Point turned, int uprightWidth, Hold hold);

/// Returns the projection of the distortion and the green model of @p profile.
Projection MainProjection(const LensProfile &profile);

/// Returns the profile as the text of an .lcp file, with values as child elements.
std::string ProfileText(const LensProfile &profile);

} // namespace Samples
