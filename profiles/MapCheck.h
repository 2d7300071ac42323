// Checks the maps that a profile's models produce.
#pragma once

#include <QString>

struct LensProfile;

/// Adds an error, up to the limit of notes, for each model that can't correct any picture because nearly all of it
/// would stay empty. Much slower than reading, because every model is tabulated. Changes no entry.
/// @return why the profile can't be used, if no model of any entry can; otherwise empty.
QString CheckMaps(LensProfile *profile);
