// The fit of a picture by lensfun's database instead of a profile.
#pragma once

#include "Fit.h"

/// Like Fit, by the picture's lens in the database. Its FitResult::profile is "lensfun:MAKER/LENS"; empty, with the
/// reason in `why`, if it has none. Any thread, once the image module has started.
FitResult FitByLensfun(const PictureFacts &facts, const FitOptions &options);
