/// A scene to photograph: its color everywhere, and the positions of its straight edges and even patches.
#pragma once

#include <string>
#include <vector>

#include "shading.h"

namespace Samples {

/// A straight edge between two colors, with its ends in pixels of the corrected picture.
struct StraightEdge {
    std::string name;
    Point from;
    Point to;
};

/// A square of nearly one color, in pixels of the corrected picture.
struct EvenPatch {
    std::string name;
    Point center;
    double halfSize;
};

/// Base class of scenes. At() may be called on several threads at once.
class Scene {
public:
    virtual ~Scene() = default;

    /// Returns the mean color over a footprint of the corrected picture, even far outside its frame.
    virtual Rgb At(const Footprint &cell) const = 0;
    virtual std::vector<StraightEdge> Edges() const = 0;
    virtual std::vector<EvenPatch> Patches() const = 0;
};

} // namespace Samples
