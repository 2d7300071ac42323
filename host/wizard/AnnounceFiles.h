// The files of a job, made known to the process.
#pragma once

#include <QStringList>

class HostApplication;
class KIPluginOne2One;

/// Calls SetFiles with @p files. The records of those that are in @p announced too, the files of the call before, keep
/// what was chosen for them, though SetFiles makes new ones. GUI thread.
void AnnounceFiles(HostApplication *application, KIPluginOne2One *process, const QStringList &announced,
                   const QStringList &files);
