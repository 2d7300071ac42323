// Access to the application that loaded the plug-in.
#pragma once

#include "KException.h"
#include "KIApplication.h"

#include <QCoreApplication>

/// Returns the host; null if there is no application or it isn't a host. Don't store the pointer: each function that
/// needs the host calls this again.
inline KIApplication *HostApplication()
{
    QCoreApplication *application = QCoreApplication::instance();
    return application ? static_cast<KIApplication *>(application->qt_metacast("KIApplication")) : nullptr;
}

/// Returns the host. Throws a KException if there is none.
inline KIApplication &NeededHost()
{
    KIApplication *host = HostApplication();
    if (!host)
        KThrow("No host application");
    return *host;
}
