// `vitrelux correct`: each picture through the plug-in, several at once.
#pragma once

#include "CommandLine.h"

class Console;

/// Makes the application object, loads the plug-in and corrects. To be called once, from main, before any thread runs.
ExitCode RunCorrect(const CorrectOptions &options, Console *console);
