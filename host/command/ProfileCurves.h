// Corrections of a profile's entries as functions of the radius, to be plotted.
#pragma once

#include "ProfileFitText.h"

#include <QPointF>
#include <QVector>

/// A function of the radius. x is the distance from the model's center divided by half the frame's diagonal, 0 to 1; a
/// curve ends early where the model folds back, ends, or leaves the plotted range.
using ProfileCurve = QVector<QPointF>;

/// The curves of one entry, or of the blend for a picture. Curves of missing models are empty.
struct ProfileCurves {
    QString name;            // for example "24 mm f/2.8 3 m"
    double focalMm = 0.0;    // 0: unknown, or the blend
    ProfileCurve distortion; // how much farther out the source position is than the corrected one, in percent
    ProfileCurve red, blue; // how much farther out they are than green, in pixels of the profile's frame or the picture
    ProfileCurve light;     // EV relative to the center; negative where the picture is darker
};

/// Returns the curves of the entries, at most kMaxPlottedEntries spread evenly over the file; entries without a frame
/// or a model are left out. Distortion of fisheyes is relative to the equidistant projection.
///
/// @param fit  plots the curves in the frame of its picture; null: in the frame of each entry.
QVector<ProfileCurves> CurvesOfEntries(const LensProfile &profile, const ProfileFit *fit);
constexpr int kMaxPlottedEntries = 200;

/// Returns the curves of the correction that is applied to the picture, but without zoom. A fisheye's distortion is
/// relative to the equidistant projection.
ProfileCurves CurvesOfBlend(const LensProfile &profile, const ProfileFit &fit);
