// Passing the files of a job to the process.
#pragma once

#include <QStringList>

class HostApplication;
class KIPluginOne2One;

/// Calls SetFiles with @p files. Files that are also in @p announced, the files of the previous call, keep their
/// choices, although SetFiles makes new records. GUI thread.
void AnnounceFiles(HostApplication *application, KIPluginOne2One *process, const QStringList &announced,
                   const QStringList &files);
