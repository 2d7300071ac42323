// The one function that decides how a picture is corrected. No pixels.
#pragma once

#include "Correction.h"
#include "FitOptions.h"
#include "LensProfile.h"
#include "PictureFacts.h"

/// A profile entry that takes part, and how much.
struct EntryWeight {
    int entry;     // index into LensProfile::entries
    double weight; // 0 to 1; the sum over one correction is 1
};

/// What comes of it. Empty Correction and a reason in `why` if nothing is to be done.
struct FitResult {
    Correction correction;
    bool distortion = false, chromatic = false, vignetting = false; // what is done
    QString profile;                                                // path, or "lensfun:MAKER/LENS"
    QVector<EntryWeight> geometryEntries, colorEntries, lightEntries;
    QString entries;     // as text, for people: "24 mm f/2.8 3 m 60 %, 35 mm f/2.8 3 m 40 %"
    QStringList assumed; // each assumption, for people
    QString why;         // why nothing, or not everything, is done
    double zoom = 1.0;
    double fieldShare = 1.0; // share of the photographed field that is kept
};

/// Fits @p profile to the picture.
FitResult Fit(const LensProfile &profile, const PictureFacts &facts, const FitOptions &options);
