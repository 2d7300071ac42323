// The function that decides how a picture is corrected. It reads no pixels.
#pragma once

#include "Correction.h"
#include "FitOptions.h"
#include "LensProfile.h"
#include "PictureFacts.h"
#include "ProfileGrid.h"

/// The result of a fit. If there is nothing to correct, the Correction is empty and `why` has the reason.
struct FitResult {
    Correction correction;
    bool distortion = false, chromatic = false, vignetting = false; // the corrections made
    QString profile;                                                // path, or "lensfun:MAKER/LENS"
    QString profileName;                                            // as stored in the profile; may be empty
    QVector<EntryWeight> geometryEntries, colorEntries, lightEntries;
    QString entries;          // for display: "24 mm f/2.8 3 m 60 %, 35 mm f/2.8 3 m 40 %"
    QStringList assumed;      // for display: one line per assumption
    QString why;              // one line: why something was left out; empty if nothing was left out
    QString reason;           // "chosen" by the user, or why this profile was found
    QStringList nearest;      // if no profile was found: up to three near matches from profiles and three from lensfun
    bool isAmbiguous = false; // several profiles fit equally well, so none was used
    double zoom = 1.0;
    double fieldShare = 1.0;  // share of the photographed field that is kept
    bool leavesEmpty = false; // some pixels of the result have no source: it needs alpha
};

/// Fits @p profile to the picture: chooses entries, frame and framing. Nothing is guessed: a correction that needs a
/// fact missing from the picture is left out, with a reason. Thread-safe once the image module has started (for the
/// table of cameras).
FitResult Fit(const LensProfile &profile, const PictureFacts &facts, const FitOptions &options);

/// Removes the correction of lateral color from the fit of a gray picture, whose only channel is sampled at green's
/// position.
void LeaveOutColor(FitResult *fit);
