// A lens profile as a picture: distortion, color shift and light over the radius.
#pragma once

#include "PlotScene.h"
#include "ProfileCurves.h"

/// Three panels side by side with a legend below. Entries are thin, in one color per focal length, and @p blend, if not
/// null, is bold and black.
PlotScene PlotOf(const QString &title, const QVector<ProfileCurves> &entries, const ProfileCurves *blend);
