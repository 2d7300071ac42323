// Readable text about the entries of a fit.
#pragma once

#include "Fit.h"

/// Returns text such as "24 mm f/2.8 3 m", or the line number of an entry without a setting.
QString EntryText(const ProfileEntry &entry);

/// Returns text such as "24 mm f/2.8 3 m 60 %, 35 mm f/2.8 3 m 40 %", or one such list per correction if they differ;
/// empty without entries.
QString EntriesText(const LensProfile &profile, const FitResult &result);
