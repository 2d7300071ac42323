// What the entries of a profile do over the radius, as curves to plot.
#pragma once

#include "ProfileFitText.h"

#include <QPointF>
#include <QVector>

/// A function of the radius. x is the radius from the model's center in halves of the frame's diagonal, 0 to 1; a curve
/// ends early where the model folds back, ends, or goes beyond what can be plotted.
using ProfileCurve = QVector<QPointF>;

/// One entry, or the blend of a picture. Curves of models that aren't there are empty.
struct ProfileCurves {
    QString name;            // "24 mm f/2.8 3 m"
    double focalMm = 0.0;    // 0: unknown, or the blend
    ProfileCurve distortion; // percent: what is to come to a radius lies this much farther out
    ProfileCurve red, blue;  // pixels farther out than green, of the profile's frame or of the picture
    ProfileCurve light;      // EV against the middle; negative where it is darker
};

/// The curves of entries, at most kMostPlottedEntries spread evenly over the file; entries without a frame are left
/// out. Distortion of fisheyes counts against the equidistant projection.
///
/// @param fit  the picture whose frame counts; null: each entry's own.
QVector<ProfileCurves> CurvesOfEntries(const LensProfile &profile, const ProfileFit *fit);
constexpr int kMostPlottedEntries = 200;

/// The curves of what is applied to the picture.
ProfileCurves CurvesOfBlend(const LensProfile &profile, const ProfileFit &fit);
