// Record of a fitted correction in the XMP of its result.
#pragma once

#include "Fit.h"
#include "KImage.h"

/// Returns the names of the corrections made: "distortion, lateral color, vignetting".
QString CorrectionsText(const FitResult &fit);

/// Returns the XMP properties of the result (docs/fitting.md lists them): ours, which record the correction for later
/// runs, and those of camera raw settings, for other programs. Corrections that the source's XMP reports remain
/// reported. Reads the profile to compute its digest; throws KException if it can't be read.
/// @param mimeType  Type of the result.
KImage::EditRecord CorrectionRecord(const FitResult &fit, const PictureFacts &facts, const FitOptions &options,
                                    const QString &mimeType);
