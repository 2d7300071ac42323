// What a camera or a program corrected before the picture came here.
#pragma once

#include "MetadataLookup_p.h"
#include "PictureFacts.h"

/// Fills distortionDone, chromaticDone and vignettingDone of a rendered picture, whose make and model are known
/// already. Camera raw pixels are never corrected before.
void FindDoneBefore(const MetadataLookup &metadata, PictureFacts *facts);
