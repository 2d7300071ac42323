// Checks settings files before Qt reads them, because Qt doesn't check them.
#pragma once

#include <QString>

/// Returns why the user's or the system's settings of @p organization and @p application must not be read: a file is
/// far too large, or it isn't a regular file, so that reading it could block forever. Empty if they may be read.
QString SettingsProblem(const QString &organization, const QString &application);

/// Stops Qt from reading and writing settings files in this process.
void IgnoreSettingsFiles();
