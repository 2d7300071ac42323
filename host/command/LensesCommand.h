// The command that shows which lenses can be corrected without a profile being named.
#pragma once

#include "CommandLine.h"

class Console;

/// Lists the places that are searched and what they hold or, with words, the lenses whose names hold all of them.
/// @return kSomeFailed if no lens is found, or if the folder that the user names doesn't exist.
ExitCode RunLenses(const LensesOptions &options, Console *console);
