// Blends entries into the maps of a correction. Curves are blended, because coefficients cannot be.
#pragma once

#include "Correction.h"
#include "FitOptions.h"
#include "MapTables_p.h"
#include "PictureFrame.h"
#include "ProfileGrid.h"

/// An entry with its weight and frame in one picture.
struct BlendPart {
    const ProfileEntry *entry;
    EntryFrame frame;
    double weight; // the sum over all parts is 1
};
using BlendParts = QVector<BlendPart>;

/// Blends the maps of one picture. Tables extend to the largest radius of any framing.
class ProfileBlend {
public:
    /// @p frame must outlive the object. @p pixels is the picture's size.
    ProfileBlend(const PictureFrame &frame, const QSize &pixels) : m_frame(frame), m_pixels(pixels) { }

    /// Blends the map from the corrected picture to the source. @p byGreen: uses green's model if an entry has one.
    /// @param amount  share of the displacement.
    RadialMap Geometry(const BlendParts &parts, bool byGreen, Projection projection, double amount) const;
    /// Blends the map from green's sampling position to red's or blue's, by @p color (&ProfileEntry::redGreen or
    /// blueGreen); entries without it don't move the color.
    RadialMap Color(const BlendParts &parts, std::optional<ProfileModel> ProfileEntry::*color, double amount) const;
    /// Blends the gain.
    /// @param amount  share of the exposure values.
    GainMap Light(const BlendParts &parts, double amount) const;

private:
    struct Part {
        const ProfileModel *model; // null: the identity
        bool isFisheye;
        double unitPx; // focal length
        double weight;
    };
    Part PartOf(const BlendPart &part, const ProfileModel *model) const;
    MapMiddle MiddleOf(const QVector<Part> &parts, const BlendParts &of, bool scaled) const;

    const PictureFrame &m_frame;
    QSize m_pixels;
};
