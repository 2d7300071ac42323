// Text and JSON about the effect of a lens profile on a picture.
#pragma once

#include "Fit.h"

#include <QJsonObject>

/// A picture, the facts about it, and the fit of one profile to it.
struct ProfileFit {
    QString picture; // as the user wrote it
    PictureFacts facts;
    FitResult result;

    bool DoesAnything() const { return result.correction.ChangesAnything(); }
};

/// Fits @p profile to the picture, as if the user had chosen it.
ProfileFit FitTo(const LensProfile &profile, const QString &picture, const PictureFacts &facts);

/// Returns the zoom of the framing and how much of the field of view it keeps.
QString FramingText(const FitResult &result);
QString ProfileFitText(const LensProfile &profile, const ProfileFit &fit);
/// Returns the fit as a record. Entries are counted from 1.
QJsonObject ProfileFitJson(const LensProfile &profile, const ProfileFit &fit);
