// Blends entries into the maps of a correction. Curves are blended, because coefficients cannot be.
#pragma once

#include "Correction.h"
#include "FitOptions.h"
#include "MapTables_p.h"
#include "PictureFrame.h"
#include "ProfileGrid.h"

/// An entry with its frame and weight for one picture.
struct BlendPart {
    const ProfileEntry *entry;
    EntryFrame frame;
    double weight; // the sum over all parts is 1
};
using BlendParts = QVector<BlendPart>;

/// Maps of one picture, blended from a profile's entries. Tables extend to the largest radius that any framing needs.
class ProfileBlend {
public:
    /// @p frame must outlive the object. @p pixels is the picture's size.
    ProfileBlend(const PictureFrame &frame, const QSize &pixels) : m_frame(frame), m_pixels(pixels) { }

    /// Blends the map from the corrected picture to the source.
    /// @param byGreen  whether to use the green model of entries that have one.
    /// @param amount   factor that scales the displacement.
    RadialMap Geometry(const BlendParts &parts, bool byGreen, Projection projection, double amount) const;
    /// Blends the map from green's sampling position to that of red or blue, depending on @p color
    /// (&ProfileEntry::redGreen or blueGreen); entries without this model don't move the color.
    RadialMap Color(const BlendParts &parts, std::optional<ProfileModel> ProfileEntry::*color, double amount) const;
    /// Blends the gain.
    /// @param amount  factor that scales the exposure values.
    GainMap Light(const BlendParts &parts, double amount) const;

private:
    struct Part {
        const ProfileModel *model; // null: the identity
        bool isFisheye;
        double unitPx; // focal length in pixels
        double weight;
    };
    Part PartOf(const BlendPart &part, const ProfileModel *model) const;
    MapMiddle MiddleOf(const QVector<Part> &parts, const BlendParts &entries, bool scaled) const;

    const PictureFrame &m_frame;
    QSize m_pixels;
};
