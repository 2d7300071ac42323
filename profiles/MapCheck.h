// Check of a profile's models by the maps that they give.
#pragma once

#include <QString>

struct LensProfile;

/// Adds an error for each model that can't correct any picture, because nearly all of it would stay empty, up to the
/// limit of notes. Much slower than reading: it tabulates every model. Changes no entry.
/// @return why the profile can't be used, if that is so for all models of all entries; otherwise empty.
QString CheckMaps(LensProfile *profile);
