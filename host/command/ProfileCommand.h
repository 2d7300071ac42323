// `vitrelux profile`: the content of lens profiles, their problems, and their effect on a picture.
#pragma once

#include "CommandLine.h"

class Console;

/// Creates the application object if a picture is read or a plot is drawn; call it once, from main, before any thread
/// runs. Shows every profile. The result is kSomeFailed if one can't be used.
ExitCode RunProfile(const ProfileOptions &options, Console *console);
