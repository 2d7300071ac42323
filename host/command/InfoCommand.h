// `vitrelux info`: facts about pictures, and the lens profiles that fit them.
#pragma once

#include "CommandLine.h"

class Console;

/// Creates the application object; call it once, from main, before any thread runs. Describes every picture. The
/// result is kSomeFailed if one can't be read, but not if one has no profile.
ExitCode RunInfo(const InfoOptions &options, Console *console);
