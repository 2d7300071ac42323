// A check of settings files before Qt reads them, because Qt does not check them.
#pragma once

#include <QString>

/// Returns why the settings of @p organization and @p application, of the user or of the system, must not be read: a
/// file is not a regular one, so reading could block forever, or is far too large. Empty if they may be read.
QString SettingsProblem(const QString &organization, const QString &application);

/// Stops Qt from reading and writing settings files in this process.
void PassOverSettingsFiles();
