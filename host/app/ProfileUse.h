// The corrections that a lens profile supports, and the picture size that it fits.
#pragma once

#include "Corrections.h"

#include <QString>
#include <QStringList>

struct ProfileReport;

struct ProfileUse {
    QString path;       // absolute
    QString problem;    // why it cannot be used at all, in one line; empty if it can
    Corrections holds;  // supported corrections
    QStringList lacks;  // for each other correction: its name and the missing data or the flaw
    QStringList flaws;  // the entries of `lacks` whose models exist but are flawed
    double width = 0.0; // of the pictures it was made for, in landscape orientation
    double height = 0.0;
};

/// Reads the profile @p file.
ProfileUse JudgeProfile(const QString &file);
ProfileUse JudgeProfile(const QString &file, const ProfileReport &report);

/// Chooses the corrections to make with @p profile, whose `problem` must be empty: the requested ones or, if none are
/// requested, all that it supports. Returns none, with the reason in @p why, if a requested correction is not available
/// or the profile supports none: scripts must not mistake an uncorrected picture for success. The plug-in cannot decide
/// this, because without chromatic models it skips the other corrections too.
Corrections ChooseCorrections(const ProfileUse &profile, const Corrections &asked, QString *why);

/// Returns a note if the picture's size differs from the profile's; empty if the sizes match. Pictures that aren't
/// wider than tall are rotated for the correction, and compared in that orientation.
QString SizeMismatch(const ProfileUse &profile, int width, int height);

/// Returns a list such as "distortion, vignetting".
QString NamesOf(const Corrections &corrections);
