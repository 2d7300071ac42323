// What a lens profile would do to a picture, for people and for scripts.
#pragma once

#include "Fit.h"

#include <QJsonObject>

/// A picture with what is known of it, and how one profile fits it.
struct ProfileFit {
    QString picture; // as the user wrote it
    PictureFacts facts;
    FitResult result;

    bool DoesAnything() const { return result.correction.ChangesAnything(); }
};

/// Fits @p profile to the picture, as if the user had chosen it.
ProfileFit FitTo(const LensProfile &profile, const QString &picture, const PictureFacts &facts);

QString ProfileFitText(const LensProfile &profile, const ProfileFit &fit);
/// Entries are counted from 1.
QJsonObject ProfileFitJson(const LensProfile &profile, const ProfileFit &fit);
