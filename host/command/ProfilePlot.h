// Plot of a lens profile: distortion, color shift and light against the radius.
#pragma once

#include "PlotScene.h"
#include "ProfileCurves.h"

/// Returns three panels side by side with a legend below. Entries are thin, with one color per focal length; @p blend,
/// if not null, is bold and black.
PlotScene PlotOf(const QString &title, const QVector<ProfileCurves> &entries, const ProfileCurves *blend);
