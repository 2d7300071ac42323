// Passes the files of a job to the process object.
#pragma once

#include <QStringList>

class HostApplication;
class KIPluginOne2One;

/// Calls SetFiles with @p files. Files that are also in @p announced, the files of the previous call, keep their
/// choices, although SetFiles makes new records. Only choices with a stored setting are kept: all those on the page,
/// but neither facts typed for one picture nor "Again". GUI thread.
/// @param framing  for all pictures, as the attribute "Framing" of a record.
void AnnounceFiles(HostApplication *application, KIPluginOne2One *process, const QStringList &announced,
                   const QStringList &files, const QString &framing);
