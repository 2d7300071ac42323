// Checks a profile's values when it is read, and adds notes for the user.
#pragma once

#include "InputLimits.h"
#include "LensProfile.h"

/// Adds a note. Once there are kMaxProfileNotes, adds one that says that the rest are left out, and then no more.
void AddNote(LensProfile *profile, qint64 line, int entry, const QString &text, bool unusable = false);

/// Adds notes about the entries' values: missing frames, folds within the frame, light at or below 0, duplicate
/// entries. Changes no entry.
void CheckProfile(LensProfile *profile);
