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

/// One model of a profile, with values as fractions of the picture's size minus one, as in profile files.
struct LensModel {
    double focalLength = 1; ///< of the width, for both axes of all models but the vignette
    double centerX = 0.5;
    double centerY = 0.5;
    std::vector<double> coefficients = {}; ///< radial terms; for the vignetting model its three terms
    double tangential1 = 0;
    double tangential2 = 0;
    double scaleFactor = 1;                  ///< of the red/green and blue/green models only
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

/// Returns the position in the photograph that one model maps to @p corrected.
///
/// Perspective: outward by the factor 1 + c0 r^2 + c1 r^4 + c2 r^6 with r in focal lengths, plus the tangential terms
/// of Brown's model. Fisheye: r becomes atan(r) + c0 atan(r)^3 + c1 atan(r)^5. The scale factor stretches center and
/// focal length.
Point ToSource(const LensProfile &profile, const LensModel &model, Projection projection, Point corrected);

/// An inverse mapping with its derivatives: the factors that stretch a step along and across the radius.
struct Inverse {
    Point corrected;
    double derivative[2][2];
};

/// Returns the position whose ToSource is @p source. Only for models without tangential terms, where the radius
/// increases.
Inverse ToCorrected(const LensProfile &profile, const LensModel &model, Projection projection, Point source);

/// Returns the vignetting model's gain at a position of the photograph: the reciprocal of 1 + a x + b x^2 + d x^3, as a
/// power series truncated after x^4, with x the squared radius in focal lengths. Focal lengths here are shares of the
/// longer side.
double Gain(const LensProfile &profile, Point source);

/// Camera orientation: a portrait is rotated by 90 degrees to the left into the profile's landscape frame.
enum class Hold { Landscape, Portrait };

/// Converts from the upright picture to the profile's frame and back; @p uprightWidth in pixels.
Point Turned(Point upright, int uprightWidth, Hold hold);
Point Upright(Point turned, int uprightWidth, Hold hold);

/// Returns the projection of the distortion and the green model of @p profile.
Projection MainProjection(const LensProfile &profile);

/// Returns the profile as the text of an .lcp file, values as child elements.
std::string ProfileText(const LensProfile &profile);

} // namespace Samples
