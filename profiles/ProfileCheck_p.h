// What is odd in a profile that could be read: for people, and before anything is fitted by it.
#pragma once

#include "LensProfile.h"

/// No file gets more notes than this; the last one says so.
constexpr int kMaxProfileNotes = 1000;

/// Adds a note, up to kMaxProfileNotes.
void AddNote(LensProfile *profile, qint64 line, int entry, const QString &text, bool unusable = false);

/// Notes what the entries' values say: missing frames, folds within the frame, light at or below 0, entries that are
/// one. Changes no entry.
void CheckProfile(LensProfile *profile);
