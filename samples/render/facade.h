/// A row of painted houses above an arcade, with a tiled square in front.
#pragma once

#include "scene.h"

namespace Samples {

enum class WindowKind { Attic, Plain, Tall };

struct Story {
    WindowKind kind;
    double top; ///< of the windows
    double bottom;
    double band; ///< top of the string course under the story
};

/// Dimensions of a facade in pixels of the corrected picture.
struct FacadePlan {
    double centerX;
    double bay;                    ///< distance between window axes
    std::vector<double> pilasters; ///< axes of the pilasters between houses, from left to right
    double ridge;
    double eaves;
    std::vector<Story> stories;
    double arcade;                    ///< top of the ground floor
    double ground;                    ///< foot of the wall
    double square;                    ///< where the steps end and the tiles begin
    double horizon;                   ///< eye level
    double bottom;                    ///< of the picture
    double width;                     ///< of the picture
    std::vector<double> lengthStrips; ///< dark strips that recede from the viewer, in tiles from the middle
    std::vector<int> crossStrips;     ///< rows of dark tiles, counted from the viewer
};

class Facade : public Scene {
public:
    explicit Facade(FacadePlan plan);

    Rgb At(const Footprint &cell) const override;
    std::vector<StraightEdge> Edges() const override;
    std::vector<EvenPatch> Patches() const override;

private:
    struct Bay {
        int index;
        int house;
        double x; ///< from the axis of the bay
    };

    Bay BayAt(double x) const;
    void PaintSky(Brush &brush) const;
    void PaintRoof(Brush &brush) const;
    void PaintCornice(Brush &brush) const;
    void PaintWall(Brush &brush, const Bay &bay) const;
    void PaintStory(Brush &brush, const Bay &bay, const Story &story) const;
    void PaintArcade(Brush &brush, const Bay &bay) const;
    void PaintArch(Brush &brush, const Bay &bay) const;
    void PaintAwning(Brush &brush, const Bay &bay) const;
    void PaintPilasters(Brush &brush) const;
    void PaintSteps(Brush &brush) const;
    void PaintBush(Brush &brush) const;
    Rgb Building(const Footprint &cell) const;
    Rgb Floor(const Footprint &cell) const;
    double RowEdge(double row) const;

    FacadePlan m_plan;
};

/// Returns the plan of three houses, 2400 x 1600.
FacadePlan LandscapePlan();
/// Returns the plan of one tall house between its neighbors, 1600 x 2400.
FacadePlan PortraitPlan();

} // namespace Samples
