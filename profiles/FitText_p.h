// What a fit used, for people.
#pragma once

#include "Fit.h"

/// "24 mm f/2.8 3 m", or the line of an entry without a setting.
QString EntryText(const ProfileEntry &entry);

/// "24 mm f/2.8 3 m 60 %, 35 mm f/2.8 3 m 40 %", by correction where they differ; empty if none takes part.
QString EntriesText(const LensProfile &profile, const FitResult &result);
