// `vitrelux info`: facts about pictures, and the lens profiles that fit them.
#pragma once

#include "CommandLine.h"

class Console;

/// Creates the application object; call it once, from main, before any thread runs. Describes every picture; one that
/// can't be read makes the result kSomeFailed, one without a profile does not.
ExitCode RunInfo(const InfoOptions &options, Console *console);
