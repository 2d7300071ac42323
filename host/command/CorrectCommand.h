// `vitrelux correct`: corrects pictures through the plug-in, several in parallel.
#pragma once

#include "CommandLine.h"

class Console;

/// Creates the application object, loads the plug-in and corrects the pictures. Call it once, from main, before any
/// thread runs.
ExitCode RunCorrect(const CorrectOptions &options, Console *console);
