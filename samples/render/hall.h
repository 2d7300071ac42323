/// A tiled indoor swimming pool seen from one end, modeled in 3D so that lenses with any angle of view can photograph
/// it.
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
    /// A point, in meters to the right of, below and ahead of the viewer's eye.
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
