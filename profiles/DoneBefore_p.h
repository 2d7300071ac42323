// Corrections that a camera or another program already applied to the picture.
#pragma once

#include "MetadataLookup_p.h"
#include "PictureFacts.h"

/// Fills distortionDone, chromaticDone and vignettingDone, and their "Tried" counterparts, of a rendered picture with
/// known make and model. Camera raw pixels are always uncorrected.
void FindDoneBefore(const MetadataLookup &metadata, PictureFacts *facts);
