// `vitrelux wizard`: the pictures, the plug-in's page and the run in one window.
#pragma once

#include "CommandLine.h"

class Console;

/// Makes the application object, loads the plug-in and shows the window until it is closed. To be called once, from
/// main, before any thread runs. @return kSomeFailed if no window can be shown, or a picture failed in it.
ExitCode RunWizard(const WizardOptions &options, Console *console);
