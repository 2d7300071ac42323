// JSON of a lens profile, for scripts.
#pragma once

#include <QJsonObject>

struct LensProfile;

/// Returns every entry with its focal length, distance, aperture, frame, names and models, and all notes. Values
/// missing from the file are left out; an infinite distance is the text "infinity". Entries are counted from 1, as in
/// messages.
QJsonObject ProfileJson(const LensProfile &profile);
