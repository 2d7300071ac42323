// `vitrelux wizard`: choice of pictures, the plug-in's page and the run in one window.
#pragma once

#include "CommandLine.h"

class Console;

/// Creates the application object, loads the plug-in and shows the window until it is closed. Call it once, from main,
/// before any thread runs. @return kSomeFailed if no window can be shown or a picture failed.
ExitCode RunWizard(const WizardOptions &options, Console *console);
