// A lens profile as a record for scripts.
#pragma once

#include <QJsonObject>

struct LensProfile;

/// Every entry with its setting, frame, names and models, and all notes. Values that the file doesn't give are left
/// out; an infinite distance is the text "infinity". Entries are counted from 1, as in messages.
QJsonObject ProfileJson(const LensProfile &profile);
