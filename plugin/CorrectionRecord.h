// The record of a fitted correction in the XMP of its result.
#pragma once

#include "Fit.h"
#include "KImage.h"

/// Returns the names of the corrections made: "distortion, lateral color, vignetting".
QString CorrectionsText(const FitResult &fit);

/// Returns the XMP properties of the result (docs/fitting.md lists them): ours, which tell later runs what was done,
/// and those of camera raw settings, which tell other programs. Corrections that the source's XMP reports remain
/// reported. Reads the profile's file for its digest.
/// @param mimeType  of the result.
KImage::EditRecord CorrectionRecord(const FitResult &fit, const PictureFacts &facts, const FitOptions &options,
                                    const QString &mimeType);
