// `vitrelux profile`: what lens profiles hold, whether they are sound, and what they do to a picture.
#pragma once

#include "CommandLine.h"

class Console;

/// Makes the application object if a picture is read or drawn; to be called once, from main, before any thread runs.
/// Every profile is shown; one that can't be used makes the result kSomeFailed.
ExitCode RunProfile(const ProfileOptions &options, Console *console);
