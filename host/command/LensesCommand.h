// `vitrelux lenses`: the lenses for which `correct` finds a profile without --profile.
#pragma once

#include "CommandLine.h"

class Console;

/// Lists the folders that are searched, with the number of files and lenses in each, or, if words are given, the lenses
/// whose names contain all of them; a profile's names include those of the camera that it was made with.
/// @return kSomeFailed if no lens is found, or if the folder named by the user doesn't exist.
ExitCode RunLenses(const LensesOptions &options, Console *console);
