// A picture fitted by lensfun's database in place of a profile.
#pragma once

#include "Fit.h"

/// As Fit, by the lens that the database has for the picture. Its FitResult::profile is "lensfun:MAKER/LENS"; empty,
/// with the reason in `why`, if it has none. Any thread, once the image module has started.
FitResult FitByLensfun(const PictureFacts &facts, const FitOptions &options);
