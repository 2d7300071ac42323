// A look at settings files before Qt reads them, which trusts them blindly.
#pragma once

#include <QString>

/// Why the settings of @p organization and @p application, of the user or of the system, must not be read: a file is
/// not a regular one, so that reading could wait forever, or is far larger than settings are. Empty if they may be.
QString SettingsProblem(const QString &organization, const QString &application);

/// Makes Qt find no settings files in this process from now on, and write none.
void PassOverSettingsFiles();
