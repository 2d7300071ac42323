// The entries of a lens profile as a grid of settings, for people.
#pragma once

#include <QString>

struct LensProfile;
struct ProfileEntry;

/// "distortion, green, red, blue, light" as far as the entry holds them; empty if it holds none.
QString ModelNames(const ProfileEntry &entry);

/// The profile's names and frames, and one row for each focal length and distance with the apertures that share their
/// models. @p profile must have entries; @p file is its name as the user wrote it.
QString ProfileGridText(const QString &file, const LensProfile &profile);

/// One line for each note: "FILE:LINE: warning: entry 2: TEXT". An error means that a model or an entry can't be used.
QString ProfileNotesText(const QString &file, const LensProfile &profile);
