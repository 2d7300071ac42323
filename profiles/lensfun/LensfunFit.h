// Fits a picture with lensfun's database instead of a profile.
#pragma once

#include "Fit.h"

/// Like Fit, but uses the database's entry for the picture's lens. FitResult::profile is "lensfun:MAKER/LENS", or
/// empty, with the reason in `why`, if the lens isn't found. Thread-safe once the image module has started.
FitResult FitByLensfun(const PictureFacts &facts, const FitOptions &options);
