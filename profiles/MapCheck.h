// Checks the maps that a profile's models produce.
#pragma once

#include <QString>

struct LensProfile;

/// Adds a note (see AddNote) for each model that can't correct any picture because nearly all of the result would be
/// empty. Much slower than reading the profile, because every model is tabulated. Changes no entry.
/// @return why the profile can't be used, if no model of any entry is usable; otherwise an empty string.
QString CheckMaps(LensProfile *profile);
