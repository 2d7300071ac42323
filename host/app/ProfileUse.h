// What a lens profile can do for pictures: which corrections, of which size.
#pragma once

#include "Corrections.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

struct ProfileReport;

struct ProfileUse {
    QString path;       // absolute
    QString problem;    // why it can't be used at all, in one line; empty if it can
    Corrections holds;  // what it can correct
    QStringList lacks;  // for each other correction: its name and what the profile lacks, or how it is flawed
    QStringList flaws;  // of these the ones whose models are there and no good
    double width = 0.0; // of the pictures it was made for, lying on their long side
    double height = 0.0;

    Q_DECLARE_TR_FUNCTIONS(ProfileUse)
};

/// Reads the profile @p file.
ProfileUse JudgeProfile(const QString &file);
ProfileUse JudgeProfile(const QString &file, const ProfileReport &report);

/// What to correct by @p profile, which has no problem: what is asked for or, if nothing is, all that it holds. None,
/// with
/// @p why filled, if a correction that is asked for can't be had, or nothing at all can: a script that asks for a
/// correction must not take a picture without it for done. Passing it on to the plug-in would be worse: where chromatic
/// models are lacking, it leaves the other corrections out too.
Corrections ChooseCorrections(const ProfileUse &profile, const Corrections &asked, QString *why);

/// What to tell about a picture of another size than the profile's; empty if the sizes go together. Pictures that
/// aren't wider than high are turned on their side for the correction, and so are compared.
QString SizeMismatch(const ProfileUse &profile, int width, int height);

/// "distortion, vignetting"
QString NamesOf(const Corrections &corrections);
