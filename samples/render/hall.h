/// A tiled swimming hall seen from one end, modeled in 3D so that it can be photographed by a lens with any angle of
/// view.
#pragma once

#include "scene.h"

namespace Samples {

class Hall : public Scene {
public:
    /// @p focalPx and @p center: focal length and optical center of the corrected picture, in pixels.
    Hall(double focalPx, Point center) : m_focalPx(focalPx), m_center(center) { }

    Rgb At(const Footprint &cell) const override;
    std::vector<StraightEdge> Edges() const override;
    std::vector<EvenPatch> Patches() const override;

private:
    /// A point in meters: to the right, downward and ahead of the eye.
    struct Place {
        double x;
        double y;
        double z;
    };

    Point Project(Place place) const;

    double m_focalPx;
    Point m_center;
};

} // namespace Samples
