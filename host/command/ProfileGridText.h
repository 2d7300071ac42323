// Readable text about the entries of a lens profile, as a grid of focal lengths, distances and apertures.
#pragma once

#include <QString>

struct LensProfile;
struct ProfileEntry;

/// Returns the names of the entry's models, out of "distortion, green, red, blue, light"; empty if it has none.
QString ModelNames(const ProfileEntry &entry);

/// Returns the profile's names and frames, and one row for each focal length, distance and set of models, with its
/// apertures. @p profile must have entries; @p file is its name as the user wrote it.
QString ProfileGridText(const QString &file, const LensProfile &profile);

/// Returns one line per note: "FILE:LINE: warning: entry 2: TEXT". "error" means that a model or entry can't be used.
QString ProfileNotesText(const QString &file, const LensProfile &profile);
