// What the named lens profile can do for the pictures of a run.
#pragma once

#include "Corrections.h"

#include <QString>

struct ProfileUse {
    QString path;      // absolute
    QString problem;   // why it can't be used, in one line; empty if it can
    Corrections holds; // what the warp can do with it
    int width = 0;     // of the pictures it was made for, lying on their long side
    int height = 0;
};

/// Reads the profile @p file.
ProfileUse JudgeProfile(const QString &file);

/// What to tell about a picture of another size than the profile's; empty if the sizes go together. Pictures that
/// aren't wider than high are turned on their side for the correction, and so are compared.
QString SizeMismatch(const ProfileUse &profile, int width, int height);
