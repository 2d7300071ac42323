// The one function that decides how a picture is corrected. No pixels.
#pragma once

#include "Correction.h"
#include "FitOptions.h"
#include "LensProfile.h"
#include "PictureFacts.h"
#include "ProfileGrid.h"

/// What comes of it. Empty Correction and a reason in `why` if nothing is to be done.
struct FitResult {
    Correction correction;
    bool distortion = false, chromatic = false, vignetting = false; // what is done
    QString profile;                                                // path, or "lensfun:MAKER/LENS"
    QVector<EntryWeight> geometryEntries, colorEntries, lightEntries;
    QString entries;          // as text, for people: "24 mm f/2.8 3 m 60 %, 35 mm f/2.8 3 m 40 %"
    QStringList assumed;      // each assumption, for people
    QString why;              // why nothing, or not everything, is done, in one line; empty if all is
    QString reason;           // why this profile, where it was found
    QStringList nearest;      // if none was found: up to three that came close
    bool isAmbiguous = false; // several profiles stand equal, so none was taken
    double zoom = 1.0;
    double fieldShare = 1.0;  // share of the photographed field that is kept
    bool leavesEmpty = false; // some pixels of the result have no light: it needs alpha
};

/// Fits @p profile to the picture: which entries, on which frame, framed how. Nothing is guessed: what the picture
/// doesn't tell and the profile needs is a reason to leave the correction out. Any thread, once the image module has
/// started (for the table of cameras).
FitResult Fit(const LensProfile &profile, const PictureFacts &facts, const FitOptions &options);
