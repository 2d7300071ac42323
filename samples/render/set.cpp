#include "set.h"

#include "facade.h"
#include "hall.h"

namespace Samples {
namespace {

/// Returns a wide-angle zoom at its short end, whose barrel distortion bends the long edges of the frame by almost 40
/// pixels.
LensProfile WideAngle()
{
    LensProfile lens;
    lens.name = "Halden M4 - Halden 18-55mm f/2.8-4 (18 mm, f/5.6)";
    lens.camera = "Halden M4";
    lens.lens = "Halden 18-55mm f/2.8-4";
    lens.width = 2400;
    lens.height = 1600;
    lens.distortion = {0.76, 0.5021, 0.4972, {-0.134, 0.0265, -0.0032}};
    lens.green = lens.distortion;
    lens.redGreen = LensModel{0.76, 0.5021, 0.4972, {0.0036, 0.0011}, 0, 0, 1.00018};
    lens.blueGreen = LensModel{0.76, 0.5021, 0.4972, {-0.0034, -0.0009}, 0, 0, 0.99986};
    lens.vignette = LensModel{0.76, 0.4988, 0.5013, {-0.72, 0.08, -0.02}};
    return lens;
}

LensProfile FisheyeLens()
{
    LensProfile lens;
    lens.name = "Halden M4 - Halden 10mm f/2.8 Fisheye";
    lens.camera = "Halden M4";
    lens.lens = "Halden 10mm f/2.8 Fisheye";
    lens.width = 1800;
    lens.height = 1200;
    lens.fisheye = true;
    lens.distortion = {0.46, 0.4985, 0.5014, {-0.031, 0.0024}};
    lens.green = lens.distortion;
    lens.redGreen = LensModel{0.46, 0.4985, 0.5014, {0.0032}};
    lens.blueGreen = LensModel{0.46, 0.4985, 0.5014, {-0.0028}};
    lens.vignette = LensModel{0.46, 0.5, 0.5, {-0.24, 0.01, 0}};
    return lens;
}

} // namespace

std::vector<Sample> AllSamples()
{
    const LensProfile wide = WideAngle();
    const LensProfile fisheye = FisheyeLens();
    const double focalPx = fisheye.distortion.focalLength * (fisheye.width - 1);
    const Point center = {fisheye.distortion.centerX * (fisheye.width - 1),
                          fisheye.distortion.centerY * (fisheye.height - 1)};
    return {
        {"facade",
         "facade",
         wide,
         Hold::Landscape,
         {"Houses on a square", "facade", "2021:06:12 10:41:00", 18, 320, 5.6, 100},
         std::make_shared<Facade>(LandscapePlan())},
        {"facade_portrait",
         "facade",
         wide,
         Hold::Portrait,
         {"House on a square", "facade", "2021:06:12 10:44:30", 18, 320, 5.6, 100},
         std::make_shared<Facade>(PortraitPlan())},
        {"fisheye",
         "fisheye",
         fisheye,
         Hold::Landscape,
         {"Swimming pool", "hall", "2021:06:13 09:15:10", 10, 60, 4.0, 400},
         std::make_shared<Hall>(focalPx, center)},
    };
}

} // namespace Samples
