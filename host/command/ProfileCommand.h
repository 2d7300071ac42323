// `vitrelux profile`: what lens profiles hold, for people to read.
#pragma once

#include "CommandLine.h"

class Console;

/// Needs no application object. Every profile is shown; one that can't be used makes the result kSomeFailed.
ExitCode RunProfile(const QStringList &files, Console *console);
