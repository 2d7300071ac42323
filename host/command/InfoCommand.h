// `vitrelux info`: what is known of pictures, and which lens profile goes with them.
#pragma once

#include "CommandLine.h"

class Console;

/// Makes the application object. To be called once, from main, before any thread runs. Every picture is shown; one that
/// can't be read makes the result kSomeFailed, one without a profile does not.
ExitCode RunInfo(const InfoOptions &options, Console *console);
